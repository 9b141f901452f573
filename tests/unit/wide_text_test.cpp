#include "util/wide_text.h"

#include <QTest>

#include <array>
#include <iconv.h>

#ifdef WRAPS_SYSTEM_CALLS
namespace {
QStringList g_opened;   // "to < from", in order
QString g_broken;       // the pair that iconv_open() refuses
int g_nDescriptors = 0; // currently open
} // namespace

extern "C" {
iconv_t __real_iconv_open(const char* to, const char* from); // NOLINT: the linker's names
iconv_t __wrap_iconv_open(const char* to, const char* from); // NOLINT
int __real_iconv_close(iconv_t descriptor);                  // NOLINT
int __wrap_iconv_close(iconv_t descriptor);                  // NOLINT

iconv_t __wrap_iconv_open(const char* to, const char* from) // NOLINT
{
    g_opened << QString("%1 < %2").arg(to, from);
    auto* const none = reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
    auto* const made = g_opened.last() == g_broken ? none : __real_iconv_open(to, from);
    g_nDescriptors += made == none ? 0 : 1;
    return made;
}

int __wrap_iconv_close(iconv_t descriptor) // NOLINT
{
    --g_nDescriptors;
    return __real_iconv_close(descriptor);
}
}
#endif

namespace {

constexpr bool IsSurrogate(int code)
{
    return code >= 0xd800 && code <= 0xdfff;
}

// Encodes one character up to U+FFFF as UTF-8, without a library.
std::string Utf8(int code)
{
    const auto byte = [](int value) { return static_cast<char>(value); };
    if (code < 0x80) {
        return {byte(code)};
    }
    if (code < 0x800) {
        return {byte(0xc0 | code >> 6), byte(0x80 | (code & 0x3f))};
    }
    return {byte(0xe0 | code >> 12), byte(0x80 | (code >> 6 & 0x3f)), byte(0x80 | (code & 0x3f))};
}

} // namespace

class WideTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Test functions run in order: this one runs before the conversions are set up.
    void beforeItIsSetUpNothingIsConverted()
    {
        std::array<char, 8> text{'x'};
        std::array<wchar_t, 8> wide{L'x'};
        QCOMPARE(g_language, "");
        QCOMPARE(inner_uni2str(L"a", text.data(), 8), -1);
        QCOMPARE(text[0], '\0');
        QCOMPARE(inner_str2uni("a", wide.data(), 8), -1);
        QVERIFY(wide[0] == L'\0');
        QVERIFY(Unicode2Ansi(L"a").empty() && Ansi2Unicode("a").empty());
    }

    void anUnknownEncodingFailsAndNothingIsConverted()
    {
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        QCOMPARE(inner_initUnicodeMap("no such encoding"), -1);
        QVERIFY(Unicode2Ansi(L"a").empty() && Ansi2Unicode("a").empty());
        QCOMPARE(inner_initUnicodeMap(std::string(1000, 'x').c_str()), -1);
        QCOMPARE(strlen(g_language), sizeof g_language - 1);
    }

    void theNameOfTheEncodingIsKept()
    {
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        QCOMPARE(g_language, "UTF-8");
    }

    void everyCharacterUpToFFFFGoesThereAndBack()
    {
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        for (int code = 1; code <= 0xffff; ++code) {
            if (IsSurrogate(code)) {
                continue;
            }
            const std::wstring wide{L'<', static_cast<wchar_t>(code), L'>'};
            const std::string text = '<' + Utf8(code) + '>';
            QVERIFY2(Unicode2Ansi(wide.c_str()) == text,
                     qPrintable(QString("U+%1").arg(code, 4, 16)));
            QVERIFY2(Ansi2Unicode(text.c_str()) == wide,
                     qPrintable(QString("U+%1").arg(code, 4, 16)));
        }
    }

    void charactersBeyondFFFFAndHalvesOfThemFail_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("utf8");
        QTest::newRow("U+10000") << 0x10000 << QByteArray("\xf0\x90\x80\x80");
        QTest::newRow("U+1F3AC") << 0x1f3ac << QByteArray("\xf0\x9f\x8e\xac");
        QTest::newRow("U+10FFFF") << 0x10ffff << QByteArray("\xf4\x8f\xbf\xbf");
        QTest::newRow("beyond all characters") << 0x7fffffff << QByteArray("\xf4\x90\x80\x80");
        QTest::newRow("the first half") << 0xd800 << QByteArray("\xed\xa0\x80");
        QTest::newRow("the last half") << 0xdfff << QByteArray("\xed\xbf\xbf");
    }

    void charactersBeyondFFFFAndHalvesOfThemFail()
    {
        QFETCH(int, code);
        QFETCH(QByteArray, utf8);
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        const std::wstring wide{L'a', static_cast<wchar_t>(code), L'b'};
        std::array<char, 32> text{};
        text.fill('x');
        QCOMPARE(inner_uni2str(wide.c_str(), text.data(), 32), -1);
        QCOMPARE(text.data(), "");
        std::array<wchar_t, 32> back{};
        back.fill(L'x');
        QCOMPARE(inner_str2uni(("a" + utf8 + "b").constData(), back.data(), 32), -1);
        QVERIFY(back[0] == L'\0');
        QVERIFY(Unicode2Ansi(wide.c_str()).empty());
    }

    void bytesThatAreNoTextFail()
    {
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        std::array<wchar_t, 8> wide{};
        for (const char* text : {"\xff", "a\xc3", "\x80z"}) {
            QCOMPARE(Ansi2Unicode(text, wide.data(), 8), -1);
        }
    }

    void aResultThatDoesNotFitIsNotCutInTheMiddle()
    {
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        std::array<char, 5> text{};
        text.fill('x');
        QCOMPARE(Unicode2Ansi(L"\u6f22", text.data(), 4), 0);
        QCOMPARE(text.data(), "\u6f22");
        text.fill('x');
        QCOMPARE(Unicode2Ansi(L"\u6f22", text.data(), 3), -1);
        QCOMPARE(QByteArray(text.data(), 5), QByteArray("\0xxxx", 5));
        QCOMPARE(Unicode2Ansi(L"", text.data(), 0), -1);
        std::array<wchar_t, 4> wide{L'x', L'x', L'x', L'x'};
        QCOMPARE(Ansi2Unicode("abc", wide.data(), 3), -1);
        QVERIFY(wide[0] == L'\0' && wide[1] == L'x');
        QCOMPARE(Ansi2Unicode("ab", wide.data(), 3), 0);
        QVERIFY(std::wstring(wide.data()) == L"ab" && wide[3] == L'x');
    }

