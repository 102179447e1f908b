// The run command's output printer and input line interpreter.
#include "host/bench.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <istream>
#include <mutex>
#include <ostream>
#include <thread>

#include "host/module.h"
#include "host/outputs.h"
#include "host/signals.h"
#include "host/standin_session.h"

namespace helmbridge::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kOutputPeriod = std::chrono::milliseconds(50);
constexpr auto kWaitTimeout = std::chrono::seconds(10);
constexpr int kMaxDetents = 1000;
constexpr uint32_t kFramesPerSecond = 30;

const char* const kCommands =
    "commands:\n"
    "  press NAME|ID          close a digital input\n"
    "  release NAME|ID        open a digital input\n"
    "  turn NAME|ID +N|-N     N encoder detents up or down\n"
    "  axis NAME|ID VALUE     set an analog input\n"
    "  status                 what the module shows now\n"
    "  wait MS                pause\n"
    "  wait connected         until the module is connected (at most 10 s); it declares\n"
    "                         its variables just after, so wait for a first lamp or display\n"
    "                         before sending events\n"
    "  wait lamp NAME|ID on|off, wait display NAME|ID \"TEXT\"\n"
    "                         until that change was printed (at most 10 s)\n"
    "  help, quit\n"
    "NAME is a variable name from the signal lists, matched exactly (quote names with blanks);\n"
    "digital inputs that share a name take the id.\n";

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::size_t slotsFor(const SigList& list) {
    return list.empty() ? 0 : static_cast<std::size_t>(std::max(0, list.rbegin()->first)) + 1;
}

// What has been printed so far: the connection, and every lamp and display as the user last saw
// it. Before anything is printed the cockpit counts as dark: lamps off, displays blank.
struct Printed {
    bool connected = false;
    std::vector<bool> lamps;
    std::vector<std::string> displays;
};

class Bench {
  public:
    Bench(const Module& module, const SignalLists& lists, std::ostream& out)
        : exports_(module.exports()),
          lists_(lists),
          out_(out),
          recorder_(slotsFor(lists[ListKind::kDigitOut]), slotsFor(lists[ListKind::kDisplay])) {
        printed_.lamps.assign(slotsFor(lists[ListKind::kDigitOut]), false);
        printed_.displays.assign(slotsFor(lists[ListKind::kDisplay]), std::string());
        recorder_.install(exports_);
    }

    void start() {
        exports_.start({});
        output_ = std::thread([this] { outputLoop(); });
    }

    void stop() {
        stopping_ = true;
        if (output_.joinable()) output_.join();
        exports_.stop();
    }

    void say(const std::string& line) {
        std::lock_guard lock(mutex_);
        out_ << line << '\n' << std::flush;
    }

    // Runs one input line; false with a one-line reason in `error` when it is not understood.
    bool execute(const std::vector<std::string>& words, bool& quit, std::string& error) {
        const std::string& command = words[0];
        if (command == "quit" || command == "exit") {
            quit = true;
            return true;
        }
        if (command == "help") {
            say(std::string(kCommands).substr(0, std::string(kCommands).size() - 1));
            return true;
        }
        if (command == "status") {
            status();
            return true;
        }
        if (command == "wait") return wait(words, error);
        if (command == "press" || command == "release") {
            if (words.size() != 2) return usage(command + " NAME|ID", error);
            const int32_t id = signal(ListKind::kDigitIn, words[1], error);
            if (id < 0) return false;
            warnIfDisconnected();
            exports_.setDigitIn(id, command == "press");
            return true;
        }
        if (command == "turn") {
            if (words.size() != 3) return usage("turn NAME|ID +N|-N", error);
            const int32_t id = signal(ListKind::kEncoder, words[1], error);
            if (id < 0) return false;
            long detents = 0;
            if (!parseInteger(words[2], detents) || detents == 0 ||
                std::labs(detents) > kMaxDetents) {
                error = "turn takes a detent count from -" + std::to_string(kMaxDetents) + " to +" +
                        std::to_string(kMaxDetents) + ", not '" + words[2] + "'";
                return false;
            }
            warnIfDisconnected();
            for (long i = 0; i < std::labs(detents); ++i)
                exports_.setEncoder(id, detents > 0 ? 1 : -1);
            return true;
        }
        if (command == "axis") {
            if (words.size() != 3) return usage("axis NAME|ID VALUE", error);
            const int32_t id = signal(ListKind::kAnalog, words[1], error);
            if (id < 0) return false;
            double value = 0.0;
            if (!parseNumber(words[2], value)) {
                error = "axis takes a number, not '" + words[2] + "'";
                return false;
            }
            warnIfDisconnected();
            exports_.setAnalog(id, value);
            return true;
        }
        error = "unknown command '" + command + "' (help lists the commands)";
        return false;
    }

