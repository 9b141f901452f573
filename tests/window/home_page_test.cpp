#include "tests/window/fake_tool.h"

#include <QDesktopServices>
#include <QPushButton>
#include <QUrl>

class HomePageTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Prepare();
        QDesktopServices::setUrlHandler("file", this, "Open");
        QDesktopServices::setUrlHandler("https", this, "Open");
        m_opened.clear();
    }
    void cleanup()
    {
        CloseWindow();
        QDesktopServices::unsetUrlHandler("file");
        QDesktopServices::unsetUrlHandler("https");
    }

    void eachEntryShowsItsPage_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("page");
        QTest::newRow("record")
            << "The easiest screen recorder to capture any video or audio\n on your computer "
               "and save them in high quality"
            << 1;
        QTest::newRow("merge") << "Merge your several capturing screen videos into one file" << 3;
        QTest::newRow("trim")
            << "Trim your capturing screen video by setting the start time\nand end time" << 2;
    }

    void eachEntryShowsItsPage()
    {
        QFETCH(QString, text);
        OpenWindow();
        Press(text);
        QTEST(Page(), "page");
    }

    void theEntriesStandBelowEachOtherAndFitTheWindow()
    {
        OpenWindow();
        int bottom = 72; // the header's
        int entries = 0;
        for (auto* entry : Home()->findChildren<QPushButton*>()) {
            if (entry->text().isEmpty()) {
                continue;
            }
            ++entries;
            const QRect place(entry->mapTo(Home(), QPoint()), entry->size());
            QVERIFY2(place.top() > bottom,
                     qPrintable("overlaps what stands above: " + entry->text()));
            bottom = place.bottom();
            QCOMPARE(place.left(), 100);
            QCOMPARE(place.width(), 800);
            QVERIFY2(entry->height() >= entry->sizeHint().height(),
                     qPrintable("cut off: " + entry->text()));
            QVERIFY(entry->isFlat());
            QCOMPARE(entry->cursor().shape(), Qt::PointingHandCursor);
            QCOMPARE(entry->palette().color(QPalette::ButtonText), QColor(54, 75, 75));
            QVERIFY(entry->font().bold());
            QCOMPARE(entry->font().family(), QString("Calibri"));
        }
        QCOMPARE(entries, 3);
        QVERIFY2(bottom < 560, "the last entry reaches into the footer");
    }

    void theEntriesStyleKeepsItsTabsAndBlanks()
    {
        OpenWindow();
        QCOMPARE(Entry()->styleSheet(), GreyButtonStyle("\t\t\t\t\t\t\t  "));
    }

    void theHeaderButtonsStandAtTheirPlacesAndOpenTheHelpPages()
    {
        OpenWindow();
        const QStringList pages{"about.html", "support.html", "help.html"};
        const QStringList names{"About", "Support", "Help"};
        for (int i = 0; i < 3; ++i) {
            QPushButton* button = HeaderButton(names.at(i));
            QVERIFY2(button != nullptr, qPrintable(names.at(i)));
            QCOMPARE(button->pos(), QPoint(970 - 30 * i, 40));
            const QSize picture = QPixmap(":/image/" + names.at(i).toLower() + ".png").size();
            QCOMPARE(button->size(),
                     QSize(int(picture.width() / 2.5), int(picture.height() / 2.5)));
            QCOMPARE(button->iconSize(), button->size());
            QTest::mouseClick(button, Qt::LeftButton);
            QCOMPARE(m_opened.size(), i + 1);
            QCOMPARE(m_opened.last(), QUrl::fromLocalFile(BesideProgram("help/" + pages.at(i))));
            QCOMPARE(Page(), 0);
        }
    }

    void anyAddressCanBeOpened()
    {
        DRUI& window = OpenWindow();
        QVERIFY(QMetaObject::invokeMethod(&window, "btnOpenUrl",
                                          Q_ARG(QString, "https://example.org/a?b=c")));
        QCOMPARE(m_opened, QList<QUrl>{QUrl("https://example.org/a?b=c")});
    }

    void stripAndFooterShowTheirTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QRect>("place");
        QTest::addColumn<int>("points");
        QTest::newRow("name") << "Lumenfold Screen Recorder" << QRect(65, 12, 300, 30) << 13;
        QTest::newRow("version") << "Version 6.8.8.8" << QRect(899, 0, 101, 30) << 10;
        QTest::newRow("notice") << "Lumenfold Screen Recorder by Tarvessa"
                                << QRect(10, 10, 1000, 30) << 11;
    }

    void stripAndFooterShowTheirTexts()
    {
        QFETCH(QString, text);
        OpenWindow();
        for (auto* label : Home()->findChildren<QLabel*>()) {
            if (label->text() == text) {
                QTEST(label->geometry(), "place");
                QTEST(label->font().pointSize(), "points");
                QVERIFY(!label->font().bold());
                QCOMPARE(label->palette().color(QPalette::WindowText), QColor(Qt::white));
                return;
            }
        }
        QFAIL("not shown");
    }

public Q_SLOTS:
    void Open(const QUrl& url) { m_opened << url; }

private:
    QWidget* Home() { return Child<QWidget>("m_pLayout1Widget"); }

    QPushButton* Entry()
    {
        for (auto* button : Home()->findChildren<QPushButton*>()) {
            if (!button->text().isEmpty()) {
                return button;
            }
        }
        return nullptr;
    }

    QPushButton* HeaderButton(const QString& name)
    {
        for (auto* button : Home()->findChildren<QPushButton*>()) {
            if (button->accessibleName() == name) {
                return button;
            }
        }
        return nullptr;
    }

    QList<QUrl> m_opened;
};

QTEST_MAIN(HomePageTest)
#include "home_page_test.moc"
