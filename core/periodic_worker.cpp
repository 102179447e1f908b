// Worker threads and their pacing.
#include "core/periodic_worker.h"

#include <system_error>

namespace fenixA320 {

PaceStep pace(Pacing pacing, TimePoint deadline, TimePoint now, Nanos period) {
    switch (pacing) {
        case Pacing::BoundedCatchUp:
            if (now - deadline < 2 * period) {
                deadline += period;
                return {deadline, deadline};
            }
            return {now, now};
        case Pacing::FixedRate:
            deadline += period;
            return {deadline, deadline};
        case Pacing::FixedRateTripleStep:
            deadline += 3 * period;
            return {deadline, deadline};
        case Pacing::FixedPause:
            return {deadline, now + period};
    }
    return {deadline, now};
}

void PeriodicWorker::StartWorker(std::function<void()> loop) {
    thread = std::make_unique<std::thread>(std::move(loop));
}

void PeriodicWorker::StopWorker() {
    if (!thread) return;
    keepRunning.store(false);
    thread->join();
    thread.reset();
    keepRunning.store(true);
}

void runPeriodic(PeriodicWorker& worker, Pacing pacing, const std::function<void(TimePoint)>& pass,
                 const LoopClock& clock) {
    TimePoint deadline = clock.now();
    const Nanos period = std::chrono::milliseconds(worker.periodMs.load(std::memory_order_relaxed));
    if (!worker.keepRunning.load()) return;
    do {
        pass(clock.now());
        const PaceStep step = pace(pacing, deadline, clock.now(), period);
        deadline = step.deadline;
        clock.sleepUntil(step.wakeAt);
    } while (worker.keepRunning.load());
}

}  // namespace fenixA320
