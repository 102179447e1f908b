// helmbridge-host doctor: the module, the client library it finds, the runtime that library
// needs, a simulator to reach, and then a real start: connection, frames, aircraft, stop.
#include "host/doctor.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "host/module.h"
#include "host/standin_session.h"
#include "host/system.h"
#include "platform/platform.h"
#include "platform/simconnect_binding.h"

namespace helmbridge::host {
namespace {

using Clock = std::chrono::steady_clock;

class Report {
  public:
    explicit Report(std::ostream& out) : out_(out) {}
    void ok(const std::string& text) { line("ok  ", text); }
    void warn(const std::string& text) { line("warn", text); }
    void fail(const std::string& text) {
        line("FAIL", text);
        ++failures_;
    }
    void skip(const std::string& text) { line("skip", text); }
    int failures() const { return failures_; }

  private:
    void line(const char* status, const std::string& text) {
        out_ << status << ' ' << text << '\n' << std::flush;
    }
    std::ostream& out_;
    int failures_ = 0;
};

std::string secondsText(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", seconds);
    return text;
}

double since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

template <typename Condition>
bool waitUntil(Clock::time_point deadline, Condition condition) {
    while (!condition()) {
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// The module's own search for the client library, from the module's folder.
void checkClientLibrary(const std::filesystem::path& moduleDirectory, Report& report) {
    const std::string name = platform::kSimConnectLibraryName;
    platform::SimConnectApi api;
    std::string tried;
    const auto places = platform::simConnectSearchPlaces(moduleDirectory);
    if (platform::bindFirst(places, api, tried) == platform::BindStatus::kBound) {
        const std::filesystem::path file = libraryFileOf(reinterpret_cast<const void*>(api.open));
        const std::string version = fileVersion(file);
        report.ok(name + " " + file.string() + (version.empty() ? "" : " version " + version) +
                  ": its ten functions resolve");
        return;
    }
    if (tried.find("lacks a SimConnect function") != std::string::npos) {
        report.fail(tried + ". A file named " + name +
                    " that lacks SimConnect functions is not the client library: replace it with "
                    "the one from the SimConnect SDK (<SDK>/SimConnect SDK/lib)");
    } else {
        report.fail(tried + ". Copy " + name +
                    " from the SimConnect SDK (<SDK>/SimConnect SDK/lib) into " +
                    moduleDirectory.string() + ", next to the module");
    }
}

void checkRuntime(Report& report) {
    if (!hasVisualCppRuntime()) {
        report.ok("Visual C++ runtime: not needed on this system");
        return;
    }
    const std::string missing = missingVisualCppRuntime();
    if (missing.empty()) {
        report.ok("Visual C++ 2015-2022 runtime (x64): present");
    } else {
        report.fail("Visual C++ 2015-2022 runtime (x64) missing: " + missing +
                    ". Install the Microsoft Visual C++ 2015-2022 Redistributable (x64)");
    }
}

void checkSimulator(Report& report) {
    const platform::Platform& system = platform::systemPlatform();
    const platform::ProbeResult probe = system.probeSimulatorProcess();
    std::error_code ignored;
    const std::string here = std::filesystem::current_path(ignored).string();
    if (probe == platform::ProbeResult::kFound) {
        report.ok("simulator: FlightSimulator.exe or FlightSimulator2024.exe is running");
    } else if (system.simConnectCfgPresent()) {
        report.ok("simulator: SimConnect.cfg in " + here + " (the simulator it names is used)");
    } else if (probe == platform::ProbeResult::kSnapshotFailed) {
        report.warn(
            "simulator: the process list cannot be read; the module tries to connect "
            "anyway");
    } else {
        report.fail(
            "simulator: no FlightSimulator.exe or FlightSimulator2024.exe running and no "
            "SimConnect.cfg in " +
            here +
            ". Start the simulator (or, for one on another PC, put its SimConnect.cfg "
            "in the host's folder)");
    }
}

// The first debugger line of the module that starts with `prefix`, without it; empty if none.
std::string debugLine(const std::string& debugText, const std::string& prefix) {
    const auto at = debugText.find(prefix);
    if (at == std::string::npos) return {};
    const auto begin = at + prefix.size();
    const auto end = debugText.find('\n', begin);
    return debugText.substr(begin, end == std::string::npos ? end : end - begin);
}

void startModule(const Exports& e, double seconds, Report& report) {
    DebugCapture capture;
    std::atomic<int> lampsOn{0};
    std::atomic<int> texts{0};
    e.setDigitOutProc([&lampsOn](unsigned, bool on) {
        if (on) ++lampsOn;
        return true;
    });
    e.setDisplayProc([&texts](unsigned, const std::string& text) {
        if (!text.empty()) ++texts;
        return true;
    });
    e.setServoProc([](unsigned, double) { return true; });
    e.setServoSpeedProc([](unsigned, double) { return true; });
    e.setPwmProc([](unsigned, double) { return true; });

    const auto start = Clock::now();
    const auto deadline =
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    e.start({});
    if (waitUntil(deadline, [&] { return e.getConnectStatus(); })) {
        report.ok("connected after " + secondsText(since(start)));
        const bool frames = waitUntil(deadline, [&] {
            e.updateOutput();
            return lampsOn > 0 || texts > 0;
        });
        if (frames) {
            report.ok("frames: lamps and displays arrive after " + secondsText(since(start)));
        } else {
            report.warn("frames: no lamp on and no display text within " + secondsText(seconds) +
                        " (a cold and dark cockpit looks the same)");
        }
        const std::string prefix = "[VariantDetector] ";
        waitUntil(deadline, [&] { return !debugLine(capture.text(), prefix).empty(); });
        const std::string variant = debugLine(capture.text(), prefix);
        if (variant.empty() || variant.find("variant=Unknown") != std::string::npos) {
            report.fail("aircraft: no Fenix A319, A320 or A321 reported within " +
                        secondsText(seconds) + ". Load a flight with one of them");
        } else {
            report.ok("aircraft: " + variant);
        }
    } else {
        // The module's own report of a failed search for the client library, if it made one.
        const std::string search = debugLine(capture.text(), "[HelmBridge] ");
        report.fail("no connection within " + secondsText(seconds) +
                    (search.empty() ? std::string() : " (" + search + ")") +
                    ". Is a flight loaded? Does SimConnect.cfg name the simulator's address?");
    }
    const auto stopping = Clock::now();
    e.stop();
    if (!e.getConnectStatus()) {
        report.ok("stopped cleanly in " + secondsText(since(stopping)));
    } else {
        report.fail("still connected after Stop");
    }
}

}  // namespace

int runDoctor(const DoctorOptions& options, std::ostream& out) {
    Report report(out);
    Module module;
    std::string error;
    if (!module.load(options.module, error)) {
        report.fail("module: " + error + ". Put " + moduleFileName() +
                    " from the release beside this program, or name it with --module");
        return 1;
    }
    report.ok("module " + module.path().string() + ": loads, exports the nineteen functions");
    const std::filesystem::path moduleDirectory = module.path().parent_path();

    StandinSession standin;
    if (options.standin) {
        if (!standin.open(moduleDirectory, error) || !standin.enterConfigDirectory(error)) {
            report.fail("stand-in: " + error);
            return 1;
        }
        standin.startSimulator({30, false});
        standin.setTitle("Fenix A320 (simulator stand-in)");
    }
    checkClientLibrary(moduleDirectory, report);
    checkRuntime(report);
    checkSimulator(report);
    if (report.failures() == 0) {
        startModule(module.exports(), options.seconds, report);
    } else {
        report.skip("starting the module: fix the FAIL lines above first");
    }
    standin.stop();
    return report.failures() == 0 ? 0 : 1;
}

}  // namespace helmbridge::host