  private:
    static bool usage(const std::string& form, std::string& error) {
        error = "usage: " + form;
        return false;
    }

    static bool parseInteger(const std::string& text, long& value) {
        if (text.empty()) return false;
        char* end = nullptr;
        errno = 0;
        value = std::strtol(text.c_str(), &end, 10);
        return errno == 0 && end != nullptr && *end == '\0';
    }

    static bool parseNumber(const std::string& text, double& value) {
        if (text.empty()) return false;
        char* end = nullptr;
        value = std::strtod(text.c_str(), &end);
        return end != nullptr && *end == '\0';
    }

    int32_t signal(ListKind kind, const std::string& token, std::string& error) const {
        const SignalRef ref = findSignal(lists_, kind, token);
        if (!ref.found) error = ref.error;
        return ref.found ? ref.id : -1;
    }

    void warnIfDisconnected() {
        if (!exports_.getConnectStatus()) say("# not connected: the module drops this event");
    }

    // The host's output thread: one output cycle every 50 ms, then the changes are printed.
    void outputLoop() {
        Clock::time_point next = Clock::now();
        while (!stopping_) {
            exports_.updateOutput();
            printChanges();
            next += kOutputPeriod;
            std::this_thread::sleep_until(next);
        }
    }

    void printChanges() {
        const bool connected = exports_.getConnectStatus();
        const OutputSnapshot s = recorder_.snapshot();
        std::lock_guard lock(mutex_);
        if (connected != printed_.connected) {
            out_ << (connected ? "connected" : "disconnected") << '\n';
            printed_.connected = connected;
        }
        for (const auto& [id, entry] : lists_[ListKind::kDigitOut]) {
            if (id < 0) continue;
            const bool on = s.lamp(id);
            if (on == printed_.lamps[id]) continue;
            out_ << "lamp " << id << ' ' << entry.first << (on ? " on" : " off") << '\n';
            printed_.lamps[id] = on;
        }
        for (const auto& [id, entry] : lists_[ListKind::kDisplay]) {
            const std::string* text = s.display(id);
            if (text == nullptr || *text == printed_.displays[id]) continue;
            out_ << "display " << id << ' ' << entry.first << ' ' << quoted(*text) << '\n';
            printed_.displays[id] = *text;
        }
        out_ << std::flush;
        printedChanged_.notify_all();
    }

    void status() {
        const bool connected = exports_.getConnectStatus();
        const OutputSnapshot s = recorder_.snapshot();
        std::lock_guard lock(mutex_);
        out_ << "status " << (connected ? "connected" : "not connected") << '\n';
        out_ << "  lamps on: " << s.lampsOn() << " of " << lists_[ListKind::kDigitOut].size()
             << '\n';
        for (const auto& [id, entry] : lists_[ListKind::kDigitOut]) {
            if (s.lamp(id)) out_ << "  lamp " << id << ' ' << entry.first << " on\n";
        }
        for (const auto& [id, entry] : lists_[ListKind::kDisplay]) {
            const std::string* text = s.display(id);
            if (text != nullptr && !text->empty()) {
                out_ << "  display " << id << ' ' << entry.first << ' ' << quoted(*text) << '\n';
            }
        }
        for (const auto& [id, entry] : lists_[ListKind::kPwm]) {
            if (id >= 0 && static_cast<std::size_t>(id) < s.pwm.size() && s.pwmSeen[id]) {
                char level[32];
                std::snprintf(level, sizeof(level), "%.0f", s.pwm[id]);
                out_ << "  pwm " << id << ' ' << entry.first << ' ' << level << '\n';
            }
        }
        for (const auto& [id, entry] : lists_[ListKind::kServo]) {
            if (id >= 0 && static_cast<std::size_t>(id) < s.servos.size() && s.servoSeen[id]) {
                char position[48];
                std::snprintf(position, sizeof(position), "%.3f", s.servos[id]);
                out_ << "  servo " << id << ' ' << entry.first << ' ' << position << '\n';
            }
        }
        out_ << std::flush;
    }

