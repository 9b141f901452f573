#include "tests/window/job_in_program.h"

#include <QDropEvent>
#include <QMimeData>

// The window and the progress dialog while the tool of a cut or a merge runs.
class JobAliveTest : public JobInProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareJobs();
        m_painted.clear();
        m_windowPaints = 0;
    }
    void cleanup() { FinishJobs(); }

    void cancelAsksWhileTheToolRunsAndStopsAMergeWithinASecond()
    {
        MakeList({"a.mp4", "b.mp4"});
        Calls();
        SetJob(kUntilAsked);
        QElapsedTimer sinceCancel;
        When(IsToolAtWork, [&] {
            sinceCancel.start();
            PressInDialog("Cancel");
        });
        Press("Merge");
        QVERIFY2(sinceCancel.isValid(), "no event reached the dialog while the tool ran");
        QVERIFY2(sinceCancel.elapsed() < 1000, qPrintable(QString::number(sinceCancel.elapsed())));
        QCOMPARE(Boxes().texts.value(0), kMergeQuestion);
        QCOMPARE(Boxes().texts.value(2),
                 QString("Merge failed, not an valid format, it's better to merge created mp4 "
                         "files"));
        QCOMPARE(Calls().size(), 1);
        QCOMPARE(Results(), QStringList());
    }

    void theCloseButtonOfTheDialogAsksToo()
    {
        MakeList({"a.mp4", "b.mp4"});
        SetJob(kUntilAsked);
        When(IsToolAtWork, [] { PressInDialog(QString()); });
        Press("Merge");
        QCOMPARE(Boxes().texts.value(0), kMergeQuestion);
        QCOMPARE(Results(), QStringList());
    }

    void noGoesOn()
    {
        MakeList({"a.mp4", "b.mp4"});
        Calls();
        Boxes().button = "NO";
        bool isAsked = false;
        SetJob(kUntilGo);
        When(IsToolAtWork, [&] {
            PressInDialog("Cancel");
            isAsked = true;
            QVERIFY2(Dialog()->isVisible(), "NO closed the dialog");
            Boxes().button = "OK";
            Go();
        });
        Press("Merge");
        QVERIFY(isAsked);
        QVERIFY(!DRUI::m_bisFinished);
        QCOMPARE(Calls().size(), 3);
        QCOMPARE(Results().size(), 1);
        QCOMPARE(Boxes().texts.size(), 2);
        QVERIFY2(Boxes().texts.last().startsWith("Merge success"),
                 qPrintable(Boxes().texts.last()));
    }

    void aJobThatEndsWhileTheQuestionIsOpenClosesItAndTellsSuccess_data() { Jobs(); }
    void aJobThatEndsWhileTheQuestionIsOpenClosesItAndTellsSuccess()
    {
        QFETCH(bool, merge);
        PrepareJob(merge);
        SetJob(kUntilGo);
        LeaveOpen(merge ? kMergeQuestion : kCutQuestion);
        When(IsToolAtWork, [] {
            QTimer::singleShot(20, [] { Go(); });
            PressInDialog("Cancel");
        });
        StartJob(merge);
        QVERIFY2(m_left > 0, "nothing was asked");
        QVERIFY(!DRUI::m_bisFinished);
        QCOMPARE(Results().size(), 1);
        QCOMPARE(Boxes().texts.size(), 1);
        QVERIFY2(Boxes().texts.first().contains(" success, file path is "),
                 qPrintable(Boxes().texts.first()));
    }

    // The conversions end under the question. It stays open, and its answer still counts.
    void theQuestionOutlivesTheRunItWasAskedIn()
    {
        MakeList({"a.mp4", "b.mp4"});
        Calls();
        SetJob("if [[ $2 == concat:* ]]; then " + QByteArray(kUntilAsked) + "else " + kUntilGo +
               "fi\n");
        LeaveOpen(kMergeQuestion);
        When(IsToolAtWork, [] {
            QTimer::singleShot(20, [] { Go(); });
            PressInDialog("Cancel");
        });
        When([this] { return Child<QProcess>("m_pMergeProcess")->state() == QProcess::Running; },
             [this] {
                 QVERIFY2(m_left > 0, "nothing was asked");
                 Boxes().leave = nullptr; // answers OK
             });
        Press("Merge");
        QCOMPARE(Calls().size(), 3);
        QCOMPARE(Boxes().texts.value(0), kMergeQuestion);
        QVERIFY(DRUI::m_bisFinished);
        QCOMPARE(Results(), QStringList());
    }

    void aCancelledCutRunsToItsEndAndItsFileIsDeleted()
    {
        PrepareJob(false);
        QFile::remove(BesideProgram("keys"));
        SetJob(kUntilGo +
               QByteArray("read -r -t 0.1 -N 1 key && printf '%s' \"$key\" >\"$here/keys\"\n"
                          "printf frame=\n"));
        When(IsToolAtWork, [this] {
            PressInDialog("Cancel");
            QVERIFY2(!Dialog()->isVisible(), "OK left the dialog open");
            QCOMPARE(Child<QProcess>("m_pCutProcess")->state(), QProcess::Running);
            Go();
        });
        StartJob(false);
        QCOMPARE(Boxes().texts.value(0), kCutQuestion);
        QCOMPARE(Boxes().texts.size(), 3); // the question, success, failure
        QVERIFY2(!QFile::exists(BesideProgram("keys")), "the cut's tool was asked to quit");
        QCOMPARE(Results(), QStringList());
    }

    void theWindowTakesNoInputButLives_data() { Jobs(); }
    void theWindowTakesNoInputButLives()
    {
        QFETCH(bool, merge);
        PrepareJob(merge);
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        SetJob(kUntilGo);
        const int page = Page();
        bool isTried = false;
        When(IsToolAtWork, [&] {
            TryEveryInput();
            Window().update();
            QTRY_VERIFY2(WasPainted(), "the window is not painted");
            isTried = true;
            Go();
        });
        auto* field = Child<QLineEdit>("m_pLayout4DirEdit");
        const QString folder = field->text();
        StartJob(merge);
        QVERIFY(isTried);
        QCOMPARE(Page(), page);
        QCOMPARE(field->text(), folder);
        Press("Back");
        QVERIFY2(Page() == 0, "after the job there is still no input");
    }

    void nothingStartsASecondJobOrScan_data()
    {
        QTest::addColumn<QByteArray>("slot");
        for (const char* slot :
             {"btnSlotLayout3Cut", "btnSlotLayout4Merge", "btnSlotLayout3Dir", "btnSlotLayout4Dir",
              "btnEditSlot", "btnMontageSlot", "btnMaxSlot"}) {
            QTest::newRow(slot) << QByteArray(slot);
        }
    }

    void nothingStartsASecondJobOrScan()
    {
        QFETCH(QByteArray, slot);
        MakeList({"a.mp4", "b.mp4"});
        SetJob(kUntilGo);
        bool isTried = false;
        When(IsToolAtWork, [&] {
            Calls();
            Call(slot.constData());
            Leave("m_pLayout3DirEdit");
            Leave("m_pLayout4DirEdit");
            QCOMPARE(Calls(), QStringList());
            QCOMPARE(Boxes().choosers, 1);
            isTried = true;
            Go();
        });
        Press("Merge");
        QVERIFY(isTried);
        QCOMPARE(Results().size(), 1);
    }

    void aRecordingGoesOn()
    {
        InstallTool(QByteArray(kRecordingTool)
                        .replace("printf '%s\\n' \"$@\"", "if [[ $* != *avfoundation* ]]; then " +
                                                              QByteArray(kUntilGo) +
                                                              "exit; fi\nprintf '%s\\n' \"$@\""));
        OpenWindow();
        Call("btnSlot");
        Call("btnSlotRecord");
        auto* status = Child<QLabel>("m_pStereoMix");
        QString first;
        When(IsToolAtWork, [&] {
            first = status->text();
            QTRY_VERIFY2(status->text() != first, "the status stands still");
            Call("btnSlotMenuStop");
            QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
            Go();
        });
        Call("btnSlotLayout4Merge");
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
        QVERIFY(!DRUI::m_bIsStart);
    }

    // The tool goes on when the text has been painted.
    void theTextIsPaintedWithEveryReport()
    {
        MakeList({"a.mp4", "b.mp4"});
        When([] { return Dialog() != nullptr; },
             [this] { Dialog()->findChild<QLabel*>("m_labelInfo")->installEventFilter(this); });
        SetJob("say frame=1; say frame=2\n");
        Press("Merge");
        QCOMPARE(m_painted, QStringList({"1%", "3%", "5%", "6%", "8%", "10%", "100%"}));
    }

