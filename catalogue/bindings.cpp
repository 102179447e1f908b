// The binding and key-group tables, derived once from the signal lists.
//
// Nothing here repeats a variable name of the lists: every row takes its variable from the list
// entry of its signal. What this file states are the id ranges (which digital inputs
// have a one-variable binding, which ranges are position groups, which keys form a panel block)
// and the two rows that write a variable other than their signal's own.
#include "catalogue/bindings.h"

#include <array>
#include <cstddef>
#include <map>
#include <span>
#include <stdexcept>
#include <string>

#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

// A closed range of digital-input ids.
struct IdRange {
    int32_t first;
    int32_t last;
};

// A multi-position switch: its position ids, and the variable its binding writes when that is
// not the switch variable itself.
struct PositionGroup {
    IdRange positions;
    std::string_view writes;
};

// The position groups in the slot order of `switchVarBindings`.
constexpr auto kPositionGroups = std::to_array<PositionGroup>({
    {{22, 24}, {}},
    {{35, 43}, {}},
    {{78, 80}, {}},
    {{91, 99}, {}},
    {{134, 136}, {}},
    {{147, 155}, {}},
    {{190, 192}, {}},
    {{203, 211}, {}},
    {{227, 229}, {}},
    {{384, 386}, {}},
    {{398, 400}, {}},
    {{410, 412}, {}},
    {{413, 415}, {}},
    {{416, 418}, {}},
    {{419, 421}, {}},
    {{451, 453}, {}},
    {{460, 464}, {}},
    {{468, 470}, {}},
    {{499, 503}, {}},
    {{504, 509}, {}},
    {{527, 531}, {}},
    {{532, 537}, {}},
    {{493, 495}, {}},
    {{496, 498}, {}},
    {{521, 523}, {}},
    {{524, 526}, {}},
    {{487, 489}, {}},
    {{515, 517}, {}},
    {{477, 479}, {}},
    {{543, 545}, {}},
    {{549, 551}, {}},
    {{552, 554}, {}},
    {{574, 576}, {}},
    {{579, 581}, {}},
    {{594, 596}, {}},
    {{597, 599}, {}},
    {{608, 610}, {}},
    {{611, 613}, {}},
    {{620, 622}, {}},
    {{623, 625}, {}},
    {{648, 650}, {}},
    {{651, 653}, {}},
    {{680, 682}, {}},
    {{683, 685}, {}},
    {{686, 688}, {}},
    {{689, 691}, {}},
    {{693, 695}, {}},
    {{739, 741}, {}},
    {{743, 745}, {}},
    {{746, 748}, {}},
    {{753, 758}, {}},
    {{759, 761}, {}},
    {{763, 765}, {}},
    {{767, 769}, {}},
    {{771, 774}, {}},
    {{795, 797}, {}},
    {{798, 800}, {}},
    {{804, 806}, {}},
    {{811, 813}, {}},
    {{814, 816}, {}},
    {{831, 833}, {}},
    {{881, 883}, {}},
    {{889, 892}, {}},
    {{893, 896}, {}},
    {{917, 926}, "A_WR_GAIN"},  // the ten-position gain switch drives the analog gain variable
    {{927, 930}, {}},
    {{933, 935}, {}},
    {{960, 962}, {}},
    {{936, 940}, {}},
    {{941, 945}, {}},
    {{948, 950}, {}},
    {{954, 956}, {}},
    {{957, 959}, {}},
});

// The one-variable digital inputs with a binding, in slot order; the three RMP power switches
// come last (slots 237..239).
constexpr auto kDigitInBound = std::to_array<IdRange>({
    {1, 2},     {377, 381}, {422, 450}, {454, 459}, {465, 467}, {471, 476}, {480, 480}, {486, 486},
    {514, 514}, {555, 573}, {577, 578}, {582, 593}, {600, 607}, {614, 619}, {626, 627}, {640, 647},
    {654, 679}, {692, 692}, {696, 738}, {742, 742}, {749, 752}, {762, 762}, {766, 766}, {770, 770},
    {775, 794}, {801, 803}, {807, 810}, {817, 821}, {876, 880}, {884, 888}, {931, 932}, {946, 947},
    {951, 952}, {842, 842}, {856, 856}, {870, 870},
});

