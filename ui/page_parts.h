#pragma once

#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QRect>
#include <QVBoxLayout>

class QLineEdit;

// Parts shared by pages and dialogs. Each function creates a widget with fixed geometry relative to
// its parent.

inline constexpr auto kProductName = "Lumenfold Screen Recorder";
inline constexpr auto kVersionText = "Version 6.8.8.8";
inline constexpr auto kBack = "Back";
inline constexpr auto kMakerNotice = "Lumenfold Screen Recorder by Tarvessa";

/// The properties of a page's title strip.
struct TitleStripShape
{
    int width;       // of strip and separator
    int versionLeft; // of the version text
    int versionWidth;
    Qt::AspectRatioMode logo; // how the logo fills its 30 by 50
};

/// The properties of the row with a page's video folder. Geometries are relative to the row.
struct FolderRowShape
{
    const char* fieldName; // object name of the field
    int points;            // of the fonts
    QRect label;
    QRect field;
    QRect button;
    int widthLeft; // the part of the window's width for the row and the page's margins
};

/// One page of the stack. It fills the window, whose size is fixed, so it has no size hints. Hidden
/// pages would otherwise measure all their texts.
class Page : public QWidget
{
public:
    /// Created as a child of the window, then moved under the central widget while still empty.
    /// Moving it later would polish all its children again.
    Page(QWidget* window, QWidget* central) : QWidget(window) { setParent(central); }
    QSize sizeHint() const override { return {}; }
    QSize minimumSizeHint() const override { return {}; }

    /// Moves the focus from `field` to `next` on Return in `field` and on a click on the page's
    /// background.
    void SetFieldToLeave(QLineEdit* field, QWidget* next);

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    QLineEdit* m_field = nullptr;
    QWidget* m_next = nullptr;
};

/// A button without text. Its tooltip does not inherit the button's style sheet, which would make
/// it black on dark grey.
class IconButton : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    bool event(QEvent* event) override;
};

/// Shows an image of the resources at the pixel density of the label's screen.
class PictureLabel : public QLabel
{
public:
    /// `size` is in device-independent pixels; an empty size means the image's own.
    explicit PictureLabel(const QString& path, QWidget* parent, const QSize& size = {},
                          Qt::AspectRatioMode mode = Qt::KeepAspectRatio);

protected:
    bool event(QEvent* event) override;

private:
    void Draw();

    QString m_path;
    QSize m_size;
    Qt::AspectRatioMode m_mode;
};

/// The strip with logo, product name and version. The window adds the header buttons.
QLabel* CreateTitleStrip(QWidget* parent, const TitleStripShape& shape);

/// A light line of fixed size.
QLabel* CreateSeparator(QWidget* parent, int width);

/// The dark strip along the bottom edge, 40 high. Its content differs between pages.
struct FooterShape
{
    int width;
    bool notice; // has the maker's line
    bool line;   // has a light line across its top
};
QLabel* CreateFooter(QWidget* parent, const FooterShape& shape);

QLabel* CreateText(QWidget* parent, const QRect& place, const QString& text, const QFont& font);

/// A flat button with a pointing-hand cursor and the grey style, for a page's button bar.
QPushButton* CreateBarButton(QWidget* parent, const QRect& place, const QString& text);

/// The button that opens the folder chooser. Connect to its clicked().
QPushButton* CreateFolderButton(QWidget* parent, const QRect& place);

/// Sets the colour of a widget's own text. (A style sheet would also affect its children.)
void SetTextColor(QWidget* widget, const QColor& color);

/// The resource image `path` scaled to `size` device-independent pixels at the device pixel ratio
/// `density`.
QPixmap PictureAt(qreal density, const QString& path, const QSize& size, Qt::AspectRatioMode mode);

inline constexpr QSize kLogoSize(30, 50);
inline constexpr auto kLogo = ":/image/logo.png";

/// The top left corner of a window of `size` centred on `desktop`.
QPoint CentredIn(const QRect& desktop, const QSize& size);

/// A box layout without spacing and margins.
template <class Layout>
Layout* BareLayout()
{
    auto* layout = new Layout;
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    return layout;
}
