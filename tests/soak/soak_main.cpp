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
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
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
constexpr auto kSearchBound = seconds(5) + kPass + kSlack;     // an attempt every 5 s
constexpr auto kKeepAliveBound = seconds(5) + kPass + kSlack;  // 5 s after the last answer
// Clock readings come once a second: the stream counts as stalled 5 s after the last one and is
// re-requested at the next pass. The pass 5 s after the re-request (or the one after it, when
// that pass's clock lands a hair early) arms the reconnect, which the following pass makes.
constexpr auto kRerequestBound = seconds(5) + kPass + kPass + kSlack;
constexpr auto kStallReconnectBound = seconds(5) + kPass + kPass + kSlack;

// Inputs whose writes the checks follow: each host thread counts its probe encoder up only, and
// the parking brake is one of the held inputs.
constexpr int32_t kProbeEncoders[] = {2, 3};
constexpr int32_t kParkingBrake = fenixA320::digitInIdOf("S_MIP_PARKING_BRAKE");
constexpr uint32_t kParkingBrakeDefinition = fenixA320::variableNumberOf("S_MIP_PARKING_BRAKE");
constexpr int32_t kMinDispatchesToQualify = 100;  // about 1.5 s of a connection's life

// ---- The stand-in's control functions, resolved from the file the module bound -------------
// Member name and exported name (after "standin") of each control function the soak calls.
#define SOAK_STANDIN_FUNCTIONS(X)                \
    X(startFrameThread, StartFrameThread);       \
    X(stopFrameThread, StopFrameThread);         \
    X(setOpenResult, SetOpenResult);             \
    X(setKeepAliveAnswers, SetKeepAliveAnswers); \
    X(setCloseDelay, SetCloseDelay);             \
    X(quit, Quit);                               \
    X(loseConnections, LoseConnections);         \
    X(openConnectionCount, OpenConnectionCount); \
    X(setPaused, SetPaused);                     \
    X(setSimRunning, SetSimRunning);             \
    X(crash, Crash);                             \
    X(loadFlight, LoadFlight);                   \
    X(setClockStalled, SetClockStalled);         \
    X(request, Request);                         \
    X(datumCount, DatumCount);                   \
    X(callCount, CallCount);                     \
    X(call, Call);                               \
    X(callData, CallData);                       \
    X(clearCalls, ClearCalls);                   \
    X(counters, Counters);

struct Standin {
    helmbridge::host::Library library;
#define SOAK_DECLARE(member, name) decltype(&standin##name) member = nullptr
    SOAK_STANDIN_FUNCTIONS(SOAK_DECLARE)
#undef SOAK_DECLARE

    bool load(const fs::path& file) {
        std::string error;
        bool complete = library.open(file, error);
        const auto resolve = [&](auto& out, const char* name) {
            out = reinterpret_cast<std::remove_reference_t<decltype(out)>>(library.symbol(name));
            if (out == nullptr) std::fprintf(stderr, "stand-in lacks %s\n", name);
            complete = complete && out != nullptr;
        };
#define SOAK_RESOLVE(member, name) resolve(member, "standin" #name)
        SOAK_STANDIN_FUNCTIONS(SOAK_RESOLVE)
#undef SOAK_RESOLVE
        return complete;
    }
    StandinCounters snapshot() const {
        StandinCounters out{};
        counters(&out);
        return out;
    }
};

Standin standin;
helmbridge::testing::LoadedModule module;
std::atomic<bool> stopping{false};
std::atomic<bool> finished{false};
std::atomic<int> failures{0};
Clock::time_point runStart;

double toSeconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }
double secondsSince(Clock::time_point t) { return toSeconds(Clock::now() - t); }

void print(const char* tag, const char* format, va_list args) {
    std::printf("[%7.1f s] %s", secondsSince(runStart), tag);
    std::vprintf(format, args);
    std::printf("\n");
    std::fflush(stdout);
}

void check(bool ok, const char* format, ...) __attribute__((format(printf, 2, 3)));
void check(bool ok, const char* format, ...) {
    if (ok) return;
    failures.fetch_add(1);
    va_list args;
    va_start(args, format);
    print("FAILED: ", format, args);
    va_end(args);
}

void note(const char* format, ...) __attribute__((format(printf, 1, 2)));
void note(const char* format, ...) {
    va_list args;
    va_start(args, format);
    print("", format, args);
    va_end(args);
}

