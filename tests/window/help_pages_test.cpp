#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <QtTest>

#include <array>

namespace {

constexpr std::array pageNames{"about.html", "support.html", "help.html"};

QString HelpPath(const QString& file)
{
    return QDir(QStringLiteral(LUMENFOLD_HELP_DIR)).filePath(file);
}

QString FileText(const QString& file)
{
    QFile page(HelpPath(file));
    return page.open(QIODevice::ReadOnly) ? QString::fromUtf8(page.readAll()) : QString();
}

// The visible text, with white space collapsed.
QString VisibleText(const QString& file)
{
    QString text = FileText(file);
    text.remove(QRegularExpression(QStringLiteral("<head>.*</head>"),
                                   QRegularExpression::DotMatchesEverythingOption));
    text.remove(QRegularExpression(QStringLiteral("<[^>]*>")));
    text.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    text.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    return text.simplified();
}

QStringList References(const QString& page)
{
    static const QRegularExpression reference(QStringLiteral("(?:href|src)\\s*=\\s*\"([^\"]*)\""));
    QStringList found;
    auto matches = reference.globalMatch(FileText(page));
    while (matches.hasNext()) {
        found << matches.next().captured(1);
    }
    return found;
}

void AddPageRows()
{
    QTest::addColumn<QString>("page");
    for (const char* name : pageNames) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

} // namespace

class HelpPagesTest : public QObject
{
    Q_OBJECT

private slots:
    void everyPageLiesBesideTheProgram_data() { AddPageRows(); }
    void everyPageLiesBesideTheProgram()
    {
        QFETCH(QString, page);
        QVERIFY2(QFileInfo(HelpPath(page)).isFile(), qPrintable("missing: " + HelpPath(page)));
        QVERIFY2(!VisibleText(page).isEmpty(), "the page is empty");
    }

    // Stricter than a browser, which silently repairs unclosed elements.
    void everyElementIsClosed_data() { AddPageRows(); }
    void everyElementIsClosed()
    {
        QFETCH(QString, page);
        QString text = FileText(page);
        QVERIFY(text.startsWith(QStringLiteral("<!DOCTYPE html>\n")));
        static const QRegularExpression voidElement(
            QStringLiteral("<((?:meta|link|br|img)\\b[^>]*)>"));
        text.replace(voidElement, QStringLiteral("<\\1/>"));
        QXmlStreamReader reader(text);
        while (!reader.atEnd()) {
            reader.readNext();
        }
        QVERIFY2(
            !reader.hasError(),
            qPrintable(
                QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(reader.errorString())));
    }

    void everyReferenceLeadsToAFileBesideThePage_data() { AddPageRows(); }
    void everyReferenceLeadsToAFileBesideThePage()
    {
        QFETCH(QString, page);
        const QStringList references = References(page);
        QVERIFY2(!references.isEmpty(), "not one reference found");
        for (const QString& reference : references) {
            const QString file = reference.section(QLatin1Char('#'), 0, 0);
            const QString anchor = reference.section(QLatin1Char('#'), 1);
            const QString target = file.isEmpty() ? page : file;
            QVERIFY2(!target.contains(QLatin1Char(':')) && !target.startsWith(QLatin1Char('/')) &&
                         !target.contains(QStringLiteral("..")),
                     qPrintable("leads elsewhere: " + reference));
            QVERIFY2(QFileInfo(HelpPath(target)).isFile(), qPrintable("dead: " + reference));
            QVERIFY2(anchor.isEmpty() || FileText(target).contains("id=\"" + anchor + "\""),
                     qPrintable("no such place: " + reference));
        }
    }

    void everyPageLeadsToTheOthers_data() { AddPageRows(); }
    void everyPageLeadsToTheOthers()
    {
        QFETCH(QString, page);
        for (const char* other : pageNames) {
            QVERIFY2(References(page).contains(QLatin1String(other)), other);
        }
    }

    void styleSheetFetchesNothing()
    {
        const QString sheet = FileText(QStringLiteral("style.css"));
        QVERIFY(sheet.contains(QStringLiteral("prefers-color-scheme: dark")));
        QVERIFY(!sheet.contains(QStringLiteral("url(")));
        QVERIFY(!sheet.contains(QStringLiteral("@import")));
    }

    void pagesQuoteTheProgramToTheLetter_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("quote");
        const auto add = [](const char* page, const char* quote) {
            QTest::addRow("%s: %s", page, quote) << QString(page) << QString(quote);
        };
        for (const char* page : pageNames) {
            add(page, "Lumenfold Screen Recorder by Tarvessa");
            add(page, "Version 6.8.8.8");
        }
        for (const char* quote : {"Computer sounds and Microphone",
                                  "Computer sounds Only",
                                  "Microphone Only",
                                  "None The",
                                  "Audio:",
                                  "Save directory:",
                                  "Free space:",
                                  "Record",
                                  "Pause",
                                  "Stop",
                                  "Start",
                                  "Quit",
                                  "Not enough space, recording stopped.",
                                  "The recording could not be started: ",
                                  "ScreenSave",
                                  "yyyy-MM-dd hh-mm-ss.mp4",
                                  "10 MiB",
                                  "lumenfold-recorder start",
                                  "Video directory:",
                                  "Add",
                                  "Up",
                                  "Down",
                                  "Delete",
                                  "Merge",
                                  "Cut",
                                  "End",
                                  "Cut success, file path is",
                                  "Merge success, file path is",
                                  "Merge_yyyy-MM-dd hh-mm-ss.mp4"}) {
            add("help.html", quote);
        }
        for (const char* quote : {"Out.txt", "ScreenRecord.ini", "LUMENFOLD_FFMPEG",
                                  "tool -f avfoundation -list_devices true -i \" \""}) {
            add("support.html", quote);
        }
    }
    void pagesQuoteTheProgramToTheLetter()
    {
        QFETCH(QString, page);
        QFETCH(QString, quote);
        QVERIFY2(VisibleText(page).contains(quote), qPrintable(page + " does not say: " + quote));
    }
};

QTEST_GUILESS_MAIN(HelpPagesTest)
#include "help_pages_test.moc"
