// Builds the host-facing maps from the catalogue rows.
#include "catalogue/signal_lists.h"

#include "catalogue/analog_inputs.h"
#include "catalogue/digital_inputs.h"
#include "catalogue/digital_outputs.h"
#include "catalogue/displays.h"
#include "catalogue/encoders.h"
#include "catalogue/pwm.h"
#include "catalogue/servos.h"

namespace fenixA320 {
namespace {

static_assert(catalogueLess("S_ASP_INT_SEND", "S_ASP_INTRAD") &&
              catalogueLess("S_USER_19", "S_USER_2") &&
              catalogueLess("S_CDU1_KEY_9", "S_CDU1_KEY_A") &&
              catalogueLess("S_OH_SIGNS", "S_OH_SIGNS_SMOKING") &&
              !catalogueLess("S_USER_2", "S_USER_2"));

// The sorted bodies of the lists ascend in catalogue order of `key`; rows whose key is empty
// stand outside the order.
template <std::size_t N>
constexpr bool ascends(const SignalEntry (&rows)[N], int32_t first, int32_t last,
                       std::string_view (*key)(const SignalEntry&)) {
    std::string_view previous;
    for (int32_t id = first; id <= last; ++id) {
        const std::string_view k = key(rows[id]);
        if (k.empty()) continue;
        if (!previous.empty() && !catalogueLess(previous, k)) return false;
        previous = k;
    }
    return true;
}

// An analog input sorts by the variable its label names (three labels name none).
constexpr std::string_view labelVariable(const SignalEntry& row) {
    const std::size_t dot = row.label.find('.');
    return dot == std::string_view::npos ? std::string_view() : row.label.substr(0, dot);
}
// The knob read-backs (A_) stand among the displays of their lights.
constexpr std::string_view displayOrderName(const SignalEntry& row) {
    return row.variable.starts_with("A_") ? std::string_view() : row.variable;
}

static_assert(ascends(kEncoderRows, 1, 43, variableOf));
static_assert(ascends(kAnalogRows, 1, 123, labelVariable));
static_assert(ascends(kDigitOutRows, 1, 469, variableOf));
static_assert(ascends(kDisplayRows, 1, 140, displayOrderName));

// The synthesized outputs are the last six, the two that show the FCU power first.
constexpr bool synthesizedOutputsAreTheLastSix() {
    for (const SignalEntry& row : kDigitOutRows) {
        const auto id = static_cast<uint32_t>(row.id);
        if (isSynthesized(row) != (id >= kFirstSynthesizedDigitOut)) return false;
        if (showsFcuPower(row) != (isSynthesized(row) && id < kFirstDarkSynthesizedDigitOut)) {
            return false;
        }
    }
    return kLastDigitOut - kFirstSynthesizedDigitOut == 5 &&
           kFirstDarkSynthesizedDigitOut - kFirstSynthesizedDigitOut == 2;
}
static_assert(synthesizedOutputsAreTheLastSix());

template <std::size_t N>
SigList buildList(const SignalEntry (&rows)[N]) {
    SigList list;
    for (const SignalEntry& e : rows) {
        list.emplace(e.id, std::make_pair(std::string(e.variable), std::string(e.label)));
    }
    return list;
}

}  // namespace

const SigList& digitInSigList() {
    static const SigList list = buildList(kDigitInRows);
    return list;
}
const SigList& encoderSigList() {
    static const SigList list = buildList(kEncoderRows);
    return list;
}
const SigList& analogSigList() {
    static const SigList list = buildList(kAnalogRows);
    return list;
}
const SigList& digitOutSigList() {
    static const SigList list = buildList(kDigitOutRows);
    return list;
}
const SigList& displaySigList() {
    static const SigList list = buildList(kDisplayRows);
    return list;
}
const SigList& servoSigList() {
    static const SigList list = buildList(kServoRows);
    return list;
}
const SigList& pwmSigList() {
    static const SigList list = buildList(kPwmRows);
    return list;
}

}  // namespace fenixA320
