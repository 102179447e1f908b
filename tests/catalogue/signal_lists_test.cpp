// The lookups by name, checked at compile time: each resolves a name of its own list to the id
// the host binds, and a wrong answer stops the build. The exact text of every entry is pinned by
// golden_test.cpp.
#include "catalogue/signal_lists.h"

#include "catalogue/analog_inputs.h"
#include "catalogue/digital_inputs.h"
#include "catalogue/digital_outputs.h"
#include "catalogue/displays.h"
#include "catalogue/encoders.h"
#include "catalogue/position_switches.h"
#include "catalogue/pwm.h"
#include "catalogue/servos.h"

namespace fenixA320 {
namespace {

static_assert(digitInIdOf("S_MIP_PARKING_BRAKE") == 605 && digitInIdOf("S_FC_FLAPS_0") == 460);
static_assert(encoderIdOf("E_FCU_SPEED") == 5);
static_assert(analogIdOf("A_FC_SPEEDBRAKE") == 88 && analogIdOf("N_FC_RUDDER") == 79);
// Analog inputs written through the placeholder go by their label's variable, or their label.
static_assert(analogIdOf("A_CDU2_BRIGHTNESS") == 62 && analogIdOf("FLAP") == 124);
static_assert(digitOutIdOf("B_FC_ELEVATOR_TRIM_MOTOR_POWER") == 471);
static_assert(digitOutIdOf("S_OH_IN_LT_ANN_LT") == 494 &&
              digitOutIdOf("B_FCU_AUTOPILOT_ENABLED") == 479);
static_assert(displayIdOf("N_FCU_SPEED") == 54 &&
              displayIdOf("S_MIP_LIGHT_CONSOLEFLOOR_FO") == 142);
static_assert(servoIdOf("FENIX_TQ_PITCH_TRIM_WHEEL") == 4);
static_assert(pwmIdOf("FENIX RMP ACP BK ENABLE") == 15);
static_assert(kLandingElevationAutoContact == 963 && kParkingBrakeOffContact == 964);

// Every switch variable counts once, at its first position.
static_assert(variableNumberOf("S_ASP_SEND_CHANNEL") == 33 && variableNumberOf("S_WR_GAIN") == 747);
static_assert(variableNumberOf("S_IOS_ELEC_EXTERN_POWER") == 462 &&
              variableNumberOf("S_OH_PNEUMATIC_XBLEED_SELECTOR") == 650);
static_assert(kPositionGroups[1].first == 35 && kPositionGroups[1].count == 9);

}  // namespace
}  // namespace fenixA320
