// The binding and key-group tables, derived once from the signal lists and the position switches.
//
// Nothing here repeats a variable name of the lists: every row takes its variable from the list
// entry of its signal. What this file states are the id ranges (which digital inputs have a
// one-variable binding, which keys form a panel block) and the row that writes a variable other
// than its signal's own. The position switches, and with them the variable numbers, come from
// catalogue/position_switches.h.
#include "catalogue/bindings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "catalogue/analog_inputs.h"
#include "catalogue/digital_inputs.h"
#include "catalogue/encoders.h"
#include "catalogue/position_switches.h"
#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

// A closed range of digital-input ids.
struct IdRange {
    int32_t first;
    int32_t last;
};

// The one-variable digital inputs with a binding, in slot order; the three RMP power switches
// come last (slots 237..239).
constexpr IdRange kDigitInBound[] = {
    {1, 2},     {377, 381}, {422, 450}, {454, 459}, {465, 467}, {471, 476}, {480, 480}, {486, 486},
    {514, 514}, {555, 573}, {577, 578}, {582, 593}, {600, 607}, {614, 619}, {626, 627}, {640, 647},
    {654, 679}, {692, 692}, {696, 738}, {742, 742}, {749, 752}, {762, 762}, {766, 766}, {770, 770},
    {775, 794}, {801, 803}, {807, 810}, {817, 821}, {876, 880}, {884, 888}, {931, 932}, {946, 947},
    {951, 952}, {842, 842}, {856, 856}, {870, 870},
};

// External power control writes the forcing variable under the number of its own variable.
constexpr std::string_view kExternPowerVariable = "S_IOS_ELEC_EXTERN_POWER";
constexpr std::string_view kExternPowerWrites = "S_IOS_ELEC_EXTERN_FORCE";

// The key groups, rows in ascending id.
constexpr IdRange kCduKeys[] = {{230, 323}, {325, 376}};
constexpr IdRange kFcuKeys[] = {{481, 485}, {490, 492}, {510, 513},
                                {518, 520}, {538, 542}, {546, 548}};
constexpr IdRange kAspKeys[] = {{1, 21},    {25, 34},   {44, 77},   {81, 90},  {100, 133},
                                {137, 146}, {156, 189}, {193, 202}, {212, 226}};
constexpr IdRange kRmpKeys[] = {{834, 841}, {843, 855}, {857, 869}, {871, 875}};
constexpr IdRange kAtcKeys[] = {{822, 830}, {953, 953}};

constexpr int32_t idCount(std::span<const IdRange> ranges) {
    int32_t n = 0;
    for (const IdRange& r : ranges) n += r.last - r.first + 1;
    return n;
}

static_assert(idCount(kDigitInBound) == 240);
static_assert(idCount(kCduKeys) == 146);
static_assert(idCount(kFcuKeys) == 23);
static_assert(idCount(kAspKeys) == 178);
static_assert(idCount(kRmpKeys) == 39);
static_assert(idCount(kAtcKeys) == 10);

// The switches' positions are named after their variable, share one legend with one item per
// position (the XBLEED positions put their own name before it), and do not overlap.
constexpr bool positionsFollowTheirSwitches() {
    std::array<bool, kDigitInCount> taken{};
    for (std::size_t i = 0; i < kPositionSwitchCount; ++i) {
        const PositionSwitchRow& row = kPositionSwitches[i];
        const PositionGroup& g = kPositionGroups[i];
        const std::string_view legend =
            kDigitInRows[g.first].label.substr(kDigitInRows[g.first].label.find('.'));
        const std::size_t open = legend.rfind('[');
        const auto items = std::count(legend.begin() + open, legend.end(), ',') + 1;
        if (items != g.count || g.count > static_cast<int32_t>(row.values.size())) return false;
        for (int32_t id = g.first; id < g.first + g.count; ++id) {
            const SignalEntry& e = kDigitInRows[id];
            if (taken[id] || !namesPositionOf(e.variable, row.variable)) return false;
            if (!namesPositionOf(e.label.substr(0, e.label.find('.')), row.variable)) return false;
            if (e.label.substr(e.label.find('.')) != legend) return false;
            taken[id] = true;
        }
    }
    return true;
}
static_assert(positionsFollowTheirSwitches());

// The digital inputs that are appended after the sorted body (the GCS selector, the synthesized
// contacts) and the ones that carry the placeholder.
constexpr int32_t kSortedBodyEnd = 960;
constexpr int32_t kFirstSynthesizedId = 963;
static_assert(kLandingElevationAutoContact == kFirstSynthesizedId &&
              kParkingBrakeOffContact == kFirstSynthesizedId + 1);

// The switch variable of each digital input of 1..962: its position switch's or its own.
constexpr std::array<std::string_view, kFirstSynthesizedId> switchVariables() {
    std::array<std::string_view, kFirstSynthesizedId> vars{};
    for (int32_t id = 0; id < kFirstSynthesizedId; ++id) vars[id] = kDigitInRows[id].variable;
    for (std::size_t i = 0; i < kPositionSwitchCount; ++i) {
        const PositionGroup& g = kPositionGroups[i];
        for (int32_t id = g.first; id < g.first + g.count; ++id) {
            vars[id] = kPositionSwitches[i].variable;
        }
    }
    return vars;
}

