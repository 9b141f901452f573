#include "jobs/job_report.h"
#include "tests/support/child_processes.h"
#include "tests/window/job_in_program.h"

#include <QRandomGenerator>

// A user who presses everything at random moments while a cut or a merge runs. Afterwards there is
// a whole file or none, no stream, no dialog and no process, and the messages are those of a job.
class JobStressTest : public JobInProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        PrepareJobs();
        MakeVideo("a.mp4");
        MakeVideo("b.mp4");
        InstallTool(
            QByteArray(kVideoTool)
                .replace("if [[ $# -eq 2 ]]", kRecordingPart + QByteArray("if [[ $# -eq 2 ]]")));
    }
    void cleanupTestCase() { FinishJobs(); }

    void everySequenceEndsInAStateThatIsKnown_data()
    {
        bool isNumber = false;
        const quint32 wanted = qEnvironmentVariable("LUMENFOLD_SEED").toUInt(&isNumber);
        QTest::addColumn<quint32>("seed");
        for (int i = 0; i < (isNumber ? 1 : kSequences); ++i) {
            const quint32 seed = isNumber ? wanted : QRandomGenerator::global()->generate();
            QTest::addRow("LUMENFOLD_SEED=%u", seed) << seed;
        }
    }

    void everySequenceEndsInAStateThatIsKnown()
    {
        QFETCH(quint32, seed);
        m_random.seed(seed);
        const bool merge = Chance(50);
        SetUp(merge);
        if (QTest::currentTestFailed()) {
            return;
        }
        QTimer user;
        connect(&user, &QTimer::timeout, this, [&] {
            Act();
            user.start(static_cast<int>(m_random.bounded(15)));
        });
        user.start(static_cast<int>(m_random.bounded(30)));
        const int result = RunProgram([&] {
            Call(merge ? "btnSlotLayout4Merge" : "btnSlotLayout3Cut");
            user.stop();
            QCoreApplication::exit(kJobEnded);
        });
        user.stop();
        QVERIFY2(result == 0 || result == kJobEnded, "the job hangs");
        QVERIFY2(Dialog() == nullptr, "the dialog outlives the job");
        QVERIFY2(m_isClosed == m_closes, "the window was closed and the job went on");
        CheckFiles(merge);
        if (!m_isClosed) {
            CheckMessages(merge);
            EndRecording();
        } else {
            QVERIFY2(DRUI::m_bisFinished || !Boxes().texts.join(' ').contains("failed"),
                     qPrintable(Boxes().texts.join(' ')));
            CloseWindow();
            QCOMPARE(ChildrenOf(QCoreApplication::applicationPid()), QList<pid_t>());
        }
        for (const QString& file : Recordings().filter(QRegularExpression("^20"))) {
            QCOMPARE(ReadFile(SaveDirectory() + '/' + file), QByteArray("whole"));
            QFile::remove(SaveDirectory() + '/' + file);
        }
    }

