// Which aircraft variable each input signal writes, and under which data-definition id.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace fenixA320 {

// One variable declared under its own data definition.
struct VarBinding {
    int32_t defineId;           // SimConnect data-definition id
    int32_t key;                // what input processing looks the row up by
    int32_t slot;               // row position; indexes the table's value array
    std::string_view variable;  // aircraft variable without the "L:" prefix
};

// One key of a panel whose keys are all written as one block.
struct GroupKey {
    int32_t signalId;           // digital-input id
    int32_t index;              // datum position in the block and value-array index
    std::string_view variable;  // aircraft variable without the "L:" prefix
};

// Data-definition ids outside the per-variable numbers.
inline constexpr uint32_t DEF_ENCODER_BASE = 1000;  // + encoder id
inline constexpr uint32_t DEF_ANALOG_BASE = 2000;   // + analog id
inline constexpr uint32_t DEF_CDU_KEYS = 3000;
inline constexpr uint32_t DEF_FCU_KEYS = 3001;
inline constexpr uint32_t DEF_ASP_KEYS = 3002;
inline constexpr uint32_t DEF_RMP_KEYS = 3003;
inline constexpr uint32_t DEF_ATC_KEYS = 3004;
inline constexpr uint32_t DEF_DIGIT_OUT = 3005;
inline constexpr uint32_t DEF_DISPLAY = 3006;
inline constexpr uint32_t DEF_TITLE = 3008;
inline constexpr uint32_t DEF_CLOCK = 3009;

// The tables, derived once from the signal lists and constant afterwards.
const std::vector<VarBinding>& digitInBindings();    // 240 rows
const std::vector<VarBinding>& switchVarBindings();  // 73 rows
const std::vector<VarBinding>& encoderBindings();    // 44 rows
const std::vector<VarBinding>& analogBindings();     // 125 rows
const std::vector<GroupKey>& cduKeyGroup();          // 146 rows, definition 3000
const std::vector<GroupKey>& fcuKeyGroup();          // 23 rows, definition 3001
const std::vector<GroupKey>& aspKeyGroup();          // 178 rows, definition 3002
const std::vector<GroupKey>& rmpKeyGroup();          // 39 rows, definition 3003
const std::vector<GroupKey>& atcKeyGroup();          // 10 rows, definition 3004

// Switch and push-button variables are numbered 1..kVariableNumberCount.
inline constexpr int32_t kVariableNumberCount = 762;

// Number 1..762 of a switch variable of the digital-input list (a position group counts once);
// 0 for a name that is no switch variable.
int32_t variableNumber(std::string_view switchVariable);

}  // namespace fenixA320
