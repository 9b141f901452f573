#include "jobs/folder_listing.h"

#include "jobs/folder_scan.h"
#include "jobs/tool_runner.h"
#include "jobs/work_thread.h"

#include <QEventLoop>
#include <QTimer>

#include <memory>

std::optional<QVector<_FILE_INFO_>> ListNewestFirst(const QString& dir, QEventLoop& loop)
{
    QTimer patience;
    patience.setSingleShot(true);
    QObject::connect(&patience, SIGNAL(timeout()), &loop, SLOT(quit()));
    patience.start(kToolWaitMs);
    const auto files = std::make_shared<QVector<_FILE_INFO_>>();
    WorkThread listing([dir, files] { *files = NewestFirst(dir); });
    listing.CallWhenDone(loop, "quit");
    loop.exec();

    if (listing.IsDone()) {
        return *files;
    }
    return patience.isActive() ? std::nullopt : std::optional(QVector<_FILE_INFO_>());
}
