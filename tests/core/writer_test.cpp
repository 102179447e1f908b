// The write paths and the writer pass: ordered, latest-value and held writes as the link
// receives them, on synthetic time.
#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

#include "store/write_paths.h"

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;

TimePoint at(int64_t ms) { return TimePoint{} + std::chrono::seconds(1000) + milliseconds(ms); }

class Writer : public ::testing::Test {
  protected:
    struct Sent {
        uint32_t defineId;
        uint32_t arrayCount;
        uint32_t unitSize;
        double value;
    };
    // Values the link received for one definition, in order.
    std::vector<double> sent(uint32_t defineId) const {
        std::vector<double> values;
        for (const Sent& s : log) {
            if (s.defineId == defineId) values.push_back(s.value);
        }
        return values;
    }
    void queue(uint32_t id, double v) { writes.QueueWrite(id, &v); }
    void latest(uint32_t id, double v) { writes.SetLatestWrite(id, &v, sizeof v); }

    bool up = true;
    std::vector<Sent> log;
    WritePaths writes{
        WriteLink{this, [](const void* self) { return static_cast<const Writer*>(self)->up; },
                  [](void* self, uint32_t id, uint32_t count, uint32_t size, const void* data) {
                      double v = 0.0;
                      std::memcpy(&v, data, sizeof v);
                      static_cast<Writer*>(self)->log.push_back({id, count, size, v});
                  }}};
};

// Ten queued writes a pass, in order; a full queue drops the oldest and counts it.
TEST_F(Writer, QueuedWritesArriveInOrderTenPerPass) {
    for (int i = 0; i < 25; ++i) queue(1, i);
    writes.writerPass(at(1));
    EXPECT_EQ(sent(1).size(), 10u);
    writes.writerPass(at(2));
    writes.writerPass(at(3));
    std::vector<double> expected(25);
    std::iota(expected.begin(), expected.end(), 0.0);
    EXPECT_EQ(sent(1), expected);
    EXPECT_EQ(log[0].arrayCount, 0u);
    EXPECT_EQ(log[0].unitSize, 8u);

    for (int i = 0; i <= 20000; ++i) queue(2, i);
    EXPECT_EQ(writes.droppedWrites(), 1u);
    writes.writerPass(at(4));
    EXPECT_EQ(sent(2).front(), 1.0);
    writes.resetDroppedWrites();
    EXPECT_EQ(writes.droppedWrites(), 0u);
}

TEST_F(Writer, LatestValuesFlushTwentyAtMostEveryTenMilliseconds) {
    latest(2001, 1.0);
    latest(2001, 2.0);
    for (uint32_t id = 2002; id < 2026; ++id) latest(id, 3.0);  // 25 dirty in all
    writes.writerPass(at(0));  // the writer's first pass starts the interval
    writes.writerPass(at(5));
    EXPECT_TRUE(log.empty());
    writes.writerPass(at(10));
    EXPECT_EQ(log.size(), 20u);
    EXPECT_EQ(sent(2001), (std::vector<double>{2.0}));
    writes.writerPass(at(15));
    EXPECT_EQ(log.size(), 20u);
    writes.writerPass(at(20));
    EXPECT_EQ(log.size(), 25u);

    latest(2001, 3.0);
    queue(7, 1.0);
    writes.clear();  // as Stop leaves it: nothing pending, and the first pass starts the interval
    latest(2001, 4.0);
    writes.writerPass(at(100));
    EXPECT_EQ(log.size(), 25u);
    writes.writerPass(at(110));
    EXPECT_EQ(sent(2001), (std::vector<double>{2.0, 4.0}));
    EXPECT_TRUE(sent(7).empty());
}

// Held values are resent every 200 ms until cleared. Writes made while the link is down are not
// stored; dirty latest and held values wait for it.
TEST_F(Writer, HeldValuesAreResentEveryTwoHundredMillisecondsUntilCleared) {
    writes.writerPass(at(0));
    latest(2089, 0.5);  // left throttle: held
    latest(2001, 0.5);  // volume knob: not held
    queue(497, 1.0);    // parking brake: held
    for (int ms = 5; ms < 200; ms += 5) writes.writerPass(at(ms));
    EXPECT_EQ(sent(2089).size(), 1u);
    writes.writerPass(at(200));
    EXPECT_EQ(sent(2089), (std::vector<double>{0.5, 0.5}));
    EXPECT_EQ(sent(497), (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(sent(2001).size(), 1u);

    latest(2002, 0.75);
    up = false;
    queue(1, 1.0);
    latest(2003, 1.0);
    writes.writerPass(at(400));
    EXPECT_EQ(log.size(), 5u);
    up = true;
    writes.writerPass(at(405));
    EXPECT_EQ(sent(2002), (std::vector<double>{0.75}));
    EXPECT_EQ(sent(2089).size(), 3u);
    EXPECT_TRUE(sent(1).empty());
    EXPECT_TRUE(sent(2003).empty());

    writes.clear();
    for (int ms = 410; ms <= 1000; ms += 5) writes.writerPass(at(ms));
    EXPECT_EQ(sent(2089).size(), 3u);
}

}  // namespace
}  // namespace fenixA320
