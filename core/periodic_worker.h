// A worker thread that repeats one pass at a fixed period, with the pacing arithmetic kept pure.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

#include "platform/clock.h"

namespace fenixA320 {

enum class Pacing {
    BoundedCatchUp,       // restart the schedule when two or more periods behind
    FixedRate,            // never reset: missed passes run back to back
    FixedRateTripleStep,  // fixed rate with three periods per step
    FixedPause,           // sleep one period after each pass
};

struct PaceStep {
    TimePoint deadline;  // the loop's deadline after this step
    TimePoint wakeAt;    // when the next pass may start (at or before now: at once)
};

// One pacing step after a pass that ended at `now`.
PaceStep pace(Pacing pacing, TimePoint deadline, TimePoint now, Nanos period);

// The time source of a loop: the platform seam's clock, or a test's own.
struct LoopClock {
    TimePoint (*now)();
    void (*sleepUntil)(TimePoint wakeAt);
};

struct PeriodicWorker {
    std::atomic<bool> keepRunning{true};
    std::unique_ptr<std::thread> thread;
    std::atomic<uint16_t> periodMs{10};

    // Runs `loop` on a new thread; std::system_error when the thread cannot be created.
    void StartWorker(std::function<void()> loop);
    // Stops and joins the thread, if any, and leaves the worker ready to start again.
    void StopWorker();
};

// The loop skeleton shared by all workers: reads the clock and the period once, then repeats
// pass, pacing step and flag test until the flag is false. A flag that is false on entry
// runs no pass.
void runPeriodic(PeriodicWorker& worker, Pacing pacing, const std::function<void(TimePoint)>& pass,
                 const LoopClock& clock);

}  // namespace fenixA320
