// helmbridge-host: loads the module as a cockpit host does and lists its signals, demonstrates
// it on the simulator stand-in, or runs it as a bench for checking a cockpit's bindings.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "host/bench.h"
#include "host/demo.h"
#include "host/doctor.h"
#include "host/module.h"
#include "host/signals.h"
#include "host/system.h"

namespace {

using namespace helmbridge::host;

const char* const kUsage =
    "usage: helmbridge-host [--module PATH] COMMAND [OPTIONS]\n"
    "\n"
    "Loads the HelmBridge A320 module at run time, the way a cockpit-hardware host does, and\n"
    "uses nothing but its nineteen exported functions. By default the module is the one built\n"
    "beside this program; --module PATH loads another.\n"
    "\n"
    "commands:\n"
    "  signals [--list LIST] [--format table|csv|json|md]\n"
    "      The signal lists as a host receives them. LIST is digital-in, encoder, analog,\n"
    "      digital-out, display, servo, pwm or all (the default); the format is table by\n"
    "      default. Blanks at the start or end of a name show as '\xC2\xB7' in the table and\n"
    "      Markdown forms; CSV (header list,id,variable,label) quotes such fields.\n"
    "  demo [--seconds N] [--plain]\n"
    "      Runs the module against the simulator stand-in beside it, with a small simulated\n"
    "      aircraft, and plays a scripted cockpit session: power up, FCU speed, heading,\n"
    "      altitude and V/S, autopilot buttons, the annunciator light test, parking brake,\n"
    "      pitch trim and panel lighting. Shows a live panel (--plain: log lines), checks\n"
    "      what the module shows at each step and ends with a one-line summary. N paces the\n"
    "      session (about N seconds, default 20). Exit code 1 when a check failed.\n"
    "  run [--standin]\n"
    "      Loads the module and lets it connect to whatever simulator it finds, prints every\n"
    "      change of a lamp or display, and reads hardware events from standard input, one\n"
    "      per line: press NAME|ID, release NAME|ID, turn NAME|ID +N|-N, axis NAME|ID VALUE,\n"
    "      status, wait MS|connected, quit (help lists them all). NAME is a variable name\n"
    "      from the lists, matched exactly; digital inputs sharing a name take the id.\n"
    "      --standin flies the demo aircraft on the simulator stand-in beside the module, so\n"
    "      that bindings can be checked without a simulator. A bad line ends a piped script\n"
    "      with exit code 2; typed at a terminal it is only reported.\n"
    "  doctor [--standin] [--seconds N]\n"
    "      Checks, one line each (ok, warn or FAIL with what to do), what the module needs:\n"
    "      that it loads with its nineteen functions, which SimConnect client library its\n"
    "      search finds and that the library's ten functions resolve, the Visual C++ runtime,\n"
    "      a running simulator or a SimConnect.cfg here; then starts the module and waits up\n"
    "      to N seconds (default 10) for the connection, the first lamps and displays and the\n"
    "      aircraft, and stops it. --standin checks against the simulator stand-in beside the\n"
    "      module. Exit code 1 when a check failed.\n"
    "\n"
    "exit codes: 0 done, 1 a demo or doctor check failed, 2 bad usage or the module cannot\n"
    "be used\n";

int usageError(const std::string& message) {
    std::cerr << "helmbridge-host: " << message << " (--help for usage)\n";
    return 2;
}

int signalsCommand(const std::filesystem::path& modulePath, const std::vector<std::string>& args) {
    std::vector<ListKind> kinds(kAllLists.begin(), kAllLists.end());
    Format format = Format::kTable;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if ((args[i] == "--list" || args[i] == "--format") && i + 1 >= args.size()) {
            return usageError(args[i] + " needs a value");
        }
        if (args[i] == "--list") {
            const std::string& name = args[++i];
            ListKind kind{};
            if (name == "all") {
                kinds.assign(kAllLists.begin(), kAllLists.end());
            } else if (parseListName(name, kind)) {
                kinds = {kind};
            } else {
                return usageError("unknown list '" + name + "'");
            }
        } else if (args[i] == "--format") {
            if (!parseFormat(args[++i], format)) {
                return usageError("unknown format '" + args[i] + "'");
            }
        } else {
            return usageError("signals does not take '" + args[i] + "'");
        }
    }
    Module module;
    std::string error;
    if (!module.load(modulePath, error)) {
        std::cerr << "helmbridge-host: " << error << '\n';
        return 2;
    }
    writeSignals(std::cout, SignalLists(module), kinds, format);
    std::cout << std::flush;
    return 0;
}

// The value after --seconds at args[i], from `least` to 600; moves i past it.
bool parseSeconds(const std::vector<std::string>& args, std::size_t& i, double least,
                  double& seconds, std::string& error) {
    if (i + 1 >= args.size()) {
        error = "--seconds needs a value";
        return false;
    }
    const std::string& value = args[++i];
    char* end = nullptr;
    const double parsed = std::strtod(value.c_str(), &end);
    if (value.empty() || *end != '\0' || !(parsed >= least && parsed <= 600.0)) {
        char range[64];
        std::snprintf(range, sizeof range, "from %g to 600", least);
        error =
            "--seconds takes a number of seconds " + std::string(range) + ", not '" + value + "'";
        return false;
    }
    seconds = parsed;
    return true;
}

int demoCommand(const std::filesystem::path& modulePath, const std::vector<std::string>& args) {
    DemoOptions options;
    options.module = modulePath;
    options.plain = !stdoutIsTerminal();
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--plain") {
            options.plain = true;
        } else if (args[i] == "--seconds") {
            std::string error;
            if (!parseSeconds(args, i, 0.0, options.seconds, error)) return usageError(error);
        } else {
            return usageError("demo does not take '" + args[i] + "'");
        }
    }
    return runDemo(options, std::cout, std::cerr);
}

int runCommand(const std::filesystem::path& modulePath, const std::vector<std::string>& args) {
    BenchOptions options;
    options.module = modulePath;
    options.interactive = stdinIsTerminal();
    for (const std::string& arg : args) {
        if (arg == "--standin") {
            options.standin = true;
        } else {
            return usageError("run does not take '" + arg + "'");
        }
    }
    return runBench(options, std::cin, std::cout, std::cerr);
}

int doctorCommand(const std::filesystem::path& modulePath, const std::vector<std::string>& args) {
    DoctorOptions options;
    options.module = modulePath;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--standin") {
            options.standin = true;
        } else if (args[i] == "--seconds") {
            std::string error;
            if (!parseSeconds(args, i, 0.1, options.seconds, error)) return usageError(error);
        } else {
            return usageError("doctor does not take '" + args[i] + "'");
        }
    }
    return runDoctor(options, std::cout);
}

}  // namespace

int main(int argc, char** argv) {
    prepareConsole();
    std::filesystem::path modulePath = helmbridge::host::Module::defaultPath();
    std::string command;
    std::vector<std::string> args;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        }
        if (arg == "--module") {
            if (i + 1 >= argc) return usageError("--module needs a path");
            modulePath = argv[++i];
        } else if (command.empty() && !arg.empty() && arg[0] != '-') {
            command = arg;
        } else {
            args.push_back(arg);
        }
    }
    if (command.empty()) return usageError("no command given");
    if (command == "signals") return signalsCommand(modulePath, args);
    if (command == "demo") return demoCommand(modulePath, args);
    if (command == "run") return runCommand(modulePath, args);
    if (command == "doctor") return doctorCommand(modulePath, args);
    return usageError("unknown command '" + command + "'");
}
