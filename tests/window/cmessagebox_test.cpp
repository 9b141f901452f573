#include "tests/window/fake_tool.h"
#include "ui/cmessagebox.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>
#include <QTimer>

class CMessageBoxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<CMessageBox>(); }
    void cleanup() { m_box.reset(); }

    void theDialogIsFramelessAndOfFixedSize()
    {
        QCOMPARE(m_box->size(), QSize(400, 150));
        QCOMPARE(m_box->windowTitle(), QString("Tarvessa Data Tool"));
        QCOMPARE(m_box->windowFlags() & (Qt::FramelessWindowHint | Qt::WindowType_Mask),
                 Qt::FramelessWindowHint | Qt::Dialog);
        QCOMPARE(m_box->GetMessageBoxRet(), 0);
        QCOMPARE(m_box->objectName(), QString("Dialog"));
        QVERIFY(!m_box->windowIcon().isNull());
    }

    void aParentIsIgnored()
    {
        QDialog parent;
        const CMessageBox box(&parent, Qt::Tool);
        QCOMPARE(box.parent(), nullptr);
    }

    void theInformationHasOneButton()
    {
        m_box->InitInfoDialog("All is well, <b>really</b>");
        m_box->show();
        QCOMPARE(Texts(), QStringList({"Info", "All is well, <b>really</b>"}));
        QCOMPARE(Button("OK")->geometry(), QRect(133, 5, 80, 25));
        QCOMPARE(Button("NO"), nullptr);
        QVERIFY(m_box->findChild<QLabel*>("m_pMessageLabel")->wordWrap());
    }

    void theQuestionHasTwo()
    {
        m_box->InitQuestionDialog("Sure?");
        m_box->show();
        QCOMPARE(Texts(), QStringList({"  Question", "Sure?"}));
        QCOMPARE(Button("NO")->geometry(), QRect(100, 5, 80, 25));
        QCOMPARE(Button("OK")->geometry(), QRect(200, 5, 80, 25));
        QVERIFY(!m_box->findChild<QLabel*>("m_pMessageLabel")->wordWrap());
    }

    void aWiderDialogHasItsButtonsFurtherRight()
    {
        m_box->setFixedSize(600, 150);
        m_box->InitInfoDialog("x");
        QCOMPARE(Button("OK")->x(), 200);
        m_box->InitQuestionDialog("x");
        QCOMPARE(Button("NO")->x(), 150);
        QCOMPARE(Button("OK")->x(), 250);
    }

    void theDialogCanAskAgain()
    {
        m_box->InitQuestionDialog("first");
        m_box->InitQuestionDialog("second");
        m_box->show();
        QCOMPARE(Texts(), QStringList({"  Question", "second"}));
    }

    void okAndNoGiveTheAnswer_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("answer");
        QTest::newRow("OK") << "OK" << 1;
        QTest::newRow("NO") << "NO" << 0;
    }

    void okAndNoGiveTheAnswer()
    {
        QFETCH(QString, button);
        m_box->InitQuestionDialog("Sure?");
        QTimer::singleShot(0, m_box.get(),
                           [&] { QTest::mouseClick(Button(button), Qt::LeftButton); });
        m_box->exec();
        QTEST(m_box->GetMessageBoxRet(), "answer");
    }

    void aRightClickDismissesWithTheAnswerNo()
    {
        m_box->InitQuestionDialog("Sure?");
        QTimer::singleShot(0, m_box.get(),
                           [&] { QTest::mouseClick(m_box.get(), Qt::RightButton); });
        m_box->exec();
        QCOMPARE(m_box->GetMessageBoxRet(), 0);
        QVERIFY(!m_box->isVisible());
    }

    void aRightClickAfterOkKeepsTheAnswer()
    {
        m_box->InitQuestionDialog("Sure?");
        m_box->show();
        QTest::mouseClick(Button("OK"), Qt::LeftButton);
        QVERIFY(!m_box->isVisible());
        QTest::mouseClick(m_box.get(), Qt::RightButton); // hidden already
        QCOMPARE(m_box->GetMessageBoxRet(), 1);
        m_box->show();
        QTest::mouseClick(m_box.get(), Qt::RightButton);
        QVERIFY(!m_box->isVisible());
        QCOMPARE(m_box->GetMessageBoxRet(), 1);
    }

    void stripBodyAndBarLookAsTheyShould_data()
    {
        QTest::addColumn<bool>("question");
        QTest::addColumn<QRect>("title");
        QTest::addColumn<QString>("picture");
        QTest::newRow("information") << false << QRect(10, 5, 400, 40) << ":/image/information.png";
        QTest::newRow("question") << true << QRect(0, 5, 400, 40) << ":/image/question.png";
    }

    void stripBodyAndBarLookAsTheyShould()
    {
        QFETCH(bool, question);
        QFETCH(QString, picture);
        if (question) {
            m_box->InitQuestionDialog("text");
        } else {
            m_box->InitInfoDialog("text");
        }
        m_box->show();
        const QLabel* title = Label(question ? "  Question" : "Info");
        QVERIFY(title != nullptr);
        QTEST(title->geometry(), "title");
        QCOMPARE(title->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignLeft);
        QCOMPARE(title->palette().color(QPalette::WindowText), QColor(Qt::white));
        const auto* strip = qobject_cast<QLabel*>(title->parentWidget());
        QVERIFY(strip != nullptr);
        QCOMPARE(strip->styleSheet(), QString("background-color: rgb(28, 28, 28);"));
        QCOMPARE(strip->minimumSize(), QSize(400, 30));
        QCOMPARE(strip->mapTo(m_box.get(), QPoint()), QPoint(0, 0));

        const auto* message = m_box->findChild<QLabel*>("m_pMessageLabel");
        QCOMPARE(message->minimumSize(), QSize(340, 80));
        QCOMPARE(message->palette().color(QPalette::WindowText), QColor(Qt::black));
        const QLabel* shown = Picture();
        QVERIFY2(shown != nullptr, "no picture");
        QVERIFY(!QPixmap(picture).isNull());
        QCOMPARE(shown->pixmap(Qt::ReturnByValue).toImage(), QPixmap(picture).toImage());
        QCOMPARE(shown->alignment(), Qt::AlignCenter);

        for (QPushButton* button : {Button("OK"), Button(question ? "NO" : "OK")}) {
            const auto* bar = qobject_cast<QLabel*>(button->parentWidget());
            QVERIFY(bar != nullptr);
            QCOMPARE(bar->styleSheet(), QString("background-color: rgb(220, 220, 220);"));
            QCOMPARE(bar->minimumSize(), QSize(400, 40));
            QCOMPARE(button->styleSheet(), GreyButtonStyle("\t\t\t\t\t\t\t\t   "));
            QCOMPARE(button->cursor().shape(), Qt::PointingHandCursor);
            QVERIFY(button->isFlat());
        }
        for (const QWidget* text : m_box->findChildren<QWidget*>()) {
            if (text == title || text == message || text == Button("OK")) {
                QCOMPARE(text->font().family(), QString("Calibri"));
                QCOMPARE(text->font().pointSize(), 12);
                QVERIFY(!text->font().bold());
            }
        }
    }

    void theInformationsCloseButtonDoesNothing()
    {
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression("No such slot CMessageBox::btnSlotClose"));
        m_box->InitInfoDialog("x");
        m_box->show();
        auto* close = m_box->findChild<QPushButton*>();
        QCOMPARE(close->geometry(), QRect(5, 0, 30, 30));
        QTest::mouseClick(close, Qt::LeftButton);
        QVERIFY(m_box->isVisible());
    }

    void enterIsOkOfTheInformation()
    {
        m_box->InitInfoDialog("text");
        QTimer::singleShot(0, m_box.get(), [&] { QTest::keyClick(m_box.get(), Qt::Key_Return); });
        m_box->exec();
        QCOMPARE(m_box->GetMessageBoxRet(), 1);
    }

    void closingByTheProgramAnswersNo()
    {
        m_box->InitQuestionDialog("Sure?");
        QTimer::singleShot(0, m_box.get(), [&] {
            QTest::mouseClick(Button("OK"), Qt::LeftButton);
            m_box->Close();
        });
        m_box->exec();
        QCOMPARE(m_box->GetMessageBoxRet(), 0);
    }

    void theLeftButtonDragsAndTheRightDoesNot()
    {
        m_box->InitQuestionDialog("Sure?");
        m_box->setGeometry(100, 100, 400, 150);
        m_box->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_box.get()));
        const QPoint start = m_box->pos();
        QTest::mousePress(m_box.get(), Qt::LeftButton, {}, QPoint(50, 60));
        MoveWith(Qt::LeftButton, QPoint(80, 100));
        QCOMPARE(m_box->pos(), start + QPoint(30, 40));
        const QPoint dragged = m_box->pos();
        MoveWith(Qt::RightButton, QPoint(80, 100));
        MoveWith(Qt::LeftButton | Qt::RightButton, QPoint(80, 100));
        QCOMPARE(m_box->pos(), dragged);
    }

