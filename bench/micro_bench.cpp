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
#include "input/input_side.h"
#include "output/display_format.h"
#include "output/output_side.h"
#include "output/output_values.h"
#include "store/received_values.h"
#include "store/write_paths.h"

namespace fenixA320 {
namespace {

// The parts of a connected module as the exports reach them: values received, callbacks
// installed, the link up, no workers (the passes that matter here run on the caller's thread).
struct ConnectedCore {
    ReceivedValues received;
    WritePaths writes{WriteLink{nullptr, [](const void*) { return true; },
                                [](void*, uint32_t, uint32_t, uint32_t, const void*) {}}};
    InputSide input{helmbridge::platform::systemPlatform(),
                    WriteTarget{&writes,
                                [](void* w, uint32_t id, const double* v) {
                                    static_cast<WritePaths*>(w)->QueueWrite(id, v);
                                },
                                [](void* w, uint32_t id, const void* data, uint32_t size) {
                                    static_cast<WritePaths*>(w)->SetLatestWrite(id, data, size);
                                }},
                    received, [] { return true; }};
    OutputSide output{received};
    uint64_t sink = 0;

    ConnectedCore() {
        input.BuildInputLogic(SteadyClock::now() - std::chrono::seconds(1));
        received.allocate();
        std::mt19937 random(42);
        std::vector<double> digits(ReceivedValues::kDigitOutSlots);
        std::vector<double> displays(ReceivedValues::kDisplaySlots);
        for (double& v : digits) v = random() % 3 == 0 ? 1.0 : 0.0;
        for (double& v : displays) v = static_cast<double>(random() % 100000) / 100.0;
        digits[digitOutId::kFcuPower] = 1.0;
        received.storeDigitOut(reinterpret_cast<const unsigned char*>(digits.data()),
                               digits.size());
        received.storeDisplay(reinterpret_cast<const unsigned char*>(displays.data()),
                              displays.size());
        output.SetDigitOutProc([this](unsigned int id, bool on) {
            sink += id + (on ? 1u : 0u);
            return true;
        });
        output.SetDisplayProc([this](unsigned int id, std::string text) {
            sink += id + text.size();
            return true;
        });
        output.SetPwmProc([this](unsigned int id, double level) {
            sink += id + static_cast<uint64_t>(level);
            return true;
        });
    }
    void UpdateOutput() { output.updateOutput(0.0); }
    void SetDigitIn(int32_t id, bool state) { input.SetDigitIn(id, state, SteadyClock::now()); }
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
    measured(state, [&] { benchmark::DoNotOptimize((fixture.UpdateOutput(), true)); });
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
    fixture.output.SetDigitOutProc(digitOut);
    fixture.output.SetDisplayProc(display);
    fixture.output.SetPwmProc(pwm);
    (fixture.UpdateOutput(), true);  // records one cycle's arguments
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
    const OutputValues values{fixture.received.digitOutArray(), fixture.received.displayArray()};
    std::vector<uint32_t> ids;
    for (const auto& entry : displaySigList()) ids.push_back(static_cast<uint32_t>(entry.first));
    std::size_t length = 0;
    measured(state, [&] {
        for (std::size_t slot = 0; slot < ids.size() && slot < ReceivedValues::kDisplaySlots;
             ++slot) {
            ValueTextBuffer buffer;
            const std::string_view text = displayValueText(fixture.received.display(slot), buffer);
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
void drain(ConnectedCore& fixture, uint64_t& events) {
    if (++events % 8 != 0) return;
    fixture.writes.clear();
}

void BM_SetDigitInOneVariable(benchmark::State& state) {
    ConnectedCore fixture;
    const int32_t id = oneVariableInput();
    bool on = false;
    uint64_t events = 0;
    measured(state, [&] {
        fixture.SetDigitIn(id, on = !on);
        drain(fixture, events);
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
        fixture.SetDigitIn(id, on = !on);
        drain(fixture, events);
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
        fixture.SetDigitIn(id, on = !on);
        drain(fixture, events);
    });
    state.SetLabel("digital input " + std::to_string(id));
}
BENCHMARK(BM_SetDigitInPositionSwitch);

void BM_SetEncoder(benchmark::State& state) {
    ConnectedCore fixture;
    int32_t direction = 1;
    uint64_t events = 0;
    measured(state, [&] {
        fixture.input.SetEncoder(2, direction = -direction);
        drain(fixture, events);
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
            fixture.input.SetAnalog(id, up ? high : low);
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
        fixture.writes.QueueWrite(1001, &value);
        drain(fixture, events);
    });
}
BENCHMARK(BM_QueueWriteFloor);

void BM_SetLatestWriteFloor(benchmark::State& state) {
    ConnectedCore fixture;
    double value = 1.0;
    measured(state, [&] {
        value = -value;
        fixture.writes.SetLatestWrite(2111, &value, sizeof(value));
    });
}
BENCHMARK(BM_SetLatestWriteFloor);

}  // namespace
}  // namespace fenixA320

BENCHMARK_MAIN();
