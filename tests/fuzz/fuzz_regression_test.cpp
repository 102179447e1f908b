// Replays the fuzz targets' seed corpora and every input that once made a target fail: under
// the sanitizer builds an overread or undefined behaviour in any of them fails the test.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "fuzz/fuzz_targets.h"

namespace {

namespace fs = std::filesystem;
using Target = int (*)(const uint8_t*, std::size_t);

TEST(FuzzInputs, SeedCorporaAndCrashInputsRunCleanly) {
    const std::pair<const char*, Target> folders[] = {
        {"regressions/sim_message", &helmbridge::fuzz::simMessageOneInput},
        {"corpus/sim_message", &helmbridge::fuzz::simMessageOneInput},
        {"corpus/export_surface", &helmbridge::fuzz::exportSurfaceOneInput},
    };
    helmbridge::fuzz::alwaysRunWorkers = true;
    for (const auto& [folder, target] : folders) {
        int replayed = 0;
        for (const auto& entry :
             fs::directory_iterator(fs::path(HELMBRIDGE_SOURCE_DIR) / "fuzz" / folder)) {
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(stream)),
                                             std::istreambuf_iterator<char>());
            EXPECT_EQ(target(bytes.data(), bytes.size()), 0) << entry.path();
            ++replayed;
        }
        EXPECT_GT(replayed, 0) << folder;
    }
    helmbridge::fuzz::alwaysRunWorkers = false;
}

}  // namespace
