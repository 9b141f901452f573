// A recording that is supervised, with a program that prints its input in place of ffmpeg.
#pragma once

#include "tests/support/child_processes.h"
#include "tests/support/keyboard.h"
#include "tool/record/supervisor.h"
#include "tool/system/pipe.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <optional>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using tool::Process;
using tool::Program;
using tool::RecordingFile;
using tool::RecordingTime;

// A supervised recording. What "ffmpeg" gets as keys can be read.
class Supervision
{
public:
    struct Options
    {
        bool grabsItself = false;
        bool hasFile = true;
        std::chrono::milliseconds patience = 1min;
        int keyboard = -1; // instead of the one of its own
        std::chrono::milliseconds firstPicture{0};
    };

    explicit Supervision(Options options) : m_options(options)
    {
        const QByteArray path = QFile::encodeName(m_folder.filePath("r.mp4"));
        m_file = RecordingFile::Create(path.toStdString());
        auto keys = tool::MakePipe();
        auto printed = tool::MakePipe();
        Program program{"/bin/cat"};
        program.input = keys->read.Number();
        program.output = printed->write.Number();
        program.blockedSignals = {SIGHUP};
        m_ffmpeg = Process::Start(program);
        m_printed = std::move(printed->read);
        m_keys = tool::Descriptor(fcntl(keys->write.Number(), F_DUPFD_CLOEXEC, 0));
        m_caught.emplace(std::initializer_list<int>{SIGTERM, SIGINT, SIGHUP, SIGCHLD});
        m_thread = std::thread([this, pipe = std::move(keys->write)]() mutable {
            tool::Supervisor supervisor(
                {*m_ffmpeg, std::move(pipe), m_options.hasFile ? &*m_file : nullptr,
                 m_options.grabsItself, m_options.patience, m_options.firstPicture},
                m_options.keyboard >= 0 ? m_options.keyboard : m_keyboard.Input(), *m_caught,
                m_time);
            m_nCode = supervisor.Run();
            m_reason = supervisor.Reason();
        });
    }
    Supervision(const Supervision&) = delete;
    Supervision& operator=(const Supervision&) = delete;
    ~Supervision()
    {
        kill(m_ffmpeg->Id(), SIGKILL);
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    Keyboard& Keys() { return m_keyboard; }
    pid_t Ffmpeg() const { return m_ffmpeg->Id(); }
    bool HasEnded() const { return m_time.End().has_value(); }
    // The next keys that reach ffmpeg.
    QByteArray Typed(int count) const
    {
        QByteArray all;
        pollfd ready{m_printed.Number(), POLLIN, 0};
        while (all.size() < count && poll(&ready, 1, 10000) == 1) {
            QByteArray piece(count - static_cast<int>(all.size()), '\0');
            const ssize_t got =
                read(m_printed.Number(), piece.data(), static_cast<size_t>(piece.size()));
            if (got <= 0) {
                break;
            }
            all += piece.left(got);
        }
        return all;
    }
    // Waits until the supervisor has looked at everything. It reads each SIGCHLD, which means
    // nothing to it, before it looks at the rest: when the second one is read, the first look is
    // over. Returns false if it does not look.
    bool AwaitLook() const
    {
        const auto isRead = [this] {
            int bytes = 0;
            return ioctl(m_caught->Number(), FIONREAD, &bytes) == 0 && bytes == 0;
        };
        for (int look = 0; look < 2; ++look) {
            if (kill(getpid(), SIGCHLD) != 0 || !QTest::qWaitFor(isRead, 10000)) {
                return false;
            }
        }
        return true;
    }
    // The keys that have reached ffmpeg after a look at everything.
    QByteArray TypedUntilNow() const
    {
        if (!AwaitLook() || write(m_keys.Number(), "|", 1) != 1) {
            return "it does not look";
        }
        QByteArray all;
        while (!all.endsWith('|')) {
            const QByteArray key = Typed(1);
            if (key.isEmpty()) {
                return "ffmpeg gets no keys";
            }
            all += key;
        }
        all.chop(1);
        return all;
    }
    void FillFile() const { QCOMPARE(write(m_file->Number(), "ftyp", 4), ssize_t{4}); }
    int WaitForEnd()
    {
        m_thread.join();
        return m_nCode;
    }

    tool::Ending Reason() const { return m_reason; } // after the end

private:
    Options m_options;
    QTemporaryDir m_folder;
    Keyboard m_keyboard;
    RecordingTime m_time;
    std::optional<RecordingFile> m_file;
    std::optional<Process> m_ffmpeg;
    tool::Descriptor m_printed;
    tool::Descriptor m_keys; // as the supervisor's
    std::optional<tool::Signals> m_caught;
    std::thread m_thread;
    int m_nCode = -1;
    tool::Ending m_reason = tool::Ending::Asked;
};
