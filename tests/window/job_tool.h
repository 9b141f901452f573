#pragma once

#include "jobs/job_report.h"
#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"
#include "ui/scanui.h"

#include <QLineEdit>
#include <QProcess>
#include <QSlider>
#include <QTableWidget>

#include <functional>

// A `tool` for the cut and merge pages. It records every command line in "calls", answers a probe
// with the duration stored in the file, and for every other run executes "job" with the same
// arguments, or creates its output if there is no "job". Each `say` of a job is one chunk of
// output; the job continues when the test has read it.
inline constexpr auto kVideoTool = R"(#!/bin/bash
here=${0%/*}
if [[ "$*" == *-list_devices* ]]; then exit 1; fi
printf '<%s>' "$@" >>"$here/calls"
echo >>"$here/calls"
if [[ $# -eq 2 ]]; then
    echo "  Duration: $(head -n 1 "$2" 2>/dev/null).50, start: 0.000000" >&2
    exit 1
fi
say() {
    printf '%b' "$*"
    for ((i = 0; i < 6000; ++i)); do
        [[ -e $here/heard ]] && break
        sleep 0.005
    done
    rm -f "$here/heard"
}
if [[ -e "$here/job" ]]; then source "$here/job"; exit; fi
printf 'made' >"${!#}"
)";

class VideoPageTest : public WindowTest
{
    Q_OBJECT

protected:
    void PrepareVideos()
    {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        Prepare();
        InstallTool(kVideoTool);
        for (const char* name : {"calls", "job", "heard"}) {
            QFile::remove(BesideProgram(name));
        }
        QVERIFY(QDir().mkpath(SaveDirectory()));
        m_target = std::make_unique<QTemporaryDir>();
        m_boxes = std::make_unique<ModalBoxes>();
        m_boxes->directory = m_target->path();
        DRUI::m_bisFinished = false;
        SCANUI::m_nError = kJobGood;
        m_minutes = 0;
    }

    void FinishVideos()
    {
        CloseWindow();
        m_boxes.reset();
    }

    // A video in the save directory, older than the previous one.
    void MakeVideo(const QString& name, const QByteArray& duration = "00:00:30",
                   const QString& directory = QString())
    {
        const QString folder = directory.isEmpty() ? SaveDirectory() : directory;
        QFile file(folder + '/' + name);
        QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable("cannot make " + name));
        file.write(duration + '\n');
        file.flush();
        QVERIFY(file.setFileTime(
            QDateTime(QDate(2026, 1, 2), QTime(12, 0)).addSecs(qint64{-60} * ++m_minutes),
            QFileDevice::FileModificationTime));
    }

    void EnterCutPage()
    {
        OpenWindow();
        Call("btnMontageSlot");
    }

    // No run of the tool ends. Each writes its arguments to "working" first.
    static void HangTheTool()
    {
        InstallTool("#!/bin/bash\necho \"$*\" >\"${0%/*}/working\"; exec sleep 20\n");
    }

    // A shell script for all runs except probes. "$@" are the arguments.
    void SetJob(const QByteArray& script) { WriteFile(BesideProgram("job"), script); }

    // Lets the tool on this process print its chunks. Calls `heard` after the window has read each.
    void Hear(
        const char* process, const std::function<void()>& heard = [] {})
    {
        connect(Child<QProcess>(process), &QProcess::readyRead, this, [heard] {
            heard();
            WriteFile(BesideProgram("heard"), {});
        });
    }

    // All command lines since the last call, with arguments in angle brackets.
    QStringList Calls()
    {
        const QString calls = QString::fromUtf8(ReadFile(BesideProgram("calls")));
        QFile::remove(BesideProgram("calls"));
        return calls.split('\n', Qt::SkipEmptyParts);
    }

    // The names in a table's first column, "-" for an empty row.
    QStringList Names(const char* table)
    {
        QStringList names;
        auto* widget = Child<QTableWidget>(table);
        for (int row = 0; row < widget->rowCount(); ++row) {
            const auto* item = widget->item(row, 0);
            names << (item == nullptr ? QString("-") : item->text());
        }
        return names;
    }

    void ClickRow(const char* table, int row)
    {
        auto* widget = Child<QTableWidget>(table);
        QTest::mouseClick(widget->viewport(), Qt::LeftButton, {},
                          widget->visualItemRect(widget->item(row, 0)).center());
    }

    void DoubleClickRow(const char* table, int row)
    {
        ClickRow(table, row);
        auto* widget = Child<QTableWidget>(table);
        QTest::mouseDClick(widget->viewport(), Qt::LeftButton, {},
                           widget->visualItemRect(widget->item(row, 0)).center());
    }

    // Goes to the cut page, selects the video and sets both marks.
    void SelectRange(const QString& name, int start, int end)
    {
        MakeVideo(name);
        EnterCutPage();
        ClickRow("m_pCutVideoTable", 0);
        SetMarks(start, end);
        Calls();
    }

    // The selected range in seconds.
    void SetMarks(int start, int end)
    {
        for (const auto& [position, slot] : {std::pair(start, "btnSetHead"), {end, "btnSetTail"}}) {
            QVERIFY(QMetaObject::invokeMethod(&Window(), "current", Q_ARG(int, position)));
            Call(slot);
        }
    }

    void EnterMergePage()
    {
        OpenWindow();
        Call("btnEditSlot");
    }

    void Add(int row)
    {
        ClickRow("m_pSourceVideoTable", row);
        Press("Add");
    }

    // Adds new videos of these names to the merge list. Forgets the calls until then.
    void MakeList(const QStringList& names)
    {
        for (const QString& name : names) {
            MakeVideo(name);
        }
        EnterMergePage();
        for (int row = 0; row < names.size(); ++row) {
            Add(row);
        }
        Calls();
    }

    bool Enabled(const QString& text)
    {
        const auto* button = VisibleButton(&Window(), text);
        return button != nullptr && button->isEnabled();
    }

    void Leave(const char* field)
    {
        QFocusEvent leaving(QEvent::FocusOut);
        QCoreApplication::sendEvent(Child<QLineEdit>(field), &leaving);
    }

    QString Target() { return m_target->path(); }
    QStringList Results() { return QDir(Target()).entryList(QDir::Files, QDir::Name); }
    QString FirstResult() { return Target() + '/' + Results().value(0); }
    ModalBoxes& Boxes() { return *m_boxes; }

private:
    std::unique_ptr<QTemporaryDir> m_target;
    std::unique_ptr<ModalBoxes> m_boxes;
    int m_minutes = 0;
};