private:
    static void Jobs()
    {
        QTest::addColumn<bool>("merge");
        QTest::newRow("merge") << true;
        QTest::newRow("cut") << false;
    }

    // By the native window, as a desktop sends it, and by the widgets, as a test or a screen
    // reader.
    void TryEveryInput()
    {
        QWindow* native = Window().windowHandle();
        QWidget* before = Window().focusWidget();
        for (auto* button : Window().findChildren<QPushButton*>()) {
            if (button->isVisible()) {
                QTest::mouseClick(native, Qt::LeftButton, {},
                                  button->mapTo(&Window(), button->rect().center()));
                QTest::mouseClick(button, Qt::LeftButton);
                QTest::keyClick(button, Qt::Key_Space);
            }
        }
        for (auto* field : Window().findChildren<QLineEdit*>()) {
            QTest::keyClicks(field, "typed");
        }
        QTest::keyClick(native, Qt::Key_Tab);
        QCOMPARE(Window().focusWidget(), before);
        QMimeData text;
        text.setText("dropped");
        QDropEvent drop(QPointF(150, 88), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(Child<QLineEdit>("m_pLayout4DirEdit"), &drop);
        QVERIFY2(!drop.isAccepted(), "a drop was taken");
    }

    bool WasPainted()
    {
        Window().installEventFilter(this);
        return m_windowPaints > 0;
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && qobject_cast<DRUI*>(watched) != nullptr) {
            ++m_windowPaints;
        } else if (event->type() == QEvent::Paint) {
            NotePainted(static_cast<QLabel*>(watched)->text());
        }
        return QObject::eventFilter(watched, event);
    }

    void NotePainted(const QString& text)
    {
        const QString percent = text.section('\n', 0, 0).section(' ', -1);
        if (!percent.isEmpty() && percent != m_painted.value(m_painted.size() - 1)) {
            m_painted << percent;
            WriteFile(BesideProgram("heard"), {});
        }
    }

    int m_windowPaints = 0;
    QStringList m_painted; // percentages in the dialog's text
};

QTEST_MAIN(JobAliveTest)
#include "job_alive_test.moc"
