#pragma once

#include "jobs/free_space.h"
#include "jobs/slow_question.h"

#include <QLabel>

// The free space of a directory's volume, which may take its time to tell.
class FreeSpaceLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

    /// Shows what the volume has now, also if it answers late. Until it has ever answered, the
    /// space is unknown. Does nothing without a directory.
    void ShowSpaceOf(const QString& directory);

private:
    Q_SLOT void ShowAnswer();

    SlowQuestion<quint64> m_space{FreeBytes};
};
