// A feeder of `tool`, read like ffmpeg reads it.
#pragma once

#include "tests/support/files.h"
#include "tool/system/pipe.h"

#include <QByteArray>
#include <QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

inline double SecondsSince(std::chrono::steady_clock::time_point moment)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - moment).count();
}

// A feeder in a process of its own, which can be stopped, and its output.
class Outlet
{
public:
    // `feed` writes to the pipe.
    explicit Outlet(const std::function<void(tool::Descriptor)>& feed)
    {
        auto pipe = tool::MakePipe();
        m_nFeeder = pipe ? fork() : -1;
        if (m_nFeeder == 0) {
            std::signal(SIGPIPE, SIG_IGN);
            pipe->read.Close();
            feed(std::move(pipe->write));
            _exit(0);
        }
        if (pipe) {
            m_nPipe = dup(pipe->read.Number());
        }
    }
    Outlet(const Outlet&) = delete;
    Outlet& operator=(const Outlet&) = delete;
    ~Outlet()
    {
        Close();
        if (m_nFeeder > 0) {
            kill(m_nFeeder, SIGKILL);
            waitpid(m_nFeeder, nullptr, 0);
        }
    }

    bool IsGood() const { return m_nPipe >= 0 && m_nFeeder > 0; }
    void Signal(int number) const { kill(m_nFeeder, number); }
    bool HasEnded()
    {
        if (m_nFeeder > 0 && waitpid(m_nFeeder, nullptr, WNOHANG) == m_nFeeder) {
            m_nFeeder = 0;
        }
        return m_nFeeder == 0;
    }

    // Whether something waits to be read, and the feeder has slept several times since.
    bool HasSleptUnread()
    {
        int bytes = 0;
        if (ioctl(m_nPipe, FIONREAD, &bytes) != 0 || bytes == 0) {
            return false;
        }
        constexpr int several = 5;
        m_nSleepsUnread = m_nSleepsUnread < 0 ? Sleeps() : m_nSleepsUnread;
        return Sleeps() >= m_nSleepsUnread + several;
    }

    void Close()
    {
        close(m_nPipe);
        m_nPipe = -1;
    }
    // Reads what is there, waiting up to 10 ms.
    void Read()
    {
        pollfd pipe{m_nPipe, POLLIN, 0};
        if (!m_bAtEnd && poll(&pipe, 1, 10) > 0) {
            QByteArray piece(1 << 16, '\0');
            const ssize_t count = read(m_nPipe, piece.data(), static_cast<size_t>(piece.size()));
            m_bAtEnd = count <= 0;
            m_bytes += piece.left(std::max<qsizetype>(count, 0));
        }
    }
    bool ReadUntil(const std::function<bool()>& condition, int milliseconds = 15000)
    {
        QElapsedTimer time;
        time.start();
        while (!condition()) {
            if (time.hasExpired(milliseconds)) {
                return false;
            }
            Read();
        }
        return true;
    }
    bool IsAtEnd() const { return m_bAtEnd; }
    const QByteArray& Bytes() const { return m_bytes; }

private:
    // How often the feeder has waited until now, or -1.
    int Sleeps() const
    {
        const QByteArray status = Content(QString("/proc/%1/status").arg(m_nFeeder));
        const QByteArray name = "\nvoluntary_ctxt_switches:";
        const qsizetype place = status.indexOf(name);
        return place < 0 ? -1 : status.mid(place + name.size()).simplified().split(' ')[0].toInt();
    }

    int m_nPipe = -1;
    int m_nSleepsUnread = -1;
    pid_t m_nFeeder = 0;
    bool m_bAtEnd = false;
    QByteArray m_bytes;
};
