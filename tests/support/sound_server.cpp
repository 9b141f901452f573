#include "tests/support/sound_server.h"

#include <QFile>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>

SoundServer::SoundServer(const QByteArray& setUp)
{
    const QByteArray socket = QFile::encodeName(m_folder.filePath("socket"));
    QFile script(m_folder.filePath("script"));
    if (script.open(QIODevice::WriteOnly)) {
        script.write("load-module module-native-protocol-unix auth-anonymous=1 socket=" + socket +
                     '\n' + setUp);
    }
    qputenv("PULSE_SERVER", "unix:" + socket);
    qputenv("PULSE_COOKIE", QFile::encodeName(m_folder.filePath("cookie")));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", m_folder.path());
    environment.insert("XDG_RUNTIME_DIR", m_folder.path());
    environment.remove("DISPLAY"); // whose server may name another sound server
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

SoundServer::~SoundServer()
{
    Kill();
}

bool SoundServer::Start()
{
    m_process.start("pulseaudio", {"-n", "--file=" + m_folder.filePath("script"), "--daemonize=no",
                                   "--use-pid-file=no", "--system=false", "--exit-idle-time=-1",
                                   "--disallow-exit", "--realtime=false", "--high-priority=no",
                                   "--log-target=stderr"});
    const bool answers =
        m_process.waitForStarted() &&
        QTest::qWaitFor(
            [this] { return m_process.state() != QProcess::Running || Command({"info"}); }, 20000);
    if (!answers || m_process.state() != QProcess::Running) {
        qWarning("pulseaudio: %s", m_process.readAll().constData());
        return false;
    }
    return true;
}

void SoundServer::Kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool SoundServer::Command(const QStringList& words) const
{
    QProcess pactl;
    pactl.setProcessChannelMode(QProcess::MergedChannels);
    pactl.start("pactl", words);
    return pactl.waitForFinished() && pactl.exitCode() == 0;
}

QString SoundServer::Ask(const QStringList& words) const
{
    QProcess pactl;
    pactl.start("pactl", words);
    pactl.waitForFinished();
    return QString::fromUtf8(pactl.readAllStandardOutput());
}
