// The seven signal lists the host binds its hardware channels to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace fenixA320 {

// Signal id -> (variable name, label), iterated in ascending id.
using SigList = std::map<int32_t, std::pair<std::string, std::string>>;

// One catalogue row as written in the tables; the lists are built from these at load.
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

// Catalogue rows in catalogue order (each defined next to its data in catalogue/).
std::span<const SignalEntry> digitInEntries();
std::span<const SignalEntry> encoderEntries();
std::span<const SignalEntry> analogEntries();
std::span<const SignalEntry> digitOutEntries();
std::span<const SignalEntry> displayEntries();
std::span<const SignalEntry> servoEntries();
std::span<const SignalEntry> pwmEntries();

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
