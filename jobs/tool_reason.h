#pragma once

#include <QString>

// Finds out from the tool's output why it ended.

/// The last line of `output` that says why the tool ended: one of its own ("tool: sentence.") or
/// ffmpeg's message of an error. Without marks such as "tool: " or "[mp4 @ 0x55d5c8a0]", as a
/// single line of printable text, at most 200 characters. Empty if there is none. `output` is
/// Latin-1 text whose bytes may be UTF-8. With `killed`, only what came after the last line of
/// progress counts: messages before that were no reason to end.
QString ReasonIn(const QString& output, bool killed);

/// `text` as a single line of printable text, at most 200 characters: the middle of a longer one is
/// left out.
QString PlainLine(QString text);