// Ids 1..959 run in the catalogue order of their switch variables, which is what makes the
// variable numbers the order of first appearance; the one switch appended after them, S_WR_GCS,
// takes the last number.
constexpr bool sortedBodyIsInCatalogueOrder() {
    const auto vars = switchVariables();
    for (int32_t id = 2; id < kSortedBodyEnd; ++id) {
        if (vars[id - 1] != vars[id] && !catalogueLess(vars[id - 1], vars[id])) return false;
    }
    return true;
}
static_assert(sortedBodyIsInCatalogueOrder());
static_assert(variableNumberOf("S_ADF1_TFC") == 1 && variableNumberOf("S_ASP_INTRAD") == 22 &&
              variableNumberOf("S_XPDR_OPERATION") == 761 &&
              variableNumberOf("S_WR_GCS") == kVariableNumberCount);

// A one-variable binding or key of a panel block is no position and no synthesized contact, and
// only the two ADF transfer keys are in two tables (a binding and the audio-panel block).
constexpr bool everyBoundInputIsInOneTable() {
    std::array<int, kDigitInCount> uses{};
    for (const std::span<const IdRange> table :
         {std::span<const IdRange>(kDigitInBound), std::span<const IdRange>(kCduKeys),
          std::span<const IdRange>(kFcuKeys), std::span<const IdRange>(kAspKeys),
          std::span<const IdRange>(kRmpKeys), std::span<const IdRange>(kAtcKeys)}) {
        for (const IdRange& r : table) {
            for (int32_t id = r.first; id <= r.last; ++id) {
                if (id < 1 || id >= kFirstSynthesizedId || positionGroupOf(id) != nullptr) {
                    return false;
                }
                ++uses[id];
            }
        }
    }
    for (int32_t id = 1; id < kFirstSynthesizedId; ++id) {
        if (uses[id] > (id <= 2 ? 2 : 1)) return false;
    }
    return true;
}
static_assert(everyBoundInputIsInOneTable());

std::vector<GroupKey> keyGroup(std::span<const IdRange> ranges) {
    std::vector<GroupKey> rows;
    for (const IdRange& r : ranges) {
        for (int32_t id = r.first; id <= r.last; ++id) {
            rows.push_back({id, static_cast<int32_t>(rows.size()), kDigitInRows[id].variable});
        }
    }
    return rows;
}

// Encoder and analog bindings: one row per list entry, slot = key = id; entries without a
// variable of their own (entry 0, "Fenix NONE") declare the placeholder.
template <std::size_t N>
std::vector<VarBinding> listBindings(const SignalEntry (&entries)[N], int32_t base) {
    std::vector<VarBinding> rows;
    rows.reserve(N);
    for (const SignalEntry& e : entries) {
        const bool own = e.id != 0 && e.variable != "Fenix NONE";
        rows.push_back({base + e.id, e.id, e.id, own ? e.variable : kPlaceholderVariable});
    }
    return rows;
}

}  // namespace

int32_t variableNumber(std::string_view switchVariable) {
    for (std::size_t i = 0; i < kPositionSwitchCount; ++i) {
        if (kPositionSwitches[i].variable == switchVariable) return kPositionGroups[i].number;
    }
    for (int32_t id = 1; id < kFirstSynthesizedId; ++id) {
        if (kDigitInRows[id].variable == switchVariable && positionGroupOf(id) == nullptr) {
            return numberAt(id, kPositionGroups);
        }
    }
    return 0;
}

const std::vector<VarBinding>& digitInBindings() {
    static const std::vector<VarBinding> table = [] {
        std::vector<VarBinding> rows;
        for (const IdRange& r : kDigitInBound) {
            for (int32_t id = r.first; id <= r.last; ++id) {
                std::string_view var = kDigitInRows[id].variable;
                if (var == kExternPowerVariable) var = kExternPowerWrites;
                rows.push_back(
                    {numberAt(id, kPositionGroups), id, static_cast<int32_t>(rows.size()), var});
            }
        }
        return rows;
    }();
    return table;
}

const std::vector<VarBinding>& switchVarBindings() {
    static const std::vector<VarBinding> table = [] {
        std::vector<VarBinding> rows;
        for (std::size_t i = 0; i < kPositionSwitchCount; ++i) {
            const PositionSwitchRow& s = kPositionSwitches[i];
            const int32_t number = kPositionGroups[i].number;
            rows.push_back({number, number, static_cast<int32_t>(i),
                            s.writes.empty() ? s.variable : s.writes});
        }
        return rows;
    }();
    return table;
}

const std::vector<VarBinding>& encoderBindings() {
    static const std::vector<VarBinding> table =
        listBindings(kEncoderRows, static_cast<int32_t>(DEF_ENCODER_BASE));
    return table;
}

const std::vector<VarBinding>& analogBindings() {
    static const std::vector<VarBinding> table =
        listBindings(kAnalogRows, static_cast<int32_t>(DEF_ANALOG_BASE));
    return table;
}

const std::vector<GroupKey>& cduKeyGroup() {
    static const std::vector<GroupKey> table = keyGroup(kCduKeys);
    return table;
}

const std::vector<GroupKey>& fcuKeyGroup() {
    static const std::vector<GroupKey> table = keyGroup(kFcuKeys);
    return table;
}

const std::vector<GroupKey>& aspKeyGroup() {
    static const std::vector<GroupKey> table = keyGroup(kAspKeys);
    return table;
}

const std::vector<GroupKey>& rmpKeyGroup() {
    static const std::vector<GroupKey> table = keyGroup(kRmpKeys);
    return table;
}

const std::vector<GroupKey>& atcKeyGroup() {
    static const std::vector<GroupKey> table = keyGroup(kAtcKeys);
    return table;
}

}  // namespace fenixA320
