#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QResource>
#include <QtTest>

#include <algorithm>
#include <array>
#include <cstdlib>

// Made by rcc; no header declares them.
int qInitResources_drui();
int qCleanupResources_drui();

namespace {

// Every name that the collection holds; the big pictures for dense screens lie beside them.
constexpr std::array imageNames{
    "about.png",  "add.png",   "avi.png",      "close.png",    "cut.png",  "cut_main.png",
    "delete.png", "down.png",  "edit.png",     "folder.png",   "help.png", "information.png",
    "logo.ico",   "logo.png",  "max.png",      "minimize.png", "mp4.png",  "normal.png",
    "pause.png",  "play.png",  "question.png", "quit.png",     "rec.png",  "rec1.png",
    "rec2.png",   "right.png", "stop.png",     "support.png",  "up.png"};

QString ImagePath(const QString& name)
{
    return QStringLiteral(":/image/") + name;
}

QString BigName(const QString& name)
{
    return QString(name).replace(QStringLiteral(".png"), QStringLiteral("@2x.png"));
}

// The tray picture as a panel of the given colour shows it.
QImage OnPanel(const QString& name, const QColor& panel)
{
    constexpr int trayPixels = 22;
    QImage shown(trayPixels, trayPixels, QImage::Format_RGB32);
    shown.fill(panel);
    QPainter painter(&shown);
    painter.drawImage(0, 0,
                      QImage(ImagePath(name))
                          .scaled(shown.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    return shown;
}

// Greatest difference of the three colours, 0 to 255.
int Distance(QRgb one, QRgb other)
{
    return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                     std::abs(qBlue(one) - qBlue(other))});
}

// Share in percent of the pixels that differ so much that one sees it.
int PercentDifferent(const QImage& one, const QImage& other)
{
    constexpr int seen = 96;
    int different = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            different += Distance(one.pixel(x, y), other.pixel(x, y)) > seen ? 1 : 0;
        }
    }
    return different * 100 / (one.width() * one.height());
}

void AddImageRows()
{
    QTest::addColumn<QString>("name");
    for (const char* name : imageNames) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

} // namespace

class ResourcesTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { QCOMPARE(qInitResources_drui(), 1); }

    void everyImageLoads_data() { AddImageRows(); }
    void everyImageLoads()
    {
        QFETCH(QString, name);
        QImageReader reader(ImagePath(name));
        const QImage image = reader.read();
        QVERIFY2(!image.isNull(), qPrintable(name + ": " + reader.errorString()));
        const QImage shown = image.convertToFormat(QImage::Format_ARGB32);
        bool drawn = false;
        for (int y = 0; y < shown.height() && !drawn; ++y) {
            for (int x = 0; x < shown.width() && !drawn; ++x) {
                drawn = qAlpha(shown.pixel(x, y)) == 255;
            }
        }
        QVERIFY2(drawn, qPrintable(name + " has not one opaque pixel"));
    }

    void denseScreensGetEveryPictureTwiceAsBig_data() { AddImageRows(); }
    void denseScreensGetEveryPictureTwiceAsBig()
    {
        QFETCH(QString, name);
        if (name.endsWith(QStringLiteral(".ico"))) {
            return; // holds its sizes itself
        }
        const QImage small(ImagePath(name));
        const QImage big(ImagePath(BigName(name)));
        QVERIFY2(!big.isNull(), qPrintable("missing: " + BigName(name)));
        QCOMPARE(big.size(), small.size() * 2);
    }

    void nothingElseIsInTheCollection()
    {
        QStringList expected;
        for (const char* name : imageNames) {
            expected << QString::fromLatin1(name);
            if (!expected.last().endsWith(QStringLiteral(".ico"))) {
                expected << BigName(expected.last());
            }
        }
        expected.sort();
        QStringList held = QDir(QStringLiteral(":/image")).entryList(QDir::Files);
        held.sort();
        QCOMPARE(held, expected);
    }

    void picturesHaveTheSizesThePagesAreLaidOutFor_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QSize>("size");
        for (const char* name : {"rec.png", "edit.png", "cut_main.png"}) {
            QTest::newRow(name) << QString::fromLatin1(name) << QSize(96, 96);
        }
        for (const char* name : {"about.png", "support.png", "help.png"}) {
            QTest::newRow(name) << QString::fromLatin1(name) << QSize(50, 50); // shown at 20 by 20
        }
        QTest::newRow("logo.png") << QStringLiteral("logo.png")
                                  << QSize(60, 100); // shown at 30 by 50
    }
    void picturesHaveTheSizesThePagesAreLaidOutFor()
    {
        QFETCH(QString, name);
        QFETCH(QSize, size);
        QCOMPARE(QImage(ImagePath(name)).size(), size);
    }

    void programIconHoldsSmallAndLargeSizes()
    {
        QImageReader reader(ImagePath(QStringLiteral("logo.ico")));
        QList<int> widths;
        for (int i = 0; i < reader.imageCount(); ++i) {
            QVERIFY2(reader.jumpToImage(i), qPrintable(QStringLiteral("no image %1").arg(i)));
            const QImage image = reader.read();
            QCOMPARE(image.width(), image.height());
            QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
            widths << image.width();
        }
        std::sort(widths.begin(), widths.end());
        QCOMPARE(widths, QList<int>({16, 32, 48, 256}));
    }

    void blinkingIsSeenInTheTray_data()
    {
        QTest::addColumn<QColor>("panel");
        QTest::newRow("light panel") << QColor(240, 240, 240);
        QTest::newRow("dark panel") << QColor(40, 40, 40);
    }
    void blinkingIsSeenInTheTray()
    {
        QFETCH(QColor, panel);
        const QImage idle = OnPanel(QStringLiteral("rec1.png"), panel);
        const QImage lit = OnPanel(QStringLiteral("rec2.png"), panel);
        QImage bare(idle.size(), QImage::Format_RGB32);
        bare.fill(panel);
        const int change = PercentDifferent(idle, lit);
        QVERIFY2(change >= 30,
                 qPrintable(QStringLiteral("only %1 % of the pixels change").arg(change)));
        const int idleSeen = PercentDifferent(idle, bare);
        QVERIFY2(idleSeen >= 15,
                 qPrintable(QStringLiteral("rec1.png: %1 % stand out").arg(idleSeen)));
        const int litSeen = PercentDifferent(lit, bare);
        QVERIFY2(litSeen >= 30,
                 qPrintable(QStringLiteral("rec2.png: %1 % stand out").arg(litSeen)));
    }

    void imagesGoAndComeBackOnDemand()
    {
        const QString logo = ImagePath(QStringLiteral("logo.png"));
        QVERIFY(QFile::exists(logo));
        QCOMPARE(qCleanupResources_drui(), 1);
        QVERIFY2(!QFile::exists(logo), "still there after qCleanupResources_drui()");
        QVERIFY(QImage(logo).isNull());
        QCOMPARE(qInitResources_drui(), 1);
        QVERIFY2(!QImage(logo).isNull(), "not back after qInitResources_drui()");
    }

    void formatIsTheFirstVersion()
    {
        const QResource logo(ImagePath(QStringLiteral("logo.png")));
        QVERIFY(logo.isValid());
        // Later versions of the format carry the time of the last change; the first has no room for
        // it.
        QVERIFY2(!logo.lastModified().isValid(),
                 qPrintable(logo.lastModified().toString(Qt::ISODate)));
    }
};

QTEST_MAIN(ResourcesTest)
#include "resources_test.moc"
