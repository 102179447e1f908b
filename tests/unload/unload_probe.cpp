// A host process for the unload tests: loads the module, starts it connected to the stand-in
// and then leaves it in one of the ways a host can. Exit code 0 means every check held.
//
//   helmbridge_unload_probe MODE DIRECTORY
//     never-started   load and unload without Start: unloading calls no simulator function
//     stop-unload     Stop, then unload: the module is gone, the unload (and, on Linux, the exit)
//                     calls nothing, and loading it again gives a fresh module
//     unload-running  unload without Stop: the module stays, its workers keep running, then the
//                     process exits
//     exit-running    the process exits with the module loaded and its workers running
//     cycles          a hundred loads, each connected, stopped and unloaded: no thread, handle
//                     or memory is left behind
// DIRECTORY becomes the current directory and gets a SimConnect.cfg, so the module connects
// without a simulator process.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "plugin/helmbridge_a320.h"
#include "simulator/standin_control.h"
#include "tests/plugin/module_loader.h"

#if defined(_WIN32)
#include <psapi.h>
// tlhelp32.h needs the declarations of windows.h first.
#include <tlhelp32.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

using Clock = std::chrono::steady_clock;
using helmbridge::testing::LoadedModule;

// Exit codes, so the parent test can tell which check failed.
enum Failure {
    kUsage = 2,
    kLoad = 3,
    kExports = 4,
    kNoConnection = 5,
    kCallsDuringUnload = 6,
    kCallsAtExit = 7,
    kWorkersGone = 8,
    kStillConnected = 9,
    kStillMapped = 10,
    kUnmappedTooEarly = 11,
    kStaleCore = 12,
    kGrowth = 13,
};

// A selector contact and the switch variable it sets (EFIS Capt ND mode NAV: position 2), and
// an encoder (FCU speed) with its variable.
constexpr int32_t kNdModeNav = 501;
constexpr const char* kNdModeVariable = "S_FCU_EFIS1_ND_MODE";
constexpr int32_t kSpeedEncoder = 5;
constexpr const char* kSpeedEncoderVariable = "E_FCU_SPEED";

// Where the probe reports; standard error itself may be captured for the module's debug lines.
FILE* report = stderr;

int fail(Failure code, const std::string& what) {
    std::fprintf(report, "unload probe: %s\n", what.c_str());
    std::fflush(report);
    return code;
}

uint64_t simulatorCalls() {
    StandinCounters counters{};
    standinCounters(&counters);
    return counters.calls;
}

// Calls the stand-in has seen when the module should have gone quiet; -1 while not checked.
int64_t expectedCallsAtExit = -1;

// Runs after the module's exit-time teardown on Linux (registered before the module was
// loaded); on Windows before it, since the module's teardown runs at process detach.
void checkCallsAtExit() {
    if (expectedCallsAtExit < 0) return;
    const auto calls = static_cast<int64_t>(simulatorCalls());
    if (calls != expectedCallsAtExit) {
        fail(kCallsAtExit,
             "exit made " + std::to_string(calls - expectedCallsAtExit) + " simulator calls");
        std::_Exit(kCallsAtExit);
    }
}

template <typename Condition>
bool waitFor(Condition condition, std::chrono::seconds timeout = std::chrono::seconds(30)) {
    const auto until = Clock::now() + timeout;
    while (!condition()) {
        if (Clock::now() > until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

// Whether the module's file is mapped into this process.
bool moduleMapped() {
#if defined(_WIN32)
    return GetModuleHandleA(HELMBRIDGE_MODULE_FILE) != nullptr;
#else
    std::ifstream maps("/proc/self/maps");
    const std::string contents{std::istreambuf_iterator<char>(maps), {}};
    return contents.find(std::string("/") + HELMBRIDGE_MODULE_FILE) != std::string::npos;
#endif
}

// The module's variant lines ("[VariantDetector] ..."): on Windows it hands them to the
// debugger, which raises an exception that a vectored handler sees first; elsewhere they go to
// standard error, which the probe sends to a file.
std::atomic<int> debugVariantLines{0};
#if defined(_WIN32)
LONG CALLBACK onDebugString(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == DBG_PRINTEXCEPTION_C && record.NumberParameters >= 2) {
        const auto* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        if (text != nullptr && std::strstr(text, "[VariantDetector]") != nullptr) {
            ++debugVariantLines;
        }
    }
    return EXCEPTION_CONTINUE_SEARCH;
}
#endif

void captureDebugOutput() {
#if defined(_WIN32)
    AddVectoredExceptionHandler(1, &onDebugString);
#else
    report = fdopen(dup(STDERR_FILENO), "w");
    const int file = open("debug.txt", O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
#endif
}

// Sends standard error back where it went, so what the process reports at its exit is seen.
void endDebugCapture() {
#if !defined(_WIN32)
    dup2(fileno(report), STDERR_FILENO);
#endif
}

int variantLines() {
#if defined(_WIN32)
    return debugVariantLines.load();
#else
    std::ifstream file("debug.txt");
    const std::string contents{std::istreambuf_iterator<char>(file), {}};
    int lines = 0;
    for (auto at = contents.find("[VariantDetector]"); at != std::string::npos;
         at = contents.find("[VariantDetector]", at + 1)) {
        ++lines;
    }
    return lines;
#endif
}

// What the process holds: threads, handles (Windows) or file descriptors, and resident memory.
struct Usage {
    long threads = 0;
    long handles = 0;
    long memoryKb = 0;
};

Usage usage() {
    Usage now;
#if defined(_WIN32)
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    if (Thread32First(snapshot, &entry)) {
        do {
            if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++now.threads;
        } while (Thread32Next(snapshot, &entry));
    }
    CloseHandle(snapshot);
    DWORD handles = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &handles) && handles > 0) {
        now.handles = static_cast<long>(handles);
    } else {
        // Wine counts no handles, but it hands out the lowest free handle value: a fresh
        // handle's value rises with every handle left open.
        HANDLE fresh = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        now.handles = static_cast<long>(reinterpret_cast<uintptr_t>(fresh) / 4);
        CloseHandle(fresh);
    }
    PROCESS_MEMORY_COUNTERS memory{};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory))) {
        now.memoryKb = static_cast<long>(memory.WorkingSetSize / 1024);
    }
