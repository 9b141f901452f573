#include "app/program.h"

#include "app/application_icon.h"
#include "app/close_watcher.h"
#include "app/debug_output.h"
#include "app/end_signals.h"
#include "app/launcher.h"
#include "app/window_platform.h"
#include "jobs/text_codec.h"
#include "jobs/work_thread.h"
#include "ui/drui.h"
#include "util/wide_text.h"

#include <QApplication>
#include <QTimer>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace {

constexpr auto kErrorFile = "Out.txt"; // in the working directory

// Redirects standard error to the file from its start; an older, longer file keeps its tail. Does
// not follow a link, which in a folder others can write to may point to any file of the user.
// Neither call is checked: without the file, standard error stays as it was.
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
    const EndSignals endSignals(*window);
    window->show();
    // Loads its many sizes while the window manager is busy with the window.
    QTimer::singleShot(0, SetApplicationIcon);
    QApplication::exec();

    close(errors);
    unlink(kErrorFile); // if it stays, the program ended abnormally
    window.reset();     // finishes a running recording
}

// Whether the end of QApplication and of global objects may hang. Qt 6.4's threads that read from a
// Wayland compositor wait for each other for ever if something comes while the connection is
// closed. A thread that was left behind may use anything at any moment.
bool MustEndAtOnce()
{
    return IsThreadLeftBehind() || QGuiApplication::platformName().startsWith("wayland");
}

} // namespace

void RunProgram(int& argc, char** argv)
{
    // If the reader of our messages goes away, the window and a recording must go on.
    std::signal(SIGPIPE, SIG_IGN);
    SendDebugOutputToStandardError();
    const bool chosen = ChooseWindowPlatform();
    // macOS starts the administrator's copy with the user's real id, and Qt would end it for that.
    QCoreApplication::setSetuidAllowed(true);
    const QApplication application(argc, argv);
    if (chosen) {
        qunsetenv("QT_QPA_PLATFORM"); // not for programs that this one starts
    }
    std::setlocale(LC_NUMERIC, "C"); // sizes are "1.50 KB" in every locale
    InstallTextCodec("GB2312");
    if (argc == 2) {
        RunApplication();
    } else {
        RelaunchAsAdministrator(QCoreApplication::applicationFilePath());
    }
    if (MustEndAtOnce()) {
        std::_Exit(0);
    }
}
