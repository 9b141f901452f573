#include "bench/flash_and_beep.h"

#include "bench/table.h"
#include "tests/support/recording_file.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kWithoutBeep = 0.5; // half the time between two flashes

} // namespace

// The beep of a flash at the very beginning or end may be outside the recording.
FlashAndBeep WorstPair(const QMap<QString, QString>& report, double from, double to)
{
    constexpr double margin = 0.2;
    const QList<double> beeps = Numbers(report["beep_times"]);
    const double last = report["sound_duration"].toDouble() - margin;
    FlashAndBeep worst;
    for (const double flash : Numbers(report["flash_times"])) {
        if (flash < std::max(margin, from) || flash > std::min(last, to)) {
            continue;
        }
        double distance = kWithoutBeep;
        for (const double beep : beeps) {
            distance = std::min(distance, std::abs(beep - flash));
        }
        worst = distance > worst.distance ? FlashAndBeep{distance, flash} : worst;
    }
    return worst;
}

void PrintWorstPair(const QString& what, const FlashAndBeep& pair)
{
    const bool heard = pair.distance >= 0 && pair.distance < kWithoutBeep;
    const QString told = pair.distance < 0 ? QString("no flash")
                         : heard           ? Number(1000 * pair.distance, 0) + " ms"
                                           : QString("no beep");
    Row(what, told + ", at " + Number(pair.at, 1) + " s", "<= 50 ms",
        heard && pair.distance <= 0.05);
}