#else
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        std::istringstream fields(line);
        std::string name;
        fields >> name;
        if (name == "Threads:") fields >> now.threads;
        if (name == "VmRSS:") fields >> now.memoryKb;
    }
    for ([[maybe_unused]] const auto& fd : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++now.handles;
    }
#endif
    return now;
}

std::string describe(const Usage& u) {
    return std::to_string(u.threads) + " threads, " + std::to_string(u.handles) + " handles, " +
           std::to_string(u.memoryKb) + " kB";
}

// The exports a probe uses, resolved from one load of the module.
struct Host {
    std::unique_ptr<LoadedModule> module;
    helmbridge::StartFn start = nullptr;
    helmbridge::VoidFn stop = nullptr;
    helmbridge::VoidFn status = nullptr;
    helmbridge::VoidFn update = nullptr;
    helmbridge::SetDigitInFn digitIn = nullptr;
    helmbridge::SetEncoderFn encoder = nullptr;

    // Loads the module and resolves the exports; 0 or the failure.
    int load() {
        module = std::make_unique<LoadedModule>(helmbridge::testing::programDirectory() +
                                                HELMBRIDGE_MODULE_FILE);
        if (!module->loaded()) return fail(kLoad, "module not loaded");
        start = module->symbol<helmbridge::StartFn>("Start");
        stop = module->symbol<helmbridge::VoidFn>("Stop");
        status = module->symbol<helmbridge::VoidFn>("GetConnectStatus");
        update = module->symbol<helmbridge::VoidFn>("UpdateOutput");
        digitIn = module->symbol<helmbridge::SetDigitInFn>("SetDigitIn");
        encoder = module->symbol<helmbridge::SetEncoderFn>("SetEncoder");
        const auto setDigitOut = module->symbol<helmbridge::SetDigitOutProcFn>("SetDigitOutProc");
        const auto setServo = module->symbol<helmbridge::SetServoProcFn>("SetServoProc");
        if (!start || !stop || !status || !update || !digitIn || !encoder || !setDigitOut ||
            !setServo) {
            return fail(kExports, "exports missing");
        }
        // Callbacks that live in this program: the module's threads call into it.
        setDigitOut([](unsigned int, bool) { return true; });
        setServo([](unsigned int, double) { return true; });
        return 0;
    }

    // Starts the module and waits until it has declared its variables to the stand-in.
    int startConnected() {
        start({});
        if (!waitFor([&] { return status() && standinDatumCount(nullptr, 3009) == 1; })) {
            return fail(kNoConnection, "no connection to the stand-in");
        }
        update();
        return 0;
    }
};

// One session as after a fresh load: the variant line for the known aircraft, an encoder
// count that starts from zero and a selector that reports its first position.
int freshSession(Host& host, int run) {
    if (int failed = host.startConnected()) return failed;
    if (!waitFor([&] { return variantLines() == run; })) {
        return fail(kStaleCore, std::to_string(variantLines()) + " variant lines in run " +
                                    std::to_string(run));
    }
    standinSetLVar(kNdModeVariable, 0.0);
    host.encoder(kSpeedEncoder, 1);
    host.digitIn(kNdModeNav, true);
    if (!waitFor([] {
            return helmbridge::standin::lvar(kSpeedEncoderVariable) == 1.0 &&
                   helmbridge::standin::lvar(kNdModeVariable) == 2.0;
        })) {
        return fail(kStaleCore,
                    "run " + std::to_string(run) + ": encoder count " +
                        std::to_string(helmbridge::standin::lvar(kSpeedEncoderVariable)) +
                        ", ND mode " + std::to_string(helmbridge::standin::lvar(kNdModeVariable)));
    }
    return 0;
}

