#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

// The help pages in a browser, in a wide and in a narrow window.
namespace {

// A script that reports in the page's title what is broken.
constexpr auto kJudge = R"(<script>
addEventListener('load', () => {
  const wrong = [];
  for (const image of document.images)
    if (!image.naturalWidth) wrong.push('no picture: ' + image.getAttribute('src'));
    else if (!image.alt) wrong.push('no text for: ' + image.getAttribute('src'));
  for (const link of document.querySelectorAll('a[href^="#"]'))
    if (!document.getElementById(link.getAttribute('href').slice(1)))
      wrong.push('leads nowhere: ' + link.getAttribute('href'));
  if (getComputedStyle(document.body).marginTop !== '0px') wrong.push('no style sheet');
  if (document.documentElement.scrollWidth > innerWidth) wrong.push('wider than the window');
  document.title = 'judged: ' + document.images.length + ' pictures; ' + wrong.join('; ');
});
</script>)";

QString Browser()
{
    for (const char* name : {"chromium", "chromium-browser", "google-chrome"}) {
        QString found = QStandardPaths::findExecutable(name);
        if (!found.isEmpty()) {
            return found;
        }
    }
    return {};
}

} // namespace

class HelpBrowserTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (Browser().isEmpty()) {
            QSKIP("chromium is not installed");
        }
        QVERIFY(m_pages.isValid() && m_profile.isValid());
        const QDir source(LUMENFOLD_HELP_DIR);
        QDirIterator files(source.path(), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString copy = m_pages.filePath(source.relativeFilePath(files.next()));
            QVERIFY(QDir().mkpath(QFileInfo(copy).path()));
            QVERIFY2(QFile::copy(files.filePath(), copy), qPrintable("cannot copy to " + copy));
        }
    }

    void theBrowserFindsNothingBroken_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("pictures");
        QTest::newRow("help") << "help.html" << 1000 << 4;
        QTest::newRow("help, narrow") << "help.html" << 500 << 4;
        QTest::newRow("support, narrow") << "support.html" << 500 << 0;
        QTest::newRow("about, narrow") << "about.html" << 500 << 0;
    }
    void theBrowserFindsNothingBroken()
    {
        QFETCH(QString, page);
        QFETCH(int, width);
        QFETCH(int, pictures);
        const QString judged = m_pages.filePath("judged.html");
        QFile original(m_pages.filePath(page));
        QVERIFY2(original.open(QIODevice::ReadOnly), qPrintable("missing: " + page));
        QFile copy(judged);
        QVERIFY(copy.open(QIODevice::WriteOnly | QIODevice::Truncate));
        copy.write(original.readAll().replace("</body>", QByteArray(kJudge) + "</body>"));
        copy.close();

        const QString title = TitleShown(judged, width);
        QCOMPARE(title, QString("judged: %1 pictures; ").arg(pictures));
    }

private:
    // The page's document after its scripts have run.
    QString TitleShown(const QString& page, int width)
    {
        QProcess browser;
        browser.setProgram(Browser());
        browser.setArguments({"--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
                              "--disable-dev-shm-usage", "--user-data-dir=" + m_profile.path(),
                              QString("--window-size=%1,900").arg(width), "--dump-dom",
                              "file://" + page});
        browser.start();
        constexpr int longest = 120000;
        if (!browser.waitForFinished(longest)) {
            browser.kill();
            browser.waitForFinished();
            return "the browser does not end: " + browser.readAllStandardError().right(500);
        }
        const QString shown = QString::fromUtf8(browser.readAllStandardOutput());
        static const QRegularExpression title("<title>(.*?)</title>");
        const auto match = title.match(shown);
        return match.hasMatch() ? match.captured(1)
                                : "no page: " + browser.readAllStandardError().right(500);
    }

    QTemporaryDir m_pages;
    QTemporaryDir m_profile;
};

QTEST_GUILESS_MAIN(HelpBrowserTest)
#include "help_browser_test.moc"