#ifdef WRAPS_SYSTEM_CALLS
    void theUsualNameOfWideTextIsTriedFirst()
    {
        g_opened.clear();
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        QCOMPARE(g_opened.mid(0, 2),
                 QStringList({"UNICODELITTLE < UTF-8", "UTF-8 < UNICODELITTLE"}));
    }

    void whereTheUsualNameIsUnknownAnotherServes()
    {
        g_broken = "UNICODELITTLE < UTF-8";
        const int result = inner_initUnicodeMap("UTF-8");
        g_broken.clear();
        QCOMPARE(result, 0);
        QVERIFY(Ansi2Unicode("\u4e2d") == L"\u4e2d");
    }

    void withoutTheSecondConversionNoneIsSetUp()
    {
        g_broken = "UTF-8 < UCS-4LE";
        const int result = inner_initUnicodeMap("UTF-8");
        g_broken.clear();
        QCOMPARE(result, -1);
        QVERIFY2(Ansi2Unicode("a").empty(), "one direction was left open");
        QCOMPARE(g_nDescriptors, 0);
    }
#endif

    // A failure in the middle of shifted text leaves the descriptor shifted.
    void aFailureDoesNotShiftTheNextText()
    {
        QCOMPARE(inner_initUnicodeMap("ISO-2022-JP"), 0);
        QVERIFY(Ansi2Unicode("\x1b$B\xff").empty());
        QVERIFY(Ansi2Unicode("ab") == L"ab");
    }

    void theFirstCharactersOfATextWithoutAnEnd()
    {
        QCOMPARE(inner_initUnicodeMap("UTF-8"), 0);
        const std::array<wchar_t, 3> wide{L'\u00e4', L'b', L'c'};
        std::array<char, 8> text{};
        QCOMPARE(inner_uni2str2(wide.data(), 2, text.data(), 8), 0);
        QCOMPARE(text.data(), "\u00e4b");
        QCOMPARE(inner_uni2str2(wide.data(), 0, text.data(), 8), 0);
        QCOMPARE(text.data(), "");
    }

    void otherEncodings_data()
    {
        QTest::addColumn<QByteArray>("encoding");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("wide");
        QTest::newRow("GB2312") << QByteArray("GB2312") << QByteArray("\xc4\xe3\xba\xc3")
                                << "\u4f60\u597d";
        QTest::newRow("ISO-8859-1")
            << QByteArray("ISO-8859-1") << QByteArray("\xe4\xdf") << "\u00e4\u00df";
    }

    void otherEncodings()
    {
        QFETCH(QByteArray, encoding);
        QFETCH(QByteArray, text);
        QFETCH(QString, wide);
        QCOMPARE(inner_initUnicodeMap(encoding.constData()), 0);
        QCOMPARE(QString::fromStdWString(Ansi2Unicode(text.constData())), wide);
        QCOMPARE(QByteArray::fromStdString(Unicode2Ansi(wide.toStdWString().c_str())), text);
    }

    void aCharacterThatTheEncodingLacksFails()
    {
        QCOMPARE(inner_initUnicodeMap("ISO-8859-1"), 0);
        std::array<char, 8> text{'x'};
        QCOMPARE(inner_uni2str(L"a\u6f22", text.data(), 8), -1);
        QCOMPARE(text[0], '\0');
    }
};

QTEST_APPLESS_MAIN(WideTextTest)
#include "wide_text_test.moc"
