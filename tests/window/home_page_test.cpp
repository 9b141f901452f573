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
        }
        QCOMPARE(entries, 3);
        QVERIFY2(bottom < 560, "the last entry reaches into the footer");
    }

    void theHeaderButtonsOpenTheHelpPages()
    {
        OpenWindow();
        const QStringList pages{"about.html", "support.html", "help.html"};
        const QStringList names{"About", "Support", "Help"};
        for (int i = 0; i < 3; ++i) {
            QPushButton* button = HeaderButton(names.at(i));
            QVERIFY2(button != nullptr, qPrintable(names.at(i)));
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

public Q_SLOTS:
    void Open(const QUrl& url) { m_opened << url; }

private:
    QWidget* Home() { return Child<QWidget>("m_pLayout1Widget"); }

    QPushButton* HeaderButton(const QString& name) { return ButtonNamed(Home(), name); }

    QList<QUrl> m_opened;
};

QTEST_MAIN(HomePageTest)
#include "home_page_test.moc"
