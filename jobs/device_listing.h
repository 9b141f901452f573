#pragma once

#include <QString>
#include <QVector>

// What the tool prints about the capture devices, and what of it can be recorded.

/// Item data of the audio choices that are no device index.
constexpr int kAudioBoth = -1;                   // microphone and computer sounds
constexpr unsigned int kAudioNone = 4294967294U; // reads as the signed int -2

struct AudioChoice
{
    const char* text; // untranslated
    int data;         // kAudioBoth or the device's index
};

struct DeviceListing
{
    char screen = 0; // first digit of the screen's index; 0 when no screen is listed
    int microphone = -1;
    int sound = -1;               // computer sounds; -1 like the microphone's when there is none
    QVector<AudioChoice> choices; // in the order in which they are offered
};

/// The command line that lists the devices; the input name is a quoted blank.
QString DeviceListCommand(const QString& tool);

/// Reads a listing. Any text is accepted; what it does not hold stays unset.
DeviceListing ParseDeviceListing(const QString& text);
