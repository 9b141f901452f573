#include "app/program.h"

#include "app/close_watcher.h"
#include "app/debug_output.h"
#include "app/launcher.h"
#include "jobs/text_codec.h"
#include "ui/drui.h"
#include "util/wide_text.h"

#include <QApplication>
#include <QIcon>
#include <QTimer>

#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace {

constexpr auto kErrorFile = "Out.txt"; // in the working directory

// Standard error goes into the file from its first byte on; an older, longer file keeps its tail.
// A link is not followed: in a folder that others write to it may lead to any file of the user's.
// Neither call is checked: without the file, standard error stays where it was.
int RedirectErrors()
{
    const int file = open(kErrorFile, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644);
    dup2(file, STDERR_FILENO);
    return file;
}

void RunApplication()
{
    const int errors = RedirectErrors();
    if (inner_initUnicodeMap("UTF-8") != 0) {
        qDebug("inner_initUnicodeMap failed\n");
    }
    auto window = std::make_unique<DRUI>();
    window->Init();
    CloseWatcher watcher(*window);
    window->show();
    // Its many sizes are read while the window manager is busy with the window.
    QTimer::singleShot(0, [] { QApplication::setWindowIcon(QIcon(":/image/logo.ico")); });
    QApplication::exec();

    close(errors);
    unlink(kErrorFile); // a file left behind tells of an abnormal end
    window.reset();     // finishes a running recording
}

} // namespace

void RunProgram(int& argc, char** argv)
{
    // Whoever reads our messages may go: the window, and a recording, must not go with it.
    std::signal(SIGPIPE, SIG_IGN);
    SendDebugOutputToStandardError();
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // sizes read "1.50 KB" in every language
    InstallTextCodec("GB2312");
    if (argc == 2) {
        RunApplication();
    } else {
        RelaunchAsAdministrator(QCoreApplication::applicationFilePath());
    }
}
