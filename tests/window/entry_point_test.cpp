#include "app/program.h"
#include "tests/window/fake_tool.h"
#include "util/format.h"

#include <QProcess>
#include <QStandardPaths>

#include <array>
#include <clocale>
#include <csignal>
#include <functional>
#include <unistd.h>

int RecorderMain(int argc, char** argv); // app/main.cpp, renamed

namespace {

std::function<void()> g_loop; // runs in place of the event loop
int g_nLoopStatus = 0;
bool g_bIsWideTextBroken = false;
QStringList g_steps; // what the program did

void Note(const QString& step)
{
    const bool hasApplication = QCoreApplication::instance() != nullptr;
    g_steps << step + (!hasApplication                             ? " before the application"
                       : QApplication::topLevelWidgets().isEmpty() ? ""
                                                                   : " with a window");
}

} // namespace

// Replaces the event loop, the launcher and the codecs at link time.
extern "C" {
int __real__Z20inner_initUnicodeMapPKc(const char* encoding);      // NOLINT: the linker's names
void __real__Z16InstallTextCodecPKc(const char* name);             // NOLINT
int __wrap__Z20inner_initUnicodeMapPKc(const char* encoding);      // NOLINT
void __wrap__Z16InstallTextCodecPKc(const char* name);             // NOLINT
int __wrap__ZN12QApplication4execEv();                             // NOLINT
void __wrap__Z23RelaunchAsAdministratorRK7QString(const QString&); // NOLINT

int __wrap__Z20inner_initUnicodeMapPKc(const char* encoding) // NOLINT
{
    Note(QString("wide text in ") + encoding);
    return g_bIsWideTextBroken ? -1 : __real__Z20inner_initUnicodeMapPKc(encoding);
}

void __wrap__Z16InstallTextCodecPKc(const char* name) // NOLINT
{
    Note(QString("8-bit text in ") + name);
    __real__Z16InstallTextCodecPKc(name);
}

int __wrap__ZN12QApplication4execEv() // NOLINT
{
    Note("event loop");
    g_loop();
    return g_nLoopStatus;
}

void __wrap__Z23RelaunchAsAdministratorRK7QString(const QString& program) // NOLINT
{
    Note("launch " + program);
}
}

