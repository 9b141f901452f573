#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QList>
#include <QString>
#include <QThread>

#include <new>
#include <sys/mman.h>
#include <sys/types.h>
#include <sys/wait.h>

// The children that the main thread of a process has started, unreaped ones included. Empty if
// there is no such process.
inline QList<pid_t> ChildrenOf(qint64 parent)
{
    QFile file(QString("/proc/%1/task/%1/children").arg(parent));
    QList<pid_t> children;
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& child : file.readAll().simplified().split(' ')) {
            if (!child.isEmpty()) {
                children << child.toInt();
            }
        }
    }
    return children;
}

// The letter that /proc has for the state of a process. Empty if there is none.
inline QByteArray StateOf(pid_t process)
{
    QFile file(QString("/proc/%1/stat").arg(process));
    const QByteArray stat = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return stat.isEmpty() ? stat : stat.mid(stat.lastIndexOf(')') + 2, 1);
}

// Whether there is such a process, and it has not ended. A process that nobody has waited for yet
// counts as one that has.
inline bool IsAlive(pid_t process)
{
    const QByteArray state = StateOf(process);
    return !state.isEmpty() && state != "Z";
}

// Whether a process is stopped by SIGSTOP.
inline bool IsStopped(pid_t process)
{
    return StateOf(process) == "T";
}

// Whether all children of this process exit by themselves within 10 s.
inline bool AllChildrenEnd()
{
    const QDeadlineTimer patience(10000);
    while (!patience.hasExpired()) {
        const pid_t ended = waitpid(-1, nullptr, WNOHANG);
        if (ended < 0) {
            return true;
        }
        if (ended == 0) {
            QThread::usleep(200);
        }
    }
    return false;
}

// A Value in memory shared with the processes forked from now on, or null. Never freed.
template <class Value>
Value* MakeShared()
{
    void* memory =
        mmap(nullptr, sizeof(Value), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) Value;
}
