#include "tests/window/named_controls.h"

#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QSystemTrayIcon>

// The window as a screen reader sees it.
class AccessibilityTest : public NamedControlsTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyControlHasAName_data() { AddPageRows(); }
    void everyControlHasAName()
    {
        QFETCH(QString, slot);
        Enter(slot);
        int controls = 0;
        for (auto* control : CurrentPage()->findChildren<QWidget*>()) {
            if (control->isVisible() && IsControl(control)) {
                ++controls;
                QVERIFY2(!Name(control).isEmpty(),
                         qPrintable(QString("no name: %1 at %2, %3")
                                        .arg(control->metaObject()->className())
                                        .arg(control->x())
                                        .arg(control->y())));
            }
        }
        QVERIFY2(controls > 4, "hardly a control was found");
    }

    // Its accessible name is the current choice; the caption says what is being chosen.
    void theChoiceOfSoundIsNamedByItsCaption()
    {
        Enter("btnSlot");
        QAccessibleInterface* told =
            QAccessible::queryAccessibleInterface(Child<QComboBox>("m_pAudioComBox"));
        const auto labels = told->relations(QAccessible::Label);
        QCOMPARE(labels.size(), 1);
        QCOMPARE(labels.first().first->text(QAccessible::Name), QString("Audio: "));
    }

    void theProgressDialogIsNamed()
    {
        SCANUI dialog;
        for (const char* name : {"Progress", "Close", "Cancel"}) {
            bool found = false;
            for (const auto* child : dialog.findChildren<QWidget*>()) {
                found = found || Name(child) == name;
            }
            QVERIFY2(found, name);
        }
    }

    void aMessageTellsItselfAndItsButtons()
    {
        CMessageBox box;
        box.InitQuestionDialog("Are you sure?");
        box.show();
        QCOMPARE(Name(&box), QString("Are you sure?"));
        QStringList buttons;
        for (const auto* button : box.findChildren<QPushButton*>()) {
            buttons << Name(button);
        }
        QCOMPARE(buttons, QStringList({"NO", "OK"}));
        CMessageBox information;
        information.InitInfoDialog("Done");
        for (const auto* button : information.findChildren<QPushButton*>()) {
            QVERIFY2(!Name(button).isEmpty(), "a button without a name");
        }
    }

    void theTrayIconItsMenuAndItsStandInAreNamed()
    {
        Enter("btnSlot");
        auto* icon = Child<QSystemTrayIcon>("m_pTrayIcon");
        QCOMPARE(icon->toolTip(), QString("Lumenfold Screen Recorder"));
        for (const QAction* entry : icon->contextMenu()->actions()) {
            QVERIFY(!entry->text().isEmpty());
        }
        bool standIn = false;
        for (const QWidget* window : QApplication::topLevelWidgets()) {
            standIn = standIn ||
                      (window->objectName() == "m_pTrayStandIn" && Name(window) == "Recording");
        }
        QVERIFY2(standIn, "the stand-in for the icon is not named");
    }
};

QTEST_MAIN(AccessibilityTest)
#include "accessibility_test.moc"
