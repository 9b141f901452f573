#include "jobs/device_listing.h"

namespace {

// The leading decimal digits at `position`; 0 where there are none. Larger numbers than an int
// holds are no device index and stay at its limit.
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

// Where the last " [" before `end` begins, the opening of a device's index; -1 if there is none.
// The bracket that opens a line has no blank before it and is not one.
qsizetype LastIndexMarker(const QString& text, qsizetype end)
{
    return text.left(end).lastIndexOf(" [");
}

// Only one character of the screen's index is kept, which cuts an index of 10 or more to its first
// digit. This is meant: the recording command inserts the character as it stands.
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
    // The last device of the whole listing is taken for the computer sounds. With an audio header
    // and no device under it that is a video device; this is meant.
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
