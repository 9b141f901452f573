#pragma once

#include <QString>
#include <QVector>

// Parses the tool's list of capture devices.

/// Item data of the audio choices that are not a device index.
constexpr int kAudioBoth = -1;                   // microphone and computer sounds
constexpr unsigned int kAudioNone = 4294967294U; // reads as the signed int -2

struct AudioChoice
{
    const char* text; // untranslated
    int data;         // kAudioBoth or the device's index
};

struct DeviceListing
{
    char screen = 0; // first digit of the screen's index; 0 if no screen is listed
    int microphone = -1;
    int sound = -1;               // computer sounds; both are -1 if there is no such device
    QVector<AudioChoice> choices; // in display order
};

/// The command line that lists the devices; the input name is a quoted blank.
QString DeviceListCommand(const QString& tool);

/// Parses a listing. Accepts any text; what it does not contain stays unset.
DeviceListing ParseDeviceListing(const QString& text);
