#include "jobs/text_codec.h"

#include <QTextCodec>

#include <algorithm>

namespace {

QByteArray g_strInstalled;          // a name that has not been looked up yet
QTextCodec* g_pTextCodec = nullptr; // owned by Qt

// Looked up on first use, which most runs never reach: the codec tables take a megabyte.
const QTextCodec* InstalledCodec()
{
    if (!g_strInstalled.isEmpty()) {
        if (QTextCodec* codec = QTextCodec::codecForName(g_strInstalled)) {
            g_pTextCodec = codec;
        }
        g_strInstalled.clear();
    }
    return g_pTextCodec;
}

} // namespace

void InstallTextCodec(const char* name)
{
    if (g_strInstalled != name) {
        InstalledCodec(); // so that an unknown new name keeps the previous codec
        g_strInstalled = name;
    }
}

// Times and sizes are plain ASCII, which is the same in every 8-bit codec.
QString FromEightBit(const QByteArray& text)
{
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::all_of(text.cbegin(), text.cend(), isAscii)) {
        return QString::fromLatin1(text);
    }
    const QTextCodec* codec = InstalledCodec();
    return codec != nullptr ? codec->toUnicode(text) : QString::fromLatin1(text);
}

QString FromEightBit(const std::string& text)
{
    return FromEightBit(QByteArray::fromStdString(text));
}

QByteArray ToEightBit(const QString& text)
{
    const QTextCodec* codec = InstalledCodec();
    return codec != nullptr ? codec->fromUnicode(text) : text.toLatin1();
}
