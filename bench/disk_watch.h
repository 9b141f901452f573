// Watches how much disk the files of a folder take.
#pragma once

#include <QString>

#include <atomic>
#include <thread>

class DiskWatch
{
public:
    explicit DiskWatch(QString folder);
    ~DiskWatch();
    DiskWatch(const DiskWatch&) = delete;
    DiskWatch& operator=(const DiskWatch&) = delete;

    // The most bytes there were at any moment so far, minus those there are now.
    qint64 NeededBeyondTheRest() const;

private:
    void Look();

    QString m_folder;
    std::atomic<qint64> m_most = 0;
    std::atomic<bool> m_end = false;
    std::thread m_thread;
};
