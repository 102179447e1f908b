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
#include <array>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cmath>
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
#include <vector>

#include "host/system.h"
#include "plugin/helmbridge_a320.h"
#include "simulator/standin_control.h"
#include "tests/support/eventually.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace {

namespace fs = std::filesystem;
using helmbridge::testing::eventually;
using helmbridge::testing::LoadedModule;
using helmbridge::testing::processUsage;
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

// Inputs whose writes the checks follow (definition ids are 1000 + encoder, 2000 + analog).
constexpr int32_t kProbeEncoderA = 2;  // host thread A counts it up only
constexpr int32_t kProbeEncoderB = 3;  // host thread B likewise
constexpr int32_t kParkingBrake = 605;
constexpr uint32_t kParkingBrakeDefinition = 497;  // a held definition
constexpr uint32_t kHeldAnalogDefinitions[] = {2088, 2089, 2090, 2097, 2098, 2102,
                                               2103, 2108, 2109, 2110, 2117, 2124};
constexpr int32_t kMinDispatchesToQualify = 100;  // about 1.5 s of a connection's life

// ---- The stand-in's control functions, resolved from the file the module bound -------------
struct Standin {
    helmbridge::host::Library library;
    decltype(&standinStartFrameThread) startFrameThread = nullptr;
    decltype(&standinStopFrameThread) stopFrameThread = nullptr;
    decltype(&standinSetOpenResult) setOpenResult = nullptr;
    decltype(&standinSetKeepAliveAnswers) setKeepAliveAnswers = nullptr;
    decltype(&standinSetCloseDelay) setCloseDelay = nullptr;
    decltype(&standinQuit) quit = nullptr;
    decltype(&standinLoseConnections) loseConnections = nullptr;
    decltype(&standinOpenConnectionCount) openConnectionCount = nullptr;
    decltype(&standinSetPaused) setPaused = nullptr;
    decltype(&standinSetSimRunning) setSimRunning = nullptr;
    decltype(&standinCrash) crash = nullptr;
    decltype(&standinLoadFlight) loadFlight = nullptr;
    decltype(&standinSetClockStalled) setClockStalled = nullptr;
    decltype(&standinRequest) request = nullptr;
    decltype(&standinDatumCount) datumCount = nullptr;
    decltype(&standinCallCount) callCount = nullptr;
    decltype(&standinCall) call = nullptr;
    decltype(&standinCallData) callData = nullptr;
    decltype(&standinClearCalls) clearCalls = nullptr;
    decltype(&standinCounters) counters = nullptr;

    template <typename Fn>
    bool resolve(Fn& out, const char* name) {
        out = reinterpret_cast<Fn>(library.symbol(name));
        if (out == nullptr) std::fprintf(stderr, "stand-in lacks %s\n", name);
        return out != nullptr;
    }
    bool load(const fs::path& file) {
        std::string error;
        if (!library.open(file, error)) return false;
        return resolve(startFrameThread, "standinStartFrameThread") &&
               resolve(stopFrameThread, "standinStopFrameThread") &&
               resolve(setOpenResult, "standinSetOpenResult") &&
               resolve(setKeepAliveAnswers, "standinSetKeepAliveAnswers") &&
               resolve(setCloseDelay, "standinSetCloseDelay") && resolve(quit, "standinQuit") &&
               resolve(loseConnections, "standinLoseConnections") &&
               resolve(openConnectionCount, "standinOpenConnectionCount") &&
               resolve(setPaused, "standinSetPaused") &&
               resolve(setSimRunning, "standinSetSimRunning") && resolve(crash, "standinCrash") &&
               resolve(loadFlight, "standinLoadFlight") &&
               resolve(setClockStalled, "standinSetClockStalled") &&
               resolve(request, "standinRequest") && resolve(datumCount, "standinDatumCount") &&
               resolve(callCount, "standinCallCount") && resolve(call, "standinCall") &&
               resolve(callData, "standinCallData") && resolve(clearCalls, "standinClearCalls") &&
               resolve(counters, "standinCounters");
    }
    StandinCounters snapshot() const {
        StandinCounters out{};
        counters(&out);
        return out;
    }
};

Standin standin;
LoadedModule module;
std::atomic<bool> stopping{false};
std::atomic<bool> finished{false};
std::atomic<int> failures{0};
Clock::time_point runStart;

double secondsSince(Clock::time_point t) {
    return std::chrono::duration<double>(Clock::now() - t).count();
}

