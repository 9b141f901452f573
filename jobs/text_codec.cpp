#include "jobs/text_codec.h"

#include <QTextCodec>

namespace {
QTextCodec* g_pTextCodec = nullptr; // owned by Qt's own list of codecs
} // namespace

void InstallTextCodec(const char* name)
{
    if (QTextCodec* codec = QTextCodec::codecForName(name)) {
        g_pTextCodec = codec;
    }
}

QString FromEightBit(const QByteArray& text)
{
    return g_pTextCodec != nullptr ? g_pTextCodec->toUnicode(text) : QString::fromLatin1(text);
}

QString FromEightBit(const std::string& text)
{
    return FromEightBit(QByteArray::fromStdString(text));
}

QByteArray ToEightBit(const QString& text)
{
    return g_pTextCodec != nullptr ? g_pTextCodec->fromUnicode(text) : text.toLatin1();
}
