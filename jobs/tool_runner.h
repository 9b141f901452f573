#pragma once

#include <QString>

class QProcess;

// The one place where the external executable `tool` is started, waited for, read and stopped.

/// How long every wait for the tool lasts at most, in milliseconds.
constexpr int kToolWaitMs = 30000;

/// What every command line begins with: the tool's path in the program's own directory, in double
/// quotes. A double quote in that path breaks the command line.
QString ToolPrefix();

/// Logs `command`, starts it on `process` and waits for the start. `command` is one line, split at
/// blanks outside double quotes. A process that still runs refuses the start and goes on.
/// Returns whether the process runs or has run; most callers do not look.
bool StartTool(QProcess& process, const QString& command);

/// StartTool, then waits for the end. The process's readyRead() reaches its slots inside the wait.
/// A tool that runs longer than the wait is left running and counts as finished.
void RunTool(QProcess& process, const QString& command);

/// Types the tool's quit command, three bytes; the tool finishes its file and exits.
void AskToolToQuit(QProcess& process);

/// All output available now, as Latin-1, up to the first zero byte.
QString ReadToolText(QProcess& process);
