#include "tests/window/named_controls.h"

// The window operated by keyboard only.
class KeyboardTest : public NamedControlsTest
{
    Q_OBJECT

private Q_SLOTS:
    void tabGoesThroughThePageAsOneReads_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QStringList>("names");
        const QStringList header{"Help", "Support", "About"};
        QTest::newRow("home") << ""
                              << header + QStringList{"The easiest", "Merge your", "Trim your"};
        QTest::newRow("record") << "btnSlot"
                                << header +
                                       QStringList{"None", "Choose directory", "Back", "Record"};
        QTest::newRow("cut") << "btnMontageSlot" << header + QStringList{"Video directory",
                                                                         "Choose directory",
                                                                         "Videos",
                                                                         "Position",
                                                                         "Back",
                                                                         "Cut"};
        QTest::newRow("merge") << "btnEditSlot"
                               << header + QStringList{"Video directory", "Choose directory",
                                                       "Videos", "Merge list", "Back"};
    }
    void tabGoesThroughThePageAsOneReads()
    {
        QFETCH(QString, slot);
        QFETCH(QStringList, names);
        Enter(slot);
        Control("Help")->setFocus();
        for (const QString& name : names) {
            const QString focused = Name(QApplication::focusWidget());
            QVERIFY2(focused.startsWith(name), qPrintable(name + " expected, focused: " + focused));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(Name(QApplication::focusWidget()), QString("Help")); // wraps around
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QVERIFY2(Name(QApplication::focusWidget()).startsWith(names.last()),
                 qPrintable("Backtab: " + Name(QApplication::focusWidget())));
    }

    void spaceAndReturnPressTheFocusedButton_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Space") << Qt::Key_Space;
        QTest::newRow("Return") << Qt::Key_Return;
        QTest::newRow("Enter") << Qt::Key_Enter;
    }
    void spaceAndReturnPressTheFocusedButton()
    {
        QFETCH(Qt::Key, key);
        Enter("");
        PressKey(Control("Trim your"), key);
        QCOMPARE(Page(), 2);
        PressKey(Control("Back"), key);
        QCOMPARE(Page(), 0);
        PressKey(Control("Merge your"), key);
        QCOMPARE(Page(), 3);
        PressKey(Child<QWidget>("m_pSourceVideoTable"), Qt::Key_Down);
        PressKey(Control("Add"), key);
        QCOMPARE(Child<QTableWidget>("m_pTargetVideoTable")->rowCount(), 1);
    }

    void escapeChangesNothing_data() { AddPageRows(); }
    void escapeChangesNothing()
    {
        QFETCH(QString, slot);
        Enter(slot);
        const int page = Page();
        Control("Help")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(Window().isVisible());
        QCOMPARE(Page(), page);
        QCOMPARE(Name(QApplication::focusWidget()), QString("Help"));
    }

    // With the mouse, only a click tells the page which video is selected.
    void aVideoChosenByKeyIsTheOneThatIsCut()
    {
        Enter("btnMontageSlot");
        auto* table = Child<QTableWidget>("m_pCutVideoTable");
        PressKey(table, Qt::Key_Space);
        QCOMPARE(Child<QSlider>("m_pCutSlider")->maximum(), 30);
        QVERIFY(Control("Start")->isEnabled());
        PressKey(table, Qt::Key_Down);
        QCOMPARE(table->currentRow(), 1);
        QCOMPARE(Child<QSlider>("m_pCutSlider")->maximum(), 40);
        PressKey(table, Qt::Key_Up);
        PressKey(table, Qt::Key_Return);
        QCOMPARE(Child<QSlider>("m_pCutSlider")->maximum(), 30);
    }

    void theFocusIsSeenAsLongAsKeysAreUsed()
    {
        Enter("btnMontageSlot");
        QTest::mouseClick(Control("Video directory"), Qt::LeftButton);
        auto* ring = Child<QWidget>("m_pFocusRing");
        QVERIFY2(!ring->isVisible(), "a ring where only the mouse was used");
        for (int presses = 0; presses < 9; ++presses) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            const QWidget* focused = QApplication::focusWidget();
            const QRect place(focused->mapTo(&Window(), QPoint()), focused->size());
            QVERIFY2(ring->isVisible(), qPrintable("no ring: " + Name(focused)));
            QVERIFY2(ring->geometry() == (place.adjusted(-4, -4, 4, 4) & Window().rect()),
                     qPrintable("elsewhere: " + Name(focused)));
            QVERIFY2(DiffersAround(Window(), place.adjusted(-4, -4, 4, 4), ring),
                     qPrintable("not to be seen: " + Name(focused)));
        }
        QTest::mouseClick(Control("Video directory"), Qt::LeftButton);
        QVERIFY2(!ring->isVisible(), "the ring stays though the mouse is used");
    }

    void theFocusIsSeenInAMessageToo()
    {
        CMessageBox box;
        box.InitQuestionDialog("Are you sure?");
        box.show();
        QVERIFY(QTest::qWaitForWindowActive(&box));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        auto* ring = box.findChild<QWidget*>("m_pFocusRing");
        QVERIFY2(ring->isVisible(), "no ring");
        QVERIFY2(DiffersAround(box, ring->geometry(), ring), "the ring is hidden by the dialog");
    }

    // The program moves the focus itself, as when a page is entered.
    void aFocusThatTheProgramMovesIsSeenOnlyAfterAKey()
    {
        Enter("btnMontageSlot");
        auto* ring = Child<QWidget>("m_pFocusRing");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        Child<QWidget>("m_pCutVideoTable")->setFocus();
        QVERIFY2(ring->isVisible(), "no ring after a key");
        QTest::mouseClick(Child<QTableWidget>("m_pCutVideoTable"), Qt::LeftButton);
        Control("Position")->setFocus();
        QVERIFY2(!ring->isVisible(), "a ring though the mouse was used last");
    }

private:
    // The control of the current page whose name starts like this.
    QWidget* Control(const QString& name)
    {
        for (auto* control : CurrentPage()->findChildren<QWidget*>()) {
            if (IsControl(control) && Name(control).startsWith(name)) {
                return control;
            }
        }
        qFatal("no control is named %s", qPrintable(name));
    }

    static void PressKey(QWidget* control, Qt::Key key)
    {
        control->setFocus();
        QVERIFY(control->hasFocus());
        QTest::keyClick(control, key);
    }

    // Whether the ring changes the pixels on the border of `place`.
    static bool DiffersAround(QWidget& window, const QRect& place, QWidget* ring)
    {
        const QImage with = window.grab(place).toImage();
        ring->setVisible(false);
        const QImage without = window.grab(place).toImage();
        ring->setVisible(true);
        int differing = 0;
        for (int x = 0; x < with.width(); ++x) {
            for (int y = 0; y < with.height(); ++y) {
                differing += with.pixel(x, y) != without.pixel(x, y) ? 1 : 0;
            }
        }
        return differing >= with.width(); // at least one line
    }
};

QTEST_MAIN(KeyboardTest)
#include "keyboard_test.moc"
