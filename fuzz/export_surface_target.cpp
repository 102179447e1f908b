// Fuzz target: the host-facing surface driven by a decoded sequence of calls against the stand-in.
//
// Each input runs on a fresh core connected to the stand-in. The worker passes are driven
// directly on a synthetic clock, so an input costs no thread start or join; now and then (at
// most once every 30 s of fuzzing, always in the regression test) an input also runs a
// real Start and Stop with the six workers.
//
// The input is a sequence of operations, one selector byte each followed by its arguments:
//   connect, lose the simulator (QUIT or crash), SetDigitIn, SetEncoder, SetAnalog (ids anywhere
//   in 32 bits or picked from the lists, any double bit pattern), UpdateOutput,
//   callbacks installed, removed or throwing, worker passes after a clock step, simulator frames
//   with fuzzed output variables, simulator events, the running flag, and a real Start/Stop.
#include <array>
#include <atomic>
#include <bit>
#include <chrono>
#include <cstdint>
#include <exception>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include "catalogue/signal_lists.h"
#include "core/core.h"
#include "fuzz/fuzz_targets.h"
#include "simulator/standin_control.h"

namespace helmbridge::fuzz {

namespace {

using fenixA320::FenixA320Core;
using fenixA320::SteadyClock;
using fenixA320::TimePoint;

// Sleeps are real only while workers run: the passes the input drives never wait.
std::atomic<bool> realSleeps{false};

// A simulator is always found, so every reconnect opens a connection to the stand-in.
const platform::Platform kSimulatorFound{
    &platform::bindSimConnect,
    [] { return platform::ProbeResult::kFound; },
    [] { return true; },
    [](const char*) {},
    nullptr,
    &platform::steadyNow,
    [](TimePoint wakeAt) {
        if (realSleeps) platform::steadySleepUntil(wakeAt);
    },
};

// Each connection registers about 1 200 definitions; past a few per input they only slow the
// search down, so later reconnects are skipped.
constexpr uint64_t kMaxConnects = 3;

// Reads the input front to back; past the end every read yields zeros.
struct Reader {
    const uint8_t* data;
    std::size_t size;
    std::size_t at = 0;

