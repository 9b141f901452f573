#pragma once

#include <QByteArray>
#include <QString>

#include <string>

// The codec for 8-bit strings. Qt 6 has no global one, so the program has its own. It converts
// between QString and the 8-bit texts of times, sizes, log messages and the launcher's program
// path.

/// Installs the codec with this IANA name ("GB2312" in this program) for 8-bit strings. An unknown
/// name keeps the previous codec.
void InstallTextCodec(const char* name);

/// Decodes `text` with the installed codec, or as Latin-1 if none is installed.
QString FromEightBit(const QByteArray& text);
QString FromEightBit(const std::string& text);

/// Encodes `text` with the installed codec, or as Latin-1 if none is installed. Characters it does
/// not have become "?".
QByteArray ToEightBit(const QString& text);
