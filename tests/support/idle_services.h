// The services of a desktop that can be asked not to blank or lock the screen.
#pragma once

#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QStringList>

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

enum class Answer { Lock, Refusal, Silence };

Q_DECLARE_METATYPE(Answer)

// Remembers who has asked, and answers as it is told to.
class Service : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    QStringList asked;
    QStringList callers;
    Answer answer = Answer::Lock;

protected:
    void Ask(const QStringList& arguments)
    {
        asked << arguments.join('|');
        callers << message().service();
        if (answer == Answer::Refusal) {
            sendErrorReply(QDBusError::AccessDenied, "no");
        } else if (answer == Answer::Silence) {
            setDelayedReply(true);
        }
    }
};

// NOLINTBEGIN(readability-identifier-naming): the names of the methods
class ScreenSaver : public Service
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public slots:
    uint Inhibit(const QString& program, const QString& reason)
    {
        Ask({program, reason});
        return 1;
    }
};

class PowerManagement : public Service
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.PowerManagement.Inhibit")

public slots:
    uint Inhibit(const QString& program, const QString& reason)
    {
        Ask({program, reason});
        return 1;
    }
};

class SessionManager : public Service
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")

public slots:
    uint Inhibit(const QString& program, uint window, const QString& reason, uint flags)
    {
        Ask({program, QString::number(window), reason, QString::number(flags)});
        return 1;
    }
};

class Logind : public Service
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    Logind() { Q_UNUSED(pipe2(m_pipe.data(), O_CLOEXEC)) }
    ~Logind() override
    {
        close(m_pipe[0]);
        close(m_pipe[1]);
    }
    // Whether nobody holds the lock's other end.
    bool IsReleased()
    {
        close(std::exchange(m_pipe[1], -1));
        pollfd end{m_pipe[0], POLLIN, 0};
        return poll(&end, 1, 0) > 0 && (end.revents & POLLHUP) != 0;
    }

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& program,
                                    const QString& reason, const QString& mode)
    {
        Ask({what, program, reason, mode});
        return QDBusUnixFileDescriptor(m_pipe[1]);
    }

private:
    std::array<int, 2> m_pipe{-1, -1};
};
// NOLINTEND(readability-identifier-naming)
