// The 100 ms gate of the panel push buttons, driven with synthetic time.
#include "input/debounced_key.h"

#include <gtest/gtest.h>

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

const TimePoint kBuilt = TimePoint{} + std::chrono::hours(1);

TEST(DebouncedKey, GateOfExactlyOneHundredMillisecondsFromBuildAndFromEachAcceptedEvent) {
    const struct {
        Nanos at;  // since the key was built
        bool state, accepted;
        double element;  // the block element after the event
    } script[] = {
        {milliseconds(100) - nanoseconds(1), true, false, 0.0},
        {milliseconds(100), true, true, 1.0},
        {milliseconds(150), false, false, 1.0},  // bounce: dropped, not retried
        {milliseconds(250), true, true, 1.0},    // passes, changes nothing, restarts the gate
        {milliseconds(300), false, false, 1.0},
        {milliseconds(350) - nanoseconds(1), false, false, 1.0},
        {milliseconds(350), false, true, 0.0},
    };
    double element = 0.0;
    DebouncedKey key(&element, 7, kBuilt);
    for (const auto& step : script) {
        EXPECT_EQ(key.OnKey(7, step.state, kBuilt + step.at), step.accepted) << step.at.count();
        EXPECT_EQ(element, step.element) << step.at.count();
    }
    EXPECT_FALSE(key.OnKey(8, true, kBuilt + std::chrono::hours(1)));  // another key's event
}

}  // namespace
}  // namespace fenixA320
