// The demo aircraft on the linked simulator stand-in: what it answers to the module's writes.
#include "simulator/demo_aircraft.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/simconnect_abi.h"
#include "platform/simconnect_binding.h"
#include "tests/support/eventually.h"

namespace helmbridge::demo {
namespace {

using testing::eventually;

constexpr double kFrame = 1.0 / 30.0;

class DemoAircraftTest : public ::testing::Test {
  protected:
    void SetUp() override {
        standinReset();
        aircraft.coldAndDark();
    }
    void TearDown() override { standinReset(); }

    static double lvar(const char* name) {
        double value = 0.0;
        standinGetLVar(name, &value);
        return value;
    }
    // The module writes a variable; the aircraft sees it on its next frame.
    void write(const char* name, double value, int frames = 1) {
        standinSetLVar(name, value);
        run(frames);
    }
    void run(int frames) {
        for (int i = 0; i < frames; ++i) aircraft.frame(kFrame);
    }
    void push(const char* name) {
        write(name, 1.0);
        write(name, 0.0);
    }
    void powerUp() {
        push("S_OH_ELEC_BAT1");
        ASSERT_EQ(lvar("B_FCU_POWER"), 1.0);
    }

    DemoAircraft aircraft{linkedStandin()};
};

// The demo session (session_test.cpp) checks the powered aircraft's answers end to end; these
// tests add what it never shows: the dark cockpit, and inputs that must change nothing.
TEST_F(DemoAircraftTest, ColdAndDarkHasOnlyTheBatteryOffLightsAndTheAccumulator) {
    EXPECT_EQ(lvar("B_FCU_POWER"), 0.0);
    EXPECT_EQ(lvar("I_OH_ELEC_BAT1_L"), 1.0);
    EXPECT_EQ(lvar("I_OH_ELEC_BAT2_L"), 1.0);
    EXPECT_EQ(lvar("I_MIP_GEAR_1_L"), 0.0);
    EXPECT_EQ(lvar("B_FC_ELEVATOR_TRIM_MOTOR_POWER"), 0.0);
    EXPECT_EQ(lvar("N_FCU_SPEED"), 250.0);
    EXPECT_EQ(lvar("B_FCU_VERTICALSPEED_DASHED"), 1.0);
    EXPECT_EQ(lvar("S_OH_IN_LT_ANN_LT"), 1.0);
    EXPECT_EQ(lvar("N_HYD_PRESSURE_BRAKE_ACCU"), DemoAircraft::kAccumulatorPressure);
    EXPECT_EQ(lvar("N_HYD_PRESSURE_BRAKE_LEFT"), 0.0);
    EXPECT_EQ(lvar("N_OH_LIGHTING_OVD"), 0.0);
}

TEST_F(DemoAircraftTest, BatteryPushButtonsToggleOnThePressOnly) {
    write("S_OH_ELEC_BAT1", 1.0, 3);
    EXPECT_TRUE(aircraft.state().battery1);
    EXPECT_EQ(lvar("B_FCU_POWER"), 1.0);
    EXPECT_EQ(lvar("I_OH_ELEC_BAT2_L"), 1.0);
    EXPECT_EQ(lvar("B_FC_ELEVATOR_TRIM_MOTOR_POWER"), 1.0);
    write("S_OH_ELEC_BAT1", 0.0);  // the release changes nothing
    EXPECT_TRUE(aircraft.state().battery1);
    push("S_OH_ELEC_BAT2");
    push("S_OH_ELEC_BAT1");
    EXPECT_FALSE(aircraft.state().battery1);
    EXPECT_EQ(lvar("B_FCU_POWER"), 1.0);  // battery 2 still on
    push("S_OH_ELEC_BAT2");
    EXPECT_EQ(lvar("B_FCU_POWER"), 0.0);
}

TEST_F(DemoAircraftTest, EncoderCountsStepTheFcuValuesButTurnsWithoutPowerAreLost) {
    write("E_FCU_SPEED", 5.0);
    EXPECT_EQ(lvar("N_FCU_SPEED"), 250.0);
    powerUp();
    EXPECT_EQ(lvar("N_FCU_SPEED"), 250.0);
    write("E_FCU_SPEED", 3.0);  // two detents down
    EXPECT_EQ(lvar("N_FCU_SPEED"), 248.0);
    write("E_FCU_HEADING", 15.0);
    write("E_FCU_HEADING", 9.0);
    EXPECT_EQ(lvar("N_FCU_HEADING"), 359.0);  // 350 + 15 - 6 wraps both ways
    write("E_FCU_ALTITUDE", 2.0);
    EXPECT_EQ(lvar("N_FCU_ALTITUDE"), 10200.0);
}

TEST_F(DemoAircraftTest, FcuButtonsNeedPowerToggleTheirLampsAndDisengageWithoutIt) {
    push("S_FCU_AP1");
    EXPECT_EQ(lvar("I_FCU_AP1"), 0.0);
    powerUp();
    push("S_FCU_AP1");
    EXPECT_EQ(lvar("I_FCU_AP1"), 1.0);
    push("S_FCU_AP1");
    EXPECT_EQ(lvar("I_FCU_AP1"), 0.0);
    push("S_FCU_APPR");
    push("S_FCU_AP2");
    EXPECT_EQ(lvar("I_FCU_AP2"), 1.0);
    push("S_OH_ELEC_BAT1");  // power off: everything disengages
    EXPECT_EQ(lvar("I_FCU_AP2"), 0.0);
    EXPECT_EQ(lvar("I_FCU_APPR"), 0.0);
}

TEST_F(DemoAircraftTest, ParkingBrakePressureRampsBothWays) {
    write("S_MIP_PARKING_BRAKE", 1.0, 3);
    const double rising = lvar("N_HYD_PRESSURE_BRAKE_LEFT");
    EXPECT_GT(rising, 0.0);
    EXPECT_LT(rising, DemoAircraft::kParkingBrakePressure);
    run(30);
    EXPECT_EQ(lvar("N_HYD_PRESSURE_BRAKE_RIGHT"), DemoAircraft::kParkingBrakePressure);
    write("S_MIP_PARKING_BRAKE", 0.0, 30);
    EXPECT_EQ(lvar("N_HYD_PRESSURE_BRAKE_LEFT"), 0.0);
}

TEST_F(DemoAircraftTest, TrimWheelMovesTheTrimWithoutPowerAndTheSwitchesRunItOnlyWithPower) {
    write("S_FC_ELEVATOR_TRIM_UP", 1.0, 30);
    EXPECT_EQ(lvar("N_FC_ELEVATOR_TRIM"), 0.0);
    write("S_FC_ELEVATOR_TRIM_UP", 0.0);
    write("A_FC_ELEVATOR_TRIM", 2500.0);
    EXPECT_NEAR(lvar("N_FC_ELEVATOR_TRIM"), 2.5, 1e-9);
    powerUp();
    write("A_FC_ELEVATOR_TRIM", 1000.0);  // the motor holds the wheel
    EXPECT_NEAR(lvar("N_FC_ELEVATOR_TRIM"), 2.5, 1e-9);
    write("S_FC_ELEVATOR_TRIM_DOWN", 1.0, 60);  // two seconds
    write("S_FC_ELEVATOR_TRIM_DOWN", 0.0, 30);
    EXPECT_NEAR(lvar("N_FC_ELEVATOR_TRIM"), 2.5 - 2.0 * DemoAircraft::kTrimRate, 1e-9);
}

TEST_F(DemoAircraftTest, IntegralLightingFollowsAKnobSetWithoutPowerOncePowered) {
    write("A_OH_LIGHTING_OVD", 0.8);
    EXPECT_EQ(lvar("N_OH_LIGHTING_OVD"), 0.0);
    powerUp();
    EXPECT_NEAR(lvar("N_OH_LIGHTING_OVD"), 1.6, 1e-9);
}

TEST(DemoSimulator, RunsFramesAndCountsOnlyAcceptedWrites) {
    namespace sc = helmbridge::simconnect;
    const platform::SimConnectApi* api = platform::bindSimConnect();
    ASSERT_NE(api, nullptr);
    DemoSimulator simulator(linkedStandin(), {30, true});
    simulator.start();
    ASSERT_TRUE(eventually([&] { return simulator.frames() >= 3; }));
    EXPECT_TRUE(eventually([] {
        double power = -1.0;
        return standinGetLVar("B_FCU_POWER", &power) == 1 && power == 0.0;
    }));

    sc::HANDLE handle = nullptr;
    ASSERT_EQ(api->open(&handle, "test", nullptr, 0, nullptr, 0), sc::kSOk);
    ASSERT_EQ(
        api->addToDataDefinition(handle, 7, "L:S_OH_ELEC_BAT1", "number",
                                 sc::SIMCONNECT_DATATYPE_FLOAT64, 0.0f, sc::SIMCONNECT_UNUSED),
        sc::kSOk);
    double pressed = 1.0;  // the client function takes a non-const pointer
    EXPECT_EQ(api->setDataOnSimObject(handle, 7, sc::SIMCONNECT_OBJECT_ID_USER, 0, 0,
                                      sizeof(pressed), &pressed),
              sc::kSOk);
    // No such definition, a block of the wrong size: the simulator refuses them with exception
    // messages, and the demo does not count them although the calls returned S_OK.
    EXPECT_EQ(api->setDataOnSimObject(handle, 8, sc::SIMCONNECT_OBJECT_ID_USER, 0, 0,
                                      sizeof(pressed), &pressed),
              sc::kSOk);
    EXPECT_EQ(api->setDataOnSimObject(handle, 7, sc::SIMCONNECT_OBJECT_ID_USER, 0, 0, 4, &pressed),
              sc::kSOk);
    EXPECT_TRUE(eventually([&] { return simulator.writesReceived() >= 1; }));
    // The aircraft saw the press on a frame and switched its battery on.
    EXPECT_TRUE(eventually([&] { return simulator.aircraft().state().battery1; }));
    simulator.stop();
    EXPECT_EQ(simulator.writesReceived(), 1u);
    const uint64_t frames = simulator.frames();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(simulator.frames(), frames);  // stopped means stopped
    api->close(handle);
    standinReset();
}

}  // namespace
}  // namespace helmbridge::demo
