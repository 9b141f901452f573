#pragma once

#include <QFile>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <unistd.h>

// A folder or file that does not answer, such as one on a dead network share: the program's calls
// of the C library (dead_path.cpp) wait for it.

class DeadPath
{
public:
    /// Nothing answers at or below `path` from now on. An empty path ends that.
    static void Set(const QString& path)
    {
        const std::lock_guard lock(m_mutex);
        m_dead = QFile::encodeName(path);
        m_change.notify_all();
    }

    /// How many calls wait.
    static int Waiting()
    {
        const std::lock_guard lock(m_mutex);
        return m_waiting;
    }

    static void WaitForAnswer(const char* path)
    {
        std::unique_lock lock(m_mutex);
        if (path == nullptr || m_dead.isEmpty() ||
            (m_dead != path && !QByteArray(path).startsWith(m_dead + '/'))) {
            return;
        }
        ++m_waiting;
        const auto answers = [] { return m_dead.isEmpty(); };
        if (gettid() == getpid()) { // the window freezes; the test must go on to say so
            m_change.wait_for(lock, std::chrono::seconds(10), answers);
        } else {
            m_change.wait(lock, answers);
        }
        --m_waiting;
    }

private:
    static inline std::mutex m_mutex;
    static inline std::condition_variable m_change;
    static inline QByteArray m_dead;
    static inline int m_waiting = 0;
};
