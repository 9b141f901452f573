#pragma once

#include "app/close_watcher.h"
#include "jobs/job_report.h"
#include "tests/window/job_tool.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProgressBar>

inline const QString kCutQuestion = "Are you sure to cancel the video cut?";
inline const QString kMergeQuestion = "Are you sure to cancel the the video merge?";

// A cut or a merge with a user who acts while its tool runs.
class JobInProgramTest : public VideoPageTest
{
    Q_OBJECT

protected:
    // Jobs for SetJob(). Both say that they are at work, and end with their file made.
    static constexpr auto kUntilGo = "echo \"$*\" >\"$here/working\"; printf frame=\n"
                                     "until [[ -e $here/go ]]; do\n"
                                     "read -r -t 0.01 -N 1 key; printf size=; done\n"
                                     "printf made >\"${!#}\"\n";
    static constexpr auto kUntilAsked = "echo \"$*\" >\"$here/working\"; printf frame=\n"
                                        "until [[ $key == q ]]; do\n"
                                        "read -r -t 0.01 -N 1 key; printf size=; done\n"
                                        "printf made >\"${!#}\"\n";

    void PrepareJobs()
    {
        PrepareVideos();
        QApplication::setQuitOnLastWindowClosed(false);
        QFile::remove(BesideProgram("go"));
        QFile::remove(BesideProgram("working"));
        SCANUI::m_nOprType = 0; // until its first report a dialog asks what the job before would
        m_left = 0;
    }

    void FinishJobs()
    {
        qDeleteAll(findChildren<QTimer*>());
        Go(); // for what a failed test left running
        FinishVideos();
    }

    // Until the first report of a merge its dialog would ask about a cut. A cut has none.
    static bool IsToolAtWork()
    {
        QFile working(BesideProgram("working"));
        const QByteArray command =
            working.open(QIODevice::ReadOnly) ? working.readAll() : QByteArray();
        const bool reports = command.contains("-vbsf") || command.contains("concat:");
        return command.endsWith('\n') && (!reports || SCANUI::m_nOprType == kMergeOperation);
    }
    static void Go() { WriteFile(BesideProgram("go"), {}); }

    // Shows the job's page, ready for StartJob().
    void PrepareJob(bool merge)
    {
        if (merge) {
            MakeList({"a.mp4", "b.mp4"});
        } else {
            SelectRange("a.mp4", 1, 2);
        }
        Calls();
    }

    void StartJob(bool merge) { Press(merge ? "Merge" : "Cut"); }

    // Does something in the event loop, once the condition is true.
    void When(const std::function<bool()>& condition, const std::function<void()>& act)
    {
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [timer, condition, act] {
            if (condition()) {
                timer->stop();
                act();
            }
        });
        timer->start(2);
    }

    // Leaves the message or question with this text unanswered and counts how often it was seen.
    void LeaveOpen(const QString& text)
    {
        Boxes().leave = [this, text](const QString& shown) {
            m_left += shown == text ? 1 : 0;
            return shown == text;
        };
    }

    // Does something in the program's event loop. Returns when the program ends: 0, or 7 if it does
    // not.
    int RunProgram(const std::function<void()>& act)
    {
        const CloseWatcher watcher(Window());
        QTimer patience;
        connect(&patience, &QTimer::timeout, this, [] { QCoreApplication::exit(7); });
        patience.start(20000);
        QTimer::singleShot(0, this, act);
        const int result = QApplication::exec();
        // A close at the very end has posted a request to exit that would hit the next loop.
        QTimer::singleShot(0, this, [] { QCoreApplication::exit(0); });
        QApplication::exec();
        return result;
    }

    static SCANUI* Dialog()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<SCANUI*>(widget)) {
                return dialog;
            }
        }
        return nullptr;
    }

    // `text` is empty for the close button.
    static void PressInDialog(const QString& text)
    {
        QVERIFY2(Dialog() != nullptr, "there is no progress dialog");
        PressButton(Dialog(), text);
    }

    int m_left = 0;
};
