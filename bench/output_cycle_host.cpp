// The output cycle measured as a host sees it, through the built module's exports: UpdateOutput
// with trivial callbacks against a floor of the same host calls with their arguments worked out
// beforehand. It needs no benchmark library, so the Windows builds run it under Wine as well
// (scripts/bench.sh clang-msvc). The module is connected to the stand-in, whose frames are
// stopped once the values have arrived, so the dispatch worker is idle while the loops run.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/module.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"

namespace {

using namespace helmbridge;
using Clock = std::chrono::steady_clock;

constexpr int kRepetitions = 7;
constexpr int kCyclesPerRepetition = 2000;

// Median over the repetitions of the time per call of `body`, in microseconds.
template <typename Body>
double medianMicroseconds(Body&& body) {
    for (int i = 0; i < 200; ++i) body();  // warm-up
    std::vector<double> times;
    for (int repetition = 0; repetition < kRepetitions; ++repetition) {
        const auto start = Clock::now();
        for (int i = 0; i < kCyclesPerRepetition; ++i) body();
        const std::chrono::duration<double, std::micro> elapsed = Clock::now() - start;
        times.push_back(elapsed.count() / kCyclesPerRepetition);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

}  // namespace

int main() {
    host::Module module;
    std::string error;
    if (!module.load(host::Module::defaultPath(), error)) {
        std::fprintf(stderr, "output cycle bench: %s\n", error.c_str());
        return 2;
    }
    const host::Exports& e = module.exports();

    // SimConnect.cfg in the current directory lets the module connect to the stand-in.
    const std::filesystem::path previous = std::filesystem::current_path();
    const std::filesystem::path work =
        std::filesystem::temp_directory_path() / "helmbridge_output_cycle_bench";
    std::filesystem::create_directories(work);
    std::ofstream(work / "SimConnect.cfg") << "[SimConnect]\n";
    std::filesystem::current_path(work);

    // Lamps a third of them on, displays random values, the cockpit powered.
    standinReset();
    std::mt19937 random(42);
    for (const auto& [id, names] : module.list(host::ListKind::kDigitOut)) {
        if (id != 0) standinSetLVar(names.first.c_str(), random() % 3 == 0 ? 1.0 : 0.0);
    }
    for (const auto& [id, names] : module.list(host::ListKind::kDisplay)) {
        if (id != 0)
            standinSetLVar(names.first.c_str(), static_cast<double>(random() % 100000) / 100.0);
    }
    standinSetLVar("B_FCU_POWER", 1.0);
    standinSetLVar("S_OH_IN_LT_ANN_LT", 1.0);

    uint64_t sink = 0;
    std::size_t texts = 0;
    e.setDigitOutProc([&sink](unsigned id, bool on) {
        sink += id + (on ? 1u : 0u);
        return true;
    });
    e.setDisplayProc([&sink, &texts](unsigned id, std::string text) {
        sink += id + text.size();
        texts += text.empty() ? 0 : 1;
        return true;
    });
    e.setServoProc([](unsigned, double) { return true; });
    e.setServoSpeedProc([](unsigned, double) { return true; });
    e.setPwmProc([&sink](unsigned id, double level) {
        sink += id + static_cast<uint64_t>(level);
        return true;
    });

    standinStartFrameThread(30);
    e.start({});
    const bool ready = testing::eventually([&] {
        texts = 0;
        e.updateOutput();
        return e.getConnectStatus() && texts > 100;
    });
    standinStopFrameThread();
    if (!ready) {
        std::fprintf(stderr, "output cycle bench: no connection to the stand-in\n");
        return 1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));  // the last frame dispatched

    const double cycle = medianMicroseconds([&] { e.updateOutput(); });

    // One cycle's arguments, then the same calls made directly.
    std::vector<std::pair<unsigned, bool>> lamps;
    std::vector<std::pair<unsigned, std::string>> displays;
    std::vector<std::pair<unsigned, double>> levels;
    e.setDigitOutProc([&lamps](unsigned id, bool on) {
        lamps.emplace_back(id, on);
        return true;
    });
    e.setDisplayProc([&displays](unsigned id, std::string text) {
        displays.emplace_back(id, std::move(text));
        return true;
    });
    e.setPwmProc([&levels](unsigned id, double level) {
        levels.emplace_back(id, level);
        return true;
    });
    e.updateOutput();
    const DigitOutProc hostLamp = [&sink](unsigned id, bool on) {
        sink += id + (on ? 1u : 0u);
        return true;
    };
    const DisplayProc hostText = [&sink](unsigned id, std::string text) {
        sink += id + text.size();
        return true;
    };
    const PwmProc hostLevel = [&sink](unsigned id, double level) {
        sink += id + static_cast<uint64_t>(level);
        return true;
    };
    const double floor = medianMicroseconds([&] {
        for (const auto& [id, on] : lamps) hostLamp(id, on);
        for (const auto& [id, text] : displays) hostText(id, text);
        for (const auto& [id, level] : levels) hostLevel(id, level);
    });

    e.stop();
    std::filesystem::current_path(previous);
    std::error_code ignored;
    std::filesystem::remove_all(work, ignored);

    const std::size_t calls = lamps.size() + displays.size() + levels.size();
    std::printf("output cycle through the exports, median of %d x %d cycles (checksum %llu)\n",
                kRepetitions, kCyclesPerRepetition, static_cast<unsigned long long>(sink % 1000));
    std::printf("  UpdateOutput, %zu host calls      %8.2f us\n", calls, cycle);
    std::printf("  floor: the same calls, precomputed %8.2f us\n", floor);
    std::printf("  cycle / floor                      %8.2f  (goal: at most 3)\n", cycle / floor);
    return 0;
}
