// A Wayland session of two outputs, and recordings of them by `tool`.
#pragma once

#include "tests/support/run_program.h"
#include "tests/support/tool_take.h"
#include "tool/screen/rectangle.h"

#include <QList>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <vector>

// The brightness of colours, 16 to 235.
constexpr int kRed = 82;
constexpr int kGreen = 145;
constexpr int kBlue = 41;
constexpr int kWhite = 235;
constexpr int kBlack = 16;

// The size of both outputs.
constexpr int kOutputWidth = 640;
constexpr int kOutputHeight = 400;

// The brightness in the middle of each quarter of a picture: upper left, upper right, lower left,
// lower right. Empty if there is no picture.
using Lumas = QList<int>;

bool AreAlike(const Lumas& one, const Lumas& other);
QByteArray Told(const Lumas& lumas);

// Has sway do this, as swaymsg understands it. Returns false if it does not.
bool TellSway(const QStringList& command);

// The outputs' places and sizes, from left to right.
std::vector<tool::Rectangle> OutputAreas();

// What an output shows now, without a recording.
Lumas ShownLumas(size_t output);

// Fills the output's background, as sway's command "bg" does. Returns false if that is not seen.
bool Show(size_t output, const QStringList& background, const Lumas& lumas);
// `colour`: "#rrggbb".
bool ShowColour(size_t output, const QString& colour, int luma);

// Undoes what was changed about the outputs. Returns false if that fails.
bool RestoreOutputs();

// What a recording's last frame shows.
Lumas LastLumas(const QString& file);

// Recordings in a folder of their own.
class WaylandTakes
{
public:
    // Returns when there is content. Fails the test if there never is.
    std::unique_ptr<Take> Begin(const QString& devices);
    // Waits until that many more seconds are recorded, or the recording has ended.
    static bool WaitForSeconds(const Take& take, double seconds);
    // Returns the reason why it is no recording, or "".
    static QString Finish(Take& take);

    QString Path(const QString& name) const { return m_folder.filePath(name); }
    QString Folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    int m_nTakes = 0;
};