private:
    static constexpr int kSequences = 200;
    static constexpr int kJobEnded = 1;
    static constexpr auto kRecordingPart =
        "if [[ $* == *avfoundation* ]]; then until [[ $key == q ]]; do printf frame=\n"
        "read -r -t 0.02 -N 1 key; done; printf whole >\"${!#}\"; exit; fi\n";

    bool Chance(int percent) { return m_random.bounded(100) < percent; }

    void SetUp(bool merge)
    {
        const int chunks = m_random.bounded(1, 10);
        SetJob("printf part >\"${!#}\"; for ((i = 0; i < " + QByteArray::number(chunks) +
               "; ++i)); do\nprintf frame=; read -r -t 0.001 -N 1 key; [[ $key == q ]] && exit\n"
               "done; printf made >\"${!#}\"\n");
        for (const QString& file : Results()) {
            QFile::remove(Target() + '/' + file);
        }
        if (!m_isOpen) {
            OpenWindow();
            Call("btnSlot"); // makes the tray icon
            Call("btnMontageSlot");
            ClickRow("m_pCutVideoTable", 0);
            SetMarks(1, 2);
            Call("btnEditSlot");
            Add(0);
            Add(1);
            m_isOpen = true;
        }
        SCANUI::m_nError = kJobGood;
        SCANUI::m_nOprType = merge ? kMergeOperation : kCutOperation;
        m_closes = m_isClosed = false;
        Boxes().texts.clear();
        LeaveQuestions();
    }

    // Looks at a question at several moments before it is answered.
    void LeaveQuestions()
    {
        Boxes().leave = [this](const QString&) {
            Boxes().button = Chance(50) ? "OK" : "NO";
            return Chance(60);
        };
    }

    void Act()
    {
        switch (m_random.bounded(12)) {
        case 0:
        case 1:
            PressIfThere("Cancel");
            break;
        case 2:
            PressIfThere(QString());
            break;
        case 3:
            Call("btnSlotMenuStop");
            break;
        case 4:
            QMetaObject::invokeMethod(
                &Window(), "trayiconActivated",
                Q_ARG(QSystemTrayIcon::ActivationReason, QSystemTrayIcon::Trigger));
            break;
        case 5:
            if (Dialog() != nullptr) { // the job has begun
                Call(Chance(50) ? "btnSlotLayout4Merge" : "btnSlotLayout3Cut");
            }
            break;
        case 6:
            if (Dialog() != nullptr) {
                Call(Chance(50) ? "btnEditSlot" : "btnSlotBack");
            }
            break;
        case 7:
            End(Chance(20));
            break;
        default:
            break;
        }
    }

    // Seldom, as it ends the sequence.
    void End(bool really)
    {
        if (!really) {
            return;
        }
        m_closes = m_isClosed = true;
        m_isOpen = false;
        if (Chance(50)) {
            Call("btnSlotMenuQuit");
        } else {
            Window().close();
        }
    }

    // A click that the open question keeps from the dialog does nothing.
    void PressIfThere(const QString& text)
    {
        if (Dialog() != nullptr && Dialog()->isVisible() &&
            QApplication::activeModalWidget() == nullptr) {
            PressInDialog(text);
        }
    }

    void CheckFiles(bool merge)
    {
        const QStringList files = Results();
        QVERIFY2(files.size() <= 1, qPrintable(files.join(' ')));
        QVERIFY2(files.filter(".ts").isEmpty(), qPrintable(files.join(' ')));
        if (!files.isEmpty()) {
            QVERIFY2(files.first().startsWith(merge ? "Merge_" : "Cut_"),
                     qPrintable(files.first()));
            QCOMPARE(ReadFile(Target() + '/' + files.first()), QByteArray("made"));
        }
        if (!m_isClosed) {
            QVERIFY2(DRUI::m_bisFinished || files.size() == 1, "nobody cancelled, but no file");
        }
    }

    // Questions, then success, then failure if a report said so.
    void CheckMessages(bool merge)
    {
        QStringList told = Boxes().texts;
        told.removeAll(merge ? kMergeQuestion : kCutQuestion);
        told = told.filter(QRegularExpression("^(?!The recording )")); // could not be started
        QVERIFY2(!told.isEmpty(), "no outcome was told");
        const bool failed = SCANUI::m_nError != kJobGood;
        QCOMPARE(told.last().contains(" failed, not an valid format"), failed);
        if (failed) {
            QVERIFY2(DRUI::m_bisFinished, "failed, but nobody cancelled");
            told.removeLast();
        }
        QVERIFY2(!told.isEmpty(), "success is not told first");
        for (const QString& text : told) {
            QVERIFY2(text.contains(" success, file path is "), qPrintable(text));
        }
    }

    void EndRecording()
    {
        if (DRUI::m_bIsStart) {
            Call("btnSlotMenuStop");
        }
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        Boxes().leave = nullptr;
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    }

    QRandomGenerator m_random;
    bool m_isOpen = false;
    bool m_closes = false;
    bool m_isClosed = false;
};

QTEST_MAIN(JobStressTest)
#include "job_stress_test.moc"
