#include "tests/support/wayland_takes.h"

#include "tests/support/desktop.h"
#include "tests/support/recording_file.h"
#include "tool/screen/screen_picture.h"
#include "tool/screen/wayland/wayland_screens.h"

#include <QTest>

#include <algorithm>
#include <chrono>

bool TellSway(const QStringList& command)
{
    return RunProgram("swaymsg", QStringList{"--quiet"} + command).code == 0;
}

std::vector<tool::Rectangle> OutputAreas()
{
    return tool::ReadWaylandScreens(qEnvironmentVariable("WAYLAND_DISPLAY").toStdString()).areas;
}

Lumas ShownLumas(size_t output)
{
    const auto areas = OutputAreas();
    if (output >= areas.size()) {
        return {};
    }
    const auto opened = tool::OpenWaylandScreen(
        qEnvironmentVariable("WAYLAND_DISPLAY").toStdString(), areas[output]);
    constexpr std::chrono::seconds patience{2};
    if (!opened || !opened->screen ||
        opened->screen->Next(std::chrono::steady_clock::now() + patience) !=
            tool::Screen::Outcome::Taken) {
        return {};
    }
    const auto width = static_cast<size_t>(opened->area.width);
    const auto height = static_cast<size_t>(opened->area.height);
    std::vector<uint8_t> frame(tool::YuvBytes(opened->area.width, opened->area.height));
    opened->screen->Write(frame.data());
    const auto luma = [&](size_t x, size_t y) {
        return static_cast<int>(frame[y * height / 4 * width + x * width / 4]);
    };
    return {luma(1, 1), luma(3, 1), luma(1, 3), luma(3, 3)};
}

bool AreAlike(const Lumas& one, const Lumas& other)
{
    return one.size() == other.size() &&
           std::equal(one.begin(), one.end(), other.begin(),
                      [](int a, int b) { return std::abs(a - b) <= 6; });
}

bool Show(size_t output, const QStringList& background, const Lumas& lumas)
{
    const QString name = QString("HEADLESS-%1").arg(output + 1);
    return TellSway(QStringList{"output", name, "bg"} + background) &&
           WaitUntil([&] { return AreAlike(ShownLumas(output), lumas); });
}

bool ShowColour(size_t output, const QString& colour, int luma)
{
    return Show(output, {colour, "solid_color"}, {luma, luma, luma, luma});
}

Lumas LastLumas(const QString& file)
{
    const Outcome probe =
        RunProgram("ffprobe", {"-v", "error", "-select_streams", "v", "-show_entries",
                               "stream=width,height", "-of", "csv=p=0", file});
    const QList<QByteArray> size = probe.output.trimmed().split(',');
    const qsizetype width = size.value(0).toInt();
    const qsizetype height = size.value(1).toInt();
    const Outcome decoded = RunProgram("ffmpeg", {"-v", "error", "-sseof", "-0.5", "-i", file, "-f",
                                                  "rawvideo", "-pix_fmt", "yuv420p", "-"});
    const qsizetype bytes = width * height * 3 / 2;
    if (bytes == 0 || decoded.output.size() < bytes) {
        return {};
    }
    const QByteArray last = decoded.output.last(bytes);
    const auto luma = [&](qsizetype x, qsizetype y) {
        return static_cast<int>(
            static_cast<uchar>(last.at(y * height / 4 * width + x * width / 4)));
    };
    return {luma(1, 1), luma(3, 1), luma(1, 3), luma(3, 3)};
}

QByteArray Told(const Lumas& lumas)
{
    QByteArray text = "brightness";
    for (const int luma : lumas) {
        text += ' ' + QByteArray::number(luma);
    }
    return text;
}

bool RestoreOutputs()
{
    TellSway({"output", "HEADLESS-1", "mode", "640x400@60Hz", "scale", "1", "transform", "normal"});
    return WaitUntil([] {
        return OutputAreas() ==
               std::vector<tool::Rectangle>{{0, 0, kOutputWidth, kOutputHeight},
                                            {kOutputWidth, 0, kOutputWidth, kOutputHeight}};
    });
}

std::unique_ptr<Take> WaylandTakes::Begin(const QString& devices)
{
    auto take =
        std::make_unique<Take>(m_folder.filePath(QString("%1.mp4").arg(++m_nTakes)), devices);
    if (!WaitUntil([&] { return take->HasPicture() || take->HasEnded(); }) || take->HasEnded()) {
        QTest::qFail("no recording: " + take->Text(), __FILE__, __LINE__);
    }
    return take;
}

bool WaylandTakes::WaitForSeconds(const Take& take, double seconds)
{
    const double before = std::max(take.Taken(), 0.0);
    return WaitUntil([&] { return take.HasEnded() || take.Taken() >= before + seconds; });
}

QString WaylandTakes::Finish(Take& take)
{
    take.Type("q\r\n");
    if (!take.WaitForEnd() || take.ExitCode() != 0) {
        return "ended with " + QString::number(take.ExitCode()) + ": " + take.Text();
    }
    return ReadRecording(take.Path()).fault;
}