// Unloads after Stop: nothing may call the simulator, and the module must be gone.
int unloadStopped(Host& host) {
    const uint64_t before = simulatorCalls();
    host.module->unload();
    if (simulatorCalls() != before) return fail(kCallsDuringUnload, "unload called SimConnect");
    if (moduleMapped()) return fail(kStillMapped, "module still mapped after Stop and unload");
    expectedCallsAtExit = static_cast<int64_t>(before);
    return 0;
}

int stopUnloadReload(Host& host) {
    captureDebugOutput();
    standinSetTitle("FenixA320 IAE");
    // A cockpit clock that stands still holds the module's replays back: a selector's position
    // can then only be written by its contact.
    standinSetClockStalled(1);
    if (int failed = freshSession(host, 1)) return failed;
    host.stop();
    host.stop();  // a second Stop gives back nothing more
    if (host.status() || standinOpenConnectionCount() != 0) {
        return fail(kStillConnected, "still connected after Stop");
    }
    // Stop gives back only the module's own reference: the host's keeps it loaded.
    if (!moduleMapped()) return fail(kUnmappedTooEarly, "module unmapped by Stop");
    if (int failed = unloadStopped(host)) return failed;

    if (int failed = host.load()) return failed;
    expectedCallsAtExit = -1;
    host.start({});  // the second Start stops and starts again, with one reference
    if (int failed = freshSession(host, 2)) return failed;
    endDebugCapture();
    host.stop();
    return unloadStopped(host);
}

int cycles(Host& host) {
    constexpr int kCycles = 100;
    constexpr int kWarmUp = 10;
#if defined(__MINGW32__)
    // Known deviation: the thread library linked into the module keeps a record with two
    // handles for the host thread that used it, and no unload frees it.
    constexpr long kRuntimeHandlesPerLoad = 2;
#else
    constexpr long kRuntimeHandlesPerLoad = 0;
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // The sanitizer's own memory grows with every load; its leak check judges the heap instead.
    constexpr long kMemoryKb = 1024 * 1024 * 1024;
#else
    constexpr long kMemoryKb = 4 * 1024;  // 45 kB a load; about 0.5 MB grow under Wine
#endif
    // Generous: a cycle that leaked anything would leave 90 of it.
    constexpr Usage kAllowed{3, 20 + kRuntimeHandlesPerLoad * (kCycles - kWarmUp), kMemoryKb};
    Usage warm;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        if (cycle == kWarmUp) warm = usage();
        if (cycle > 0) {
            if (int failed = host.load()) return failed;
        }
        if (int failed = host.startConnected()) return failed;
        host.stop();
        if (int failed = unloadStopped(host)) return failed;
        standinClearCalls();  // the stand-in's record would grow
    }
    const Usage end = usage();
    if (end.threads > warm.threads + kAllowed.threads ||
        end.handles > warm.handles + kAllowed.handles ||
        end.memoryKb > warm.memoryKb + kAllowed.memoryKb) {
        return fail(kGrowth, "after warm-up " + describe(warm) + ", at the end " + describe(end));
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return fail(kUsage, "usage: helmbridge_unload_probe MODE DIRECTORY");
    const std::string mode = argv[1];
    std::filesystem::current_path(argv[2]);
    std::ofstream("SimConnect.cfg") << "[SimConnect]\n";
    std::atexit(&checkCallsAtExit);

    standinReset();
    standinStartFrameThread(30);

    // Never destroyed: whether and when the module is unloaded is the mode's choice alone.
    static auto* host = new Host;
    if (int failed = host->load()) return failed;

    if (mode == "never-started") return unloadStopped(*host);
    if (mode == "stop-unload") return stopUnloadReload(*host);
    if (mode == "cycles") return cycles(*host);

    if (int failed = host->startConnected()) return failed;
    if (mode == "unload-running") {
        host->module->unload();
        // The module's own reference keeps the code mapped and the workers polling.
        if (!moduleMapped()) return fail(kUnmappedTooEarly, "module unmapped under its workers");
        const uint64_t before = simulatorCalls();
        if (!waitFor([&] { return simulatorCalls() > before + 10; })) {
            return fail(kWorkersGone, "workers stopped after unload");
        }
        return 0;
    }
    if (mode == "exit-running") return 0;
    return fail(kUsage, "unknown mode");
}