// ---- Hang detection: every thread beats; a beat older than the limit aborts the run ----------
struct Heartbeat {
    const char* name;
    std::atomic<int64_t> lastNs{0};
    void beat() { lastNs.store(Clock::now().time_since_epoch().count()); }
};
Heartbeat beats[5] = {
    {"host input A"}, {"host input B"}, {"output cycle"}, {"fault injector"}, {"record drain"}};
constexpr auto kHangLimit = seconds(20);

void watchdog() {
    while (!finished.load()) {
        std::this_thread::sleep_for(milliseconds(500));
        const int64_t now = Clock::now().time_since_epoch().count();
        for (Heartbeat& beat : beats) {
            const int64_t last = beat.lastNs.load();
            if (last != 0 && now - last > std::chrono::nanoseconds(kHangLimit).count()) {
                std::printf("HANG: %s made no progress for %lld s\n", beat.name,
                            static_cast<long long>(kHangLimit.count()));
                std::fflush(stdout);
                std::abort();
            }
        }
    }
}

// ---- Host threads ----------------------------------------------------------------------------
std::vector<int32_t> idsOf(int list) {
    helmbridge::SigList signals;
    module->getList[list](signals);
    std::vector<int32_t> ids;
    for (const auto& entry : signals) ids.push_back(entry.first);
    return ids;
}

std::atomic<uint64_t> hostCalls{0};

// Host thread A (0) sends digital inputs and the parking brake every two seconds, B (1) analog
// inputs over each signal's plausible range and beyond; each turns its probe encoder up and the
// other encoders of its parity both ways.
void hostInput(int thread, uint32_t seed) {
    std::mt19937 random(seed);
    const int32_t probe = kProbeEncoders[thread];
    std::vector<int32_t> encoders;
    for (int32_t id : idsOf(1)) {
        if (id % 2 == thread && id != probe) encoders.push_back(id);
    }
    const std::vector<int32_t> inputs = idsOf(thread == 0 ? 0 : 2);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_real_distribution<double> wide(-10.0, 300.0);
    auto nextBrake = Clock::now();
    bool brake = true;
    while (!stopping.load()) {
        beats[thread].beat();
        const auto what = random() % 10;
        if (thread == 0 && Clock::now() >= nextBrake && module->getConnectStatus()) {
            module->setDigitIn(kParkingBrake, brake);
            brake = !brake;
            nextBrake = Clock::now() + seconds(2);
        } else if (what < 4) {
            module->setEncoder(probe, 1);
        } else if (what < 6u - thread && !encoders.empty()) {
            module->setEncoder(encoders[random() % encoders.size()], (random() & 1) ? 1 : -1);
        } else if (thread == 0) {
            const int32_t id = inputs[random() % inputs.size()];
            if (id != kParkingBrake) module->setDigitIn(id, (random() & 1) != 0);
        } else {
            const int32_t id = inputs[random() % inputs.size()];
            module->setAnalog(id, (random() % 4) != 0 ? unit(random) : wide(random));
        }
        hostCalls.fetch_add(1, std::memory_order_relaxed);
        std::this_thread::sleep_for(std::chrono::microseconds(500 + random() % 3000));
    }
}

std::atomic<uint64_t> outputCycles{0};
std::atomic<uint64_t> callbackCalls{0};
std::atomic<int64_t> slowestCycleUs{0};

void outputCycle() {
    auto next = Clock::now();
    while (!stopping.load()) {
        beats[2].beat();
        const auto before = Clock::now();
        if (module->updateOutput()) outputCycles.fetch_add(1, std::memory_order_relaxed);
        const auto took =
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - before).count();
        if (took > slowestCycleUs.load()) slowestCycleUs.store(took);
        next += std::chrono::microseconds(16667);
        if (Clock::now() > next + milliseconds(100)) next = Clock::now();
        std::this_thread::sleep_until(next);
    }
}

// ---- The call record: drained often, followed per connection --------------------------------
struct ConnectionTrack {
    int64_t dispatches = 0;
    std::map<uint32_t, double> lastEncoder;  // probe definition -> last value on this handle
    uint64_t heldWrites = 0;
    uint64_t latestWrites = 0;
};

std::mutex trackMutex;
std::map<void*, ConnectionTrack> tracks;
uint64_t recordsRead = 0;
uint64_t encoderWritesChecked = 0;
uint64_t gapsInsideBatch = 0;
uint64_t gapsAtBatchStart = 0;
uint64_t writesTotal = 0;
std::atomic<bool> drainPaused{false};

