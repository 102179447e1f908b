// The lookups by name, checked at compile time: each resolves a name of its own list to the id
// the host binds, and a wrong answer stops the build. The exact text of every entry is pinned by
// golden_test.cpp; the ids the input and output tests drive by number (the parking brake and its
// OFF contact, AUTO, the speedbrake, the trim motor power, ANN LT, the speed display, the trim
// servo and the always-on channel) are pinned there through their behaviour.
#include "catalogue/signal_lists.h"

#include "catalogue/analog_inputs.h"
#include "catalogue/digital_inputs.h"
#include "catalogue/digital_outputs.h"
#include "catalogue/displays.h"
#include "catalogue/encoders.h"
#include "catalogue/position_switches.h"

namespace fenixA320 {
namespace {

static_assert(digitInIdOf("S_FC_FLAPS_0") == 460 && encoderIdOf("E_FCU_SPEED") == 5);
static_assert(analogIdOf("N_FC_RUDDER") == 79);
// Analog inputs written through the placeholder go by their label's variable, or their label.
static_assert(analogIdOf("A_CDU2_BRIGHTNESS") == 62 && analogIdOf("FLAP") == 124);
static_assert(digitOutIdOf("B_FCU_AUTOPILOT_ENABLED") == 479);
static_assert(displayIdOf("S_MIP_LIGHT_CONSOLEFLOOR_FO") == 142);

// Every switch variable counts once, at its first position.
static_assert(variableNumberOf("S_ASP_SEND_CHANNEL") == 33 && variableNumberOf("S_WR_GAIN") == 747);
static_assert(variableNumberOf("S_IOS_ELEC_EXTERN_POWER") == 462 &&
              variableNumberOf("S_OH_PNEUMATIC_XBLEED_SELECTOR") == 650);
static_assert(kPositionGroups[1].first == 35 && kPositionGroups[1].count == 9);

}  // namespace
}  // namespace fenixA320
