#pragma once

#include <QString>

class QEventLoop;
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

/// StartTool(), then waits with an event loop until the tool has ended or kToolWaitMs have passed.
/// A tool that takes longer is left running and counts as finished. readyRead() and all other
/// events of the program are delivered during the wait. A loop that runs on top of it delays the
/// return; see ExecUntilToolEnds(). Returns false if the program is ending
/// (QCoreApplication::exit()). The tool has then been ended as well, within a second, and the
/// caller should leave nothing behind and return.
bool RunTool(QProcess& process, const QString& command);

/// Kills a tool that writes no file, and ends a RunTool() that waits for it, also if a dead network
/// share keeps it from dying. Blocks for half a second then.
void LeaveTool(QProcess& process);

/// Whether a RunTool() waits for the process and has less than two seconds left.
bool IsToolWaitEnding(const QProcess& process);

/// Runs `loop` in an event handler, possibly on top of a RunTool(), whose end ends it too.
void ExecUntilToolEnds(QEventLoop& loop);

/// Writes the tool's quit command, three bytes. The tool then finishes its file and exits.
void AskToolToQuit(QProcess& process);

/// Reads all available output as Latin-1, up to the first zero byte.
QString ReadToolText(QProcess& process);