bool isProbeWrite(const StandinCall& call) {
    return call.function == kStandinSetDataOnSimObject &&
           std::ranges::count(kProbeEncoders,
                              static_cast<int32_t>(call.id - fenixA320::DEF_ENCODER_BASE)) > 0;
}

bool isHeldAnalog(uint32_t definition) {
    return std::ranges::count(fenixA320::kHeldAnalogInIds,
                              static_cast<int32_t>(definition - fenixA320::DEF_ANALOG_BASE)) > 0;
}

void follow(const StandinCall& call, uint64_t index, bool firstOfBatch) {
    if (call.handle == nullptr) return;  // keep-alives while searching
    ConnectionTrack& track = tracks[call.handle];
    if (call.function == kStandinCallDispatch) ++track.dispatches;
    if (call.function != kStandinSetDataOnSimObject) return;
    ++writesTotal;
    if (isProbeWrite(call)) {
        double value = 0.0;
        if (call.dataSize == sizeof(value)) standin.callData(index, &value, sizeof(value));
        const auto last = track.lastEncoder.find(call.id);
        if (last != track.lastEncoder.end()) {
            ++encoderWritesChecked;
            if (value != last->second + 1.0) {
                ++(firstOfBatch ? gapsAtBatchStart : gapsInsideBatch);
                note("encoder definition %u on %p: %.0f after %.0f", call.id, call.handle, value,
                     last->second);
            }
        }
        track.lastEncoder[call.id] = value;
    } else if (call.id == kParkingBrakeDefinition || isHeldAnalog(call.id)) {
        ++track.heldWrites;
    } else if (call.id > fenixA320::DEF_ANALOG_BASE && call.id < fenixA320::DEF_CDU_KEYS) {
        ++track.latestWrites;
    }
}

// Reads every record and empties the record. A call that lands between the last read and the
// clear is lost; the final count of calls tells whether that ever happened.
void drainOnce() {
    std::lock_guard lock(trackMutex);
    uint64_t read = 0;
    bool first = true;
    for (uint64_t count = standin.callCount(); count != read; count = standin.callCount()) {
        for (; read < count; ++read) {
            StandinCall call{};
            if (!standin.call(read, &call)) break;
            // A probe write that opens a batch may follow one lost to an earlier clear.
            const bool probeWrite = isProbeWrite(call);
            follow(call, read, first && probeWrite);
            if (probeWrite) first = false;
        }
    }
    standin.clearCalls();
    recordsRead += read;
}

void drainLoop() {
    while (!stopping.load()) {
        beats[4].beat();
        if (!drainPaused.load()) drainOnce();
        std::this_thread::sleep_for(milliseconds(500));
    }
}

// ---- Faults ----------------------------------------------------------------------------------
struct Fault {
    const char* name;
    Clock::duration bound{};  // of the reconnect it must end in; zero: the connection must stay
    // Set, held, cleared: after a reconnect when there is a bound, else before the calm span.
    void (*set)() = [] {};
    void (*clear)() = [] {};
    Clock::duration held{};
    Clock::duration calm{};
    void (*run)(Fault& fault, uint64_t opensBefore) = nullptr;  // its own sequence and checks
    int count = 0;
    int failed = 0;
    double worst = 0.0;  // seconds, of the measured latency
    double last = 0.0;   // seconds, of the latest measurement
};

uint64_t opens() { return standin.snapshot().opens; }

// Waits, beating, until the condition holds or the bound passes; the seconds it took, or -1.
template <typename Condition>
double waitUntil(Condition condition, Clock::duration bound) {
    const auto start = Clock::now();
    const bool held = helmbridge::testing::eventually(
        [&] {
            beats[3].beat();
            return condition();
        },
        bound);
    return held ? secondsSince(start) : -1.0;
}

void pauseFor(Clock::duration span) {
    const auto until = Clock::now() + span;
    while (Clock::now() < until && !stopping.load()) {
        beats[3].beat();
        std::this_thread::sleep_for(milliseconds(20));
    }
}

