// A Visual C++ host at the module's boundary: loads the DLL with LoadLibrary (the host tool's
// loader), calls all nineteen exports with real standard-library objects (maps that already
// hold entries, heap-sized strings, callables stored inline and on the heap, callbacks replaced
// while running), and destroys everything only after Stop and FreeLibrary. Run under Wine's heap
// checks, a block freed through the wrong heap or freed twice shows as a warn:heap line, which
// fails the test. Exit code 0 when every check held; each failed check prints one FAIL line.
#include <windows.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/module.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

// The layouts every Visual C++ 2015-2022 program uses; a MinGW or libc++ host has others.
static_assert(sizeof(std::string) == 32);
static_assert(sizeof(helmbridge::SigList) == 16);
static_assert(sizeof(helmbridge::DisplayProc) == 64);
static_assert(sizeof(std::vector<std::string>) == 24);

namespace {

using namespace helmbridge;
using testing::eventually;

int failures = 0;

void check(bool holds, const std::string& what) {
    std::printf("%s %s\n", holds ? "ok  " : "FAIL", what.c_str());
    std::fflush(stdout);
    if (!holds) ++failures;
}

// A label long enough that every copy of it lives on the heap.
const std::string kLongText(120, 'x');

// Entries and last id of each list, in export order (digital outputs have no id 495).
constexpr std::array<std::pair<std::size_t, int32_t>, 7> kListShapes = {
    {{965, 964}, {44, 43}, {125, 124}, {501, 501}, {143, 142}, {5, 4}, {16, 15}}};

// Each list call must replace whatever the host's map held with exactly the module's list.
bool replacesWith(const SigList& list, std::pair<std::size_t, int32_t> shape) {
    return list.size() == shape.first && !list.empty() && list.begin()->first == 0 &&
           list.rbegin()->first == shape.second;
}

// What the callbacks saw; written on the host's thread and on the module's servo thread.
struct Seen {
    std::atomic<int> lamps{0};
    std::atomic<bool> apLampOn{false};
    std::map<unsigned, std::string> texts;  // UpdateOutput's thread only
    std::atomic<int> servos{0};
    std::atomic<int> servoSpeeds{0};
    std::atomic<int> pwm{0};
    std::atomic<int> replacedTexts{0};
};

// Captures too big for std::function's inline buffer: the callable lives on the heap that host
// and module share, allocated by one side and freed by the other.
struct BigCapture {
    Seen* seen;
    std::array<char, 256> padding;
};

constexpr unsigned kApLamp = 167;       // I_FCU_AP1
constexpr unsigned kSpeedDisplay = 54;  // N_FCU_SPEED

}  // namespace

