#pragma once

#include <QtGlobal>

/// Appends debug messages as "Debug: …" to "Log.txt" in the working directory. Drops all other
/// messages; a fatal one does not abort. The program does not install it, because debug output goes
/// to standard error. It is for builds that want the file.
void customMessageHandler(QtMsgType type, const char* msg);
