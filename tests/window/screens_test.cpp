#include "tests/window/fake_tool.h"
#include "ui/cmessagebox.h"
#include "ui/page_parts.h"
#include "ui/scanui.h"

#include <QPainter>
#include <QScreen>
#include <QStyle>

namespace {

// Two screens of density 2 and one of density 1 between them. Qt's version decides which of the two
// is primary; neither starts at 0, 0.
constexpr auto kScreens = R"({"screens": [
    {"name": "a, fine", "x": 300, "y": 200, "width": 1600, "height": 1000, "dpr": 2},
    {"name": "b, coarse", "x": 1900, "y": 0, "width": 1280, "height": 1024, "dpr": 1},
    {"name": "c, fine", "x": 3180, "y": 150, "width": 1440, "height": 900, "dpr": 2}
]})";

QScreen* Coarse()
{
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen->name() == "b, coarse") {
            return screen;
        }
    }
    return nullptr;
}

// The image at the highest resolution of the file.
QImage Finest(const QString& path, const QSize& size, Qt::AspectRatioMode mode)
{
    return QImage(path).scaled(size, mode, Qt::SmoothTransformation);
}

// The difference of two images of the same size: the mean of the largest differences of their
// pixels.
double Difference(const QImage& one, const QImage& other)
{
    if (one.size() != other.size() || one.isNull()) {
        return 255;
    }
    const QImage a = one.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage b = other.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum += std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                             std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
        }
    }
    return sum / (a.width() * a.height());
}

// The only label with an image and no text.
QLabel* PictureIn(const QWidget* window)
{
    for (auto* label : window->findChildren<QLabel*>()) {
        if (!label->pixmap(Qt::ReturnByValue).isNull()) {
            return label;
        }
    }
    return nullptr;
}

// Fails unless `label` shows this file, pixel for pixel of its screen.
void ExpectPicture(const QLabel* label, const QString& file, const QSize& dots, qreal density,
                   Qt::AspectRatioMode mode = Qt::KeepAspectRatio)
{
    QVERIFY2(label != nullptr, "no picture");
    const QPixmap shown = label->pixmap(Qt::ReturnByValue);
    QCOMPARE(shown.devicePixelRatio(), density);
    QCOMPARE(shown.size(), dots);
    const double difference = Difference(shown.toImage(), Finest(file, dots, mode));
    QVERIFY2(difference < 6, qPrintable(QString("%1: differs by %2").arg(file).arg(difference)));
}

} // namespace

