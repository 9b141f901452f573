#pragma once

#include "tests/support/ffmpeg_stand_in.h"
#include "tests/window/job_tool.h"

// The cut and merge pages of the real window, with the real `tool` and ffmpeg.
class RealEditTest : public VideoPageTest
{
protected:
    void PrepareEdits(const QString& tool)
    {
        PrepareVideos();
        QFile::remove(BesideProgram("tool"));
        QVERIFY(QFile::copy(tool, BesideProgram("tool")));
        m_ffmpeg = std::make_unique<FfmpegStandIn>();
    }
    void FinishEdits()
    {
        FinishVideos();
        m_ffmpeg.reset();
    }

    // A movie in the save directory, newer than those before.
    void MakeMovieHere(const QString& name, double seconds, const QString& size = "160x120")
    {
        const QByteArray problem =
            MakeMovie(PictureInput(seconds, size) + ToneInput(seconds) + PlainCodecs() +
                      QStringList{SaveDirectory() + '/' + name});
        QVERIFY2(problem.isEmpty(), problem);
        QFile file(SaveDirectory() + '/' + name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(
            QDateTime(QDate(2026, 1, 2), QTime(12, 0)).addSecs(qint64{60} * ++m_movies),
            QFileDevice::FileModificationTime));
    }
    // All of them in the list.
    void ListMovies(int count)
    {
        EnterMergePage();
        for (int row = 0; row < count; ++row) {
            Add(row);
        }
    }

    // ffmpeg takes as long for the first movie of a job as it plays.
    void SlowDown()
    {
        QVERIFY(m_ffmpeg->Use("[[ $OUT == /dev/fd/* ]] && exec ffmpeg -re \"$@\"\n"
                              "exec ffmpeg \"$@\"\n"));
    }

    double Seconds(const QString& name)
    {
        return DurationIn(RunProgram(BesideProgram("tool"), {"-i", Target() + '/' + name}).error);
    }

    FfmpegStandIn& Ffmpeg() { return *m_ffmpeg; }

private:
    std::unique_ptr<FfmpegStandIn> m_ffmpeg;
    int m_movies = 0;
};
