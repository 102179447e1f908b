// Per-call costs of the host-facing paths: the output cycle against a floor of the same host
// callback calls, and every input path with its heap allocations per event.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "bench/allocation_counter.h"
#include "catalogue/bindings.h"
#include "catalogue/signal_lists.h"
#include "core/core.h"
#include "output/display_format.h"
#include "output/output_values.h"

namespace fenixA320 {
namespace {

// A core as the exports see it while connected: values received, callbacks installed, no
// workers (the passes that matter here run on the caller's thread).
struct ConnectedCore {
    FenixA320Core core;
    uint64_t sink = 0;

    ConnectedCore() {
        core.BuildInputLogic();
        core.inputsBuilt = true;
        core.connected.store(true);
        core.simHandle.store(reinterpret_cast<void*>(0x1));  // never dereferenced: no library
        core.running.store(true);
        std::mt19937 random(42);
        for (std::size_t i = 0; i < kDigitOutSlots; ++i) {
            core.digitOutValues[i].store(random() % 3 == 0 ? 1.0 : 0.0);
        }
        for (std::size_t i = 0; i < kDisplaySlots; ++i) {
            core.displayValues[i].store(static_cast<double>(random() % 100000) / 100.0);
        }
        core.digitOutValues[digitOutId::kFcuPower].store(1.0);
        core.SetDigitOutProc([this](unsigned int id, bool on) {
            sink += id + (on ? 1u : 0u);
            return true;
        });
        core.SetDisplayProc([this](unsigned int id, std::string text) {
            sink += id + text.size();
            return true;
        });
        core.SetPwmProc([this](unsigned int id, double level) {
            sink += id + static_cast<uint64_t>(level);
            return true;
        });
    }
    ~ConnectedCore() {
        core.simHandle.store(nullptr);
        core.connected.store(false);
    }
};

// Runs the timed loop and reports heap allocations per iteration.
template <typename Body>
void measured(benchmark::State& state, Body&& body) {
    for (int i = 0; i < 1000; ++i) body();  // warm-up: first-time growth is not steady state
    const uint64_t before = allocationCount();
    for (auto _ : state) body();
    const uint64_t counted = allocationCount() - before;
    state.counters["allocs_per_op"] =
        benchmark::Counter(static_cast<double>(counted) / static_cast<double>(state.iterations()));
}

void BM_UpdateOutputCycle(benchmark::State& state) {
    ConnectedCore fixture;
    measured(state, [&] { benchmark::DoNotOptimize(fixture.core.UpdateOutput()); });
    benchmark::DoNotOptimize(fixture.sink);
}
BENCHMARK(BM_UpdateOutputCycle);

// The same host calls with arguments worked out beforehand: what any output cycle must cost.
void BM_UpdateOutputFloor(benchmark::State& state) {
    ConnectedCore fixture;
    std::vector<std::pair<unsigned int, bool>> lamps;
    std::vector<std::pair<unsigned int, std::string>> texts;
    std::vector<std::pair<unsigned int, double>> levels;
    DigitOutProc digitOut = [&](unsigned int id, bool on) {
        lamps.emplace_back(id, on);
        return true;
    };
    DisplayProc display = [&](unsigned int id, std::string text) {
        texts.emplace_back(id, std::move(text));
        return true;
    };
    PwmProc pwm = [&](unsigned int id, double level) {
        levels.emplace_back(id, level);
        return true;
    };
    fixture.core.SetDigitOutProc(digitOut);
    fixture.core.SetDisplayProc(display);
    fixture.core.SetPwmProc(pwm);
    fixture.core.UpdateOutput();  // records one cycle's arguments
    state.counters["host_calls"] =
        benchmark::Counter(static_cast<double>(lamps.size() + texts.size() + levels.size()));

    uint64_t sink = 0;
    const DigitOutProc hostLamp = [&sink](unsigned int id, bool on) {
        sink += id + (on ? 1u : 0u);
        return true;
    };
    const DisplayProc hostText = [&sink](unsigned int id, std::string text) {
        sink += id + text.size();
        return true;
    };
    const PwmProc hostLevel = [&sink](unsigned int id, double level) {
        sink += id + static_cast<uint64_t>(level);
        return true;
    };
    measured(state, [&] {
        for (const auto& [id, on] : lamps) hostLamp(id, on);
        for (const auto& [id, text] : texts) hostText(id, text);
        for (const auto& [id, level] : levels) hostLevel(id, level);
    });
    benchmark::DoNotOptimize(sink);
}
BENCHMARK(BM_UpdateOutputFloor);

// What the cycle does beyond the host calls, measured alone: the display texts (value text and
// display format for each of the 143 displays), which the floor above gets for free.
void BM_UpdateOutputDisplayTexts(benchmark::State& state) {
    ConnectedCore fixture;
    const OutputValues values{fixture.core.digitOutValues.get(), fixture.core.displayValues.get()};
    std::vector<uint32_t> ids;
    for (const auto& entry : displaySigList()) ids.push_back(static_cast<uint32_t>(entry.first));
    std::size_t length = 0;
    measured(state, [&] {
        for (std::size_t slot = 0; slot < ids.size() && slot < kDisplaySlots; ++slot) {
            ValueTextBuffer buffer;
            const std::string_view text = displayValueText(
                fixture.core.displayValues[slot].load(std::memory_order_relaxed), buffer);
            length += formatDisplay(ids[slot], text, values).size();
        }
    });
    benchmark::DoNotOptimize(length);
}
BENCHMARK(BM_UpdateOutputDisplayTexts);

// ---- Inputs ----------------------------------------------------------------------------------
// A digital input with a one-variable binding, a panel key, and a position of a multi-position
// switch (an id of the list that is neither).
int32_t oneVariableInput() { return digitInBindings().front().key; }
int32_t panelKeyInput() { return cduKeyGroup().front().signalId; }
int32_t positionSwitchInput() {
    for (const auto& [id, entry] : digitInSigList()) {
        bool bound = false;
        for (const VarBinding& row : digitInBindings()) bound = bound || row.key == id;
        for (const auto* group :
             {&cduKeyGroup(), &fcuKeyGroup(), &aspKeyGroup(), &rmpKeyGroup(), &atcKeyGroup()}) {
            for (const GroupKey& key : *group) bound = bound || key.signalId == id;
        }
        if (!bound && id != 0 && entry.first.rfind("S_", 0) == 0) return id;
    }
    return 0;
}

// The writer's own pass empties the paths now and then, as it would every 5 ms.
void drain(FenixA320Core& core, uint64_t& events) {
    if (++events % 8 != 0) return;
    std::lock_guard queue(core.queueMutex);
    core.writeQueue.clear();
}

void BM_SetDigitInOneVariable(benchmark::State& state) {
    ConnectedCore fixture;
    const int32_t id = oneVariableInput();
    bool on = false;
    uint64_t events = 0;
    measured(state, [&] {
        fixture.core.SetDigitIn(id, on = !on);
        drain(fixture.core, events);
    });
    state.SetLabel("digital input " + std::to_string(id));
}
BENCHMARK(BM_SetDigitInOneVariable);

void BM_SetDigitInPanelKey(benchmark::State& state) {
    ConnectedCore fixture;
    const int32_t id = panelKeyInput();
    bool on = false;
    uint64_t events = 0;
    measured(state, [&] {
        fixture.core.SetDigitIn(id, on = !on);
        drain(fixture.core, events);
    });
    state.SetLabel("digital input " + std::to_string(id));
}
BENCHMARK(BM_SetDigitInPanelKey);

void BM_SetDigitInPositionSwitch(benchmark::State& state) {
    ConnectedCore fixture;
    const int32_t id = positionSwitchInput();
    bool on = false;
    uint64_t events = 0;
    measured(state, [&] {
        fixture.core.SetDigitIn(id, on = !on);
        drain(fixture.core, events);
    });
    state.SetLabel("digital input " + std::to_string(id));
}
BENCHMARK(BM_SetDigitInPositionSwitch);

void BM_SetEncoder(benchmark::State& state) {
    ConnectedCore fixture;
    int32_t direction = 1;
    uint64_t events = 0;
    measured(state, [&] {
        fixture.core.SetEncoder(2, direction = -direction);
        drain(fixture.core, events);
    });
}
BENCHMARK(BM_SetEncoder);

// Values far enough apart that no dead band drops them.
void analogBench(benchmark::State& state, int32_t id, double low, double high) {
    ConnectedCore fixture;
    bool up = false;
    measured(state, [&] {
        up = !up;
        try {
            fixture.core.SetAnalog(id, up ? high : low);
        } catch (const std::exception&) {
            state.SkipWithError("value out of range");
        }
    });
    state.SetLabel("analog input " + std::to_string(id));
}
void BM_SetAnalogThrottle(benchmark::State& state) { analogBench(state, 89, -0.5, 0.9); }
BENCHMARK(BM_SetAnalogThrottle);
void BM_SetAnalogTemperature(benchmark::State& state) { analogBench(state, 111, 0.1, 0.8); }
BENCHMARK(BM_SetAnalogTemperature);

// Floors for the inputs: the two write operations alone, as every input path ends in one.
void BM_QueueWriteFloor(benchmark::State& state) {
    ConnectedCore fixture;
    const double value = 1.0;
    uint64_t events = 0;
    measured(state, [&] {
        fixture.core.QueueWrite(1001, &value);
        drain(fixture.core, events);
    });
}
BENCHMARK(BM_QueueWriteFloor);

void BM_SetLatestWriteFloor(benchmark::State& state) {
    ConnectedCore fixture;
    double value = 1.0;
    measured(state, [&] {
        value = -value;
        fixture.core.SetLatestWrite(2111, &value, sizeof(value));
    });
}
BENCHMARK(BM_SetLatestWriteFloor);

}  // namespace
}  // namespace fenixA320

BENCHMARK_MAIN();
