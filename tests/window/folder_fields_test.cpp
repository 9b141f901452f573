#include "tests/window/job_tool.h"

#include <QHelpEvent>
#include <QToolTip>

// What makes a folder field lose focus, and the tooltips of icon buttons.
class FolderFieldsTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        MakeVideo("before.mp4");
        MakeVideo("typed.mp4", "00:00:05", Target());
    }
    void cleanup()
    {
        QToolTip::hideText();
        FinishVideos();
    }

    void returnReadsTheFolder_data()
    {
        QTest::addColumn<bool>("merge");
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("cut, Return") << false << Qt::Key_Return;
        QTest::newRow("cut, Enter") << false << Qt::Key_Enter;
        QTest::newRow("merge, Return") << true << Qt::Key_Return;
        QTest::newRow("merge, Enter") << true << Qt::Key_Enter;
    }

    void returnReadsTheFolder()
    {
        QFETCH(bool, merge);
        QFETCH(Qt::Key, key);
        Type(merge);
        QTest::keyClick(QApplication::focusWidget(), key);
        ExpectRead(merge);
    }

    void aPressBesideAllControlsReadsTheFolder_data()
    {
        QTest::addColumn<bool>("merge");
        QTest::addColumn<QPoint>("place");
        QTest::newRow("cut, header") << false << QPoint(500, 30);
        QTest::newRow("cut, right of the field's row") << false << QPoint(800, 90);
        QTest::newRow("cut, help text") << false << QPoint(600, 250);
        QTest::newRow("cut, between the buttons") << false << QPoint(200, 537);
        QTest::newRow("cut, footer") << false << QPoint(100, 580);
        QTest::newRow("merge, header") << true << QPoint(500, 30);
        QTest::newRow("merge, caption of the field") << true << QPoint(60, 88);
        QTest::newRow("merge, between the tables") << true << QPoint(460, 200);
        QTest::newRow("merge, bar") << true << QPoint(400, 539);
        QTest::newRow("merge, footer") << true << QPoint(100, 580);
    }

    void aPressBesideAllControlsReadsTheFolder()
    {
        QFETCH(bool, merge);
        QFETCH(QPoint, place);
        Type(merge);
        QWidget* pressed = Window().childAt(place);
        QTest::mouseClick(pressed, Qt::LeftButton, {}, pressed->mapFrom(&Window(), place));
        ExpectRead(merge);
    }

    void aPressBesideAllControlsReadsNothingWhileTheFieldIsNotFocused()
    {
        EnterCutPage();
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        Child<QWidget>("m_pCutSlider")->setFocus();
        Calls();
        QTest::mouseClick(Child<QWidget>("m_pCutHelp"), Qt::LeftButton);
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(QApplication::focusWidget(), Child<QWidget>("m_pCutSlider"));
    }

    void theIconButtonsHaveToolTips_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<QStringList>("tips");
        const QStringList header{"About", "Help", "Support"};
        const QStringList withFolder{"About", "Choose directory", "Help", "Support"};
        QTest::newRow("home") << QByteArray("btnSlotBack") << header;
        QTest::newRow("record") << QByteArray("btnSlot") << withFolder;
        QTest::newRow("cut") << QByteArray("btnMontageSlot") << withFolder;
        QTest::newRow("merge") << QByteArray("btnEditSlot") << withFolder;
    }

    void theIconButtonsHaveToolTips()
    {
        QFETCH(QByteArray, entry);
        OpenWindow();
        Call(entry.constData());
        QStringList tips;
        for (const auto* button : Window().findChildren<QPushButton*>()) {
            if (button->isVisible() && button->text().isEmpty()) {
                tips << button->toolTip();
            }
        }
        tips.sort();
        QTEST(tips, "tips");
    }

    void aToolTipCanBeRead_data()
    {
        QTest::addColumn<QString>("tip");
        QTest::newRow("header button") << "Support";
        QTest::newRow("folder button") << "Choose directory";
    }

    // It must not inherit its widget's style sheet: black on dark grey.
    void aToolTipCanBeRead()
    {
        QFETCH(QString, tip);
        EnterCutPage();
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        for (auto* button : Window().findChildren<QPushButton*>()) {
            if (button->isVisible() && button->toolTip() == tip) {
                const QPoint middle = button->rect().center();
                QHelpEvent event(QEvent::ToolTip, middle, button->mapToGlobal(middle));
                QCoreApplication::sendEvent(button, &event);
            }
        }
        QTRY_VERIFY(QToolTip::isVisible());
        QCOMPARE(QToolTip::text(), tip);
        for (auto* window : QApplication::topLevelWidgets()) {
            if (window->inherits("QTipLabel") && window->isVisible()) {
                const QImage picture = window->grab().toImage();
                QCOMPARE(QColor(picture.pixel(3, 3)), QColor(Qt::white));
                QVERIFY2(HasDark(picture), "no letters");
                return;
            }
        }
        QFAIL("no tool tip is shown");
    }

private:
    static const char* Field(bool merge)
    {
        return merge ? "m_pLayout4DirEdit" : "m_pLayout3DirEdit";
    }
    static const char* Table(bool merge)
    {
        return merge ? "m_pSourceVideoTable" : "m_pCutVideoTable";
    }

    // Types the other folder's name. The field keeps the focus.
    void Type(bool merge)
    {
        OpenWindow();
        Call(merge ? "btnEditSlot" : "btnMontageSlot");
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        auto* field = Child<QLineEdit>(Field(merge));
        QTest::mouseClick(field, Qt::LeftButton);
        field->selectAll();
        QTest::keyClicks(field, Target());
        QCOMPARE(QApplication::focusWidget(), field);
        QCOMPARE(Names(Table(merge)), QStringList{"before.mp4"});
    }

    void ExpectRead(bool merge)
    {
        QCOMPARE(Names(Table(merge)), QStringList{"typed.mp4"});
        QCOMPARE(QApplication::focusWidget(), Child<QWidget>(Table(merge)));
    }

    static bool HasDark(const QImage& picture)
    {
        for (int y = 3; y < picture.height() - 3; ++y) {
            for (int x = 3; x < picture.width() - 3; ++x) {
                if (qGray(picture.pixel(x, y)) < 80) {
                    return true;
                }
            }
        }
        return false;
    }
};

QTEST_MAIN(FolderFieldsTest)
#include "folder_fields_test.moc"
