// Fault soak: the real module, loaded as a host loads it, against the stand-in in real time, with
// two host input threads, a 60 Hz output cycle and simulator faults at random moments.
//
//   helmbridge_soak [--minutes M] [--seed S] [--fault NAME]
//
// --fault repeats one fault kind only (its name as the summary prints it, e.g. "QUIT"), which is
// how a maintainer chases a fault that fails now and then.
// The run starts with the client library missing: the module is copied to a scratch directory
// without the stand-in, started there (a SimConnect.cfg in the current directory lets it connect
// without a simulator process), and the stand-in is copied next to it only after a while. The
// module binds the library once per process, so this is the one time it can be missing. The
// program then loads the same stand-in file for its own control calls, and injects faults until
// the time is up. It prints what it checked and exits non-zero when any check failed.
// How each fault's bound is timed, and the retries and re-requests on the way to a reconnect,
// are pinned with synthetic time in tests/core; here they must hold with real threads.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/behaviour.h"
#include "catalogue/bindings.h"
#include "catalogue/position_switches.h"
#include "host/system.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace {

namespace fs = std::filesystem;
namespace testing = helmbridge::testing;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

// ---- What the module promises, with the connection loop's one-second pass as slack ----------
constexpr auto kPass = milliseconds(1000);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Under a sanitizer the dispatch pass can fall seconds behind the frames, and the sanitizer's
// own memory grows with the run: the bounds get room and memory is not judged.
constexpr bool kSanitized = true;
constexpr auto kSlack = milliseconds(5000);
#else
constexpr bool kSanitized = false;
constexpr auto kSlack = milliseconds(600);  // scheduling on a loaded machine
#endif
// An attempt every 5 s while searching; a reconnect 5 s after the last answer to a keep-alive.
constexpr auto kReconnectBound = seconds(5) + kPass + kSlack;
// A stream is re-requested 5 s after its last clock reading and reconnected 5 s after that, each
// at a pass that may land one pass late.
constexpr auto kStallBound = 2 * (seconds(5) + kPass + kPass + kSlack);

// Inputs whose writes the checks follow: each host thread counts its probe encoder up only, and
// the parking brake is one of the held inputs.
constexpr int32_t kProbeEncoders[] = {2, 3};
constexpr int32_t kParkingBrake = fenixA320::digitInIdOf("S_MIP_PARKING_BRAKE");
constexpr uint32_t kParkingBrakeDefinition = fenixA320::variableNumberOf("S_MIP_PARKING_BRAKE");

// The stand-in's control functions come from the file the module bound: the soak is not linked
// with it, so that the run can begin without it. STANDIN(SetPaused, 1) calls standinSetPaused(1).
helmbridge::host::Library standinLibrary;
#define STANDIN(name, ...)                                                               \
    (reinterpret_cast<decltype(&standin##name)>(standinLibrary.symbol("standin" #name))( \
        __VA_ARGS__))

StandinCounters snapshot() {
    StandinCounters out{};
    STANDIN(Counters, &out);
    return out;
}
bool registered() { return STANDIN(DatumCount, nullptr, fenixA320::DEF_CLOCK) == 1; }

testing::LoadedModule module;
std::atomic<bool> stopping{false};
int failures = 0;  // main thread only
Clock::time_point runStart;

double toSeconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }
double secondsSince(Clock::time_point t) { return toSeconds(Clock::now() - t); }

// Prints a failed check's line; true when the check held.
#define CHECK(ok, ...) \
    ((ok) || (++failures, std::printf("FAILED: " __VA_ARGS__), std::printf("\n"), false))

// ---- Host threads ----------------------------------------------------------------------------
std::vector<int32_t> idsOf(int list) {
    helmbridge::SigList signals;
    module->getList[list](signals);
    std::vector<int32_t> ids;
    for (const auto& entry : signals) ids.push_back(entry.first);
    return ids;
}