// A reconnect (a successful Open) must come within the bound.
void expectReconnect(Fault& fault, uint64_t opensBefore, Clock::duration bound) {
    const double took = waitUntil([&] { return opens() > opensBefore; }, bound);
    if (took < 0) {
        ++fault.failed;
        check(false, "%s: no reconnect within %.1f s", fault.name, toSeconds(bound));
        return;
    }
    fault.worst = std::max(fault.worst, took);
    fault.last = took;
    // The new connection must be registered again before the next fault.
    waitUntil([] { return standin.datumCount(nullptr, fenixA320::DEF_CLOCK) == 1; }, seconds(5));
}

// No reconnect may happen for the span.
void expectCalm(Fault& fault, uint64_t opensBefore, Clock::duration span) {
    pauseFor(span);
    const bool calm = opens() == opensBefore && module->getConnectStatus();
    if (!calm) ++fault.failed;
    check(calm, "%s: the connection was rebuilt or lost", fault.name);
}

void dataStreamStall(Fault& fault, uint64_t before) {
    standin.stopFrameThread();
    StandinRequest clock{};
    const bool requested = standin.request(nullptr, 5, &clock) && clock.sends > 0;
    // A re-request replaces request 5, so its send count starts again at 0.
    const double rerequest = waitUntil(
        [&] {
            StandinRequest now{};
            return opens() > before || (standin.request(nullptr, 5, &now) && now.sends == 0);
        },
        kRerequestBound);
    const bool ok = requested && rerequest >= 0 && opens() == before;
    if (!ok) ++fault.failed;
    check(ok, "%s: no re-request within %.1f s (%s)", fault.name, toSeconds(kRerequestBound),
          !requested      ? "no clock request"
          : rerequest < 0 ? "timed out"
                          : "reconnected");
    if (ok) {
        expectReconnect(fault, before, fault.bound);
        note("re-request after %.2f s, reconnect %.2f s later", rerequest, fault.last);
    }
    standin.startFrameThread(30);
}

void openFailures(Fault& fault, uint64_t before) {
    const uint64_t failedBefore = standin.snapshot().failedOpens;
    standin.setOpenResult(static_cast<int32_t>(0x80004005u));
    standin.loseConnections();
    pauseFor(seconds(11));
    const bool refused = standin.snapshot().failedOpens > failedBefore && opens() == before;
    if (!refused) ++fault.failed;
    check(refused, "%s: no refused attempt, or an open while refused", fault.name);
    standin.setOpenResult(0);
    expectReconnect(fault, before, fault.bound);
}

// Faults with a bound must end in a reconnect within it; the others must leave the connection
// alone.
Fault faults[] = {
    {.name = "QUIT", .bound = kKeepAliveBound, .set = [] { standin.quit(); }},
    {.name = "crash without QUIT",
     .bound = kKeepAliveBound,
     .set = [] { standin.loseConnections(); }},
    {.name = "keep-alive silence",
     .bound = kKeepAliveBound,
     .set = [] { standin.setKeepAliveAnswers(0); },
     .clear = [] { standin.setKeepAliveAnswers(1); }},
    {.name = "data stream stall", .bound = kStallReconnectBound, .run = &dataStreamStall},
    {.name = "clock stall",
     .set = [] { standin.setClockStalled(1); },
     .clear = [] { standin.setClockStalled(0); },
     .held = seconds(8)},
    {.name = "pause and resume",
     .set = [] { standin.setPaused(1); },
     .clear = [] { standin.setPaused(0); },
     .held = seconds(7),
     .calm = seconds(4)},
    {.name = "crashed event", .set = [] { standin.crash(); }, .calm = seconds(6)},
    {.name = "flight loaded",
     .set = [] { standin.loadFlight("flights/soak.flt"); },
     .calm = seconds(6)},
    {.name = "open failures", .bound = kSearchBound, .run = &openFailures},
    {.name = "sim stop and start",
     .set = [] { standin.setSimRunning(0); },
     .clear = [] { standin.setSimRunning(1); },
     .held = seconds(6),
     .calm = seconds(4)},
};

void inject(Fault& fault, uint64_t before) {
    if (fault.run != nullptr) return fault.run(fault, before);
    fault.set();
    pauseFor(fault.held);
    if (fault.bound != Clock::duration{}) expectReconnect(fault, before, fault.bound);
    fault.clear();
    if (fault.bound == Clock::duration{}) expectCalm(fault, before, fault.calm);
}

}  // namespace

