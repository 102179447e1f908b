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

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    helmbridge::fuzz::alwaysRunWorkers = true;
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            files.emplace_back(argv[i]);
            continue;
        }
        for (const auto& entry : fs::directory_iterator(argv[i])) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
    }
    int failures = 0;
    for (const fs::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        if (!stream) {
            std::fprintf(stderr, "cannot read %s\n", file.string().c_str());
            ++failures;
            continue;
        }
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(stream)),
                                         std::istreambuf_iterator<char>());
        // The name first, so a crash shows which input caused it.
        std::printf("%s (%zu bytes)\n", file.string().c_str(), bytes.size());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("replayed %zu inputs\n", files.size() - static_cast<std::size_t>(failures));
    return failures == 0 ? 0 : 1;
}
