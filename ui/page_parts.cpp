#include "ui/page_parts.h"

#include "ui/styles.h"

#include <QHelpEvent>
#include <QLineEdit>
#include <QToolTip>

QLabel* CreateTitleStrip(QWidget* parent, const TitleStripShape& shape)
{
    auto* strip = new QLabel(parent);
    strip->setMinimumSize(shape.width, 70);

    auto* logo = new PictureLabel(kLogo, strip, kLogoSize, shape.logo);
    logo->setGeometry({{15, 6}, kLogoSize});
    logo->setAlignment(Qt::AlignLeft);

    QLabel* title = CreateText(strip, {65, 12, 300, 30}, kProductName, CalibriFont(13));
    title->setAlignment(Qt::AlignLeft);
    SetTextColor(title, Qt::white);

    QLabel* version = CreateText(strip, {shape.versionLeft, 0, shape.versionWidth, 30},
                                 kVersionText, CalibriFont(10));
    SetTextColor(version, Qt::white);
    return strip;
}

QLabel* CreateSeparator(QWidget* parent, int width)
{
    auto* separator = new QLabel(parent);
    separator->setStyleSheet(panel_style);
    separator->setFixedSize(width, 2);
    return separator;
}

QLabel* CreateFooter(QWidget* parent, const FooterShape& shape)
{
    auto* footer = new QLabel(parent);
    footer->setMinimumSize(shape.width, 40);
    const int windowWidth = parent->window()->width();
    if (shape.notice) {
        QLabel* notice =
            CreateText(footer, {10, 10, windowWidth, 30}, kMakerNotice, CalibriFont(11));
        notice->setAlignment(Qt::AlignHCenter);
        SetTextColor(notice, Qt::white);
    }
    if (shape.line) {
        CreateSeparator(footer, windowWidth)->move(0, 0);
    }
    footer->setStyleSheet(window_style);
    return footer;
}

QLabel* CreateText(QWidget* parent, const QRect& place, const QString& text, const QFont& font)
{
    auto* label = new QLabel(text, parent);
    label->setGeometry(place);
    label->setFont(font);
    return label;
}

QPushButton* CreateBarButton(QWidget* parent, const QRect& place, const QString& text)
{
    auto* button = new QPushButton(text, parent);
    button->setFlat(true);
    button->setGeometry(place);
    button->setFont(CalibriFont(12, QFont::Bold));
    button->setCursor(Qt::PointingHandCursor);
    button->setAutoDefault(true); // Return presses it, like Space
    button->setStyleSheet(main_button_style);
    return button;
}

QPushButton* CreateFolderButton(QWidget* parent, const QRect& place)
{
    auto* button = new IconButton(parent);
    button->setGeometry(place);
    button->setIcon(QIcon(":/image/folder.png"));
    button->setAccessibleName("Choose directory");
    button->setToolTip("Choose directory");
    button->setAutoDefault(true);
    return button;
}

void SetTextColor(QWidget* widget, const QColor& color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

QPixmap PictureAt(qreal density, const QString& path, const QSize& size, Qt::AspectRatioMode mode)
{
    const QSize needed = (QSizeF(size) * density).toSize();
    QPixmap picture(path);
    if (picture.width() < needed.width()) { // the @2x file, named as QIcon expects
        const QPixmap fine(QString(path).insert(path.lastIndexOf('.'), "@2x"));
        picture = fine.isNull() ? picture : fine;
    }
    picture = picture.scaled(needed, mode, Qt::SmoothTransformation);
    picture.setDevicePixelRatio(density);
    return picture;
}

bool IconButton::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), toolTip(), window());
        return true;
    }
    return QPushButton::event(event);
}

PictureLabel::PictureLabel(const QString& path, QWidget* parent, const QSize& size,
                           Qt::AspectRatioMode mode)
    : QLabel(parent),
      m_path(path),
      m_size(size.isEmpty() ? QPixmap(path).size() : size),
      m_mode(mode)
{
    Draw();
}

// The screen of a window is known when it is shown, and can change later.
bool PictureLabel::event(QEvent* event)
{
    const bool handled = QLabel::event(event);
    if (event->type() == QEvent::Show || event->type() == QEvent::ScreenChangeInternal) {
        Draw();
    }
    return handled;
}

void PictureLabel::Draw()
{
    const qreal density = devicePixelRatioF();
    if (pixmap(Qt::ReturnByValue).isNull() ||
        !qFuzzyCompare(pixmap(Qt::ReturnByValue).devicePixelRatio(), density)) {
        setPixmap(PictureAt(density, m_path, m_size, m_mode));
    }
}

void Page::SetFieldToLeave(QLineEdit* field, QWidget* next)
{
    m_field = field;
    m_next = next;
    connect(field, SIGNAL(returnPressed()), next, SLOT(setFocus()));
}

// Labels pass mouse presses on to their parent.
void Page::mousePressEvent(QMouseEvent* event)
{
    if (m_field != nullptr && m_field->hasFocus()) {
        m_next->setFocus(Qt::MouseFocusReason);
    }
    QWidget::mousePressEvent(event);
}

QPoint CentredIn(const QRect& desktop, const QSize& size)
{
    return desktop.topLeft() +
           QPoint((desktop.width() - size.width()) / 2, (desktop.height() - size.height()) / 2);
}
