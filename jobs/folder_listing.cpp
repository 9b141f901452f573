#include "jobs/folder_listing.h"

#include "jobs/folder_scan.h"
#include "jobs/tool_runner.h"

#include <QEventLoop>
#include <QTimer>

#include <memory>
#include <mutex>
#include <thread>

namespace {

bool isLeftBehind = false;

// Owned by the thread and by whoever waits for it.
struct Listing
{
    std::mutex mutex;
    QEventLoop* loop = nullptr; // of whoever still waits
    std::optional<QVector<_FILE_INFO_>> files;
};

void List(const std::shared_ptr<Listing>& listing, const QString& dir)
{
    QVector<_FILE_INFO_> files = NewestFirst(dir);
    const std::lock_guard lock(listing->mutex);
    listing->files = std::move(files);
    if (listing->loop != nullptr) {
        QMetaObject::invokeMethod(listing->loop, "quit", Qt::QueuedConnection);
    }
}

} // namespace

std::optional<QVector<_FILE_INFO_>> ListNewestFirst(const QString& dir, QEventLoop& loop)
{
    const auto listing = std::make_shared<Listing>();
    listing->loop = &loop;
    QTimer patience;
    patience.setSingleShot(true);
    QObject::connect(&patience, SIGNAL(timeout()), &loop, SLOT(quit()));
    patience.start(kToolWaitMs);
    std::thread thread(List, listing, dir);
    loop.exec();

    std::unique_lock lock(listing->mutex);
    listing->loop = nullptr;
    const bool isDone = listing->files.has_value();
    lock.unlock();
    if (!isDone) {
        thread.detach();
        isLeftBehind = true;
        return patience.isActive() ? std::nullopt : std::optional(QVector<_FILE_INFO_>());
    }
    thread.join();
    return std::move(listing->files);
}

bool IsListingLeftBehind()
{
    return isLeftBehind;
}
