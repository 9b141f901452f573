// What recordings of a Wayland session cost.
#pragma once

#include <QString>

#include <optional>

class Desktop;

struct RecorderCost
{
    double program = 0;      // processor seconds of the recorder
    double all = 0;          // and of everything it started
    qsizetype processes = 0; // which it started
};

// Records with the real program, with the computer's sounds, and counts these seconds after the
// first one. `portal`: of the variable that chooses the portal. Nothing on failure.
std::optional<RecorderCost> CostOfRecorder(Desktop& desktop, int seconds,
                                           const QString& portal = {});

// The processor seconds of wf-recorder with the same sound and encoder settings, at the output's
// rate.
std::optional<double> CostOfWfRecorder(const QString& file, int seconds);
