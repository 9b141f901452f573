#pragma once

#include "tests/window/job_tool.h"
#include "tests/window/pictures.h"

inline constexpr auto kSource = "m_pSourceVideoTable";
inline constexpr auto kTarget = "m_pTargetVideoTable";

// The two tables of the merge page.
class MergeTablesTest : public VideoPageTest
{
    Q_OBJECT

protected:
    // The three texts of a row.
    QString Row(const char* table, int row)
    {
        QStringList texts;
        for (int column = 0; column < 3; ++column) {
            texts << Child<QTableWidget>(table)->item(row, column)->text();
        }
        return texts.join(", ");
    }

    // What is wrong about the image of a row; empty if nothing is.
    QString WrongPicture(const char* table, int row)
    {
        return PictureDifference(QString("row %1").arg(row),
                                 Child<QTableWidget>(table)->item(row, 0)->icon(), {16, 16},
                                 "mp4.png");
    }
};