// The digital input whose row writes another variable than its own: external power control
// writes the forcing variable under the number of S_IOS_ELEC_EXTERN_POWER.
struct WriteOverride {
    int32_t id;
    std::string_view writes;
};
constexpr auto kDigitInOverrides = std::to_array<WriteOverride>({{562, "S_IOS_ELEC_EXTERN_FORCE"}});

// Ids of the synthesized contacts, which carry the placeholder and are no switch variable.
constexpr int32_t kFirstSynthesizedId = 963;

// The key groups, rows in ascending id.
constexpr auto kCduKeys = std::to_array<IdRange>({{230, 323}, {325, 376}});
constexpr auto kFcuKeys = std::to_array<IdRange>(
    {{481, 485}, {490, 492}, {510, 513}, {518, 520}, {538, 542}, {546, 548}});
constexpr auto kAspKeys = std::to_array<IdRange>({{1, 21},
                                                  {25, 34},
                                                  {44, 77},
                                                  {81, 90},
                                                  {100, 133},
                                                  {137, 146},
                                                  {156, 189},
                                                  {193, 202},
                                                  {212, 226}});
constexpr auto kRmpKeys = std::to_array<IdRange>({{834, 841}, {843, 855}, {857, 869}, {871, 875}});
constexpr auto kAtcKeys = std::to_array<IdRange>({{822, 830}, {953, 953}});

constexpr int32_t idCount(const IdRange& r) { return r.last - r.first + 1; }
constexpr int32_t idCount(const PositionGroup& g) { return idCount(g.positions); }

template <typename Row>
constexpr int32_t idCount(std::span<const Row> rows) {
    int32_t n = 0;
    for (const Row& r : rows) n += idCount(r);
    return n;
}

static_assert(kPositionGroups.size() == 73);
static_assert(idCount<PositionGroup>(kPositionGroups) == 273);
static_assert(idCount<IdRange>(kDigitInBound) == 240);
static_assert(idCount<IdRange>(kCduKeys) == 146);
static_assert(idCount<IdRange>(kFcuKeys) == 23);
static_assert(idCount<IdRange>(kAspKeys) == 178);
static_assert(idCount<IdRange>(kRmpKeys) == 39);
static_assert(idCount<IdRange>(kAtcKeys) == 10);

constexpr std::string_view kNoneVariable = "Fenix NONE";

// The entry of `id` in a list whose entries stand in dense id order.
const SignalEntry& entryOf(std::span<const SignalEntry> entries, int32_t id) {
    if (id < 0 || static_cast<std::size_t>(id) >= entries.size() ||
        entries[static_cast<std::size_t>(id)].id != id) {
        throw std::out_of_range("signal list has no entry at position " + std::to_string(id));
    }
    return entries[static_cast<std::size_t>(id)];
}

const SignalEntry& digitIn(int32_t id) { return entryOf(digitInEntries(), id); }

// The switch variable of a position group: the common stem of its position names (the names are
// switch variable, underscore, position token; 941..945 are the switch variable itself).
std::string_view switchVariableOf(const IdRange& positions) {
    std::string_view stem = digitIn(positions.first).variable;
    bool allSame = true;
    for (int32_t id = positions.first + 1; id <= positions.last; ++id) {
        const std::string_view name = digitIn(id).variable;
        if (name != stem) allSame = false;
        std::size_t n = 0;
        while (n < stem.size() && n < name.size() && stem[n] == name[n]) ++n;
        stem = stem.substr(0, n);
    }
    if (allSame) return stem;
    const std::size_t cut = stem.rfind('_');
    if (cut == std::string_view::npos) {
        throw std::logic_error("position group without a common switch variable");
    }
    return stem.substr(0, cut);
}

