// The demo aircraft on the linked simulator stand-in: what it answers to the module's writes.
#include "simulator/demo_aircraft.h"

#include <gtest/gtest.h>

#include <utility>

#include "platform/simconnect_abi.h"
#include "platform/simconnect_binding.h"
#include "tests/support/eventually.h"

namespace helmbridge::demo {
namespace {

using testing::eventually;

constexpr double kFrame = 1.0 / 30.0;
constexpr double kPush = -1.0;  // a press and, a frame later, the release

// One step of a cockpit session: the module writes a variable (none without a name), the aircraft
// runs frames, then a variable (none without a name) must read a value.
struct Step {
    const char* write;
    double value;
    int frames;
    const char* read;
    double expected;
};

// The demo session (tool_test.cpp) checks the powered aircraft's answers end to end (the dark
// cockpit's lamps, the windows' first values, heading wrap upwards, brake pressure up and back to
// zero); this script adds what it never shows: inputs that must change nothing, and the rules
// behind the values.
// clang-format off
constexpr Step kSession[] = {
    // write                    value   frames  read                              expected
    {nullptr,                   0,      0,      "B_FCU_POWER",                    0},
    // Without power turns are lost, the buttons and the trim switches do nothing, the wheel
    // moves the trim and a lighting knob waits for power.
    {"E_FCU_SPEED",             5,      1,      "N_FCU_SPEED",                    250},
    {"S_FCU_AP1",               kPush,  1,      "I_FCU_AP1",                      0},
    {"S_FC_ELEVATOR_TRIM_UP",   1,      30,     "N_FC_ELEVATOR_TRIM",             0},
    {"S_FC_ELEVATOR_TRIM_UP",   0,      1,      nullptr,                          0},
    {"A_FC_ELEVATOR_TRIM",      2500,   1,      "N_FC_ELEVATOR_TRIM",             2.5},
    {"A_OH_LIGHTING_OVD",       0.8,    1,      "N_OH_LIGHTING_OVD",              0},
    // Battery 1 toggles on the press, not on the release.
    {"S_OH_ELEC_BAT1",          1,      3,      "B_FCU_POWER",                    1},
    {nullptr,                   0,      0,      "I_OH_ELEC_BAT2_L",               1},
    {nullptr,                   0,      0,      "B_FC_ELEVATOR_TRIM_MOTOR_POWER", 1},
    {nullptr,                   0,      0,      "N_OH_LIGHTING_OVD",              1.6},
    {"S_OH_ELEC_BAT1",          0,      1,      "I_OH_ELEC_BAT1_L",               0},
    // Encoder counts step the FCU values; the heading wraps both ways.
    {"E_FCU_SPEED",             3,      1,      "N_FCU_SPEED",                    248},
    {"E_FCU_HEADING",           15,     1,      "N_FCU_HEADING",                  5},
    {"E_FCU_HEADING",           9,      1,      "N_FCU_HEADING",                  359},
    {"E_FCU_ALTITUDE",          2,      1,      "N_FCU_ALTITUDE",                 10200},
    {"S_FCU_AP1",               kPush,  1,      "I_FCU_AP1",                      1},
    {"S_FCU_AP1",               kPush,  1,      "I_FCU_AP1",                      0},
    {"S_FCU_AP2",               kPush,  1,      "I_FCU_AP2",                      1},
    // The motor holds the wheel; the switches run the trim for two seconds.
    {"A_FC_ELEVATOR_TRIM",      1000,   1,      "N_FC_ELEVATOR_TRIM",             2.5},
    {"S_FC_ELEVATOR_TRIM_DOWN", 1,      60,     nullptr,                          0},
    {"S_FC_ELEVATOR_TRIM_DOWN", 0,      30,     "N_FC_ELEVATOR_TRIM",             1.5},
    // The parking brake ramps the pressure at 2500 psi/s (the demo shows where it settles).
    {"S_MIP_PARKING_BRAKE",     1,      3,      "N_HYD_PRESSURE_BRAKE_LEFT",      250},
    // Either battery powers the FCU; without both the autopilot disengages.
    {"S_OH_ELEC_BAT2",          kPush,  1,      nullptr,                          0},
    {"S_OH_ELEC_BAT1",          kPush,  1,      "B_FCU_POWER",                    1},
    {"S_OH_ELEC_BAT2",          kPush,  1,      "B_FCU_POWER",                    0},
    {nullptr,                   0,      0,      "I_FCU_AP2",                      0},
};
// clang-format on

TEST(DemoAircraft, AnswersACockpitSessionFromColdAndDark) {
    standinReset();
    DemoAircraft aircraft(linkedStandin());
    aircraft.coldAndDark();
    for (const Step& step : kSession) {
        if (step.write != nullptr)
            standinSetLVar(step.write, step.value == kPush ? 1.0 : step.value);
        if (step.value == kPush) {
            aircraft.frame(kFrame);
            standinSetLVar(step.write, 0.0);
        }
        for (int i = 0; i < step.frames; ++i) aircraft.frame(kFrame);
        if (step.read == nullptr) continue;
        double value = -1.0;
        standinGetLVar(step.read, &value);
        EXPECT_NEAR(value, step.expected, 1e-6)
            << "after " << (step.write ? step.write : "nothing") << ", " << step.read;
    }
}

TEST(DemoSimulator, RunsFramesAndCountsOnlyAcceptedWrites) {
    namespace sc = helmbridge::simconnect;
    const platform::SimConnectApi* api = platform::bindSimConnect();
    ASSERT_NE(api, nullptr);
    DemoSimulator simulator(linkedStandin(), {30, true});
    simulator.start();
    ASSERT_TRUE(eventually([&] { return simulator.frames() >= 3; }));

    sc::HANDLE handle = nullptr;
    ASSERT_EQ(api->open(&handle, "test", nullptr, 0, nullptr, 0), sc::kSOk);
    api->addToDataDefinition(handle, 7, "L:S_OH_ELEC_BAT1", "number",
                             sc::SIMCONNECT_DATATYPE_FLOAT64, 0.0f, sc::SIMCONNECT_UNUSED);
    // The press, then what the simulator refuses (no such definition, a block of the wrong
    // size): the demo counts only the press, although every call returns S_OK.
    double pressed = 1.0;  // the client function takes a non-const pointer
    for (const auto& [definition, size] : {std::pair{7u, 8u}, {8u, 8u}, {7u, 4u}}) {
        api->setDataOnSimObject(handle, definition, sc::SIMCONNECT_OBJECT_ID_USER, 0, 0, size,
                                &pressed);
    }
    EXPECT_TRUE(eventually([&] { return simulator.writesReceived() >= 1; }));
    // The aircraft saw the press on a frame and switched its battery on.
    EXPECT_TRUE(eventually([&] { return simulator.aircraft().state().battery1; }));
    simulator.stop();
    EXPECT_EQ(simulator.writesReceived(), 1u);
    api->close(handle);
}

}  // namespace
}  // namespace helmbridge::demo