void check(bool ok, const char* format, ...) __attribute__((format(printf, 2, 3)));
void check(bool ok, const char* format, ...) {
    if (ok) return;
    failures.fetch_add(1);
    std::printf("[%7.1f s] FAILED: ", secondsSince(runStart));
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::printf("\n");
    std::fflush(stdout);
}

void note(const char* format, ...) __attribute__((format(printf, 1, 2)));
void note(const char* format, ...) {
    std::printf("[%7.1f s] ", secondsSince(runStart));
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::printf("\n");
    std::fflush(stdout);
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
std::vector<int32_t> idsOf(helmbridge::GetSigListFn get) {
    helmbridge::SigList list;
    get(list);
    std::vector<int32_t> ids;
    for (const auto& entry : list) ids.push_back(entry.first);
    return ids;
}

std::atomic<uint64_t> hostCalls{0};

// Host A: digital inputs, the parking brake now and then, encoders with even ids.
void hostInputA(uint32_t seed, std::vector<int32_t> digitIds, std::vector<int32_t> encoderIds) {
    std::mt19937 random(seed);
    std::vector<int32_t> encoders;
    for (int32_t id : encoderIds) {
        if (id % 2 == 0 && id != kProbeEncoderA) encoders.push_back(id);
    }
    auto nextBrake = Clock::now();
    int brake = 1;
    while (!stopping.load()) {
        beats[0].beat();
        const int what = static_cast<int>(random() % 10);
        if (Clock::now() >= nextBrake && module->getConnectStatus()) {
            module->setDigitIn(kParkingBrake, brake != 0);
            brake = 1 - brake;
            nextBrake = Clock::now() + seconds(2);
        } else if (what < 4) {
            module->setEncoder(kProbeEncoderA, 1);
        } else if (what < 6 && !encoders.empty()) {
            module->setEncoder(encoders[random() % encoders.size()], (random() & 1) ? 1 : -1);
        } else {
            const int32_t id = digitIds[random() % digitIds.size()];
            if (id != kParkingBrake) module->setDigitIn(id, (random() & 1) != 0);
        }
        hostCalls.fetch_add(1, std::memory_order_relaxed);
        std::this_thread::sleep_for(std::chrono::microseconds(500 + random() % 3000));
    }
}

// Host B: analog inputs over each signal's plausible range, encoders with odd ids.
void hostInputB(uint32_t seed, std::vector<int32_t> analogIds, std::vector<int32_t> encoderIds) {
    std::mt19937 random(seed);
    std::vector<int32_t> encoders;
    for (int32_t id : encoderIds) {
        if (id % 2 == 1 && id != kProbeEncoderB) encoders.push_back(id);
    }
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_real_distribution<double> wide(-10.0, 300.0);
    while (!stopping.load()) {
        beats[1].beat();
        const int what = static_cast<int>(random() % 10);
        if (what < 4) {
            module->setEncoder(kProbeEncoderB, 1);
        } else if (what < 5 && !encoders.empty()) {
            module->setEncoder(encoders[random() % encoders.size()], (random() & 1) ? 1 : -1);
        } else {
            const int32_t id = analogIds[random() % analogIds.size()];
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
    bool seen = false;
    int64_t dispatches = 0;
    std::map<uint32_t, double> lastEncoder;  // probe definition -> last value on this handle
    uint64_t heldWrites = 0;
    uint64_t latestWrites = 0;
    bool registered = false;
};

std::mutex trackMutex;
std::map<void*, ConnectionTrack> tracks;
std::vector<void*> handleOrder;
uint64_t recordsRead = 0;
uint64_t encoderWritesChecked = 0;
uint64_t gapsInsideBatch = 0;
uint64_t gapsAtBatchStart = 0;
uint64_t writesTotal = 0;
std::atomic<bool> drainPaused{false};

bool isHeldAnalog(uint32_t id) {
    return std::find(std::begin(kHeldAnalogDefinitions), std::end(kHeldAnalogDefinitions), id) !=
           std::end(kHeldAnalogDefinitions);
}

void follow(const StandinCall& call, uint64_t index, bool firstOfBatch) {
    if (call.handle == nullptr) return;  // keep-alives while searching
    ConnectionTrack& track = tracks[call.handle];
    if (!track.seen) {
        track.seen = true;
        handleOrder.push_back(call.handle);
    }
    switch (call.function) {
        case kStandinCallDispatch:
            ++track.dispatches;
            break;
        case kStandinAddToDataDefinition:
            track.registered = true;
            break;
        case kStandinSetDataOnSimObject: {
            ++writesTotal;
            const uint32_t id = call.id;
            if (id == 1000 + kProbeEncoderA || id == 1000 + kProbeEncoderB) {
                double value = 0.0;
                if (call.dataSize == sizeof(value)) standin.callData(index, &value, sizeof(value));
                const auto last = track.lastEncoder.find(id);
                if (last != track.lastEncoder.end()) {
                    ++encoderWritesChecked;
                    if (value != last->second + 1.0) {
                        ++(firstOfBatch ? gapsAtBatchStart : gapsInsideBatch);
                        note("encoder definition %u on %p: %.0f after %.0f", id, call.handle, value,
                             last->second);
                    }
                }
                track.lastEncoder[id] = value;
            } else if (id == kParkingBrakeDefinition || isHeldAnalog(id)) {
                ++track.heldWrites;
            } else if (id > 2000 && id < 3000) {
                ++track.latestWrites;
            }
            break;
        }
        default:
            break;
    }
}

// Reads every record and empties the record. A call that lands between the last read and the
// clear is lost; the final count of calls tells whether that ever happened.
void drainOnce() {
    std::lock_guard lock(trackMutex);
    uint64_t read = 0;
    bool first = true;
    for (;;) {
        const uint64_t count = standin.callCount();
        if (count == read) break;
        for (; read < count; ++read) {
            StandinCall call{};
            if (!standin.call(read, &call)) break;
            // A probe write that opens a batch may follow one lost to an earlier clear.
            const bool probeWrite =
                call.function == kStandinSetDataOnSimObject &&
                (call.id == 1000 + kProbeEncoderA || call.id == 1000 + kProbeEncoderB);
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
struct FaultResult {
    const char* name;
    int count = 0;
    int failed = 0;
    double worst = 0.0;  // seconds, of the measured latency
    double bound = 0.0;  // seconds
    double last = 0.0;   // seconds, of the latest measurement
};

enum FaultKind {
    kQuit,
    kCrashWithoutQuit,
    kKeepAliveSilence,
    kDataStall,
    kClockStall,
    kPauseResume,
    kCrashEvent,
    kFlightLoaded,
    kOpenFailures,
    kSimStopStart,
    kFaultKinds
};

constexpr double toSeconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// Faults with a bound must end in a reconnect within it; the others must leave the connection
// alone (bound 0).
std::array<FaultResult, kFaultKinds> faultResults = {{
    {"QUIT", 0, 0, 0, toSeconds(kKeepAliveBound), 0},
    {"crash without QUIT", 0, 0, 0, toSeconds(kKeepAliveBound), 0},
    {"keep-alive silence", 0, 0, 0, toSeconds(kKeepAliveBound), 0},
    {"data stream stall", 0, 0, 0, toSeconds(kStallReconnectBound), 0},
    {"clock stall", 0, 0, 0, 0, 0},
    {"pause and resume", 0, 0, 0, 0, 0},
    {"crashed event", 0, 0, 0, 0, 0},
    {"flight loaded", 0, 0, 0, 0, 0},
    {"open failures", 0, 0, 0, toSeconds(kSearchBound), 0},
    {"sim stop and start", 0, 0, 0, 0, 0},
}};

uint64_t opens() { return standin.snapshot().opens; }

// Waits, beating, until the condition holds or the bound passes; the seconds it took, or -1.
template <typename Condition>
double waitUntil(Condition condition, Clock::duration bound) {
    const auto start = Clock::now();
    const bool held = eventually(
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
bool expectReconnect(FaultResult& result, uint64_t opensBefore, Clock::duration bound) {
    const double took = waitUntil([&] { return opens() > opensBefore; }, bound);
    if (took < 0) {
        ++result.failed;
        check(false, "%s: no reconnect within %.1f s", result.name, result.bound);
        return false;
    }
    result.worst = std::max(result.worst, took);
    result.last = took;
    // The new connection must be registered again before the next fault.
    waitUntil([] { return standin.datumCount(nullptr, 3009) == 1; }, seconds(5));
    return true;
}

// No reconnect may happen for the span.
void expectCalm(FaultResult& result, uint64_t opensBefore, Clock::duration span) {
    pauseFor(span);
    const bool calm = opens() == opensBefore && module->getConnectStatus();
    if (!calm) ++result.failed;
    check(calm, "%s: the connection was rebuilt or lost", result.name);
}

void injectFault(FaultKind kind) {
    FaultResult& result = faultResults[kind];
    ++result.count;
    const uint64_t before = opens();
    note("fault: %s", result.name);
    switch (kind) {
        case kQuit:
            standin.quit();
            expectReconnect(result, before, kKeepAliveBound);
            break;
        case kCrashWithoutQuit:
            standin.loseConnections();
            expectReconnect(result, before, kKeepAliveBound);
            break;
        case kKeepAliveSilence:
            standin.setKeepAliveAnswers(0);
            expectReconnect(result, before, kKeepAliveBound);
            standin.setKeepAliveAnswers(1);
            break;
        case kDataStall: {
            standin.stopFrameThread();
            StandinRequest clock{};
            const bool requested = standin.request(nullptr, 5, &clock) && clock.sends > 0;
            // A re-request replaces request 5, so its send count starts again at 0.
            const double rerequest = waitUntil(
                [&] {
                    StandinRequest now{};
                    return opens() > before ||
                           (standin.request(nullptr, 5, &now) && now.sends == 0);
                },
                kRerequestBound);
            const bool ok = requested && rerequest >= 0 && opens() == before;
            if (!ok) ++result.failed;
            check(ok, "%s: no re-request within %.1f s (%s)", result.name,
                  std::chrono::duration<double>(kRerequestBound).count(),
                  !requested      ? "no clock request"
                  : rerequest < 0 ? "timed out"
                                  : "reconnected");
            if (ok) {
                expectReconnect(result, before, kStallReconnectBound);
                note("re-request after %.2f s, reconnect %.2f s later", rerequest, result.last);
            }
            standin.startFrameThread(30);
            break;
        }
        case kClockStall:
            standin.setClockStalled(1);
            expectCalm(result, before, seconds(8));
            standin.setClockStalled(0);
            break;
        case kPauseResume:
            standin.setPaused(1);
            pauseFor(seconds(7));
            standin.setPaused(0);
            expectCalm(result, before, seconds(4));
            break;
        case kCrashEvent:
            standin.crash();
            expectCalm(result, before, seconds(6));
            break;
        case kFlightLoaded:
            standin.loadFlight("flights/soak.flt");
            expectCalm(result, before, seconds(6));
            break;
        case kOpenFailures: {
            const uint64_t failedBefore = standin.snapshot().failedOpens;
            standin.setOpenResult(static_cast<int32_t>(0x80004005u));
            standin.loseConnections();
            pauseFor(seconds(11));
            const bool refused = standin.snapshot().failedOpens > failedBefore && opens() == before;
            if (!refused) ++result.failed;
            check(refused, "%s: no refused attempt, or an open while refused", result.name);
            standin.setOpenResult(0);
            expectReconnect(result, before, kSearchBound);
            break;
        }
        case kSimStopStart:
            standin.setSimRunning(0);
            pauseFor(seconds(6));
            standin.setSimRunning(1);
            expectCalm(result, before, seconds(4));
            break;
        case kFaultKinds:
            break;
    }
}

}  // namespace

int main(int argc, char** argv) {
    double minutes = 10.0;
    uint32_t seed = static_cast<uint32_t>(std::random_device{}());
    int onlyFault = -1;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--minutes") == 0) minutes = std::atof(argv[i + 1]);
        if (std::strcmp(argv[i], "--seed") == 0)
            seed = static_cast<uint32_t>(std::atol(argv[i + 1]));
        if (std::strcmp(argv[i], "--fault") == 0) {
            for (int k = 0; k < kFaultKinds; ++k) {
                if (std::strcmp(argv[i + 1], faultResults[k].name) == 0) onlyFault = k;
            }
            if (onlyFault < 0) {
                std::fprintf(stderr, "unknown fault \"%s\"; the faults are:\n", argv[i + 1]);
                for (const FaultResult& r : faultResults) std::fprintf(stderr, "  %s\n", r.name);
                return 2;
            }
        }
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
    std::atomic<uint64_t>* callbacks = &callbackCalls;
    module->setDigitOutProc([callbacks](unsigned int, bool) {
        callbacks->fetch_add(1, std::memory_order_relaxed);
        return true;
    });
    module->setDisplayProc([callbacks](unsigned int, std::string) {
        callbacks->fetch_add(1, std::memory_order_relaxed);
        return true;
    });
    module->setServoProc([callbacks](unsigned int, double) {
        callbacks->fetch_add(1, std::memory_order_relaxed);
        return true;
    });
    module->setServoSpeedProc([callbacks](unsigned int, double) {
        callbacks->fetch_add(1, std::memory_order_relaxed);
        return true;
    });
    module->setPwmProc([callbacks](unsigned int, double) {
        callbacks->fetch_add(1, std::memory_order_relaxed);
        return true;
    });

    // Phase 1: the client library is missing; the module searches but cannot connect.
    module->start({});
    note("started without the client library");
    bool everConnected = false;
    const auto missingUntil = Clock::now() + seconds(7);
    while (Clock::now() < missingUntil) {
        everConnected = everConnected || module->getConnectStatus();
        std::this_thread::sleep_for(milliseconds(20));
    }
    check(!everConnected, "connected while the client library was missing");
    fs::copy_file(bin / "libSimConnect.so", scratch / "libSimConnect.so");
    const auto libraryBack = Clock::now();
    const double bound = std::chrono::duration<double>(kSearchBound).count();
    while (!module->getConnectStatus() && Clock::now() - libraryBack < kSearchBound) {
        std::this_thread::sleep_for(milliseconds(10));
    }
    const double bindLatency = secondsSince(libraryBack);
    check(module->getConnectStatus(), "no connection %.1f s after the client library appeared",
          bound);
    note("client library in place: connected after %.2f s (bound %.1f s)", bindLatency, bound);
    if (!standin.load(scratch / "libSimConnect.so")) return 2;
    standin.setCloseDelay(100);  // every reconnect and Stop waits as long as with the real library
    standin.startFrameThread(30);
    waitUntil([] { return standin.datumCount(nullptr, 3009) == 1; }, seconds(10));

    // Phase 2: traffic and faults until the time is up.
    std::vector<int32_t> digitIds = idsOf(module->getList[0]);
    std::vector<int32_t> encoderIds = idsOf(module->getList[1]);
    std::vector<int32_t> analogIds = idsOf(module->getList[2]);
    // Grow the stand-in's record once (no drain for a few seconds), so later drains reuse it.
    drainPaused.store(true);
    std::thread drainer(drainLoop);
    std::thread hostA(hostInputA, seed + 1, digitIds, encoderIds);
    std::thread hostB(hostInputB, seed + 2, analogIds, encoderIds);
    std::thread output(outputCycle);
    pauseFor(seconds(6));
    drainPaused.store(false);

    std::mt19937 random(seed);
    std::vector<FaultKind> order;
    for (int k = 0; k < kFaultKinds; ++k) {
        if (onlyFault < 0 || onlyFault == k) order.push_back(static_cast<FaultKind>(k));
    }
    const double total = std::chrono::duration<double>(runEnd - runStart).count();
    const auto warmedUp = runStart + std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>(std::max(30.0, total / 4)));
    long rssWarm = -1;
    std::size_t next = order.size();
    while (Clock::now() + seconds(15) < runEnd) {
        if (rssWarm < 0 && Clock::now() >= warmedUp) {
            rssWarm = processUsage().memoryKb;
            note("warmed up: resident %ld KiB", rssWarm);
        }
        if (next == order.size()) {
            std::shuffle(order.begin(), order.end(), random);
            next = 0;
        }
        injectFault(order[next++]);
        pauseFor(milliseconds(2000 + random() % 3000));
    }
    while (Clock::now() < runEnd) pauseFor(milliseconds(200));
    if (rssWarm < 0) rssWarm = processUsage().memoryKb;
    const long rssEnd = processUsage().memoryKb;

    // Wind down: stop the host, then the module, and read the last records.
    stopping.store(true);
    hostA.join();
    hostB.join();
    output.join();
    drainer.join();
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
    for (void* handle : handleOrder) {
        const ConnectionTrack& track = tracks[handle];
        if (track.dispatches < kMinDispatchesToQualify) continue;
        ++qualifying;
        if (track.heldWrites == 0) ++heldMissing;
        if (track.latestWrites == 0) ++latestMissing;
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
        bindLatency, bound);
    std::printf("%-20s %6s %7s  %s\n", "fault", "count", "failed",
                "reconnect: slowest / bound (data stream stall: after the re-request)");
    for (const FaultResult& r : faultResults) {
        if (r.bound > 0) {
            std::printf("%-20s %6d %7d  %.2f s / %.1f s\n", r.name, r.count, r.failed, r.worst,
                        r.bound);
        } else {
            std::printf("%-20s %6d %7d  none expected\n", r.name, r.count, r.failed);
        }
    }
    std::printf(
        "connections: %zu seen, %d lived >= %d dispatches; held values resumed on %d, "
        "latest values on %d\n",
        handleOrder.size(), qualifying, kMinDispatchesToQualify, qualifying - heldMissing,
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
