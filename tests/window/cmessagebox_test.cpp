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

    void theMetaObjectHasTheSlotsOkAndNo()
    {
        const QMetaObject& meta = CMessageBox::staticMetaObject;
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
        QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("btnSlotOK()"));
        QCOMPARE(meta.method(meta.methodOffset() + 1).methodSignature(), QByteArray("btnSlotNO()"));
    }

    void theAnswerIsNoBeforeAnything() { QCOMPARE(m_box->GetMessageBoxRet(), 0); }

    void aMessageIsNoMarkup()
    {
        m_box->InitInfoDialog("All is well, <b>really</b>");
        QCOMPARE(Texts(), QStringList({"Info", "All is well, <b>really</b>"}));
        QCOMPARE(m_box->findChild<QLabel*>("m_pMessageLabel")->textFormat(), Qt::PlainText);
    }

    void aParentIsIgnored()
    {
        QDialog parent;
        const CMessageBox box(&parent, Qt::Tool);
        QCOMPARE(box.parent(), nullptr);
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

    void anEdgeSetsItApartFromWhatItLiesOver_data()
    {
        QTest::addColumn<bool>("question");
        QTest::newRow("information") << false;
        QTest::newRow("question") << true;
    }

    // The progress dialog below has the same light grey, and its strip the same dark one.
    void anEdgeSetsItApartFromWhatItLiesOver()
    {
        QFETCH(bool, question);
        if (question) {
            m_box->InitQuestionDialog("text");
        } else {
            m_box->InitInfoDialog("text");
        }
        m_box->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_box.get()));
        const QImage picture = m_box->grab().toImage();
        QCOMPARE(picture.size(), QSize(400, 150));
        const auto stands = [&](int x, int y, int inside) {
            const int edge = qGray(picture.pixel(x, y));
            return qAbs(edge - 28) > 60 && qAbs(edge - 239) > 60 && qAbs(edge - inside) > 60;
        };
        for (const int y : {5, 60, 130}) { // strip, body and bar
            for (const int x : {0, 399}) {
                const int inside = qGray(picture.pixel(x == 0 ? 2 : 397, y));
                QVERIFY2(stands(x, y, inside), qPrintable(QString("none at %1, %2").arg(x).arg(y)));
            }
        }
        for (const int y : {0, 149}) {
            const int inside = qGray(picture.pixel(200, y == 0 ? 2 : 147));
            QVERIFY2(stands(200, y, inside), qPrintable(QString("none at 200, %1").arg(y)));
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
        QMouseEvent press(QEvent::MouseButtonPress, QPoint(50, 60),
                          m_box->mapToGlobal(QPoint(50, 60)), Qt::LeftButton, Qt::LeftButton, {});
        press.ignore();
        QCoreApplication::sendEvent(m_box.get(), &press);
        QVERIFY2(press.isAccepted(), "the press is not accepted");
        QVERIFY2(MoveWith(Qt::LeftButton, QPoint(80, 100)), "the move is not accepted");
        QCOMPARE(m_box->pos(), start + QPoint(30, 40));
        const QPoint dragged = m_box->pos();
        MoveWith(Qt::RightButton, QPoint(80, 100));
        MoveWith(Qt::LeftButton | Qt::RightButton, QPoint(80, 100));
        QCOMPARE(m_box->pos(), dragged);
    }

private:
    // Whether the dialog accepted the move.
    bool MoveWith(Qt::MouseButtons buttons, const QPoint& place)
    {
        QMouseEvent move(QEvent::MouseMove, place, m_box->mapToGlobal(place), Qt::NoButton, buttons,
                         {});
        move.ignore();
        QCoreApplication::sendEvent(m_box.get(), &move);
        return move.isAccepted();
    }

    QPushButton* Button(const QString& text) { return ButtonReading(m_box.get(), text); }

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
