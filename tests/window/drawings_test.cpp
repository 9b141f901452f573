#include <QDir>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cstdlib>

// Checks that the committed images match the drawings: after changing a drawing, run
// scripts/render-art.
namespace {

const QString kResources = QStringLiteral(LUMENFOLD_RESOURCES_DIR "/");
const QString kProgramIcon = QStringLiteral("lumenfold-recorder");

// Different renderer versions antialias edges differently.
constexpr int kTolerance = 24;

// The images rendered from a drawing, with the renderer's options.
QList<std::pair<QString, QStringList>> PicturesOf(const QString& name)
{
    if (name != kProgramIcon) {
        const QString picture = kResources + "image/" + name;
        return {{picture + ".png", {}}, {picture + "@2x.png", {"--zoom", "2"}}};
    }
    QList<std::pair<QString, QStringList>> sizes;
    for (const int size : {16, 24, 32, 48, 64, 128, 256, 512}) {
        const QString side = QString::number(size);
        sizes.append({kResources + "icons/" + name + '-' + side + ".png",
                      {"--width", side, "--height", side}});
    }
    return sizes;
}

QImage Premultiplied(const QString& path)
{
    return QImage(path).convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

// Compared premultiplied, because transparent pixels have no colour.
QString Compare(const QString& path, const QString& fresh)
{
    const QImage committed = Premultiplied(path);
    const QImage drawn = Premultiplied(fresh);
    if (committed.isNull() || drawn.size() != committed.size()) {
        return QStringLiteral("missing, or of another size");
    }
    int greatest = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        const auto* a = drawn.constScanLine(y);
        const auto* b = committed.constScanLine(y);
        for (qsizetype i = 0; i < qsizetype{drawn.width()} * 4; ++i) {
            greatest = std::max(greatest, std::abs(a[i] - b[i]));
        }
    }
    return greatest > kTolerance ? QStringLiteral("differs by %1 of 255").arg(greatest) : QString();
}

} // namespace

class DrawingsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_scratch.isValid()); }

    void everyPictureHasItsDrawing()
    {
        QDir pictures(kResources + "image");
        const QStringList names = pictures.entryList({"*.png"}, QDir::Files);
        QVERIFY2(!names.isEmpty(), qPrintable("no pictures in " + pictures.path()));
        for (QString name : names) {
            name.remove(".png").remove("@2x");
            QVERIFY2(QFile::exists(kResources + "art/" + name + ".svg"),
                     qPrintable("no drawing of " + name));
        }
    }

    void everyPictureIsWhatItsDrawingGives_data()
    {
        QTest::addColumn<QString>("name");
        for (const QFileInfo& drawing : QDir(kResources + "art").entryInfoList({"*.svg"})) {
            QTest::newRow(qPrintable(drawing.baseName())) << drawing.baseName();
        }
    }
    void everyPictureIsWhatItsDrawingGives()
    {
        QFETCH(QString, name);
        if (QStandardPaths::findExecutable("rsvg-convert").isEmpty()) {
            QSKIP("rsvg-convert is not installed");
        }
        const QString fresh = m_scratch.filePath("fresh.png");
        for (const auto& [path, options] : PicturesOf(name)) {
            QFile::remove(fresh);
            QCOMPARE(QProcess::execute("rsvg-convert",
                                       options + QStringList{"--output", fresh,
                                                             kResources + "art/" + name + ".svg"}),
                     0);
            const QString difference = Compare(path, fresh);
            QVERIFY2(difference.isEmpty(),
                     qPrintable(path + ' ' + difference + ": run scripts/render-art"));
        }
    }

private:
    QTemporaryDir m_scratch;
};

QTEST_GUILESS_MAIN(DrawingsTest)
#include "drawings_test.moc"
