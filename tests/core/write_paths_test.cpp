// The latest-value container: dirty order, and its growth while wrapped.
#include "store/write_paths.h"

#include <gtest/gtest.h>

#include <vector>

namespace fenixA320 {
namespace {

std::vector<uint32_t> flushIds(LatestWrites& latest, std::size_t max) {
    std::vector<uint32_t> ids;
    latest.flush(max, [&](uint32_t id, const PendingWrite&) { ids.push_back(id); });
    return ids;
}

// Entries dirtied again after a flush join the line behind the ones that waited; rewriting a
// dirty entry keeps its place. New definitions arriving while the dirty order wraps around its
// storage make it grow; the order must come through intact.
TEST(LatestWrites, FlushesOldestDirtiedFirstAndKeepsTheOrderThroughGrowth) {
    LatestWrites latest;
    const double v = 0.0;
    for (uint32_t id = 100; id > 75; --id) latest.set(id, &v, 8);  // 25 entries
    EXPECT_EQ(flushIds(latest, 20).size(), 20u);
    latest.set(100, &v, 8);
    latest.set(90, &v, 8);
    latest.set(100, &v, 8);
    latest.set(78, &v, 8);
    EXPECT_EQ(flushIds(latest, 20), (std::vector<uint32_t>{80, 79, 78, 77, 76, 100, 90}));

    latest = LatestWrites{};  // a ring of 16 after the first 16 definitions
    for (uint32_t id = 0; id < 16; ++id) latest.set(id, &v, 8);
    ASSERT_EQ(flushIds(latest, 12).size(), 12u);
    std::vector<uint32_t> expected{12, 13, 14, 15};
    for (uint32_t id = 0; id < 12; ++id) {  // known definitions: they wrap, no growth
        latest.set(id, &v, 8);
        expected.push_back(id);
    }
    for (uint32_t id = 100; id < 140; ++id) {  // new ones: the order grows twice
        latest.set(id, &v, 8);
        expected.push_back(id);
    }
    EXPECT_EQ(latest.dirtyCount(), expected.size());
    EXPECT_EQ(flushIds(latest, 1000), expected);
}

}  // namespace
}  // namespace fenixA320