private:
    void MoveWith(Qt::MouseButtons buttons, const QPoint& place)
    {
        QMouseEvent move(QEvent::MouseMove, place, m_box->mapToGlobal(place), Qt::NoButton, buttons,
                         {});
        QCoreApplication::sendEvent(m_box.get(), &move);
    }

    QPushButton* Button(const QString& text)
    {
        for (auto* button : m_box->findChildren<QPushButton*>()) {
            if (button->text() == text) {
                return button;
            }
        }
        return nullptr;
    }

    QLabel* Label(const QString& text)
    {
        for (auto* label : m_box->findChildren<QLabel*>()) {
            if (label->text() == text) {
                return label;
            }
        }
        return nullptr;
    }

    // The only label without words that shows one.
    QLabel* Picture()
    {
        for (auto* label : m_box->findChildren<QLabel*>()) {
            if (!label->pixmap(Qt::ReturnByValue).isNull()) {
                return label;
            }
        }
        return nullptr;
    }

    QStringList Texts()
    {
        QStringList texts;
        for (auto* label : m_box->findChildren<QLabel*>()) {
            if (!label->text().isEmpty()) {
                texts << label->text();
            }
        }
        return texts;
    }

    std::unique_ptr<CMessageBox> m_box;
};

QTEST_MAIN(CMessageBoxTest)
#include "cmessagebox_test.moc"
