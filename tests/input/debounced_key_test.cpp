// The 100 ms gate of the panel push buttons, driven with synthetic time.
#include "input/debounced_key.h"

#include <gtest/gtest.h>

#include <vector>

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

const TimePoint kBuilt = TimePoint{} + std::chrono::hours(1);

struct Step {
    milliseconds at;  // since the key was built
    bool state;
    bool accepted;
    double element;  // the block element after the event
};

void play(const std::vector<Step>& script, milliseconds offset) {
    double element = 0.0;
    DebouncedKey key(&element, 7, kBuilt);
    for (const Step& step : script) {
        const TimePoint at = kBuilt + offset + step.at;
        EXPECT_EQ(key.OnKey(7, step.state, at), step.accepted) << "at " << step.at.count();
        EXPECT_EQ(element, step.element) << "at " << step.at.count();
    }
}

TEST(DebouncedKey, ReleaseInsideTheGateIsDroppedAndTheKeyStaysPressed) {
    const std::vector<Step> script{
        {milliseconds(1000), true, true, 1.0},
        {milliseconds(1050), false, false, 1.0},  // bounce: dropped, not retried
        {milliseconds(1150), true, true, 1.0},    // passes, changes nothing, restarts the gate
        {milliseconds(1200), false, false, 1.0},
        {milliseconds(1300), false, true, 0.0},
    };
    for (const milliseconds offset : {milliseconds(0), milliseconds(3), milliseconds(77)}) {
        play(script, offset);
    }
}

TEST(DebouncedKey, ChatterAfterAPressIsIgnoredAtAnyStepSize) {
    for (const int step : {1, 3, 7, 20, 33}) {
        std::vector<Step> script{{milliseconds(500), true, true, 1.0}};
        bool state = true;
        for (int t = step; t < 100; t += step) {
            state = !state;
            script.push_back({milliseconds(500 + t), state, false, 1.0});
        }
        // Long quiet tail, then one clean release.
        script.push_back({milliseconds(5000), false, true, 0.0});
        play(script, milliseconds(0));
    }
}

TEST(DebouncedKey, GateIsExactlyOneHundredMilliseconds) {
    double element = 0.0;
    DebouncedKey key(&element, 7, kBuilt);
    EXPECT_FALSE(key.OnKey(7, true, kBuilt + milliseconds(100) - nanoseconds(1)));
    EXPECT_TRUE(key.OnKey(7, true, kBuilt + milliseconds(100)));
    EXPECT_EQ(element, 1.0);
}

}  // namespace
}  // namespace fenixA320
