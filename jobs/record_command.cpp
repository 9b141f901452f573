#include "jobs/record_command.h"

#include "jobs/device_listing.h"
#include "jobs/path_argument.h"
#include "util/path.h"

#include <QFileInfo>

#include <array>
#include <string>

namespace {

// With both devices the second input names the screen again, together with the computer sounds.
// This pairing is intended: the tool accepts a sound device only with a screen.
QString RecordInputs(const RecordDevices& devices, int audio)
{
    const QString screen(QLatin1Char(devices.screen));
    const QString first = " -f avfoundation -framerate 30 -i ";
    if (audio == kAudioBoth) {
        return first + Quoted(screen + ':' + QString::number(devices.microphone)) +
               " -f avfoundation -i " + Quoted(screen + ':' + QString::number(devices.sound));
    }
    return first + Quoted(audio >= 0 ? screen + ':' + QString::number(audio) : screen);
}

} // namespace

QString FileStamp(const QDateTime& time)
{
    return time.toString("yyyy-MM-dd hh-mm-ss");
}

QString RecordPath(const QString& directory, const QDateTime& time)
{
    return directory + '/' + FileStamp(time) + ".mp4";
}

QString FreePath(const QString& path)
{
    QString wanted = CommandPath(path);
    const QFileInfo file(wanted);
    if (!file.exists() && !file.isSymLink()) { // a link that leads nowhere does not "exist"
        return wanted;
    }
    std::wstring in = wanted.toStdWString();
    std::array<wchar_t, 520> out{};
    GetRealFileName(in.data(), out.data(), static_cast<int>(out.size()));
    return QString::fromWCharArray(out.data());
}

QString RecordCommand(const QString& tool, const RecordDevices& devices, int audio,
                      const QString& path)
{
    return tool + RecordInputs(devices, audio) +
           " -ar 44100 -r 29.97 -preset ultrafast -max_muxing_queue_size 9999 -async 1 -pix_fmt "
           "yuv420p " +
           Quoted(path) + ' ';
}