// Host thread A (0) sends digital inputs and the parking brake every two seconds, B (1) analog
// inputs over each signal's plausible range and beyond; each turns its probe encoder up and the
// other encoders of its parity both ways.
void hostInput(int thread, uint32_t seed) {
    std::mt19937 random(seed);
    const int32_t probe = kProbeEncoders[thread];
    std::vector<int32_t> encoders = idsOf(1);
    std::erase_if(encoders, [&](int32_t id) { return id % 2 != thread || id == probe; });
    const std::vector<int32_t> inputs = idsOf(thread == 0 ? 0 : 2);
    std::uniform_real_distribution<double> analog(-1.0, 1.0);
    auto nextBrake = Clock::now();
    bool brake = true;
    while (!stopping.load()) {
        const auto what = random() % 10;
        if (thread == 0 && Clock::now() >= nextBrake && module->getConnectStatus()) {
            module->setDigitIn(kParkingBrake, brake);
            brake = !brake;
            nextBrake = Clock::now() + seconds(2);
        } else if (what < 4) {
            module->setEncoder(probe, 1);
        } else if (what < 6u - thread && !encoders.empty()) {
            module->setEncoder(encoders[random() % encoders.size()], (random() & 1) ? 1 : -1);
        } else if (const int32_t id = inputs[random() % inputs.size()]; thread == 1) {
            module->setAnalog(id, analog(random) * ((random() % 4) != 0 ? 1 : 200));
        } else if (id != kParkingBrake) {
            module->setDigitIn(id, (random() & 1) != 0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500 + random() % 3000));
    }
}

std::atomic<uint64_t> outputCycles{0};
std::atomic<uint64_t> callbackCalls{0};

// ---- The call record: drained often, followed per connection --------------------------------
struct ConnectionTrack {
    int64_t dispatches = 0;
    uint64_t heldWrites = 0;
    uint64_t latestWrites = 0;
};

std::map<void*, ConnectionTrack> tracks;
uint64_t encoderWritesChecked = 0;
uint64_t encoderGaps = 0;

// Whether a definition is base plus one of the ids.
bool among(const auto& ids, uint32_t definition, uint32_t base) {
    return std::ranges::count(ids, static_cast<int32_t>(definition - base)) > 0;
}

// Reads every record and empties the record. A call that lands between the last read and the
// clear is lost, so a probe's count is compared only within one drain.
void drainOnce() {
    std::map<std::pair<void*, uint32_t>, double> lastProbe;  // handle and definition
    uint64_t read = 0;
    for (uint64_t count = STANDIN(CallCount); count != read; count = STANDIN(CallCount)) {
        for (StandinCall call{}; read < count && STANDIN(Call, read, &call); ++read) {
            if (call.handle == nullptr) continue;  // keep-alives while searching
            ConnectionTrack& track = tracks[call.handle];
            if (call.function == kStandinCallDispatch) ++track.dispatches;
            if (call.function != kStandinSetDataOnSimObject) continue;
            if (among(kProbeEncoders, call.id, fenixA320::DEF_ENCODER_BASE)) {
                double value = 0.0;
                if (call.dataSize == sizeof(value)) STANDIN(CallData, read, &value, sizeof(value));
                const auto [last, first] = lastProbe.try_emplace({call.handle, call.id}, value);
                if (!first) {
                    ++encoderWritesChecked;
                    encoderGaps += value == last->second + 1.0 ? 0 : 1;
                    last->second = value;
                }
            } else if (call.id == kParkingBrakeDefinition ||
                       among(fenixA320::kHeldAnalogInIds, call.id, fenixA320::DEF_ANALOG_BASE)) {
                ++track.heldWrites;
            } else if (call.id > fenixA320::DEF_ANALOG_BASE && call.id < fenixA320::DEF_CDU_KEYS) {
                ++track.latestWrites;
            }
        }
    }
    STANDIN(ClearCalls);
}

// ---- Faults ----------------------------------------------------------------------------------
// A fault is set, held, and cleared. One with a bound must end in a reconnect within it, counted
// from the end of the hold; the others must leave the connection alone through the hold and the
// calm span after the clear.
struct Fault {
    const char* name;
    Clock::duration bound;
    void (*set)();
    void (*clear)() = [] {};
    Clock::duration held{};
    Clock::duration calm{};
    int count = 0;
    int failed = 0;
    double worst = 0.0;  // seconds to the reconnect
};

constexpr Clock::duration kNone{};
Fault faults[] = {
    {"QUIT", kReconnectBound, [] { STANDIN(Quit); }},
    {"crash without QUIT", kReconnectBound, [] { STANDIN(LoseConnections); }},
    {"keep-alive silence", kReconnectBound, [] { STANDIN(SetKeepAliveAnswers, 0); },
     [] { STANDIN(SetKeepAliveAnswers, 1); }},
    {"data stream stall", kStallBound, [] { STANDIN(StopFrameThread); },
     [] { STANDIN(StartFrameThread, 30); }},
    {"clock stall", kNone, [] { STANDIN(SetClockStalled, 1); }, [] { STANDIN(SetClockStalled, 0); },
     seconds(8)},
    {"pause and resume", kNone, [] { STANDIN(SetPaused, 1); }, [] { STANDIN(SetPaused, 0); },
     seconds(7), seconds(4)},
    {"crashed event", kNone, [] { STANDIN(Crash); }, [] {}, {}, seconds(6)},
    {"flight loaded",
     kNone,
     [] { STANDIN(LoadFlight, "flights/soak.flt"); },
     [] {},
     {},
     seconds(6)},
    // Two refused attempts; the search must find the simulator once they stop.
    {"open failures", kReconnectBound,
     [] {
         STANDIN(SetOpenResult, static_cast<int32_t>(0x80004005u));
         STANDIN(LoseConnections);
         std::this_thread::sleep_for(seconds(11));
         STANDIN(SetOpenResult, 0);
     }},
    {"sim stop and start", kNone, [] { STANDIN(SetSimRunning, 0); },
     [] { STANDIN(SetSimRunning, 1); }, seconds(6), seconds(4)},
};

