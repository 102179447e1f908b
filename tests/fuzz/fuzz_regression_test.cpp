// Replays the fuzz targets' seed corpora and every input that once made a target fail: under
// the sanitizer builds an overread or undefined behaviour in any of them fails the test.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include "fuzz/fuzz_targets.h"
#include "tests/support/process.h"

namespace {

namespace fs = std::filesystem;
using Target = int (*)(const uint8_t*, std::size_t);

// fuzz/corpus/<target>/ and, once a crash has been kept, fuzz/regressions/<target>/.
TEST(FuzzInputs, SeedCorporaAndCrashInputsRunCleanly) {
    const std::pair<const char*, Target> targets[] = {
        {"sim_message", &helmbridge::fuzz::simMessageOneInput},
        {"export_surface", &helmbridge::fuzz::exportSurfaceOneInput},
    };
    helmbridge::fuzz::alwaysRunWorkers = true;
    for (const auto& [name, target] : targets) {
        int replayed = 0;
        for (const char* kept : {"fuzz/corpus", "fuzz/regressions"}) {
            const fs::path folder = fs::path(HELMBRIDGE_SOURCE_DIR) / kept / name;
            if (!fs::is_directory(folder)) continue;
            for (const auto& entry : fs::directory_iterator(folder)) {
                const std::string bytes = helmbridge::testing::readFile(entry.path());
                const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
                EXPECT_EQ(target(data, bytes.size()), 0) << entry.path();
                ++replayed;
            }
        }
        EXPECT_GT(replayed, 0) << name;  // a seed corpus at least
    }
    helmbridge::fuzz::alwaysRunWorkers = false;
}

}  // namespace
