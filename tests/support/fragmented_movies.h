#pragma once

#include "tests/support/movie_test.h"
#include "tool/mp4/boxes.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/settle.h"

#include <QFile>

// A box of a movie, and where it ends.
struct TopBox
{
    uint32_t type = 0;
    qint64 end = 0;
};

// The outermost boxes. The last one is empty if the movie is damaged.
inline QList<TopBox> TopBoxes(const QString& path)
{
    tool::FrugalFile file(QFile::encodeName(path).toStdString(), 1U << 20U);
    tool::BoxWalk walk(file, 0, file.Size());
    QList<TopBox> boxes;
    while (const auto box = walk.Next()) {
        boxes << TopBox{box->type, static_cast<qint64>(box->end)};
    }
    return walk.Damaged() ? boxes << TopBox() : boxes;
}

// Whether a movie has no fragments and its index at the end.
inline bool IsOrdinary(const QString& path)
{
    const QList<TopBox> boxes = TopBoxes(path);
    return boxes.size() == 3 && boxes[0].type == tool::BoxType("ftyp") &&
           boxes[1].type == tool::BoxType("mdat") && boxes[2].type == tool::BoxType("moov");
}

inline bool Settle(const QString& path)
{
    return tool::SettleMovie(QFile::encodeName(path).toStdString());
}

// A test with movies that are fragmented, and the same ones as ffmpeg writes them otherwise.
class FragmentedMoviesTest : public MovieTest
{
protected:
    QString Fragmented(const QString& name) const { return Path("fragmented " + name); }
    // The same streams twice: fragmented, and as ffmpeg's ordinary movie.
    void MakeBoth(const QString& name, const QStringList& arguments) const
    {
        const QStringList exactly = {"-fflags",   "+bitexact", "-flags",
                                     "+bitexact", "-threads",  "1"};
        const QStringList fragments = {"-movflags", "+frag_keyframe+delay_moov+default_base_moof",
                                       "-frag_duration", "1000000"};
        Make("fragmented " + name, arguments + exactly + fragments);
        Make(name, arguments + exactly);
        QVERIFY2(!IsOrdinary(Fragmented(name)), "nothing is fragmented");
    }
    // As in a recording, the first fragment has one frame only.
    void MakeRecorded() const
    {
        MakeBoth("recorded.mp4", PictureInput(5, "160x120", "29.97") + ToneInput(5, 44100) +
                                     PlainCodecs() +
                                     QStringList{"-g", "59", "-force_key_frames", "expr:eq(n,1)"});
    }
};
