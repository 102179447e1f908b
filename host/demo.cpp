// The demo command: live panel or log lines, the scripted session and its checks.
#include "host/demo.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "host/module.h"
#include "host/outputs.h"
#include "host/signals.h"
#include "host/standin_session.h"
#include "host/system.h"

namespace helmbridge::host {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr double kNominalSeconds = 20.0;  // the session's length at pace 1
// The demo gives up at N + 8 seconds, and never before 25 s, so that a slow machine still
// finishes a short session.
constexpr double kTimeLimitMargin = 8.0;
constexpr double kShortestTimeLimit = 25.0;
constexpr uint32_t kFramesPerSecond = 30;
constexpr auto kCheckTimeout = std::chrono::seconds(3);
constexpr auto kConnectTimeout = std::chrono::seconds(5);
constexpr auto kPollPeriod = milliseconds(20);
constexpr auto kOutputPeriod = milliseconds(50);  // the host's UpdateOutput rate
constexpr int kTicksPerRedraw = 2;                // ten redraws a second
constexpr auto kPushHold = milliseconds(200);     // well past the module's 100 ms key gate
constexpr auto kServoLogInterval = milliseconds(500);
constexpr std::size_t kRecentLines = 6;
constexpr int kBarWidth = 6;
constexpr std::size_t kPanelColumns = 79;
constexpr double kPwmFull = 2500.0;

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::string number(double value, int decimals) {
    char text[48];
    std::snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

// Timestamped log lines: printed at once in plain mode, kept for the panel otherwise.
class Log {
  public:
    Log(std::ostream& out, bool plain) : out_(out), plain_(plain), start_(Clock::now()) {}

    double elapsed() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

    void line(const std::string& text) {
        char stamp[32];
        std::snprintf(stamp, sizeof(stamp), "[%6.2f] ", elapsed());
        std::lock_guard lock(mutex_);
        if (plain_) {
            out_ << stamp << text << '\n' << std::flush;
            return;
        }
        recent_.push_back(stamp + text);
        if (recent_.size() > kRecentLines) recent_.pop_front();
    }

    std::vector<std::string> recent() const {
        std::lock_guard lock(mutex_);
        return {recent_.begin(), recent_.end()};
    }

  private:
    std::ostream& out_;
    const bool plain_;
    const Clock::time_point start_;
    mutable std::mutex mutex_;
    std::deque<std::string> recent_;
};

// An output shown on the panel, found in the module's lists by its name.
struct Item {
    std::string caption;
    std::string name;
    int32_t id = -1;  // -1: not in the lists
};

struct Panel {
    std::vector<Item> displays;
    std::vector<Item> lamps;
    std::vector<Item> pwm;
    std::vector<Item> servos;
    std::size_t lampEntries = 0;
};

Item item(const SignalLists& lists, ListKind kind, std::string caption, std::string name) {
    Item out{std::move(caption), std::move(name), -1};
    const std::vector<int32_t> ids = lists.idsNamed(kind, out.name);
    if (ids.size() == 1) out.id = ids.front();
    return out;
}

// The words shared by the start of every name, to keep panel captions short.
std::size_t sharedPrefix(const std::vector<std::string>& names) {
    if (names.empty()) return 0;
    std::size_t length = names.front().size();
    for (const std::string& name : names) {
        std::size_t i = 0;
        while (i < length && i < name.size() && name[i] == names.front()[i]) ++i;
        length = i;
    }
    const std::size_t blank = names.front().rfind(' ', length);
    return blank == std::string::npos || length == 0 ? 0 : blank + 1;
}

Panel makePanel(const SignalLists& lists) {
    Panel panel;
    panel.displays = {
        item(lists, ListKind::kDisplay, "SPD", "N_FCU_SPEED"),
        item(lists, ListKind::kDisplay, "HDG", "N_FCU_HEADING"),
        item(lists, ListKind::kDisplay, "ALT", "N_FCU_ALTITUDE"),
        item(lists, ListKind::kDisplay, "V/S", "N_FCU_VS"),
        item(lists, ListKind::kDisplay, "BARO", "N_FCU_EFIS1_BARO_HPA"),
    };
    panel.lamps = {
        item(lists, ListKind::kDigitOut, "AP1", "I_FCU_AP1"),
        item(lists, ListKind::kDigitOut, "AP2", "I_FCU_AP2"),
        item(lists, ListKind::kDigitOut, "ATHR", "I_FCU_ATHR"),
        item(lists, ListKind::kDigitOut, "LOC", "I_FCU_LOC"),
        item(lists, ListKind::kDigitOut, "APPR", "I_FCU_APPR"),
        item(lists, ListKind::kDigitOut, "ANN LT", "S_OH_IN_LT_ANN_LT"),
        item(lists, ListKind::kDigitOut, "BAT1 OFF", "I_OH_ELEC_BAT1_L"),
        item(lists, ListKind::kDigitOut, "BAT2 OFF", "I_OH_ELEC_BAT2_L"),
        item(lists, ListKind::kDigitOut, "GEAR 1", "I_MIP_GEAR_1_L"),
        item(lists, ListKind::kDigitOut, "GEAR 2", "I_MIP_GEAR_2_L"),
        item(lists, ListKind::kDigitOut, "GEAR 3", "I_MIP_GEAR_3_L"),
    };
    std::vector<std::string> pwmNames;
    // Channel 0 and servo 0 stand for "unbound"; the recorder keeps channels 1..15, servos 1..4.
    for (const auto& [id, entry] : lists[ListKind::kPwm]) {
        if (id > 0 && id < 16) pwmNames.push_back(entry.first);
    }
    const std::size_t cut = sharedPrefix(pwmNames);
    for (const auto& [id, entry] : lists[ListKind::kPwm]) {
        if (id > 0 && id < 16) panel.pwm.push_back({entry.first.substr(cut), entry.first, id});
    }
    for (const auto& [id, entry] : lists[ListKind::kServo]) {
        if (id > 0 && id < 5) panel.servos.push_back({entry.first, entry.first, id});
    }
    panel.lampEntries = lists[ListKind::kDigitOut].size();
    return panel;
}

std::string displayText(const OutputSnapshot& s, int32_t id) {
    const std::string* text = s.display(id);
    return text != nullptr ? quoted(*text) : std::string("--");
}

std::string bar(double level) {
    const double fraction = std::clamp(std::isfinite(level) ? level / kPwmFull : 0.0, 0.0, 1.0);
    const int filled = static_cast<int>(std::lround(fraction * kBarWidth));
    return std::string(filled, '#') + std::string(kBarWidth - filled, '.');
}

std::string padded(std::string text, std::size_t width) {
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text;
}

// Every panel line fits an 80-column terminal: a wrapped line would break the redraw.
std::string fitted(std::string line) {
    if (line.size() > kPanelColumns) line.resize(kPanelColumns);
    return line;
}

std::vector<std::string> panelLines(const Panel& panel, const OutputSnapshot& s,
                                    const std::string& status, double elapsed,
                                    const std::vector<std::string>& recent) {
    std::vector<std::string> lines;
    lines.push_back("HelmBridge A320 demo on the simulator stand-in   " + padded(status, 11) +
                    number(elapsed, 1) + " s");
    std::string fcu = "FCU  ";
    for (const Item& d : panel.displays) fcu += d.caption + " " + padded(displayText(s, d.id), 9);
    lines.push_back(fcu);

    std::string lamps = "LAMP ";
    std::string more = "     ";
    for (std::size_t i = 0; i < panel.lamps.size(); ++i) {
        const Item& l = panel.lamps[i];
        (i < 6 ? lamps : more) += l.caption + (s.lamp(l.id) ? " (*) " : " ( ) ");
    }
    more += " lit " + std::to_string(s.lampsOn()) + " of " + std::to_string(panel.lampEntries);
    lines.push_back(lamps);
    lines.push_back(more);

    const std::size_t rows = (panel.pwm.size() + 1) / 2;
    for (std::size_t row = 0; row < rows; ++row) {
        std::string line = row == 0 ? "PWM  " : "     ";
        for (std::size_t column = 0; column < 2; ++column) {
            const std::size_t i = row + column * rows;
            if (i >= panel.pwm.size()) continue;
            const Item& p = panel.pwm[i];
            const double level = s.pwmSeen[p.id] ? s.pwm[p.id] : 0.0;
            char cell[96];
            std::snprintf(cell, sizeof(cell), "%2d %-20.20s %s%5.0f ", static_cast<int>(p.id),
                          p.caption.c_str(), bar(level).c_str(), level);
            line += cell;
        }
        lines.push_back(line);
    }

    for (std::size_t i = 0; i < panel.servos.size(); ++i) {
        const Item& v = panel.servos[i];
        std::string line = (i == 0 ? "SERV " : "     ") + std::to_string(v.id) + " " +
                           padded(v.caption, 31) +
                           padded(s.servoSeen[v.id] ? number(s.servos[v.id], 3) : "--", 10);
        if (s.servoSpeedSeen[v.id]) line += "speed " + number(s.servoSpeeds[v.id], 0);
        lines.push_back(line);
    }

    for (std::size_t i = 0; i < kRecentLines; ++i) {
        const std::string prefix = i == 0 ? "LOG  " : "     ";
        lines.push_back(prefix + (i < recent.size() ? recent[i] : std::string()));
    }
    for (std::string& line : lines) line = fitted(std::move(line));
    return lines;
}

// In plain mode: one log line per change of what the panel shows, starting from a dark cockpit
// (lamps off, displays blank, levels and positions 0).
class ChangeLog {
  public:
    void update(const Panel& panel, const OutputSnapshot& s, bool connected, Log& log) {
        if (connected != connected_) {
            log.line(connected ? "module connected to the simulator" : "module disconnected");
            connected_ = connected;
        }
        if (displays_.size() != panel.displays.size()) displays_.resize(panel.displays.size());
        for (std::size_t i = 0; i < panel.displays.size(); ++i) {
            const Item& d = panel.displays[i];
            const std::string* text = s.display(d.id);
            if (text == nullptr || *text == displays_[i]) continue;
            displays_[i] = *text;
            log.line("display " + std::to_string(d.id) + " " + d.name + " " + quoted(*text));
        }
        if (lamps_.size() != panel.lamps.size()) lamps_.resize(panel.lamps.size());
        for (std::size_t i = 0; i < panel.lamps.size(); ++i) {
            const Item& l = panel.lamps[i];
            if (l.id < 0 || static_cast<std::size_t>(l.id) >= s.lampSeen.size() ||
                !s.lampSeen[l.id]) {
                continue;
            }
            const bool on = s.lamp(l.id);
            if (on == lamps_[i]) continue;
            lamps_[i] = on;
            log.line("lamp " + std::to_string(l.id) + " " + l.name + (on ? " on" : " off"));
        }
        const std::size_t lit = s.lampsOn();
        if (lit != lampsOn_) {
            lampsOn_ = lit;
            log.line("lamps lit: " + std::to_string(lit) + " of " +
                     std::to_string(panel.lampEntries));
        }
        for (const Item& p : panel.pwm) {
            if (!s.pwmSeen[p.id] || s.pwm[p.id] == pwm_[p.id]) continue;
            pwm_[p.id] = s.pwm[p.id];
            log.line("pwm " + std::to_string(p.id) + " " + p.name + " " + number(s.pwm[p.id], 0));
        }
        // Moving servos report every 50 ms: log a value when it settles, or twice a second.
        const Clock::time_point now = Clock::now();
        for (const Item& v : panel.servos) {
            if (!s.servoSeen[v.id]) continue;
            const double value = std::round(s.servos[v.id] * 1000.0) / 1000.0;
            const bool settled = previous_[v.id] && *previous_[v.id] == value;
            previous_[v.id] = value;
            if (value == servos_[v.id]) continue;
            if (!settled && now - servoTime_[v.id] < kServoLogInterval) continue;
            servos_[v.id] = value;
            servoTime_[v.id] = now;
            log.line("servo " + std::to_string(v.id) + " " + v.name + " " + number(value, 3));
        }
    }

  private:
    bool connected_ = false;
    std::vector<std::string> displays_;
    std::vector<bool> lamps_;
    std::size_t lampsOn_ = 0;
    std::array<double, 16> pwm_{};
    std::array<double, 5> servos_{};
    std::array<std::optional<double>, 5> previous_{};
    std::array<Clock::time_point, 5> servoTime_{};
};

// The scripted session's inputs and checks.
class Script {
  public:
    Script(const Exports& exports, const SignalLists& lists, const OutputRecorder& recorder,
           Log& log, double pace, Clock::time_point deadline)
        : exports_(exports),
          lists_(lists),
          recorder_(recorder),
          log_(log),
          pace_(pace),
          deadline_(deadline) {}

    void step(const std::string& caption) { log_.line("step    " + caption); }

    void press(const std::string& signal) { digital(signal, true, "press"); }
    void release(const std::string& signal) { digital(signal, false, "release"); }

    // A momentary push button: pressed, held past the key gate, released.
    void push(const std::string& signal) {
        const int32_t id = resolve(ListKind::kDigitIn, signal);
        if (id < 0 || expired()) return;
        log_.line("input   push " + signal + " (digital input " + std::to_string(id) + ")");
        send([&] { exports_.setDigitIn(id, true); });
        std::this_thread::sleep_for(kPushHold);
        send([&] { exports_.setDigitIn(id, false); });
    }

    void turn(const std::string& signal, int detents, milliseconds interval) {
        const int32_t id = resolve(ListKind::kEncoder, signal);
        if (id < 0 || expired()) return;
        log_.line("input   turn " + signal + " (encoder " + std::to_string(id) + ") " +
                  (detents > 0 ? "+" : "") + std::to_string(detents));
        for (int i = 0; i < std::abs(detents); ++i) {
            if (i > 0) std::this_thread::sleep_for(interval);
            send([&] { exports_.setEncoder(id, detents > 0 ? 1 : -1); });
        }
    }

    void axis(const std::string& signal, double value) {
        const int32_t id = resolve(ListKind::kAnalog, signal);
        if (id < 0 || expired()) return;
        log_.line("input   " + signal + " (analog " + std::to_string(id) + ") to " +
                  number(value, 2));
        send([&] { exports_.setAnalog(id, value); });
    }

    void hold(milliseconds time) {
        if (!expired()) std::this_thread::sleep_for(time);
    }

    // A pause to watch the panel, stretched or shortened by the pace.
    void dwell(double nominalSeconds) {
        if (expired()) return;
        std::this_thread::sleep_for(std::chrono::duration<double>(nominalSeconds * pace_));
    }

    void expectConnected() {
        const std::string caption = "the module connects to the simulator stand-in";
        if (expired()) return notReached(caption);
        const Clock::time_point until = Clock::now() + kConnectTimeout;
        while (!exports_.getConnectStatus() && Clock::now() < until) {
            std::this_thread::sleep_for(kPollPeriod);
        }
        if (exports_.getConnectStatus()) return pass(caption);
        fail(caption, "GetConnectStatus is still false");
    }

    void expectLamps(const std::vector<std::string>& names, bool on, const std::string& caption) {
        std::vector<int32_t> ids;
        for (const std::string& name : names) {
            const std::vector<int32_t> found = lists_.idsNamed(ListKind::kDigitOut, name);
            if (found.size() != 1) return fail(caption, name + " is not one digital output");
            ids.push_back(found.front());
        }
        check(
            caption,
            [&](const OutputSnapshot& s) {
                return std::all_of(ids.begin(), ids.end(), [&](int32_t id) {
                    return s.lampSeen.size() > static_cast<std::size_t>(id) && s.lampSeen[id] &&
                           s.lamp(id) == on;
                });
            },
            [&](const OutputSnapshot& s) {
                std::string seen;
                for (std::size_t i = 0; i < ids.size(); ++i) {
                    const int32_t id = ids[i];
                    const bool reported =
                        s.lampSeen.size() > static_cast<std::size_t>(id) && s.lampSeen[id];
                    seen += (i > 0 ? ", " : "") + names[i] +
                            (!reported    ? " never reported"
                             : s.lamp(id) ? " on"
                                          : " off");
                }
                return seen;
            });
    }
    void expectLamp(const std::string& name, bool on, const std::string& caption) {
        expectLamps({name}, on, caption);
    }

    void expectAllLamps(const std::string& caption) {
        const std::size_t entries = lists_[ListKind::kDigitOut].size();
        check(
            caption, [&](const OutputSnapshot& s) { return s.lampsOn() == entries; },
            [&](const OutputSnapshot& s) {
                return std::to_string(s.lampsOn()) + " of " + std::to_string(entries) + " lit";
            });
    }

    void expectDisplay(const std::string& name, const std::string& text,
                       const std::string& caption) {
        const std::vector<int32_t> found = lists_.idsNamed(ListKind::kDisplay, name);
        if (found.size() != 1) return fail(caption, name + " is not one display");
        const int32_t id = found.front();
        check(
            caption,
            [&](const OutputSnapshot& s) {
                const std::string* shown = s.display(id);
                return shown != nullptr && *shown == text;
            },
            [&](const OutputSnapshot& s) {
                const std::string* shown = s.display(id);
                return name + (shown ? " shows " + quoted(*shown) : " never reported");
            });
    }

    void expectPwm(const std::string& name, double level, const std::string& caption) {
        const std::vector<int32_t> found = lists_.idsNamed(ListKind::kPwm, name);
        if (found.size() != 1 || found.front() < 0 || found.front() >= 16) {
            return fail(caption, name + " is not one PWM channel");
        }
        const int32_t id = found.front();
        check(
            caption,
            [&](const OutputSnapshot& s) {
                return s.pwmSeen[id] && std::abs(s.pwm[id] - level) < 1.0;
            },
            [&](const OutputSnapshot& s) {
                return "channel " + std::to_string(id) +
                       (s.pwmSeen[id] ? " at " + number(s.pwm[id], 1) : " never reported");
            });
    }

    void expectServo(const std::string& name, double low, double high, const std::string& caption) {
        const std::vector<int32_t> found = lists_.idsNamed(ListKind::kServo, name);
        if (found.size() != 1 || found.front() < 0 || found.front() >= 5) {
            return fail(caption, name + " is not one servo");
        }
        const int32_t id = found.front();
        check(
            caption,
            [&](const OutputSnapshot& s) {
                return s.servoSeen[id] && s.servos[id] >= low && s.servos[id] <= high;
            },
            [&](const OutputSnapshot& s) {
                return "servo " + std::to_string(id) +
                       (s.servoSeen[id] ? " at " + number(s.servos[id], 3) : " never reported");
            });
    }

    uint64_t events() const { return events_; }
    int checks() const { return checks_; }
    const std::vector<std::string>& failures() const { return failures_; }

  private:
    bool expired() const { return Clock::now() >= deadline_; }

    int32_t resolve(ListKind kind, const std::string& signal) {
        const SignalRef ref = findSignal(lists_, kind, signal);
        if (!ref.found) log_.line("input   skipped: " + ref.error);
        return ref.found ? ref.id : -1;
    }

    void digital(const std::string& signal, bool state, const char* verb) {
        const int32_t id = resolve(ListKind::kDigitIn, signal);
        if (id < 0 || expired()) return;
        log_.line(std::string("input   ") + verb + " " + signal + " (digital input " +
                  std::to_string(id) + ")");
        send([&] { exports_.setDigitIn(id, state); });
    }

    template <typename Call>
    void send(Call call) {
        call();
        ++events_;
    }

    void check(const std::string& caption, const std::function<bool(const OutputSnapshot&)>& holds,
               const std::function<std::string(const OutputSnapshot&)>& actual) {
        if (expired()) return notReached(caption);
        const Clock::time_point until = std::min(Clock::now() + kCheckTimeout, deadline_);
        OutputSnapshot s = recorder_.snapshot();
        while (!holds(s) && Clock::now() < until) {
            std::this_thread::sleep_for(kPollPeriod);
            s = recorder_.snapshot();
        }
        if (holds(s)) return pass(caption);
        fail(caption, actual(s));
    }

    void pass(const std::string& caption) {
        ++checks_;
        log_.line("ok      " + caption);
    }
    void fail(const std::string& caption, const std::string& why) {
        ++checks_;
        failures_.push_back(caption + ": " + why);
        log_.line("FAILED  " + caption + ": " + why);
    }
    void notReached(const std::string& caption) { fail(caption, "not reached (time limit)"); }

    const Exports& exports_;
    const SignalLists& lists_;
    const OutputRecorder& recorder_;
    Log& log_;
    const double pace_;
    const Clock::time_point deadline_;
    uint64_t events_ = 0;
    int checks_ = 0;
    std::vector<std::string> failures_;
};

void playSession(Script& s) {
    using namespace std::chrono_literals;

    s.step("start: the module looks for a simulator and finds the stand-in");
    s.expectConnected();
    s.expectLamp("I_OH_ELEC_BAT1_L", true, "BAT 1 OFF light lit in the dark cockpit");
    s.expectDisplay("N_FCU_SPEED", "", "FCU speed window dark without power");
    s.dwell(1.0);

    s.step("power up: BAT 1 and BAT 2 on");
    s.push("S_OH_ELEC_BAT1");
    s.push("S_OH_ELEC_BAT2");
    s.expectLamps({"I_OH_ELEC_BAT1_L", "I_OH_ELEC_BAT2_L"}, false, "both battery OFF lights out");
    s.expectDisplay("N_FCU_SPEED", "250", "speed window shows 250");
    s.expectDisplay("N_FCU_HEADING", "350", "heading window shows 350");
    s.expectDisplay("N_FCU_ALTITUDE", "10000", "altitude window shows 10000");
    s.expectDisplay("N_FCU_VS", "---", "V/S window dashed");
    s.expectDisplay("N_FCU_EFIS1_BARO_HPA", "1013", "captain's baro shows 1013");
    s.expectLamps({"I_MIP_GEAR_1_L", "I_MIP_GEAR_2_L", "I_MIP_GEAR_3_L"}, true,
                  "three green gear lights");
    s.expectPwm("FENIX RMP ACP BK ENABLE", 2500.0, "RMP/ACP backlight enabled with power");
    s.dwell(1.0);

    s.step("panel lights up: integral lighting knobs to full, dome light BRT");
    s.axis("A_OH_LIGHTING_OVD", 1.0);
    s.axis("A_FCU_LIGHTING", 1.0);
    s.axis("A_PED_LIGHTING_PEDESTAL", 1.0);
    s.axis("A_FCU_LIGHTING_TEXT", 1.0);
    s.press("S_OH_INT_LT_DOME_Brt");
    s.expectPwm("FENIX INTEG LT OVHD", 2500.0, "overhead integral lighting at full");
    s.expectPwm("FENIX INTEG LT GLARE", 2500.0, "glareshield integral lighting at full");
    s.expectPwm("FENIX INTEG LT MIP PED", 2500.0, "MIP and pedestal integral lighting at full");
    s.expectPwm("FENIX GLARE DISPLAY BRIGHT", 2500.0, "FCU display brightness at full");
    s.expectPwm("FENIX OVHD DOME L", 2500.0, "dome light bright");
    s.dwell(1.0);

    s.step("FCU speed 250 -> 255: five detents up");
    s.turn("E_FCU_SPEED", 5, 120ms);
    s.expectDisplay("N_FCU_SPEED", "255", "speed window reads 255 after five detents up");
    s.dwell(0.8);

    s.step("heading 350 -> 005: fifteen detents right");
    s.turn("E_FCU_HEADING", 15, 50ms);
    s.expectDisplay("N_FCU_HEADING", "005", "heading window reads 005");
    s.dwell(0.8);

    s.step("altitude 10000 -> 12000: scale to 1000 ft, two detents up");
    s.press("S_FCU_ALTITUDE_SCALE");
    s.turn("E_FCU_ALTITUDE", 2, 150ms);
    s.expectDisplay("N_FCU_ALTITUDE", "12000", "altitude window reads 12000");
    s.dwell(0.8);

    s.step("vertical speed -700 ft/min: seven detents down");
    s.turn("E_FCU_VS", -7, 80ms);
    s.expectDisplay("N_FCU_VS", "-07oo", "V/S window reads -07oo");
    s.dwell(0.8);

    s.step("autopilot: AP1, A/THR, LOC, then APPR and AP2");
    s.push("S_FCU_AP1");
    s.expectLamp("I_FCU_AP1", true, "AP1 lamp on after the push");
    s.push("S_FCU_ATHR");
    s.expectLamp("I_FCU_ATHR", true, "A/THR lamp on");
    s.push("S_FCU_LOC");
    s.expectLamp("I_FCU_LOC", true, "LOC lamp on");
    s.push("S_FCU_APPR");
    s.expectLamp("I_FCU_APPR", true, "APPR lamp on");
    s.expectLamp("I_FCU_LOC", false, "LOC lamp off once APPR is armed");
    s.push("S_FCU_AP2");
    s.expectLamp("I_FCU_AP2", true, "AP2 lamp on");
    s.dwell(1.0);

    s.step("annunciator light test: ANN LT to TEST");
    s.press("S_OH_IN_LT_ANN_LT_Test");
    s.expectAllLamps("every lamp on during the light test");
    s.expectDisplay("N_FCU_SPEED", "8.8.8", "speed window shows 8.8.8 during the test");
    s.expectDisplay("N_FCU_ALTITUDE", "88888", "altitude window shows 88888 during the test");
    s.dwell(1.5);
    s.release("S_OH_IN_LT_ANN_LT_Test");
    s.expectDisplay("N_FCU_SPEED", "255", "speed window back to 255 after the test");
    s.expectLamp("I_OH_ELEC_BAT1_L", false, "lamps back to the aircraft's own states");
    s.expectLamp("S_OH_IN_LT_ANN_LT", true, "ANN LT output on with the switch back in BRT");
    s.dwell(0.8);

    s.step("parking brake ON");
    s.press("S_MIP_PARKING_BRAKE");
    s.expectServo("FENIX_A320_SERVO_ACCU_PRESS", 749.0, 751.0,
                  "accumulator needle at 3000 psi (servo 750)");
    s.expectServo("FENIX_A320_SERVO_BRAKE_L_PRESS", 660.0, 670.0,
                  "left brake needle at 2000 psi (servo 666.7)");
    s.expectServo("FENIX_A320_SERVO_BRAKE_R_PRESS", 660.0, 670.0,
                  "right brake needle at 2000 psi (servo 666.7)");
    s.dwell(0.8);

    s.step("pitch trim: electric trim nose up for 1.6 s");
    s.press("S_FC_ELEVATOR_TRIM_UP");
    s.hold(1600ms);
    s.release("S_FC_ELEVATOR_TRIM_UP");
    s.expectServo("FENIX_TQ_PITCH_TRIM_WHEEL", 0.6, 1.0,
                  "trim wheel servo follows the trim to about 0.8 degrees");
    s.dwell(0.8);

    s.step("dim the panel lights: knobs to 30 %, dome light DIM");
    s.axis("A_OH_LIGHTING_OVD", 0.3);
    s.axis("A_FCU_LIGHTING", 0.3);
    s.axis("A_PED_LIGHTING_PEDESTAL", 0.3);
    s.axis("A_FCU_LIGHTING_TEXT", 0.3);
    s.release("S_OH_INT_LT_DOME_Brt");  // the switch rests in DIM
    s.expectPwm("FENIX INTEG LT OVHD", 750.0, "overhead integral lighting at 30 %");
    s.expectPwm("FENIX INTEG LT GLARE", 750.0, "glareshield integral lighting at 30 %");
    s.expectPwm("FENIX INTEG LT MIP PED", 750.0, "MIP and pedestal integral lighting at 30 %");
    s.expectPwm("FENIX GLARE DISPLAY BRIGHT", 750.0, "FCU display brightness at 30 %");
    s.expectPwm("FENIX OVHD DOME L", 1250.0, "dome light dim");
    s.dwell(1.0);

    s.step("parking brake OFF (the handle's OFF microswitch, input 964)");
    s.release("S_MIP_PARKING_BRAKE");
    s.press("964");
    s.expectServo("FENIX_A320_SERVO_BRAKE_L_PRESS", 0.0, 1.0, "left brake needle back to 0");
    s.expectServo("FENIX_A320_SERVO_BRAKE_R_PRESS", 0.0, 1.0, "right brake needle back to 0");
    s.dwell(0.8);
    s.step("session complete");
}

// Redraws the panel in place: back to its first line, each line erased and written again.
class Screen {
  public:
    explicit Screen(std::ostream& out) : out_(out) {}
    void draw(const std::vector<std::string>& lines) {
        std::string frame;
        if (drawn_ > 0) frame += "\x1b[" + std::to_string(drawn_) + "F";
        for (const std::string& line : lines) frame += "\x1b[2K" + line + "\n";
        out_ << frame << std::flush;
        drawn_ = lines.size();
    }

  private:
    std::ostream& out_;
    std::size_t drawn_ = 0;
};

std::size_t slotsFor(const SigList& list) {
    return list.empty() ? 0 : static_cast<std::size_t>(std::max(0, list.rbegin()->first)) + 1;
}

}  // namespace

int runDemo(const DemoOptions& options, std::ostream& out, std::ostream& err) {
    Module module;
    std::string error;
    if (!module.load(options.module, error)) {
        err << "helmbridge-host: " << error << '\n';
        return 2;
    }
    StandinSession standin;
    if (!standin.open(module.path().parent_path(), error)) {
        err << "helmbridge-host: " << error << '\n';
        return 2;
    }
    const Exports& exports = module.exports();
    const SignalLists lists(module);
    const Panel panel = makePanel(lists);
    OutputRecorder recorder(slotsFor(lists[ListKind::kDigitOut]),
                            slotsFor(lists[ListKind::kDisplay]));
    recorder.install(exports);
    if (!standin.enterConfigDirectory(error)) {
        err << "helmbridge-host: " << error << '\n';
        return 2;
    }

    const bool live = !options.plain && enableTerminalControl();
    Log log(out, !live);
    log.line("module " + module.path().string());
    log.line("simulator stand-in " + standin.path().string() + ", demo aircraft at " +
             std::to_string(kFramesPerSecond) + " frames/s");
    standin.startSimulator({kFramesPerSecond, true});
    exports.start({});

    // The host's output thread: UpdateOutput twenty times a second, the panel ten times.
    std::atomic<bool> stopOutput{false};
    Screen screen(out);
    auto render = [&](const std::string& status) {
        const OutputSnapshot snapshot = recorder.snapshot();
        screen.draw(panelLines(panel, snapshot, status, log.elapsed(), log.recent()));
    };
    std::thread output([&] {
        ChangeLog changes;
        Clock::time_point next = Clock::now();
        for (int tick = 1; !stopOutput; ++tick) {
            exports.updateOutput();
            if (tick % kTicksPerRedraw == 0) {
                const bool connected = exports.getConnectStatus();
                if (live) {
                    render(connected ? "connected" : "searching");
                } else {
                    changes.update(panel, recorder.snapshot(), connected, log);
                }
            }
            next += kOutputPeriod;
            std::this_thread::sleep_until(next);
        }
    });

    const double pace = std::max(0.0, options.seconds) / kNominalSeconds;
    const Clock::time_point deadline =
        Clock::now() +
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
            std::max(kShortestTimeLimit, std::max(0.0, options.seconds) + kTimeLimitMargin)));
    Script script(exports, lists, recorder, log, pace, deadline);
    playSession(script);

    stopOutput = true;
    output.join();
    exports.stop();
    standin.stop();  // after the module: every write it made is counted

    const int failed = static_cast<int>(script.failures().size());
    if (live) {
        render("stopped");
        for (const std::string& failure : script.failures()) out << "FAILED  " << failure << '\n';
    }
    const demo::DemoSimulator* simulator = standin.simulator();
    out << "demo: " << (script.checks() - failed) << " of " << script.checks() << " checks passed; "
        << script.events() << " events sent, " << (simulator ? simulator->writesReceived() : 0)
        << " writes received by the simulator, " << recorder.snapshot().calls << " output calls\n"
        << std::flush;
    return failed == 0 ? 0 : 1;
}

}  // namespace helmbridge::host