    bool done() const { return at >= size; }
    uint8_t byte() { return at < size ? data[at++] : 0; }
    template <typename T>
    T value() {
        std::array<unsigned char, sizeof(T)> bytes;
        for (unsigned char& b : bytes) b = byte();
        return std::bit_cast<T>(bytes);
    }
    std::string text() {
        const std::size_t length = byte() * 2u;  // up to 510: titles longer than the datum
        std::string out;
        while (out.size() < length && !done()) out.push_back(static_cast<char>(byte()));
        return out;
    }
};

// A signal id: a list's own id most of the time, else any 32-bit value.
int32_t pickId(Reader& in, const fenixA320::SigList& list) {
    if ((in.byte() & 3) != 0 && !list.empty()) {
        return std::next(list.begin(), in.value<uint16_t>() % list.size())->first;
    }
    return in.value<int32_t>();
}

double pickDouble(Reader& in) {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    static constexpr double kSpecial[] = {
        0.0,  -0.0,  1.0,  -1.0,   0.5,  1e308, -1e308, 4.9e-324, 2.2250738585072014e-308,
        kInf, -kInf, kNaN, 2500.0, 100.0};
    const uint8_t how = in.byte();
    if (how < 64) return kSpecial[how % std::size(kSpecial)];
    if (how < 128) return static_cast<double>(in.value<int16_t>()) / 100.0;
    return in.value<double>();
}

// The host side of the callbacks: trivial, or one that throws. The servo worker and the output
// cycle call them on different threads.
void installCallbacks(FenixA320Core& core, uint8_t how, std::atomic<uint64_t>& sink) {
    const auto host = [&sink, throwing = (how & 0x20) != 0](unsigned, auto) {
        if (throwing) throw std::runtime_error("host");
        return ++sink != 0;
    };
    // Each callback is installed when its bit is set, else none.
    core.SetDigitOutProc((how & 1) != 0 ? fenixA320::DigitOutProc(host) : nullptr);
    const auto shown = [&sink](unsigned, std::string text) { return (sink += text.size()) != 0; };
    core.SetDisplayProc((how & 2) != 0 ? fenixA320::DisplayProc(shown) : nullptr);
    const auto count = [&sink](unsigned, double) { return ++sink != 0; };
    core.SetServoProc((how & 4) != 0 ? fenixA320::ServoProc(count) : nullptr);
    core.SetServoSpeedProc((how & 8) != 0 ? fenixA320::ServoProc(count) : nullptr);
    // The PWM wrapper is always installed; around an empty host function it sends nothing.
    core.SetPwmProc((how & 16) != 0 ? fenixA320::PwmProc(host) : nullptr);
}

// An input from the host, or an output cycle: what a host may call while the workers run. The
// inputs are gated as the exports gate them: only while connected, nothing thrown to the host.
void hostCall(FenixA320Core& core, Reader& in, uint8_t which) {
    if (which == 3) {
        core.UpdateOutput();
    } else if (which == 0) {
        const int32_t id = pickId(in, fenixA320::digitInSigList());
        const bool state = (in.byte() & 1) != 0;
        if (core.GetConnectStatus()) core.SetDigitIn(id, state);
    } else if (which == 1) {
        const int32_t id = pickId(in, fenixA320::encoderSigList());
        const int32_t direction = in.value<int32_t>();
        if (core.GetConnectStatus()) core.SetEncoder(id, direction);
    } else {
        const int32_t id = pickId(in, fenixA320::analogSigList());
        const double value = pickDouble(in);
        try {
            if (core.GetConnectStatus()) core.SetAnalog(id, value);
        } catch (const std::exception&) {
        }
    }
}

// When the selector's argument asks for it, a real Start, host calls and Stop. Real workers cost a
// second or more per Start/Stop: allowed once every 30 s of fuzzing.
void maybeRunWorkers(FenixA320Core& core, Reader& in) {
    static TimePoint last{};
    if ((in.byte() & 7) != 7) return;
    const TimePoint started = SteadyClock::now();
    if (!alwaysRunWorkers && started - last < std::chrono::seconds(30)) return;
    last = started;
    realSleeps = true;
    core.Start();
    const TimePoint until = SteadyClock::now() + std::chrono::milliseconds(300);
    for (int i = 0; i < 64 && !in.done(); ++i) hostCall(core, in, in.byte() % 4);
    while (SteadyClock::now() < until) core.UpdateOutput();
    core.Stop();
    realSleeps = false;
}

void simulatorEvent(Reader& in) {
    static constexpr void (*kEvents[])(Reader&) = {
        [](Reader& r) { standinSetPaused(r.byte() & 1); },
        [](Reader& r) { standinSetSimRunning(r.byte() & 1); },
        [](Reader&) { standinCrash(); },
        [](Reader& r) { standinLoadFlight(r.text().c_str()); },
        [](Reader& r) { standinLoadAircraft(r.text().c_str()); },
        [](Reader& r) { standinSetTitle(r.text().c_str()); },
        [](Reader& r) { standinSetClock(pickDouble(r)); },
        [](Reader& r) { standinSetKeepAliveAnswers(r.byte() & 1); },
    };
    kEvents[in.byte() % std::size(kEvents)](in);
}

// Output variables the simulator sends back, set to fuzzed values.
void fuzzOutputVariable(Reader& in) {
    const auto& list =
        (in.byte() & 1) != 0 ? fenixA320::digitOutSigList() : fenixA320::displaySigList();
    const auto& entry = *std::next(list.begin(), in.value<uint16_t>() % list.size());
    standinSetLVar(entry.second.first.c_str(), pickDouble(in));
}

}  // namespace

int exportSurfaceOneInput(const uint8_t* data, std::size_t size) {
    Reader in{data, size};
    standinReset();
    std::atomic<uint64_t> sink;
    auto core = std::make_unique<FenixA320Core>(kSimulatorFound);
    core->BuildInputLogic();  // as the first Start does
    TimePoint now = SteadyClock::now();

    for (int op = 0; op < 512 && !in.done(); ++op) {
        const uint8_t selector = in.byte() % 16;
        const bool mayConnect = helmbridge::standin::counters().opens < kMaxConnects;
        if (selector >= 2 && selector <= 8) {
            // Digital inputs, encoders, analog values, output cycles: 2:1:2:2.
            static constexpr uint8_t kCall[] = {0, 0, 1, 2, 2, 3, 3};
            hostCall(*core, in, kCall[selector - 2]);
            continue;
        }
        switch (selector) {
            case 0:  // the connection loop decides to (re)connect, the OPEN message registers
                if (!mayConnect) break;
                for (int pass = 0; pass < 5; ++pass)
                    core->connectPass(now);  // the fifth reconnects
                core->dispatchPass(now);
                break;
            case 1:
                (in.byte() & 1) != 0 ? standinQuit() : standinLoseConnections();
                core->dispatchPass(now);
                break;
            case 9:
                installCallbacks(*core, in.byte(), sink);
                break;
            case 10: {
                now += std::chrono::milliseconds(in.value<uint16_t>());
                const uint8_t which = in.byte();
                if ((which & 1) != 0) core->writerPass(now);
                if ((which & 2) != 0) core->servoPass(now);
                if ((which & 4) != 0) core->rudderTrimPass(now);
                if ((which & 8) != 0) core->inputReplayPass(now);
                if ((which & 16) != 0) core->dispatchPass(now);
                if ((which & 32) != 0 && mayConnect) core->connectPass(now);
                break;
            }
            case 11:
                standinRunFrames(1 + in.byte() % 3);
                core->dispatchPass(now);
                break;
            case 12:
                fuzzOutputVariable(in);
                break;
            case 13:
                simulatorEvent(in);
                break;
            case 14:
                core->Stop();
                break;
            default:
                maybeRunWorkers(*core, in);
                break;
        }
    }
    core.reset();
    standinReset();
    return 0;
}

}  // namespace helmbridge::fuzz

#if defined(HELMBRIDGE_FUZZ_ENTRY)
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    return helmbridge::fuzz::exportSurfaceOneInput(data, size);
}
#endif