void inject(Fault& fault) {
    const uint64_t before = snapshot().opens;
    ++fault.count;
    std::printf("[%5.0f s] fault: %s\n", secondsSince(runStart), fault.name);
    fault.set();
    std::this_thread::sleep_for(fault.held);
    bool ok = true;
    if (fault.bound == kNone) {
        fault.clear();
        std::this_thread::sleep_for(fault.calm);
        ok = CHECK(snapshot().opens == before && module->getConnectStatus(),
                   "%s: the connection was rebuilt or lost", fault.name);
    } else {
        const auto start = Clock::now();
        ok = CHECK(testing::eventually([&] { return snapshot().opens > before; }, fault.bound),
                   "%s: no reconnect within %.1f s", fault.name, toSeconds(fault.bound));
        fault.worst = std::max(fault.worst, secondsSince(start));
        fault.clear();
        // The new connection must be registered again before the next fault.
        testing::eventually(registered, seconds(5));
    }
    fault.failed += ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    double minutes = 10.0;
    auto seed = static_cast<uint32_t>(std::random_device{}());
    std::vector<Fault*> order;
    for (Fault& fault : faults) order.push_back(&fault);
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        const std::string value = argv[i + 1];
        if (option == "--minutes") minutes = std::stod(value);
        if (option == "--seed") seed = static_cast<uint32_t>(std::stoul(value));
        if (option == "--fault") std::erase_if(order, [&](Fault* f) { return value != f->name; });
    }
    if (order.empty()) {
        std::fprintf(stderr, "unknown fault; the faults are:\n");
        for (const Fault& fault : faults) std::fprintf(stderr, "  %s\n", fault.name);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);  // a crash keeps what was printed
    runStart = Clock::now();
    const auto runEnd = runStart + std::chrono::duration_cast<Clock::duration>(
                                       std::chrono::duration<double>(minutes * 60.0));
    std::printf("soak: %.1f minutes, seed %u\n", minutes, seed);
    // A hang anywhere (a host call, a fault, Stop) holds the run past its end.
    std::thread([deadline = runEnd + seconds(90)] {
        std::this_thread::sleep_until(deadline);
        std::printf("HANG: the run did not end within 90 s of its time\n");
        std::abort();
    }).detach();

    const fs::path bin = testing::programDirectory();
    const testing::ScratchDirectory scratch;
    fs::copy_file(bin / "libHelmBridgeA320.so", scratch.path() / "libHelmBridgeA320.so");
    fs::current_path(scratch.path());
    std::ofstream("SimConnect.cfg") << "[SimConnect]\n";
    if (!CHECK(module.load(scratch.path() / "libHelmBridgeA320.so"), "%s", module.error().c_str()))
        return 1;
    const auto count = [](auto...) {
        callbackCalls.fetch_add(1, std::memory_order_relaxed);
        return true;
    };
    module->setDigitOutProc(count);
    module->setDisplayProc(count);
    module->setServoProc(count);
    module->setServoSpeedProc(count);
    module->setPwmProc(count);

    // Phase 1: the client library is missing; the module searches but cannot connect.
    module->start({});
    CHECK(!testing::eventually([] { return module->getConnectStatus(); }, seconds(7)),
          "connected while the client library was missing");
    fs::copy_file(bin / "libSimConnect.so", scratch.path() / "libSimConnect.so");
    CHECK(testing::eventually([] { return module->getConnectStatus(); }, kReconnectBound),
          "no connection %.1f s after the client library appeared", toSeconds(kReconnectBound));
    std::string error;
    if (!CHECK(standinLibrary.open(scratch.path() / "libSimConnect.so", error), "%s",
               error.c_str()))
        return 1;
    STANDIN(SetCloseDelay, 100);  // every reconnect and Stop waits as long as with the real one
    STANDIN(StartFrameThread, 30);

    // Phase 2: traffic and faults until the time is up.
    // The first drain comes late: the stand-in's record grows once, and later drains reuse it.
    std::thread drainer([] {
        for (milliseconds wait = seconds(6); !stopping.load(); wait = milliseconds(500)) {
            std::this_thread::sleep_for(wait);
            drainOnce();
        }
    });
    std::thread hostA(hostInput, 0, seed + 1);
    std::thread hostB(hostInput, 1, seed + 2);
    std::thread output([] {  // about 60 Hz, a host's frame rate
        while (!stopping.load()) {
            if (module->updateOutput()) outputCycles.fetch_add(1, std::memory_order_relaxed);
            std::this_thread::sleep_for(std::chrono::microseconds(16667));
        }
    });
    std::this_thread::sleep_for(seconds(6));  // a clock reading arms the stall check first

    std::mt19937 random(seed);
    const auto warmedUp =
        runStart + std::max(Clock::duration(seconds(30)), (runEnd - runStart) / 4);
    long rssWarm = -1;
    for (std::size_t next = order.size(); Clock::now() + seconds(15) < runEnd; ++next) {
        if (rssWarm < 0 && Clock::now() >= warmedUp) rssWarm = testing::processUsage().memoryKb;
        if (next == order.size()) {
            std::shuffle(order.begin(), order.end(), random);
            next = 0;
        }
        inject(*order[next]);
        std::this_thread::sleep_for(milliseconds(2000 + random() % 3000));
    }
    std::this_thread::sleep_until(runEnd);
    if (rssWarm < 0) rssWarm = testing::processUsage().memoryKb;
    const long growth = testing::processUsage().memoryKb - rssWarm;

    // Wind down: stop the host, then the module, and read the last records.
    stopping.store(true);
    for (std::thread* thread : {&hostA, &hostB, &output, &drainer}) thread->join();
    const auto stopStart = Clock::now();
    module->stop();
    const double stopTook = secondsSince(stopStart);
    CHECK(stopTook < 5.0, "Stop took %.1f s", stopTook);
    CHECK(!module->getConnectStatus() && STANDIN(OpenConnectionCount) == 0,
          "still connected after Stop");
    drainOnce();
    STANDIN(StopFrameThread);
    const StandinCounters counters = snapshot();

    int qualifying = 0;
    int resumeMissing = 0;  // connections that never got the held values or a latest value
    for (const auto& [handle, track] : tracks) {  // 100 dispatches: 1.5 s of a connection
        if (track.dispatches < 100) continue;
        ++qualifying;
        resumeMissing += track.heldWrites == 0 || track.latestWrites == 0 ? 1 : 0;
    }
    CHECK(encoderWritesChecked > 0, "no ordered encoder writes reached the simulator");
    CHECK(encoderGaps == 0, "%" PRIu64 " gaps in ordered writes within a connection", encoderGaps);
    CHECK(qualifying > 0, "no connection lived long enough to check resumed writes");
    CHECK(resumeMissing == 0, "%d connections lacked held or latest values", resumeMissing);
    CHECK(outputCycles > 0 && callbackCalls > 0, "the output cycle never reached the callbacks");
    CHECK(counters.misuseCalls == 0, "%" PRIu64 " calls on closed or unknown handles",
          counters.misuseCalls);
    CHECK(counters.droppedCalls == 0, "the stand-in's record overflowed");
    CHECK(kSanitized || growth < 1024, "resident memory grew by %ld KiB after warm-up", growth);

    std::printf("\n== soak summary (seed %u, %.1f minutes) ==\n", seed, minutes);
    std::printf("%-20s %6s %7s  %s\n", "fault", "count", "failed", "reconnect: slowest / bound");
    for (const Fault& f : faults) {
        std::printf("%-20s %6d %7d  %.2f s / %.1f s\n", f.name, f.count, f.failed, f.worst,
                    toSeconds(f.bound));
    }
    std::printf(
        "connections: %zu, %d checked for held and latest values; ordered encoder writes "
        "checked: %" PRIu64 "; output cycles: %" PRIu64 "; simulator calls: %" PRIu64
        "; opens: %" PRIu64 "; memory growth: %ld KiB%s; Stop: %.2f s\n",
        tracks.size(), qualifying, encoderWritesChecked, outputCycles.load(), counters.calls,
        counters.opens, growth, kSanitized ? " (not judged)" : "", stopTook);
    module.unload();
    std::printf("soak: %s (%d failed checks)\n", failures == 0 ? "PASSED" : "FAILED", failures);
    return failures == 0 ? 0 : 1;
}
