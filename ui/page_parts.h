#pragma once

#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QRect>
#include <QVBoxLayout>

// What more than one page or dialog is put together from. Each function makes one widget with fixed
// geometry, relative to its parent.

inline constexpr auto kProductName = "Lumenfold Screen Recorder";
inline constexpr auto kVersionText = "Version 6.8.8.8";
inline constexpr auto kMakerNotice = "Lumenfold Screen Recorder by Tarvessa";

/// Where a page's title strip differs from the others'.
struct TitleStripShape
{
    int width;       // of strip and separator
    int versionLeft; // of the version text
    int versionWidth;
    Qt::AspectRatioMode logo; // how the logo fills its 30 by 50
};

/// Where the row with a page's video folder differs from another's. The places lie in the row.
struct FolderRowShape
{
    const char* fieldName; // object name of the field
    int points;            // of the fonts
    QRect label;
    QRect field;
    QRect button;
    int widthLeft; // of the window's width, for the row and the page's margins
};

/// One page of the stack. It fills the window, whose size is fixed: nobody needs its hints, for
/// which a page that is not shown would have all its texts measured.
class Page : public QWidget
{
public:
    /// Made under the window, it moves on while it is empty to where the stack would bring it:
    /// later, all that is in it would be styled again.
    Page(QWidget* window, QWidget* central) : QWidget(window) { setParent(central); }
    QSize sizeHint() const override { return {}; }
    QSize minimumSizeHint() const override { return {}; }
};

/// The strip with logo, product name and version; the header buttons are the window's to add.
QLabel* CreateTitleStrip(QWidget* parent, const TitleStripShape& shape);

/// A light line of fixed size.
QLabel* CreateSeparator(QWidget* parent, int width);

/// The dark strip along the bottom edge, 40 high; what it holds differs between the pages.
struct FooterShape
{
    int width;
    bool notice; // holds the maker's line
    bool line;   // has a light line across its top
};
QLabel* CreateFooter(QWidget* parent, const FooterShape& shape);

QLabel* CreateText(QWidget* parent, const QRect& place, const QString& text, const QFont& font);

/// A flat button with the pointing hand and the grey style, for a page's button bar.
QPushButton* CreateBarButton(QWidget* parent, const QRect& place, const QString& text);

/// The button that opens the folder picker. Connect its clicked().
QPushButton* CreateFolderButton(QWidget* parent, const QRect& place);

/// The colour of a widget's own text. (A style sheet would reach its children too.)
void SetTextColor(QWidget* widget, const QColor& color);

/// A picture's size in the geometry's units, whatever the screen's scale.
QSize PictureSize(const QPixmap& picture);

/// ":/image/logo.png" brought to 30 by 50.
QPixmap Logo(Qt::AspectRatioMode mode);

/// A box layout without spacing and margins.
template <class Layout>
Layout* BareLayout()
{
    auto* layout = new Layout;
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    return layout;
}
