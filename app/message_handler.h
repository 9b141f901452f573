#pragma once

#include <QtGlobal>

/// Appends a debug message as "Debug: …" to "Log.txt" in the working directory; every other kind of
/// message is dropped, and a fatal one does not end the process. The program does not install it:
/// debug output goes to standard error. It stays for a build that wants the file.
void customMessageHandler(QtMsgType type, const char* msg);