// The steps of the program's start and end, in the test's own process.
class EntryPointTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(m_directory->path()));
        g_steps.clear();
        g_loop = [] {};
        g_nLoopStatus = 0;
        g_bIsWideTextBroken = false;
        m_nErrors = dup(STDERR_FILENO);
    }

    void cleanup()
    {
        dup2(m_nErrors, STDERR_FILENO);
        close(m_nErrors);
        QDir::setCurrent(QDir::tempPath());
    }

    void theApplicationStartsInItsOrder()
    {
        Run({"start"});
        // The window installs the 8-bit codec again.
        QCOMPARE(g_steps,
                 QStringList({"8-bit text in GB2312", "wide text in UTF-8",
                              "8-bit text in GB2312 with a window", "event loop with a window"}));
    }

    void theLauncherStartsItsOwnProgramAndShowsNothing_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("none") << QStringList();
        QTest::newRow("two") << QStringList({"start", "start"});
    }

    void theLauncherStartsItsOwnProgramAndShowsNothing()
    {
        QFETCH(QStringList, arguments);
        Run(arguments);
        QCOMPARE(g_steps, QStringList({"8-bit text in GB2312",
                                       "launch " + QString::fromLocal8Bit(m_program)}));
        QVERIFY2(!QFile::exists("Out.txt"), "the launcher redirected standard error");
    }

    void theWindowIsShown()
    {
        bool isVisible = false;
        g_loop = [&] { isVisible = Window() != nullptr && Window()->isVisible(); };
        Run({"start"});
        QVERIFY(isVisible);
    }

    void withoutWideTextTheProgramSaysSoAndGoesOn()
    {
        g_bIsWideTextBroken = true;
        bool isVisible = false;
        g_loop = [&] { isVisible = Window() != nullptr && Window()->isVisible(); };
        QTest::ignoreMessage(QtDebugMsg, "inner_initUnicodeMap failed\n");
        Run({"start"});
        QVERIFY2(isVisible, "no window came");
    }

    // Destroying the window can take half a minute, because it finishes a recording.
    void theOutputFileGoesBeforeTheWindow()
    {
        const QString file = m_directory->filePath("Out.txt");
        QStringList seen;
        const auto look = [&] {
            seen << QString(QFile::exists(file) ? "there" : "gone") + ", opened as " +
                        Descriptors(file).join(' ');
        };
        QString opened;
        g_loop = [&] {
            opened = Descriptors(file).join(' ');
            look();
            QObject::connect(Window()->findChild<QProcess*>("m_pPlayerProcess"),
                             &QObject::destroyed, look);
        };
        Run({"start"});
        QVERIFY2(opened.endsWith(" 2") || opened.startsWith("2 "), qPrintable(opened));
        // Standard error keeps the file, which has no name any more.
        QCOMPARE(seen, QStringList({"there, opened as " + opened, "gone, opened as 2"}));
    }

    void theWindowsIconIsTheProgramsLogo()
    {
        QImage shown;
        QImage logo;
        g_loop = [&] {
            QCoreApplication::processEvents();
            shown = QApplication::windowIcon().pixmap(32, 32).toImage();
            logo = QIcon(":/image/logo.ico").pixmap(32, 32).toImage();
        };
        Run({"start"});
        QVERIFY(!shown.isNull());
        QCOMPARE(shown, logo);
    }

    void theLoopsStatusIsNotTheProgramsStatus()
    {
        g_nLoopStatus = 3;
        QCOMPARE(Run({"start"}), 0);
    }

    void aReaderOfTheMessagesThatWentEndsNothing()
    {
        std::signal(SIGPIPE, SIG_DFL);
        bool isIgnored = false;
        g_loop = [&] {
            struct sigaction action = {};
            isIgnored = sigaction(SIGPIPE, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
        };
        Run({"start"});
        QVERIFY2(isIgnored, "a message that nobody reads ends the program");
    }

    void sizesHaveAPointWhereOthersWriteAComma()
    {
        const QString localedef = QStandardPaths::findExecutable(
            "localedef", {"/usr/bin", "/bin", "/usr/sbin", "/usr/local/bin"});
        const QString folder = m_directory->filePath("de_DE.UTF-8");
        if (localedef.isEmpty() ||
            QProcess::execute(localedef, {"-i", "de_DE", "-f", "UTF-8", folder}) > 1) {
            QSKIP("needs the program localedef and its German locale");
        }
        const QByteArray before = qgetenv("LC_ALL");
        qputenv("LOCPATH", QFile::encodeName(m_directory->path()));
        qputenv("LC_ALL", "de_DE.UTF-8");
        std::setlocale(LC_ALL, ""); // as Qt does for the first application object
        const QString comma = std::localeconv()->decimal_point;
        std::string size;
        g_loop = [&] { size = GetFileSizeString(1536); };
        Run({"start"});
        qunsetenv("LOCPATH");
        qputenv("LC_ALL", before);
        std::setlocale(LC_ALL, "C");
        QCOMPARE(comma, QString(",")); // otherwise the test proves nothing
        QCOMPARE(size, std::string("1.50 KB"));
    }

private:
    // The process's descriptors of a file, including a removed one.
    static QStringList Descriptors(const QString& file)
    {
        QStringList numbers;
        for (const QFileInfo& entry :
             QDir("/proc/self/fd").entryInfoList(QDir::Files | QDir::System)) {
            if (entry.symLinkTarget().startsWith(file)) {
                numbers << entry.fileName();
            }
        }
        return numbers;
    }

    static QWidget* Window()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<DRUI*>(widget) != nullptr) {
                return widget;
            }
        }
        return nullptr;
    }

    int Run(const QStringList& arguments)
    {
        InstallTool("#!/bin/sh\nexit 1\n");
        QList<QByteArray> texts{m_program};
        for (const QString& argument : arguments) {
            texts << argument.toLocal8Bit();
        }
        std::array<char*, 4> values{};
        for (int i = 0; i < texts.size(); ++i) {
            values[static_cast<std::size_t>(i)] = texts[i].data();
        }
        return RecorderMain(static_cast<int>(texts.size()), values.data());
    }

    static void InstallTool(const QByteArray& script)
    {
        const QString tool = QFileInfo(QString::fromLocal8Bit(m_program)).path() + "/tool";
        QFile::remove(tool);
        WriteFile(tool, script);
        QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    static inline const QByteArray m_program = QFile::symLinkTarget("/proc/self/exe").toLocal8Bit();

    std::unique_ptr<QTemporaryDir> m_directory;
    int m_nErrors = -1;
};

QTEST_APPLESS_MAIN(EntryPointTest)
#include "entry_point_test.moc"
