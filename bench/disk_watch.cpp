#include "bench/disk_watch.h"

#include <QDir>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

qint64 BytesIn(const QString& folder)
{
    qint64 sum = 0;
    for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files | QDir::Hidden)) {
        sum += file.size();
    }
    return sum;
}

} // namespace

DiskWatch::DiskWatch(QString folder) : m_folder(std::move(folder)), m_thread([this] { Look(); }) {}

DiskWatch::~DiskWatch()
{
    m_end = true;
    m_thread.join();
}

void DiskWatch::Look()
{
    while (!m_end) {
        m_most = std::max(m_most.load(), BytesIn(m_folder));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

qint64 DiskWatch::NeededBeyondTheRest() const
{
    const qint64 rest = BytesIn(m_folder);
    return std::max(m_most.load(), rest) - rest;
}
