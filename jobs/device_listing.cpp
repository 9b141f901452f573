#include "jobs/device_listing.h"

namespace {

// The decimal number at `position`, or 0 if there is none. Numbers too large for a device index are
// clamped.
int LeadingNumber(const QString& text, qsizetype position)
{
    constexpr int limit = 99999999;
    int number = 0;
    for (; position < text.size() && text.at(position) >= '0' && text.at(position) <= '9';
         ++position) {
        number = qMin(limit, number * 10 + text.at(position).digitValue());
    }
    return number;
}

// The position of the last " [" before `end`, which opens a device's index, or -1. The bracket at
// the start of a line has no blank before it and does not count.
qsizetype LastIndexMarker(const QString& text, qsizetype end)
{
    return text.left(end).lastIndexOf(" [");
}

// Keeps only one character of the screen's index, so an index of 10 or more is cut to its first
// digit. This is intended: the recording command inserts the character as is.
char ScreenIndex(const QString& text)
{
    const qsizetype header = text.indexOf("video devices:");
    const qsizetype screen = header < 0 ? -1 : text.indexOf("Capture screen", header);
    const qsizetype marker = screen < 0 ? -1 : LastIndexMarker(text, screen);
    return marker < 0 ? '\0' : text.at(marker + 2).toLatin1();
}

} // namespace

QString DeviceListCommand(const QString& tool)
{
    return tool + " -f avfoundation -list_devices true -i \" \"";
}

DeviceListing ParseDeviceListing(const QString& text)
{
    DeviceListing listing;
    listing.screen = ScreenIndex(text);

    const qsizetype header = text.indexOf("audio devices:");
    if (header < 0) {
        return listing;
    }
    const qsizetype name = text.indexOf("Microphone", header);
    const qsizetype microphone = name < 0 ? -1 : LastIndexMarker(text, name);
    if (microphone >= 0) {
        listing.microphone = LeadingNumber(text, microphone + 2);
    }
    // The last device of the whole listing counts as computer sounds. If no device follows the
    // audio header, that is a video device; this is intended.
    const qsizetype last = LastIndexMarker(text, text.size());
    if (last >= 0) {
        const int index = LeadingNumber(text, last + 2);
        listing.sound = index == listing.microphone ? -1 : index;
    }

    if (listing.microphone != -1 && listing.sound != -1) {
        listing.choices.append(
            {QT_TRANSLATE_NOOP("QWidget", "Computer sounds and Microphone"), kAudioBoth});
    }
    if (listing.sound != -1) {
        listing.choices.append({QT_TRANSLATE_NOOP("QWidget", "Computer sounds"), listing.sound});
    }
    if (listing.microphone != -1) {
        listing.choices.append({QT_TRANSLATE_NOOP("QWidget", "Microphone"), listing.microphone});
    }
    return listing;
}