// The window on screens with other positions and densities.
class ScreensTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::screens().size(), 3);
        QVERIFY(Coarse() != nullptr);
        QVERIFY(QGuiApplication::primaryScreen()->geometry().topLeft() != QPoint(0, 0));
        QCOMPARE(QGuiApplication::primaryScreen()->devicePixelRatio(), 2.0);
    }
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void theWindowIsCentredOnThePrimaryScreen()
    {
        const QRect desktop = QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(OpenWindow().pos(), desktop.topLeft() + QPoint((desktop.width() - 1000) / 2,
                                                                (desktop.height() - 600) / 2));
    }

    void maximisedItCoversThePrimaryScreenAndRestoredItIsCentredAgain()
    {
        DRUI& window = OpenWindow();
        const QPoint centred = window.pos();
        Call("btnMaxSlot");
        const QRect desktop = QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(window.pos(), desktop.topLeft());
        QCOMPARE(window.size(), desktop.size());
        Call("btnMaxSlot");
        QCOMPARE(window.pos(), centred);
    }

    void theMiddleOfADesktop_data()
    {
        QTest::addColumn<QRect>("desktop");
        QTest::addColumn<QPoint>("corner");
        QTest::newRow("at the origin") << QRect(0, 0, 1280, 800) << QPoint(140, 100);
        QTest::newRow("odd sizes") << QRect(0, 0, 1367, 769) << QPoint(183, 84);
        QTest::newRow("right of another") << QRect(1920, 0, 1280, 800) << QPoint(2060, 100);
        QTest::newRow("left of and above another")
            << QRect(-1280, -800, 1280, 800) << QPoint(-1140, -700);
        QTest::newRow("smaller than the window") << QRect(0, 0, 800, 480) << QPoint(-100, -60);
    }

    void theMiddleOfADesktop()
    {
        QFETCH(QRect, desktop);
        QTEST(CentredIn(desktop, QSize(1000, 600)), "corner");
    }

    void theLogoOfEveryPageHasTheScreensDensity_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("mode");
        QTest::newRow("home") << 1 << int{Qt::IgnoreAspectRatio};
        QTest::newRow("record") << 2 << int{Qt::KeepAspectRatio};
        QTest::newRow("cut") << 3 << int{Qt::KeepAspectRatio};
        QTest::newRow("merge") << 4 << int{Qt::KeepAspectRatio};
    }

    void theLogoOfEveryPageHasTheScreensDensity()
    {
        QFETCH(int, page);
        QFETCH(int, mode);
        OpenWindow();
        const auto* widget = Child<QWidget>(qPrintable(QString("m_pLayout%1Widget").arg(page)));
        ExpectPicture(PictureIn(widget), ":/image/logo@2x.png", QSize(60, 100), 2,
                      static_cast<Qt::AspectRatioMode>(mode));
    }

    void theProgressDialogsLogoHasTheScreensDensity()
    {
        SCANUI progress;
        ExpectPicture(PictureIn(&progress), ":/image/logo@2x.png", QSize(60, 100), 2);
    }

    void theMessagesPicturesHaveTheScreensDensity()
    {
        CMessageBox information;
        information.InitInfoDialog("text");
        ExpectPicture(PictureIn(&information), ":/image/information@2x.png", QSize(96, 96), 2);
        CMessageBox question;
        question.InitQuestionDialog("text");
        ExpectPicture(PictureIn(&question), ":/image/question@2x.png", QSize(96, 96), 2);
    }

    void onScreenTheMessagesPictureIsAsFineAsItsFile()
    {
        CMessageBox information;
        information.InitInfoDialog("text");
        information.show();
        QVERIFY(QTest::qWaitForWindowExposed(&information));
        const QLabel* label = PictureIn(&information);
        const QRect inLabel = QStyle::alignedRect(Qt::LeftToRight, label->alignment(),
                                                  QSize(48, 48), label->contentsRect());
        const QRect place(label->mapTo(&information, inLabel.topLeft()), inLabel.size());
        const QImage shown = information.grab(place).toImage();
        QCOMPARE(shown.size(), QSize(96, 96));
        QImage wanted(96, 96, QImage::Format_ARGB32_Premultiplied);
        wanted.fill(information.palette().color(QPalette::Window));
        QImage picture(":/image/information@2x.png");
        picture.setDevicePixelRatio(1); // pixel for pixel
        QPainter(&wanted).drawImage(0, 0, picture);
        const double difference = Difference(shown, wanted);
        QVERIFY2(difference < 3, qPrintable(QString("differs by %1").arg(difference)));
    }

    void aWindowMovedToAnotherScreenTakesItsDensity()
    {
        DRUI& window = OpenWindow();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QLabel* logo = PictureIn(Child<QWidget>("m_pLayout1Widget"));
        window.move(Coarse()->geometry().topLeft() + QPoint(50, 50));
        QTRY_COMPARE(window.screen(), Coarse());
        ExpectPicture(logo, ":/image/logo.png", QSize(30, 50), 1, Qt::IgnoreAspectRatio);
    }

    void aMessageOnAnotherScreenTakesItsDensity()
    {
        CMessageBox information;
        information.setGeometry({Coarse()->geometry().center(), QSize(400, 150)});
        information.InitInfoDialog("text");
        information.show();
        QTRY_COMPARE(information.screen(), Coarse());
        ExpectPicture(PictureIn(&information), ":/image/information.png", QSize(48, 48), 1);
    }

    void theHeaderButtonsIconsAreAsFineAsTheScreen()
    {
        OpenWindow();
        for (const auto& [name, file] : {std::pair("About", ":/image/about.png"),
                                         {"Support", ":/image/support.png"},
                                         {"Help", ":/image/help.png"}}) {
            bool found = false;
            for (const auto* button : Window().findChildren<QPushButton*>()) {
                if (button->accessibleName() == name) {
                    found = true;
                    const QSize size = QImage(file).size();
                    QCOMPARE(button->iconSize(), QSize(static_cast<int>(size.width() / 2.5),
                                                       static_cast<int>(size.height() / 2.5)));
                    QVERIFY2(button->icon().pixmap(size, 2.0).size() == size * 2,
                             qPrintable(QString("%1: the finer picture is not found").arg(name)));
                }
            }
            QVERIFY2(found, name);
        }
    }
};

// The screens have to be configured before the application object is created.
int main(int argc, char* argv[])
{
    const QTemporaryDir folder;
    const QString config = folder.filePath("screens.json");
    WriteFile(config, kScreens);
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + config.toUtf8());
    QApplication application(argc, argv);
    ScreensTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "screens_test.moc"
