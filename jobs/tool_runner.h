#pragma once

#include <QString>

class QProcess;

// The only place that starts, waits for, reads and stops the external executable `tool`.

/// The longest wait for the tool, in milliseconds: 30000. Defined in an object file of its own, so
/// that tests can be linked with a different value.
extern const int kToolWaitMs;

/// The start of every command line: the tool's path in the program's directory, in double quotes.
QString ToolPrefix();

/// Logs `command`, starts it on `process` and waits until it has started. `command` is split at
/// blanks outside double quotes. A process that is still running refuses the start and goes on.
/// Returns whether the process is running or has run.
bool StartTool(QProcess& process, const QString& command);

/// StartTool(), then waits for the tool to finish. readyRead() is emitted during the wait. A tool
/// that takes longer than kToolWaitMs is left running and counts as finished.
void RunTool(QProcess& process, const QString& command);

/// Writes the tool's quit command, three bytes. The tool then finishes its file and exits.
void AskToolToQuit(QProcess& process);

/// Reads all available output as Latin-1, up to the first zero byte.
QString ReadToolText(QProcess& process);
