#include "tests/window/pictures.h"

#include <QDir>

#include <cmath>

namespace {

// The difference of two images of the same size: 0 is identical, 255 black against white.
double Distance(const QImage& one, const QImage& other)
{
    qint64 sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        const uchar* a = one.constScanLine(y);
        const uchar* b = other.constScanLine(y);
        for (int i = 0; i < 4 * one.width(); ++i) {
            sum += std::abs(a[i] - b[i]);
        }
    }
    return static_cast<double>(sum) / (4.0 * one.width() * one.height());
}

QImage Plain(QImage image)
{
    image.setDevicePixelRatio(1);
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

// The name of the most similar image at the same size, or "another picture" if none is similar.
QString NameOfPicture(const QImage& shown)
{
    const QImage plain = Plain(shown);
    constexpr double near = 4; // other smooth scaling differs by up to 2
    double least = near;
    QString name = "another picture";
    const QDir images(":/image");
    for (const QString& file : images.entryList({"*.png"})) {
        const QImage candidate =
            Plain(QImage(images.filePath(file))
                      .scaled(plain.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        const double distance = Distance(plain, candidate);
        if (distance < least) {
            least = distance;
            name = file;
        }
    }
    return name;
}

bool IsSame(const QIcon& icon, const QIcon& other, const QSize& size, double density)
{
    return icon.pixmap(size, density).toImage() == other.pixmap(size, density).toImage();
}

} // namespace

QString PictureDifference(const QString& what, const QIcon& icon, const QSize& size,
                          const QString& name)
{
    const QIcon expected(":/image/" + name);
    if (IsSame(icon, expected, size, 1) && IsSame(icon, expected, size, 2)) {
        return {};
    }
    QString shown = icon.isNull() ? "nothing" : "another picture";
    for (const QString& other : QDir(":/image").entryList({"*.png"})) {
        if (!icon.isNull() && IsSame(icon, QIcon(":/image/" + other), size, 1)) {
            shown = other == name ? name + ", blurred at density 2" : other;
            break;
        }
    }
    return what + ": shows " + shown + ", should show " + name;
}

QString PictureDifference(const QString& what, const QPixmap& shown, QString name)
{
    QString is = shown.isNull() ? "nothing" : NameOfPicture(shown.toImage());
    if (QImage(":/image/" + name).width() < shown.width()) {
        name.replace(".png", "@2x.png");
    } else {
        is.remove("@2x");
    }
    return is == name ? QString() : what + ": shows " + is + ", should show " + name;
}
