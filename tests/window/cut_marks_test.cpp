#include "tests/window/selected_video.h"

#include <QProcess>

// The cut page after a video is selected: its length, the marks and the preview.
class CutMarksTest : public SelectedVideoTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void theEnableChainOfTheButtons()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        QCOMPARE(EnabledButtons(), QString("Cut")); // only before a video is selected
        ClickRow(kTable, 0);
        QCOMPARE(EnabledButtons(), QString("Play Start"));
        Call("btnSetHead");
        QCOMPARE(EnabledButtons(), QString("Play Start End"));
        Call("btnSetTail");
        QCOMPARE(EnabledButtons(), QString("Play Start End Cut"));
        ClickRow(kTable, 0);
        QCOMPARE(EnabledButtons(), QString("Play Start"));
    }

    void withoutASelectionPlayAndCutGoOff()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Call("btnSetHead");
        Call("btnSetTail");
        Child<QTableWidget>(kTable)->clearSelection();
        QMetaObject::invokeMethod(&Window(), "CutTableItemClick",
                                  Q_ARG(QTableWidgetItem*, nullptr));
        QCOMPARE(EnabledButtons(), QString("Start End"));
    }

    void theSelectedVideoIsLogged()
    {
        MakeVideo("a b.mp4");
        EnterCutPage();
        QTest::ignoreMessage(QtDebugMsg, qPrintable('"' + SaveDirectory() + "/a b.mp4\""));
        ClickRow(kTable, 0);
    }

    void selectingAVideoShowsItsLengthAndResetsTheMarks()
    {
        MakeVideo("a.mp4", "01:02:03");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        QCOMPARE(slider->minimum(), 0);
        QCOMPARE(slider->maximum(), 3723);
        QCOMPARE(slider->value(), 0);
        QCOMPARE(Position(), QString("00:00:00/01:02:03"));
        QCOMPARE(Marks(), QString("00:00 00:00"));
        Move(61);
        Call("btnSetHead");
        Move(3600);
        Call("btnSetTail");
        QCOMPARE(Position(), QString("01:00:00/01:02:03"));
        QCOMPARE(Marks(), QString("00:01:01 01:00:00"));
        ClickRow(kTable, 0);
        QCOMPARE(Marks(), QString("00:00 00:00"));
        QCOMPARE(slider->value(), 0);
    }

    // The slider returns to 0, but the position that the label and Start use does not.
    void startTakesThePositionOfThePreviousVideo()
    {
        MakeVideo("a.mp4", "00:00:30");
        MakeVideo("b.mp4", "00:00:10");
        EnterCutPage();
        ClickRow(kTable, 0);
        Call("btnSetHead");
        QCOMPARE(Marks(), QString("00:00:00 00:00")); // 0 if never moved
        Move(25);
        ClickRow(kTable, 1);
        QCOMPARE(Position(), QString("00:00:25/00:00:10"));
        Call("btnSetHead");
        QCOMPARE(Marks(), QString("00:00:25 00:00"));
    }

    void aLengthThatCannotBeReadCountsWhatIsThere_data()
    {
        QTest::addColumn<QByteArray>("duration");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("position");
        QTest::newRow("N/A") << QByteArray("N/A, start") << 0 << "00:00:00/N/A, sta";
        QTest::newRow("100 hours") << QByteArray("100:00:05") << 360000 << "00:00:00/100:00:0";
        QTest::newRow("half a second") << QByteArray("00:00:00") << 0 << "00:00:00/00:00:00";
    }

    void aLengthThatCannotBeReadCountsWhatIsThere()
    {
        QFETCH(QByteArray, duration);
        MakeVideo("a.mp4", duration);
        EnterCutPage();
        ClickRow(kTable, 0);
        QTEST(Child<QSlider>("m_pCutSlider")->maximum(), "seconds");
        QTEST(Position(), "position");
    }

    void withoutAToolALengthIsZero()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        QFile::remove(BesideProgram("tool"));
        ClickRow(kTable, 0);
        QCOMPARE(Child<QSlider>("m_pCutSlider")->maximum(), 0);
        QCOMPARE(Position(), QString("00:00:00/"));
    }

    void playAndADoubleClickDoNothing()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Calls();
        Press("Play");
        QMetaObject::invokeMethod(&Window(), "CutTableItemDoubleClick",
                                  Q_ARG(QTableWidgetItem*, nullptr));
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(EnabledButtons(), QString("Play Start"));
    }

    void aMoveSeeksInThePlayer()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        const QString keys = Target() + "/keys";
        auto* player = Child<QProcess>("m_pPlayerProcess");
        player->start("/bin/sh", {"-c", "cat >\"$0\"", keys});
        QVERIFY(player->waitForStarted());
        Move(17);
        QTRY_COMPARE(ReadFile(keys), QByteArray("-ss 17 \r\np\r\n"));
    }

    // As long as the button reads "Play", a move starts the playback. Nothing changes its text.
    void aMoveTogglesThePlayerOnlyWhileTheButtonReadsPlay()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* player = Child<QProcess>("m_pPlayerProcess");
        player->start("/bin/cat", QStringList());
        QVERIFY(player->waitForStarted());
        Move(17);
        QCOMPARE(player->bytesToWrite(), 12);
        Child<QPushButton>("m_pBtnPlay")->setText("Pause");
        Move(18);
        QCOMPARE(player->bytesToWrite(), 12 + 9);
    }

    void thePlayersDurationSetsTheRange()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Move(7);
        auto* player = Child<QProcess>("m_pPlayerProcess");
        player->start("/bin/echo", {"x Duration: 00:02:03.99, start"});
        QTRY_COMPARE(Child<QSlider>("m_pCutSlider")->maximum(), 123);
        QCOMPARE(Position(), QString("00:00:07/00:02:03"));
    }

    void backEndsThePreviewAndRewindsTheSlider()
    {
        const QProcess* player = PreviewAt(12);
        QCOMPARE(player->state(), QProcess::Running);
        Press("Back");
        QCOMPARE(player->bytesToWrite(), 3); // the quit command, whether or not it is read
        QCOMPARE(Child<QSlider>("m_pCutSlider")->value(), 0);
        QTRY_COMPARE(player->state(), QProcess::NotRunning);
        QCOMPARE(Page(), 0);
    }

    void backFromAnotherPageLeavesPreviewAndSliderAlone()
    {
        const QProcess* player = PreviewAt(12);
        Call("btnEditSlot");
        Press("Back");
        QCOMPARE(Page(), 0);
        QCOMPARE(Child<QSlider>("m_pCutSlider")->value(), 12);
        QCOMPARE(player->bytesToWrite(), 0);
        QCOMPARE(player->state(), QProcess::Running);
    }

private:
    void Move(int seconds)
    {
        QVERIFY(QMetaObject::invokeMethod(&Window(), "current", Q_ARG(int, seconds)));
    }

    // Selects a video, moves the slider, and runs a player.
    QProcess* PreviewAt(int seconds)
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Move(seconds);
        auto* player = Child<QProcess>("m_pPlayerProcess");
        player->start("/bin/cat", QStringList());
        player->waitForStarted();
        return player;
    }

    QString EnabledButtons()
    {
        QStringList enabled;
        for (const char* text : {"Play", "Start", "End", "Cut"}) {
            if (Enabled(text)) {
                enabled << text;
            }
        }
        return enabled.join(' ');
    }
};

QTEST_MAIN(CutMarksTest)
#include "cut_marks_test.moc"
