// Replays the fuzz targets' seed corpora and every input that once made a target fail: under
// the sanitizer builds an overread or undefined behaviour in any of them fails the test.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_targets.h"

namespace {

namespace fs = std::filesystem;

using Target = int (*)(const uint8_t*, std::size_t);

// Runs every file of the folder through the target; returns how many there were.
int replayFolder(const char* folder, Target target) {
    const fs::path directory = fs::path(HELMBRIDGE_SOURCE_DIR) / "fuzz" / folder;
    int replayed = 0;
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(stream)),
                                         std::istreambuf_iterator<char>());
        SCOPED_TRACE(entry.path().string());
        EXPECT_EQ(target(bytes.data(), bytes.size()), 0);
        ++replayed;
    }
    return replayed;
}

class FuzzInputs : public ::testing::Test {
  protected:
    void SetUp() override { helmbridge::fuzz::alwaysRunWorkers = true; }
    void TearDown() override { helmbridge::fuzz::alwaysRunWorkers = false; }
};

TEST_F(FuzzInputs, SimMessageCrashInputsRunCleanly) {
    EXPECT_GT(replayFolder("regressions/sim_message", &helmbridge::fuzz::simMessageOneInput), 0);
}

TEST_F(FuzzInputs, SimMessageSeedCorpusRunsCleanly) {
    EXPECT_GT(replayFolder("corpus/sim_message", &helmbridge::fuzz::simMessageOneInput), 0);
}

TEST_F(FuzzInputs, ExportSurfaceSeedCorpusRunsCleanly) {
    EXPECT_GT(replayFolder("corpus/export_surface", &helmbridge::fuzz::exportSurfaceOneInput), 0);
}

}  // namespace
