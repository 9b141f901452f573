#include "util/path.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>

namespace {

constexpr int kSize = 520;

QString FreeName(const QString& path, int size = kSize)
{
    std::array<wchar_t, kSize + 1> out{};
    out.fill(L'x');
    GetRealFileName(path.toStdWString().c_str(), out.data(), size);
    return out[static_cast<std::size_t>(size)] == L'x' ? QString::fromWCharArray(out.data())
                                                       : QString("more was written than fits");
}

bool Take(const QString& path)
{
    return QFile(path).open(QIODevice::WriteOnly | QIODevice::NewOnly);
}

} // namespace

class PathTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFreeNameIsKept()
    {
        QCOMPARE(FreeName(m_folder.filePath("free.mp4")), m_folder.filePath("free.mp4"));
    }

    void aTakenNameIsNumberedBeforeTheExtension_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::newRow("extension") << "a.mp4"
                                   << "a (1).mp4"
                                   << "a (2).mp4";
        QTest::newRow("two dots") << "a.b.mp4"
                                  << "a.b (1).mp4"
                                  << "a.b (2).mp4";
        QTest::newRow("no extension") << "a"
                                      << "a (1)"
                                      << "a (2)";
        QTest::newRow("hidden") << ".mp4"
                                << ".mp4 (1)"
                                << ".mp4 (2)";
        QTest::newRow("not ASCII") << "\u00e4\u6f22.mp4"
                                   << "\u00e4\u6f22 (1).mp4"
                                   << "\u00e4\u6f22 (2).mp4";
        QTest::newRow("beyond U+FFFF") << "\U0001f3ac.mp4"
                                       << "\U0001f3ac (1).mp4"
                                       << "\U0001f3ac (2).mp4";
    }

    void aTakenNameIsNumberedBeforeTheExtension()
    {
        QFETCH(QString, name);
        const QDir folder(m_folder.filePath(QTest::currentDataTag()));
        QVERIFY(folder.mkpath("."));
        QFETCH(QString, first);
        QFETCH(QString, second);
        QVERIFY(Take(folder.filePath(name)));
        QCOMPARE(FreeName(folder.filePath(name)), folder.filePath(first));
        QVERIFY(Take(folder.filePath(first)));
        QCOMPARE(FreeName(folder.filePath(name)), folder.filePath(second));
    }

    void aDotInTheFolderIsNoExtension()
    {
        const QDir folder(m_folder.filePath("some.folder"));
        QVERIFY(folder.mkpath("."));
        QVERIFY(Take(folder.filePath("name")));
        QCOMPARE(FreeName(folder.filePath("name")), folder.filePath("name (1)"));
    }

    void aLinkThatLeadsNowhereIsTaken()
    {
        QVERIFY(QFile::link("nowhere", m_folder.filePath("link.mp4")));
        QCOMPARE(FreeName(m_folder.filePath("link.mp4")), m_folder.filePath("link (1).mp4"));
    }

    void nothingIsWrittenBeyondTheBuffer()
    {
        const QString path = m_folder.filePath("tight.mp4");
        QVERIFY(Take(path));
        const int needed = static_cast<int>(path.size()) + 4 + 1;
        QCOMPARE(FreeName(path, needed), m_folder.filePath("tight (1).mp4"));
        QCOMPARE(FreeName(path, needed - 1), QString());
        QCOMPARE(FreeName(path, 1), QString());
        QCOMPARE(FreeName("/a/free/path", 5), QString());
        wchar_t untouched = L'x';
        GetRealFileName(L"/", &untouched, 0);
        QVERIFY2(untouched == L'x', "a buffer of no size was written to");
    }

    void aNameThatNoDiskTakesGivesNoNameInsteadOfSearchingForever()
    {
        const QString path = m_folder.filePath(QString(251, 'n') + ".mp4");
        QVERIFY(Take(path));
        QCOMPARE(FreeName(path), QString());
    }

    void extension()
    {
        std::array<char, 16> ext{};
        QCOMPARE(GetExtendName("a.b.mp4", ext.data()), 0);
        QCOMPARE(ext.data(), "mp4");
        QCOMPARE(GetExtendName("ends.", ext.data()), 0);
        QCOMPARE(ext.data(), "");
        QCOMPARE(GetExtendName("none", ext.data()), 87);
        QCOMPARE(GetExtendName(nullptr, ext.data()), 87);
        QCOMPARE(GetExtendName("a.mp4", nullptr), 87);
    }

    void partsOfAPath_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("parts");
        const auto row = [](const char* path, const char* parts) {
            QTest::newRow(path) << QByteArray(path) << QByteArray(parts);
        };
        row("/a/b.c/name.x.mp4", "|/a/b.c/|name.x|.mp4");
        row("name.mp4", "||name|.mp4");
        row("/a.b/name", "|/a.b/|name|");
        row("/folder/", "|/folder/||");
        row(".mp4", "|||.mp4");
        row("", "|||");
        QTest::newRow("no path") << QByteArray() << QByteArray("|||");
    }

    void partsOfAPath()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, parts);
        std::array<std::array<char, 64>, 4> part{};
        for (auto& text : part) {
            text.fill('x');
        }
        _splitpath(path.isNull() ? nullptr : path.constData(), part[0].data(), part[1].data(),
                   part[2].data(), part[3].data());
        QCOMPARE(QByteArray(part[0].data()) + '|' + part[1].data() + '|' + part[2].data() + '|' +
                     part[3].data(),
                 parts);
    }

    void countOfSeparators()
    {
        int count = -1;
        QCOMPARE(GetPathDirIndex(L"/a/b\\c/", count), 0);
        QCOMPARE(count, 3);
        GetPathDirIndex(L"/a/b", count);
        QCOMPARE(count, 2);
        GetPathDirIndex(L"/", count);
        QCOMPARE(count, 0);
        GetPathDirIndex(L"", count);
        QCOMPARE(count, 0);
    }

    void trailingBlanks_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("length");
        QTest::addColumn<QByteArray>("left");
        QTest::newRow("one blank at the end") << QByteArray("a b ") << 4 << QByteArray("a b");
        QTest::newRow("blanks at the end") << QByteArray("a b  ") << 5 << QByteArray("a b");
        QTest::newRow("up to the length only") << QByteArray("ab   c") << 5 << QByteArray("ab");
        QTest::newRow("a tab is no blank") << QByteArray("a\t") << 2 << QByteArray("a\t");
        QTest::newRow("blanks alone") << QByteArray("   ") << 3 << QByteArray("");
        QTest::newRow("no length") << QByteArray("a ") << 0 << QByteArray("a ");
    }

    void trailingBlanks()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, length);
        EraseStringTailBlankChar(text.data(), length);
        QTEST(QByteArray(text.constData()), "left");
    }

    void lowerCaseOfAsciiLettersAlone()
    {
        for (const auto convert : {&Convert2Lowercase, &GetCharLowerA}) {
            QByteArray text = "AZ@[az09 \xc3\x84";
            convert(text.data());
            QCOMPARE(text, QByteArray("az@[az09 \xc3\x84"));
        }
    }

private:
    QTemporaryDir m_folder;
};

QTEST_APPLESS_MAIN(PathTest)
#include "path_test.moc"