int main(int argc, char** argv) {
    double minutes = 10.0;
    auto seed = static_cast<uint32_t>(std::random_device{}());
    std::vector<Fault*> order;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--minutes") == 0) minutes = std::atof(argv[i + 1]);
        if (std::strcmp(argv[i], "--seed") == 0) {
            seed = static_cast<uint32_t>(std::atol(argv[i + 1]));
        }
        if (std::strcmp(argv[i], "--fault") != 0) continue;
        for (Fault& fault : faults) {
            if (std::strcmp(argv[i + 1], fault.name) == 0) order.push_back(&fault);
        }
        if (order.empty()) {
            std::fprintf(stderr, "unknown fault \"%s\"; the faults are:\n", argv[i + 1]);
            for (const Fault& fault : faults) std::fprintf(stderr, "  %s\n", fault.name);
            return 2;
        }
    }
    if (order.empty()) {
        for (Fault& fault : faults) order.push_back(&fault);
    }
    runStart = Clock::now();
    const auto runEnd = runStart + std::chrono::duration_cast<Clock::duration>(
                                       std::chrono::duration<double>(minutes * 60.0));
    std::printf("soak: %.1f minutes, seed %u\n", minutes, seed);

    const fs::path bin = helmbridge::testing::programDirectory();
    const helmbridge::testing::ScratchDirectory scratchDirectory;
    const fs::path& scratch = scratchDirectory.path();
    fs::copy_file(bin / "libHelmBridgeA320.so", scratch / "libHelmBridgeA320.so");
    fs::current_path(scratch);
    std::ofstream("SimConnect.cfg") << "[SimConnect]\n";

    std::thread hangWatch(watchdog);
    if (!module.load(scratch / "libHelmBridgeA320.so")) {
        std::fprintf(stderr, "soak: %s\n", module.error().c_str());
        return 2;
    }
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
    note("started without the client library");
    const bool connectedEarly =
        helmbridge::testing::eventually([] { return module->getConnectStatus(); }, seconds(7));
    check(!connectedEarly, "connected while the client library was missing");
    fs::copy_file(bin / "libSimConnect.so", scratch / "libSimConnect.so");
    const double bindLatency = waitUntil([] { return module->getConnectStatus(); }, kSearchBound);
    check(bindLatency >= 0, "no connection %.1f s after the client library appeared",
          toSeconds(kSearchBound));
    note("client library in place: connected after %.2f s (bound %.1f s)", bindLatency,
         toSeconds(kSearchBound));
    if (!standin.load(scratch / "libSimConnect.so")) return 2;
    standin.setCloseDelay(100);  // every reconnect and Stop waits as long as with the real library
    standin.startFrameThread(30);
    waitUntil([] { return standin.datumCount(nullptr, fenixA320::DEF_CLOCK) == 1; }, seconds(10));

    // Phase 2: traffic and faults until the time is up. The stand-in's record grows once (no
    // drain for a few seconds), so that later drains reuse it.
    drainPaused.store(true);
    std::thread drainer(drainLoop);
    std::thread hostA(hostInput, 0, seed + 1);
    std::thread hostB(hostInput, 1, seed + 2);
    std::thread output(outputCycle);
    pauseFor(seconds(6));
    drainPaused.store(false);

    std::mt19937 random(seed);
    const double total = toSeconds(runEnd - runStart);
    const auto warmedUp = runStart + std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>(std::max(30.0, total / 4)));
    long rssWarm = -1;
    std::size_t next = order.size();
    while (Clock::now() + seconds(15) < runEnd) {
        if (rssWarm < 0 && Clock::now() >= warmedUp) {
            rssWarm = helmbridge::testing::processUsage().memoryKb;
            note("warmed up: resident %ld KiB", rssWarm);
        }
        if (next == order.size()) {
            std::shuffle(order.begin(), order.end(), random);
            next = 0;
        }
        Fault& fault = *order[next++];
        ++fault.count;
        note("fault: %s", fault.name);
        inject(fault, opens());
        pauseFor(milliseconds(2000 + random() % 3000));
    }
    while (Clock::now() < runEnd) pauseFor(milliseconds(200));
    if (rssWarm < 0) rssWarm = helmbridge::testing::processUsage().memoryKb;
    const long rssEnd = helmbridge::testing::processUsage().memoryKb;

    // Wind down: stop the host, then the module, and read the last records.
    stopping.store(true);
    for (std::thread* thread : {&hostA, &hostB, &output, &drainer}) thread->join();
    for (int i : {0, 1, 2, 4}) beats[i].lastNs.store(0);
    beats[3].beat();  // Stop must return within the hang limit too
    const auto stopStart = Clock::now();
    module->stop();
    const double stopTook = secondsSince(stopStart);
    beats[3].lastNs.store(0);
    check(stopTook < 5.0, "Stop took %.1f s", stopTook);
    check(!module->getConnectStatus() && standin.openConnectionCount() == 0,
          "still connected after Stop");
    drainOnce();
    standin.stopFrameThread();
    const StandinCounters counters = standin.snapshot();
    const uint64_t lost = counters.calls - counters.droppedCalls - recordsRead;

    // Per-connection checks.
    int qualifying = 0;
    int heldMissing = 0;
    int latestMissing = 0;
    for (const auto& [handle, track] : tracks) {
        if (track.dispatches < kMinDispatchesToQualify) continue;
        ++qualifying;
        heldMissing += track.heldWrites == 0 ? 1 : 0;
        latestMissing += track.latestWrites == 0 ? 1 : 0;
    }
    check(encoderWritesChecked > 0, "no ordered encoder writes reached the simulator");
    check(gapsInsideBatch == 0, "%" PRIu64 " gaps in ordered writes within a connection",
          gapsInsideBatch);
    check(gapsAtBatchStart == 0 || lost > 0,
          "%" PRIu64 " gaps in ordered writes within a connection", gapsAtBatchStart);
    check(qualifying > 0, "no connection lived long enough to check resumed writes");
    check(heldMissing == 0, "%d connections never got the held values", heldMissing);
    check(latestMissing == 0, "%d connections never got a latest-value write", latestMissing);
    check(counters.misuseCalls == 0, "%" PRIu64 " calls on closed or unknown handles",
          counters.misuseCalls);
    check(counters.droppedCalls == 0, "the stand-in's record overflowed");
    const long growth = rssEnd - rssWarm;
    check(kSanitized || growth < 1024, "resident memory grew by %ld KiB after warm-up", growth);

    std::printf("\n== soak summary (seed %u, %.1f minutes) ==\n", seed, minutes);
    std::printf(
        "client library missing: no connection for 7 s; connected %.2f s after it "
        "appeared (bound %.1f s)\n",
        bindLatency, toSeconds(kSearchBound));
    std::printf("%-20s %6s %7s  %s\n", "fault", "count", "failed",
                "reconnect: slowest / bound (data stream stall: after the re-request)");
    for (const Fault& f : faults) {
        std::printf("%-20s %6d %7d  ", f.name, f.count, f.failed);
        if (f.bound == Clock::duration{}) {
            std::printf("none expected\n");
        } else {
            std::printf("%.2f s / %.1f s\n", f.worst, toSeconds(f.bound));
        }
    }
    std::printf(
        "connections: %zu seen, %d lived >= %d dispatches; held values resumed on %d, "
        "latest values on %d\n",
        tracks.size(), qualifying, kMinDispatchesToQualify, qualifying - heldMissing,
        qualifying - latestMissing);
    std::printf("ordered encoder writes checked: %" PRIu64 ", gaps: %" PRIu64 " (plus %" PRIu64
                " at a drain boundary; calls lost to drains: %" PRIu64 ")\n",
                encoderWritesChecked, gapsInsideBatch, gapsAtBatchStart, lost);
    std::printf("writes to the simulator: %" PRIu64 "; host input calls: %" PRIu64
                "; output cycles: %" PRIu64 " (slowest %.2f ms); callbacks: %" PRIu64 "\n",
                writesTotal, hostCalls.load(), outputCycles.load(), slowestCycleUs.load() / 1000.0,
                callbackCalls.load());
    std::printf("simulator calls: %" PRIu64 "; on closed or unknown handles: %" PRIu64
                "; opens: %" PRIu64 "; refused opens: %" PRIu64 "\n",
                counters.calls, counters.misuseCalls, counters.opens, counters.failedOpens);
    std::printf(
        "resident memory: %ld KiB after warm-up, %ld KiB at the end, growth %ld KiB "
        "(limit 1024%s)\n",
        rssWarm, rssEnd, growth, kSanitized ? ", not judged under a sanitizer" : "");
    std::printf("Stop took %.2f s\n", stopTook);

    module.unload();
    finished.store(true);
    hangWatch.join();
    const int failed = failures.load();
    std::printf("soak: %s (%d failed checks)\n", failed == 0 ? "PASSED" : "FAILED", failed);
    return failed == 0 ? 0 : 1;
}
