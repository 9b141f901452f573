#include "ui/page_parts.h"

#include "ui/styles.h"

QLabel* CreateTitleStrip(QWidget* parent, const TitleStripShape& shape)
{
    auto* strip = new QLabel(parent);
    strip->setMinimumSize(shape.width, 70);

    auto* logo = new QLabel(strip);
    logo->setGeometry(15, 6, 30, 50);
    logo->setAlignment(Qt::AlignLeft);
    logo->setPixmap(Logo(shape.logo));

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
    auto* button = new QPushButton(parent);
    button->setGeometry(place);
    button->setIcon(QIcon(":/image/folder.png"));
    button->setAccessibleName("Choose directory");
    button->setAutoDefault(true);
    return button;
}

void SetTextColor(QWidget* widget, const QColor& color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

QSize PictureSize(const QPixmap& picture)
{
    return picture.deviceIndependentSize().toSize();
}

QPixmap Logo(Qt::AspectRatioMode mode)
{
    const QPixmap logo(":/image/logo.png");
    return logo.scaled(QSize(30, 50) * logo.devicePixelRatio(), mode, Qt::SmoothTransformation);
}