    bool wait(const std::vector<std::string>& words, std::string& error) {
        long ms = 0;
        if (words.size() == 2 && parseInteger(words[1], ms) && ms >= 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(ms));
            return true;
        }
        std::function<bool()> reached;
        std::string what;
        if (words.size() == 2 && words[1] == "connected") {
            reached = [this] { return printed_.connected; };
            what = "the connection";
        } else if (words.size() == 4 && words[1] == "lamp" &&
                   (words[3] == "on" || words[3] == "off")) {
            const int32_t id = signal(ListKind::kDigitOut, words[2], error);
            if (id < 0) return false;
            const bool on = words[3] == "on";
            reached = [this, id, on] { return printed_.lamps[id] == on; };
            what = "lamp " + words[2] + " " + words[3];
        } else if (words.size() == 4 && words[1] == "display") {
            const int32_t id = signal(ListKind::kDisplay, words[2], error);
            if (id < 0) return false;
            const std::string& text = words[3];
            reached = [this, id, text] { return printed_.displays[id] == text; };
            what = "display " + words[2] + " " + quoted(text);
        } else {
            return usage(
                "wait MS | wait connected | wait lamp NAME|ID on|off | "
                "wait display NAME|ID \"TEXT\"",
                error);
        }
        std::unique_lock lock(mutex_);
        if (printedChanged_.wait_for(lock, kWaitTimeout, reached)) return true;
        error = "timed out after 10 s waiting for " + what;
        return false;
    }

    const Exports& exports_;
    const SignalLists& lists_;
    std::ostream& out_;
    OutputRecorder recorder_;
    std::mutex mutex_;  // guards the output streams and printed_
    std::condition_variable printedChanged_;
    Printed printed_;
    std::thread output_;
    std::atomic<bool> stopping_{false};
};

}  // namespace

bool splitWords(const std::string& line, std::vector<std::string>& words) {
    words.clear();
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r')) ++i;
        if (i >= line.size()) break;
        std::string word;
        if (line[i] == '"') {
            const std::size_t close = line.find('"', i + 1);
            if (close == std::string::npos) return false;
            word = line.substr(i + 1, close - i - 1);
            i = close + 1;
        } else {
            while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '\r') {
                word += line[i++];
            }
        }
        words.push_back(std::move(word));
    }
    return true;
}

int runBench(const BenchOptions& options, std::istream& in, std::ostream& out, std::ostream& err) {
    Module module;
    std::string error;
    if (!module.load(options.module, error)) {
        err << "helmbridge-host: " << error << '\n';
        return 2;
    }
    StandinSession standin;
    if (options.standin) {
        if (!standin.open(module.path().parent_path(), error) ||
            !standin.enterConfigDirectory(error)) {
            err << "helmbridge-host: " << error << '\n';
            return 2;
        }
        standin.startSimulator({kFramesPerSecond, false});
    }
    const SignalLists lists(module);
    Bench bench(module, lists, out);
    bench.say("# module " + module.path().string());
    if (options.standin) {
        bench.say("# simulator stand-in " + standin.path().string() + " with the demo aircraft");
    }
    bench.say("# the module looks for a simulator every 5 s; type help for the commands");
    bench.start();

    int status = 0;
    std::string line;
    std::vector<std::string> words;
    bool quit = false;
    while (!quit && std::getline(in, line)) {
        if (!splitWords(line, words)) {
            error = "unclosed quote in: " + line;
        } else if (words.empty() || (!words[0].empty() && words[0].front() == '#') ||
                   bench.execute(words, quit, error)) {
            continue;
        }
        err << "helmbridge-host: " << error << '\n' << std::flush;
        if (!options.interactive) {
            status = 2;
            break;
        }
    }
    bench.stop();
    standin.stop();
    return status;
}

}  // namespace helmbridge::host
