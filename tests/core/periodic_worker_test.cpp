// Pacing schedules and the worker loop skeleton, on a fake clock.
#include "core/periodic_worker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;

// A clock that only moves when a pass does work or the loop sleeps.
TimePoint current{};
const LoopClock kFakeClock{[] { return current; },
                           [](TimePoint wake) { current = std::max(current, wake); }};

// Runs a loop whose passes take the given durations and records when each pass began. Each pass
// changes the period, which must not reach the running loop; no durations: the flag is false on
// entry.
std::vector<int64_t> passStarts(Pacing pacing, uint16_t periodMs, const std::vector<int>& workMs) {
    current = TimePoint{};
    PeriodicWorker worker;
    worker.periodMs = periodMs;
    worker.keepRunning = !workMs.empty();
    std::vector<int64_t> starts;
    std::size_t index = 0;
    runPeriodic(
        worker, pacing,
        [&](TimePoint now) {
            starts.push_back((now - TimePoint{}) / milliseconds(1));
            if (index < workMs.size()) current += milliseconds(workMs[index]);
            worker.periodMs = 1000;
            if (++index >= workMs.size()) worker.keepRunning = false;
        },
        kFakeClock);
    return starts;
}

TEST(Pacing, EachKindSchedulesItsPassesOnTheLoopClock) {
    const struct {
        Pacing pacing;
        uint16_t periodMs;
        std::vector<int> workMs;
        std::vector<int64_t> starts;
    } cases[] = {
        // A 15 ms overrun on a 10 ms period is caught up on the original grid...
        {Pacing::BoundedCatchUp, 10, {1, 15, 1, 1}, {0, 10, 25, 30}},
        // ...two periods past the deadline the next pass starts at once and the grid restarts.
        {Pacing::BoundedCatchUp, 10, {1, 20, 1, 1}, {0, 10, 30, 40}},
        {Pacing::FixedRate, 50, {1, 160, 1, 1, 1, 1}, {0, 50, 210, 211, 212, 250}},
        {Pacing::FixedRateTripleStep, 10, {1, 1, 1, 1}, {0, 30, 60, 90}},
        {Pacing::FixedPause, 50, {5, 20, 5}, {0, 55, 125}},
        {Pacing::FixedRate, 10, {}, {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(passStarts(c.pacing, c.periodMs, c.workMs), c.starts)
            << static_cast<int>(c.pacing) << " " << c.periodMs;
    }
}

}  // namespace
}  // namespace fenixA320