// Switch variable -> variable number, and the switch variable of every bindable digital input.
struct Numbering {
    std::map<std::string_view, int32_t> numbers;
    std::map<int32_t, std::string_view> switchVariableOfId;
};

const Numbering& numbering() {
    static const Numbering table = [] {
        Numbering t;
        for (const PositionGroup& g : kPositionGroups) {
            const std::string_view var = switchVariableOf(g.positions);
            for (int32_t id = g.positions.first; id <= g.positions.last; ++id) {
                t.switchVariableOfId[id] = var;
            }
        }
        for (const SignalEntry& e : digitInEntries()) {
            if (e.id == 0 || e.id >= kFirstSynthesizedId) continue;
            const auto group = t.switchVariableOfId.find(e.id);
            const std::string_view var =
                group != t.switchVariableOfId.end() ? group->second : e.variable;
            if (group == t.switchVariableOfId.end()) t.switchVariableOfId[e.id] = var;
            // First appearance decides; all positions of a group share one number.
            t.numbers.emplace(var, static_cast<int32_t>(t.numbers.size()) + 1);
        }
        return t;
    }();
    return table;
}

int32_t numberOfId(int32_t id) {
    const Numbering& n = numbering();
    return n.numbers.at(n.switchVariableOfId.at(id));
}

std::vector<GroupKey> keyGroup(std::span<const IdRange> ranges) {
    std::vector<GroupKey> rows;
    for (const IdRange& r : ranges) {
        for (int32_t id = r.first; id <= r.last; ++id) {
            rows.push_back({id, static_cast<int32_t>(rows.size()), digitIn(id).variable});
        }
    }
    return rows;
}

// Encoder and analog bindings: one row per list entry, slot = key = id; entries without a
// variable of their own (entry 0, the placeholder, "Fenix NONE") declare the placeholder.
std::vector<VarBinding> listBindings(std::span<const SignalEntry> entries, int32_t base) {
    std::vector<VarBinding> rows;
    rows.reserve(entries.size());
    for (const SignalEntry& e : entries) {
        const auto slot = static_cast<int32_t>(rows.size());
        if (e.id != slot) throw std::logic_error("signal list is not in dense id order");
        const bool own = e.id != 0 && e.variable != kNoneVariable;
        rows.push_back({base + e.id, e.id, slot, own ? e.variable : kPlaceholderVariable});
    }
    return rows;
}

}  // namespace

int32_t variableNumber(std::string_view switchVariable) {
    const auto& numbers = numbering().numbers;
    const auto it = numbers.find(switchVariable);
    return it == numbers.end() ? 0 : it->second;
}

const std::vector<VarBinding>& digitInBindings() {
    static const std::vector<VarBinding> table = [] {
        std::vector<VarBinding> rows;
        for (const IdRange& r : kDigitInBound) {
            for (int32_t id = r.first; id <= r.last; ++id) {
                std::string_view var = digitIn(id).variable;
                for (const WriteOverride& o : kDigitInOverrides) {
                    if (o.id == id) var = o.writes;
                }
                rows.push_back({numberOfId(id), id, static_cast<int32_t>(rows.size()), var});
            }
        }
        return rows;
    }();
    return table;
}

const std::vector<VarBinding>& switchVarBindings() {
    static const std::vector<VarBinding> table = [] {
        std::vector<VarBinding> rows;
        for (const PositionGroup& g : kPositionGroups) {
            const std::string_view var = switchVariableOf(g.positions);
            const int32_t number = variableNumber(var);
            rows.push_back({number, number, static_cast<int32_t>(rows.size()),
                            g.writes.empty() ? var : g.writes});
        }
        return rows;
    }();
    return table;
}

const std::vector<VarBinding>& encoderBindings() {
    static const std::vector<VarBinding> table =
        listBindings(encoderEntries(), static_cast<int32_t>(DEF_ENCODER_BASE));
    return table;
}

const std::vector<VarBinding>& analogBindings() {
    static const std::vector<VarBinding> table =
        listBindings(analogEntries(), static_cast<int32_t>(DEF_ANALOG_BASE));
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
