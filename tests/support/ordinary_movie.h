#pragma once

#include "tool/mp4/boxes.h"
#include "tool/mp4/frugal_file.h"

#include <QFile>

// Whether a recording is settled: it has its index and no fragments, and nothing changes it any
// more.
inline bool IsOrdinary(const QString& path)
{
    tool::FrugalFile file(QFile::encodeName(path).toStdString(), 1U << 20U);
    tool::BoxWalk walk(file, 0, file.Size());
    uint32_t last = 0;
    while (const auto box = walk.Next()) {
        last = box->type;
        if (last == tool::BoxType("moof")) {
            return false;
        }
    }
    return last == tool::BoxType("moov") && !walk.Damaged();
}
