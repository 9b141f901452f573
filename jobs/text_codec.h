#pragma once

#include <QByteArray>
#include <QString>

#include <string>

// The codec for 8-bit strings. Qt 6 has no global one to install, so this is the program's own;
// it is used wherever the text of an 8-bit function (times, sizes, log messages, the program's
// path for the launcher) turns into a QString or back.

/// Makes the codec called `name` (an IANA name, "GB2312" in this program) the one for 8-bit
/// strings. An unknown name keeps the codec installed before.
void InstallTextCodec(const char* name);

/// `text` read through the installed codec; as Latin-1 before the first installation.
QString FromEightBit(const QByteArray& text);
QString FromEightBit(const std::string& text);

/// `text` written through the installed codec, "?" for what it cannot express; as Latin-1 before
/// the first installation.
QByteArray ToEightBit(const QString& text);
