// Flashes and beeps of a recorded test pattern.
#pragma once

#include <QMap>
#include <QString>

struct FlashAndBeep
{
    double distance = -1; // seconds; half the time between two flashes if there is no beep at all
    double at = 0;        // of the flash
};

// The flash farthest from its beep among those between these seconds. `report`: of PatternReport().
// Its distance is -1 if there is no flash.
FlashAndBeep WorstPair(const QMap<QString, QString>& report, double from = 0, double to = 1e9);

void PrintWorstPair(const QString& what, const FlashAndBeep& pair);
