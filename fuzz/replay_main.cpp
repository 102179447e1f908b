// Replays fuzz inputs without libFuzzer, so a crash reruns under gcc, gdb or valgrind:
//   <target>_replay FILE_OR_DIRECTORY...
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

namespace {

int replayFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        std::fprintf(stderr, "cannot read %s\n", file.string().c_str());
        return 1;
    }
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(stream)),
                                     std::istreambuf_iterator<char>());
    std::printf("%s (%zu bytes)\n", file.string().c_str(), bytes.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    helmbridge::fuzz::alwaysRunWorkers = true;
    int failures = 0;
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            for (const auto& entry : std::filesystem::directory_iterator(path)) {
                if (!entry.is_regular_file()) continue;
                failures += replayFile(entry.path());
                ++replayed;
            }
        } else {
            failures += replayFile(path);
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    return failures == 0 ? 0 : 1;
}
