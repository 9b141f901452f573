#include "tests/window/job_tool.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QPalette>

#include <algorithm>
#include <cmath>

// The window on desktops with dark and light colours.
namespace {

constexpr double kReadable = 3; // of 1 to 21, for bold and large text

QPalette DarkColours()
{
    QPalette palette(QColor(53, 53, 53));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::HighlightedText, QPalette::BrightText}) {
        palette.setColor(role, Qt::white);
    }
    palette.setColor(QPalette::Base, QColor(30, 30, 30));
    palette.setColor(QPalette::Highlight, QColor(61, 174, 233));
    return palette;
}

double Luminance(QRgb colour)
{
    const auto linear = [](int value) {
        const double part = value / 255.0;
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) +
           0.0722 * linear(qBlue(colour));
}

double Contrast(QRgb one, QRgb other)
{
    const auto [dark, light] = std::minmax({Luminance(one), Luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

// The text's contrast in this part of an image: the best contrast with the most common colour.
double TextContrast(const QImage& picture, const QRect& place)
{
    QHash<QRgb, int> counts;
    for (int y = place.top(); y <= place.bottom(); ++y) {
        for (int x = place.left(); x <= place.right(); ++x) {
            ++counts[picture.pixel(x, y)];
        }
    }
    QRgb common = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        common = it.value() > counts.value(common) ? it.key() : common;
    }
    double greatest = 1;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        greatest = std::max(greatest, Contrast(it.key(), common));
    }
    return greatest;
}

// The middle of a widget, without its round border and the icon on the left.
QRect TextPlace(const QWidget* widget)
{
    const QRect all(widget->mapTo(widget->window(), QPoint()), widget->size());
    if (qobject_cast<const QLabel*>(widget) != nullptr) {
        return all & widget->window()->rect();
    }
    if (qobject_cast<const QComboBox*>(widget) != nullptr) {
        return all.adjusted(4, 5, -all.width() / 2, -5);
    }
    return all.adjusted(all.width() / 3, 6, -all.width() / 6, -6);
}

QString TextOf(const QWidget* widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        return label->text();
    }
    if (const auto* button = qobject_cast<const QPushButton*>(widget)) {
        return button->text();
    }
    if (const auto* combo = qobject_cast<const QComboBox*>(widget)) {
        return combo->currentText();
    }
    return {};
}

} // namespace

class ThemesTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_light = QApplication::palette(); }
    void init()
    {
        PrepareVideos();
        MakeVideo("2026-11-21 14-03-27.mp4");
        MakeVideo("2026-11-20 14-03-27.mp4");
    }
    void cleanup()
    {
        FinishVideos();
        QApplication::setPalette(m_light);
    }

    void everyTextCanBeRead_data() { AddRows(); }
    void everyTextCanBeRead()
    {
        QFETCH(QString, slot);
        QFETCH(bool, dark);
        QApplication::setPalette(dark ? DarkColours() : m_light);
        Enter(slot);
        ExpectReadable(&Window());
    }

    void messagesCanBeRead_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }
    void messagesCanBeRead()
    {
        QFETCH(bool, dark);
        QApplication::setPalette(dark ? DarkColours() : m_light);
        OpenWindow();
        CMessageBox question;
        question.InitQuestionDialog("Are you sure to cancel the video cut?");
        question.show();
        ExpectReadable(&question);
        CMessageBox information;
        information.InitInfoDialog("Cut success, file path is /home/somebody/Cut_a.mp4 ");
        information.show();
        ExpectReadable(&information);
        SCANUI progress;
        progress.CutProcessCallBackSlot(40, "/home/a.mp4", "/home/Cut_a.mp4", 0);
        progress.QDialog::setVisible(true);
        ExpectReadable(&progress);
        progress.hide();
    }

    void choicesOfSoundCanBeRead()
    {
        QApplication::setPalette(DarkColours());
        Enter("btnSlot");
        auto* combo = Child<QComboBox>("m_pAudioComBox");
        combo->addItem("Microphone");
        combo->showPopup();
        QTRY_VERIFY(combo->view()->isVisible());
        QWidget* list = combo->view()->viewport();
        const QImage picture = list->window()->grab().toImage();
        for (int row = 0; row < 2; ++row) {
            const QRect place = combo->view()
                                    ->visualRect(combo->model()->index(row, 0))
                                    .translated(list->mapTo(list->window(), QPoint()));
            const double contrast = TextContrast(picture, place.adjusted(2, 3, -4, -3));
            QVERIFY2(contrast >= kReadable,
                     qPrintable(combo->itemText(row) + QString(": contrast %1").arg(contrast)));
        }
        combo->hidePopup();
    }

    void chosenRowsCanBeRead()
    {
        QApplication::setPalette(DarkColours());
        Enter("btnEditSlot");
        ClickRow("m_pSourceVideoTable", 0);
        ExpectRowsReadable("m_pSourceVideoTable", 3);
        Call("btnSlotBack");
        Call("btnMontageSlot");
        ClickRow("m_pCutVideoTable", 0);
        ExpectRowsReadable("m_pCutVideoTable", 1);
    }

    void thePicturesAreTheSameOnAnyDesktop_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::newRow("home") << "";
        QTest::newRow("cut") << "btnMontageSlot";
        QTest::newRow("merge") << "btnEditSlot";
    }
    void thePicturesAreTheSameOnAnyDesktop()
    {
        QFETCH(QString, slot);
        QApplication::setPalette(m_light);
        Enter(slot);
        const QImage light = Window().grab().toImage();
        CloseWindow();
        QApplication::setPalette(DarkColours());
        Enter(slot);
        QVERIFY2(Window().grab().toImage() == light, "the desktop's colours shine through");
    }

    void noButtonCutsItsTextOff_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::newRow("home") << "";
        QTest::newRow("record") << "btnSlot";
        QTest::newRow("cut") << "btnMontageSlot";
        QTest::newRow("merge") << "btnEditSlot";
    }
    void noButtonCutsItsTextOff()
    {
        QFETCH(QString, slot);
        Enter(slot);
        int buttons = 0;
        for (const auto* button : Window().findChildren<QPushButton*>()) {
            if (!button->isVisible() || button->text().isEmpty()) {
                continue;
            }
            ++buttons;
            constexpr int roundEnds = 10;
            constexpr int gap = 4;
            QSize needed = button->fontMetrics().size(Qt::TextShowMnemonic, button->text());
            if (!button->icon().isNull()) {
                needed.rwidth() += button->iconSize().width() + gap;
            }
            QVERIFY2(needed.width() + roundEnds <= button->width() &&
                         needed.height() <= button->height(),
                     qPrintable(QString("%1: %2 wide, of %3")
                                    .arg(button->text())
                                    .arg(needed.width() + roundEnds)
                                    .arg(button->width())));
        }
        QVERIFY(buttons > 1);
    }

private:
    static void AddRows()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<bool>("dark");
        for (const char* slot : {"", "btnSlot", "btnMontageSlot", "btnEditSlot"}) {
            QTest::addRow("light %s", slot) << slot << false;
            QTest::addRow("dark %s", slot) << slot << true;
        }
    }

    void Enter(const QString& slot)
    {
        OpenWindow();
        if (!slot.isEmpty()) {
            Call(qPrintable(slot));
        }
        QVERIFY(QTest::qWaitForWindowExposed(&Window()));
    }

    static void ExpectReadable(QWidget* window)
    {
        const QImage picture = window->grab().toImage();
        int texts = 0;
        for (const auto* widget : window->findChildren<QWidget*>()) {
            const QString text = TextOf(widget);
            if (!widget->isVisible() || text.isEmpty()) {
                continue;
            }
            ++texts;
            const double contrast = TextContrast(picture, TextPlace(widget));
            QVERIFY2(contrast >= kReadable,
                     qPrintable(QString("%1: contrast %2").arg(text).arg(contrast)));
        }
        QVERIFY2(texts > 1, "hardly a text was found");
    }

    void ExpectRowsReadable(const char* name, int columns)
    {
        const auto* table = Child<QTableWidget>(name);
        const QImage picture = table->viewport()->grab().toImage();
        QCOMPARE(table->rowCount(), 2);
        for (int row = 0; row < 2; ++row) {
            for (int column = 0; column < columns; ++column) {
                QRect place = table->visualItemRect(table->item(row, column));
                place.setLeft(place.left() + (column == 0 ? 24 : 2)); // right of the icon
                const double contrast =
                    TextContrast(picture, place.adjusted(0, 2, -2, -2) & picture.rect());
                QVERIFY2(contrast >= kReadable, qPrintable(table->item(row, column)->text() +
                                                           QString(": contrast %1").arg(contrast)));
            }
        }
    }

    QPalette m_light;
};

QTEST_MAIN(ThemesTest)
#include "themes_test.moc"
