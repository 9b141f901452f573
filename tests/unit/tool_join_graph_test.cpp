// The filter graph that joins different parts.
#include "tool/edit/encoding_join.h"

#include <QByteArray>
#include <QTest>

using tool::PartDescription;

class ToolJoinGraphTest : public QObject
{
    Q_OBJECT

private slots:
    void firstPartsPictureAndSoundSetTheFormat();
};

// "First" is the first part that has the track.
void ToolJoinGraphTest::firstPartsPictureAndSoundSetTheFormat()
{
    const PartDescription picture{320, 240, "25", 0, "", 2};
    const PartDescription both{640, 480, "30", 44100, "mono", 3};
    const PartDescription sound{0, 0, "", 48000, "stereo", 4};
    const auto command = [](const std::vector<PartDescription>& parts) {
        std::vector<std::string> names(parts.size(), "x.ts");
        QByteArray text;
        for (const std::string& argument : tool::EncodingJoin(names, parts)) {
            text += QByteArray::fromStdString(argument) + ' ';
        }
        return text;
    };
    const QByteArray one = command({picture, both, sound});
    QVERIFY2(one.contains("-r 25 ") && one.contains("pad=320:240:") && !one.contains("640"), one);
    QVERIFY2(one.contains("sample_rates=44100:channel_layouts=mono") && !one.contains("48000"),
             one);
    QVERIFY2(one.contains("anullsrc=r=44100:cl=mono"), one);
    // Sound that starts late is preceded by silence; otherwise it would play too early.
    QVERIFY2(one.contains("aresample=44100:async=1:first_pts=0,"), one);
    QVERIFY2(one.contains("color=black:s=320x240:r=25:d=4.0"), one);
    QVERIFY2(one.contains("concat=n=3:v=1:a=1[v][a]"), one);
    const QByteArray silent = command({picture, picture});
    QVERIFY2(silent.contains("concat=n=2:v=1:a=0[v]") && !silent.contains("-c:a"), silent);
    const QByteArray dark = command({sound, sound});
    QVERIFY2(dark.contains("concat=n=2:v=0:a=1[a]") && !dark.contains("-c:v"), dark);
}

QTEST_APPLESS_MAIN(ToolJoinGraphTest)
#include "tool_join_graph_test.moc"
