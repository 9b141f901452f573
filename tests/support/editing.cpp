#include "tests/support/editing.h"

#include "tests/support/ordinary_movie.h"
#include "tests/support/tool_movies.h"

#include <QDir>
#include <QTest>

bool MakeMovie(const Recorder& recorder, const QString& name, int seconds, const QString& arguments,
               bool sound, const QString& size)
{
    QDir().mkpath(recorder.SaveDirectory());
    QStringList command{"-f", "lavfi", "-i", "testsrc2=size=" + size + ":rate=25"};
    if (sound) {
        command << QStringList{"-f", "lavfi", "-i", "sine=frequency=440:sample_rate=44100"};
    }
    command << QStringList{"-t", QString::number(seconds), "-pix_fmt", "yuv420p"}
            << arguments.split(' ') << recorder.SaveDirectory() + '/' + name;
    return MakeMovie(command).isEmpty();
}

void MarkFirstVideo(Recorder& recorder, double start, double end)
{
    QVERIFY2(recorder.OpenPage("cut"), "the trim page does not appear");
    recorder.Click("cut.row");
    recorder.ClickBetween("cut.slider.low", "cut.slider.high", start);
    recorder.Click("cut.start");
    recorder.ClickBetween("cut.slider.low", "cut.slider.high", end);
    recorder.Click("cut.end");
}

void AddVideos(Recorder& recorder, int count)
{
    QVERIFY2(recorder.OpenPage("merge"), "the join page does not appear");
    for (int row = 0; row < count; ++row) {
        recorder.ClickRow("merge.source", row);
        recorder.Click("merge.add");
    }
}

QString RunJob(Recorder& recorder, const QString& button, const QString& folder)
{
    recorder.Click(button);
    if (!recorder.ChooseFolder(folder)) {
        return "no folder could be chosen";
    }
    if (!WaitUntil([&] { return recorder.Message().has_value(); }, 60000)) {
        return "no message";
    }
    return recorder.CloseMessage() ? QString() : "the message cannot be closed";
}

bool Record(Recorder& recorder, int milliseconds)
{
    return recorder.StartRecording() && recorder.RecordFor(milliseconds) &&
           recorder.ChooseInTray(1) && recorder.WaitShown() && recorder.WaitForTool() &&
           WaitUntil([&] { return IsOrdinary(recorder.Recording()); });
}
