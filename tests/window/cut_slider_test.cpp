#include "tests/window/selected_video.h"

#include <QStyle>
#include <QStyleOptionSlider>

// The slider of the cut page, moved by mouse and keyboard.
class CutSliderTest : public SelectedVideoTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void draggingTheSliderMovesThePosition()
    {
        MakeVideo("a.mp4", "00:01:40");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        QTest::mousePress(slider, Qt::LeftButton, {}, slider->rect().center());
        QCOMPARE(Position(), QString("00:00:50/00:01:40"));
        QTest::mouseMove(slider, slider->rect().topRight());
        QTRY_COMPARE(Position(), QString("00:01:40/00:01:40"));
        QTest::mouseRelease(slider, Qt::LeftButton, {}, slider->rect().topRight());
        QCOMPARE(slider->value(), 100);
    }

    // From the handle to where the mouse takes it.
    void draggingTheHandleMovesThePosition()
    {
        MakeVideo("a.mp4", "00:01:40");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        const QPoint handle(slider->style()->pixelMetric(QStyle::PM_SliderLength) / 4,
                            slider->height() / 2);
        QTest::mousePress(slider, Qt::LeftButton, {}, handle);
        QVERIFY2(slider->isSliderDown(), "the press did not take the handle");
        QCOMPARE(Position(), QString("00:00:00/00:01:40"));
        QTest::mouseMove(slider, handle + QPoint(slider->width() / 2, 0));
        const int half = slider->value();
        QVERIFY2(half > 45 && half < 55, qPrintable(QString::number(half)));
        QCOMPARE(Position(), QString("00:00:%1/00:01:40").arg(half));
        QTest::mouseRelease(slider, Qt::LeftButton, {}, handle + QPoint(slider->width() / 2, 0));
        QVERIFY(!slider->isSliderDown());
        Call("btnSetHead");
        QCOMPARE(Marks(), QString("00:00:%1 00:00").arg(half));
    }

    void aPressOnTheHandleMovesNothingUntilTheMouseDoes()
    {
        MakeVideo("a.mp4", "00:01:40");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(200, slider->height() / 2));
        const QString position = Position();
        QVERIFY2(position != "00:00:00/00:01:40", "a press on the groove moves nothing");
        const int handle = HandleCentre(*slider);
        const QSignalSpy moves(slider, &QSlider::sliderMoved);
        for (const int side : {-4, 0, 4}) { // the handle does not jump to the pointer
            const QPoint grip(handle + side, slider->height() / 2);
            QTest::mousePress(slider, Qt::LeftButton, {}, grip);
            QCOMPARE(Position(), position);
            QTest::mouseRelease(slider, Qt::LeftButton, {}, grip);
            QCOMPARE(Position(), position);
        }
        QCOMPARE(moves.size(), 0);

        const QPoint grip(handle + 4, slider->height() / 2);
        QTest::mousePress(slider, Qt::LeftButton, {}, grip);
        QTest::mouseMove(slider, grip + QPoint(100, 0));
        QTRY_VERIFY(Position() != position);
        QVERIFY2(qAbs(HandleCentre(*slider) - (handle + 100)) <= 4,
                 qPrintable(QString("from %1 to %2").arg(handle).arg(HandleCentre(*slider))));
        QTest::mouseRelease(slider, Qt::LeftButton, {}, grip + QPoint(100, 0));
    }

    void onlyTheLeftButtonMovesThePosition()
    {
        MakeVideo("a.mp4", "00:01:40");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        for (const auto button : {Qt::RightButton, Qt::MiddleButton}) {
            QTest::mousePress(slider, button, {}, slider->rect().center());
            QCOMPARE(Position(), QString("00:00:00/00:01:40"));
            QVERIFY(!slider->isSliderDown());
            QTest::mouseRelease(slider, button, {}, slider->rect().center());
        }
    }

    void theKeyboardMovesThePositionToo()
    {
        MakeVideo("a.mp4", "00:01:40");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(Position(), QString("00:00:01/00:01:40"));
        QTest::keyClick(slider, Qt::Key_PageUp);
        QCOMPARE(Position(), QString("00:00:11/00:01:40"));
        Call("btnSetHead");
        QCOMPARE(Marks(), QString("00:00:11 00:00"));
    }

    void settingTheSlidersValueIsNoMove()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Child<QSlider>("m_pCutSlider")->setValue(12);
        QCOMPARE(Position(), QString("00:00:00/00:00:30"));
    }

private:
    static int HandleCentre(const QSlider& slider)
    {
        QStyleOptionSlider option;
        option.initFrom(&slider);
        option.orientation = Qt::Horizontal;
        option.minimum = slider.minimum();
        option.maximum = slider.maximum();
        option.sliderPosition = slider.sliderPosition();
        option.sliderValue = slider.value();
        return slider.style()
            ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
            .center()
            .x();
    }
};

QTEST_MAIN(CutSliderTest)
#include "cut_slider_test.moc"
