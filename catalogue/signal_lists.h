// The seven signal lists the host binds its hardware channels to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace fenixA320 {

// Signal id -> (variable name, label), iterated in ascending id.
using SigList = std::map<int32_t, std::pair<std::string, std::string>>;

// One catalogue row as written in the tables (catalogue/<list>.h, one plain array per list);
// the lists are built from these at load.
struct SignalEntry {
    int32_t id;
    std::string_view variable;
    std::string_view label;
};

// Stands in wherever a table or a data definition needs a variable and the signal has none.
inline constexpr std::string_view kPlaceholderVariable = "S_DCDU1_LSK1L";

inline constexpr std::size_t kDigitInCount = 965;
inline constexpr std::size_t kEncoderCount = 44;
inline constexpr std::size_t kAnalogCount = 125;
inline constexpr std::size_t kDigitOutCount = 501;
inline constexpr std::size_t kDisplayCount = 143;
inline constexpr std::size_t kServoCount = 5;
inline constexpr std::size_t kPwmCount = 16;

// Row i carries id i, except that the ids from `gap` on are one higher (a list without `gap`).
template <std::size_t N>
consteval bool idsAreDense(const SignalEntry (&rows)[N], int32_t gap = -1) {
    for (std::size_t i = 0; i < N; ++i) {
        const auto id = static_cast<int32_t>(i);
        if (rows[i].id != (gap >= 0 && id >= gap ? id + 1 : id)) return false;
    }
    return true;
}

// Never defined: a lookup below reaches it, and so fails to compile, for a name that no row or
// several rows carry.
void signalNameIsUnknownOrShared();

// The catalogue's name order: character by character, underscore below digits below letters; a
// name sorts before every longer name it begins.
constexpr bool catalogueLess(std::string_view a, std::string_view b) {
    const auto rank = [](char c) { return c == '_' ? 0 : (c >= '0' && c <= '9' ? 1 : 2); };
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
        if (a[i] != b[i]) return rank(a[i]) != rank(b[i]) ? rank(a[i]) < rank(b[i]) : a[i] < b[i];
    }
    return a.size() < b.size();
}

// What a row goes by in a lookup: its variable, unless its list says otherwise.
constexpr std::string_view variableOf(const SignalEntry& row) { return row.variable; }
constexpr std::string_view labelOf(const SignalEntry& row) { return row.label; }

// The id of the one row whose name is `name`.
template <std::size_t N>
consteval int32_t idOf(const SignalEntry (&rows)[N], std::string_view name,
                       std::string_view (*nameOf)(const SignalEntry&) = variableOf) {
    int32_t found = -1;
    for (const SignalEntry& row : rows) {
        if (nameOf(row) != name) continue;
        if (found >= 0) signalNameIsUnknownOrShared();
        found = row.id;
    }
    if (found < 0) signalNameIsUnknownOrShared();
    return found;
}

// The lists as the host receives them. Each is built once, on first use (the core's
// construction at load touches all of them), and never changes afterwards, so any thread may
// read them without a lock.
const SigList& digitInSigList();
const SigList& encoderSigList();
const SigList& analogSigList();
const SigList& digitOutSigList();
const SigList& displaySigList();
const SigList& servoSigList();
const SigList& pwmSigList();

}  // namespace fenixA320
