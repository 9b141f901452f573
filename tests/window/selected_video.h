#pragma once

#include "tests/window/job_tool.h"

inline constexpr auto kTable = "m_pCutVideoTable";

// The cut page with a selected video.
class SelectedVideoTest : public VideoPageTest
{
    Q_OBJECT

protected:
    QString Position() { return Child<QLabel>("m_pCutPosLabel")->text(); }
    QString Marks()
    {
        return Child<QLabel>("m_pHeadLabel")->text() + ' ' + Child<QLabel>("m_pTailLabel")->text();
    }
};
