#include "ui/directory_chooser.h"

#include "jobs/slow_question.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QSettings>
#include <QUrl>

#include <vector>

namespace {

constexpr int kListingMs = 2000;

// As the dialog does, which looks at each entry as well.
std::unique_ptr<WorkThread> List(const QString& directory)
{
    return std::make_unique<WorkThread>([directory] {
        for (const QFileInfo& entry : QDir(directory).entryInfoList()) {
            [[maybe_unused]] const qint64 size = entry.size(); // unlike the type, asked for
        }
    });
}

bool CanBeListed(const QSet<QString>& directories)
{
    std::vector<std::unique_ptr<WorkThread>> listings;
    for (const QString& directory : directories) {
        listings.push_back(List(directory));
    }
    QElapsedTimer time;
    time.start();
    return std::all_of(listings.begin(), listings.end(), [&](const auto& listing) {
        return listing->Wait(qMax(0, kListingMs - static_cast<int>(time.elapsed())));
    });
}

// The directory, or the nearest one above that can be listed.
QString NearestListed(QString directory)
{
    while (directory.startsWith('/') && directory.size() > 1 && !List(directory)->Wait(kMomentMs)) {
        directory = directory.left(qMax(directory.lastIndexOf('/'), qsizetype{1}));
    }
    return directory;
}

// What Qt's dialogs remember. Each goes to all of it before it goes where it should.
class DialogMemory
{
public:
    DialogMemory() { m_settings.beginGroup("FileDialog"); }

    QString Last() const { return m_settings.value("lastVisited").toUrl().toLocalFile(); }

    QSet<QString> Directories() const
    {
        QSet<QString> found{Last()};
        for (const QString& url : m_settings.value("history").toStringList()) {
            found << QUrl(url).toLocalFile();
        }
        return found;
    }

    /// Makes them forget all but this directory. They have it in a variable too, which a dialog
    /// changes.
    void Replace(const QString& directory)
    {
        for (const QString& key : m_settings.allKeys()) {
            m_kept[key] = m_settings.value(key);
        }
        m_settings.remove(QString());
        {
            const QFileDialog other(nullptr, QString(), directory);
        }
        m_settings.remove(QString()); // what the other has stored
    }

    void Restore()
    {
        m_settings.remove(QString());
        for (auto entry = m_kept.cbegin(); entry != m_kept.cend(); ++entry) {
            m_settings.setValue(entry.key(), entry.value());
        }
    }

private:
    QSettings m_settings{QSettings::UserScope, "QtProject"};
    QHash<QString, QVariant> m_kept;
};

} // namespace

QString ChooseDirectory(QWidget* window, const QString& start)
{
    const auto choose = [window](const QString& begin) {
        return QFileDialog::getExistingDirectory(window, QString(), begin,
                                                 QFileDialog::ShowDirsOnly);
    };
    DialogMemory memory;
    QSet<QString> directories = memory.Directories() << start;
    directories.remove(QString());
    if (CanBeListed(directories)) {
        return choose(start);
    }
    const QString begin = NearestListed(start.isEmpty() ? memory.Last() : start);
    memory.Replace(begin);
    QString chosen = choose(begin);
    memory.Restore();
    return chosen;
}
