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
#include <map>
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
    if (holds) return;
    std::printf("FAIL %s\n", what.c_str());
    ++failures;
}

// A label long enough that every copy of it lives on the heap.
const std::string kLongText(120, 'x');

// Each list call must replace whatever the host's map held with names the module wrote (the
// exact lists are compared in module_test.cpp).
bool replaced(const SigList& list) {
    return list.size() > 1 && list.begin()->first == 0 && !list.contains(1'000'000) &&
           !list.rbegin()->second.first.empty();
}

// What the callbacks saw; written on the host's thread and on the module's servo thread.
struct Seen {
    std::atomic<bool> apLampOn{false};
    std::map<unsigned, std::string> texts;  // UpdateOutput's thread only
    std::atomic<int> servos{0};
    std::atomic<int> pwm{0};
};

// A callable too big for std::function's inline buffer: it lives on the heap that host and
// module share, allocated by one side and freed by the other.
template <typename F>
struct OnHeap {
    F f;
    std::array<char, 256> padding{};
    bool operator()(auto... args) const { return f(std::move(args)...); }
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
    standinSetLVar("B_FCU_POWER", 1.0);
    standinSetLVar("N_FCU_SPEED", 250.0);
    standinSetLVar("I_FCU_AP1", 1.0);
    standinStartFrameThread(30);

    // Objects the host owns and destroys only after the module is gone.
    std::array<SigList, 7> lists;
    Seen seen;

    testing::LoadedModule module;  // through the host tool's loader
    check(module.load(),
          "LoadLibrary HelmBridgeA320.dll and its nineteen exports " + module.error());
    if (!module.loaded()) return 1;

    for (std::size_t i = 0; i < lists.size(); ++i) {
        lists[i] = {{-7, {"stale entry", kLongText}}, {1'000'000, {kLongText, "stale"}}};
        // The second call goes into a map the module filled, whose nodes it then frees itself.
        check(
            module->getList[i](lists[i]) && module->getList[i](lists[i]) && replaced(lists[i]),
            std::string(host::listName(host::kAllLists[i])) + " list replaces the host's entries");
    }

    const auto lamp = [&seen](unsigned id, bool on) {
        if (id == kApLamp) seen.apLampOn = on;
        return true;
    };
    const auto display = [&seen](unsigned id, std::string text) {
        seen.texts[id] = std::move(text);
        return true;
    };
    const auto servo = [&seen](unsigned, double) { return ++seen.servos > 0; };
    const auto pwm = [&seen](unsigned, double) { return ++seen.pwm > 0; };
    check(module->setDigitOutProc(lamp) && module->setDisplayProc(OnHeap{display}) &&
              module->setServoProc(servo) &&
              module->setServoSpeedProc(OnHeap{[](unsigned, double) { return true; }}) &&
              module->setPwmProc(OnHeap{pwm}),
          "the callback setters take inline and heap callables");

    check(module->start(std::vector<std::string>(8, kLongText)), "Start with heap strings");
    check(eventually([&] { return module->getConnectStatus(); }), "connects to the stand-in");

    const bool speedShown = eventually([&] {
        module->updateOutput();
        const auto text = seen.texts.find(kSpeedDisplay);
        return text != seen.texts.end() && text->second == "250" && seen.apLampOn && seen.pwm > 0;
    });
    check(speedShown, "UpdateOutput shows speed \"250\", the AP1 lamp on and PWM values");
    check(eventually([&] { return seen.servos > 0; }), "servo positions arrive from the module");

    // Replaced while running: the module destroys the callables it held and keeps the new ones.
    const auto prefixed = [&seen](unsigned id, const std::string& text) {
        if (id == kSpeedDisplay) seen.texts[id] = "replaced " + text;
        return true;
    };
    check(module->setDisplayProc(OnHeap{prefixed}) && module->setDigitOutProc(lamp),
          "the callbacks replaced while running");
    standinSetLVar("N_FCU_SPEED", 251.0);
    check(eventually([&] {
              module->updateOutput();
              return seen.texts[kSpeedDisplay] == "replaced 251";
          }),
          "the replaced display callback gets the new text");

    check(module->stop() && !module->getConnectStatus(), "Stop disconnects");
    standinStopFrameThread();

    module.unload();  // FreeLibrary; that it unmaps is checked in tests/unload

    // The host now destroys the maps whose nodes the module allocated, the texts it sent and
    // its own callables; the heap must still be whole.
    for (auto& list : lists) list.clear();
    seen.texts.clear();
    check(HeapValidate(GetProcessHeap(), 0, nullptr) != 0, "the process heap is intact");
    std::filesystem::current_path(previous);
    std::printf("boundary host: %d failed checks\n", failures);
    return failures == 0 ? 0 : 1;
}