int main() {
    // SimConnect.cfg in the current directory lets the module connect without a simulator
    // process; the stand-in beside the module plays the simulator.
    const testing::ScratchDirectory work;
    std::ofstream(work.path() / "SimConnect.cfg") << "[SimConnect]\n";
    const std::filesystem::path previous = std::filesystem::current_path();
    std::filesystem::current_path(work.path());
    standinReset();
    standinSetLVar("B_FCU_POWER", 1.0);
    standinSetLVar("N_FCU_SPEED", 250.0);
    standinSetLVar("I_FCU_AP1", 1.0);
    standinStartFrameThread(30);

    // Objects the host owns and destroys only after the module is gone.
    std::array<SigList, 7> lists;
    Seen seen;
    std::vector<std::string> texts;

    auto module = std::make_unique<host::Module>();
    std::string error;
    const bool loaded = module->load(host::Module::defaultPath(), error);
    check(loaded, "LoadLibrary HelmBridgeA320.dll and its nineteen exports " + error);
    if (!loaded) return 1;
    const host::Exports& e = module->exports();

    for (std::size_t i = 0; i < lists.size(); ++i) {
        lists[i] = {{-7, {"stale entry", kLongText}}, {1'000'000, {kLongText, "stale"}}};
        const bool result = e.getList[i](lists[i]);
        check(
            result && replacesWith(lists[i], kListShapes[i]),
            std::string(host::listName(host::kAllLists[i])) + " list replaces the host's entries");
    }
    check(lists[3].at(kApLamp).first == "I_FCU_AP1", "digital output 167 is I_FCU_AP1");
    check(lists[4].at(kSpeedDisplay).first == "N_FCU_SPEED", "display 54 is N_FCU_SPEED");
    // A second call into a map the module filled: its nodes are freed by the module this time.
    check(e.getList[4](lists[4]) && replacesWith(lists[4], kListShapes[4]),
          "GetDisplaySigList into a map it filled before");

    check(e.setDigitOutProc([&seen](unsigned id, bool on) {
        ++seen.lamps;
        if (id == kApLamp) seen.apLampOn = on;
        return true;
    }),
          "SetDigitOutProc with an inline callable");
    check(e.setDisplayProc([big = BigCapture{&seen, {}}](unsigned id, std::string text) {
        big.seen->texts[id] = std::move(text);
        return true;
    }),
          "SetDisplayProc with a heap callable");
    check(e.setServoProc([&seen](unsigned, double) {
        ++seen.servos;
        return true;
    }),
          "SetServoProc with an inline callable");
    check(e.setServoSpeedProc([big = BigCapture{&seen, {}}](unsigned, double) {
        ++big.seen->servoSpeeds;
        return true;
    }),
          "SetServoSpeedProc with a heap callable");
    check(e.setPwmProc([big = BigCapture{&seen, {}}](unsigned, double) {
        ++big.seen->pwm;
        return true;
    }),
          "SetPwmProc with a heap callable");

    std::vector<std::string> arguments(8, kLongText);
    check(e.start(std::move(arguments)), "Start with heap strings");
    check(eventually([&] { return e.getConnectStatus(); }), "connects to the stand-in");

    const bool speedShown = eventually([&] {
        e.updateOutput();
        const auto text = seen.texts.find(kSpeedDisplay);
        return text != seen.texts.end() && text->second == "250" && seen.apLampOn.load();
    });
    check(speedShown, "UpdateOutput shows speed \"250\" and the AP1 lamp on");
    check(seen.lamps > 0 && seen.pwm > 0, "UpdateOutput calls the lamp and PWM callbacks");
    check(eventually([&] { return seen.servos > 0; }), "servo positions arrive from the module");

    // Replaced while running: the module destroys the callables it held and keeps the new ones.
    check(e.setDisplayProc([big = BigCapture{&seen, {}}](unsigned id, std::string text) {
        if (id == kSpeedDisplay) big.seen->texts[id] = "replaced " + text;
        ++big.seen->replacedTexts;
        return true;
    }),
          "SetDisplayProc replaced while running");
    check(e.setDigitOutProc([&seen](unsigned, bool) {
        ++seen.lamps;
        return true;
    }),
          "SetDigitOutProc replaced while running");
    standinSetLVar("N_FCU_SPEED", 251.0);
    check(eventually([&] {
              e.updateOutput();
              return seen.texts[kSpeedDisplay] == "replaced 251";
          }),
          "the replaced display callback gets the new text");
    texts.push_back(seen.texts[kSpeedDisplay]);

    check(!e.setDigitIn(1, true) && !e.setEncoder(5, 1) && !e.setAnalog(1, 0.5),
          "input exports return false");
    check(e.stop(), "Stop");
    check(!e.getConnectStatus(), "disconnected after Stop");
    standinStopFrameThread();

    module.reset();  // FreeLibrary
    check(!testing::moduleMapped(), "FreeLibrary unloads the module");

    // The host now destroys the maps whose nodes the module allocated, the texts it sent and
    // its own callables; the heap must still be whole.
    for (auto& list : lists) list.clear();
    seen.texts.clear();
    texts.clear();
    check(HeapValidate(GetProcessHeap(), 0, nullptr) != 0, "the process heap is intact");
    std::filesystem::current_path(previous);
    std::printf("boundary host: %d failed checks\n", failures);
    return failures == 0 ? 0 : 1;
}
