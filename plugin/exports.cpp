// The nineteen exported functions: each forwards to the one core or copies a signal list.
#include <exception>
#include <type_traits>

#include "catalogue/signal_lists.h"
#include "core/core.h"
#include "plugin/helmbridge_a320.h"

namespace {

// Built at load, after the catalogue it reads; stopped and destroyed at unload.
fenixA320::FenixA320Core& core() {
    static fenixA320::FenixA320Core instance;
    return instance;
}
[[maybe_unused]] const bool kCoreBuiltAtLoad = (core(), true);

// The core's callback and list types are the ones the public header hands across.
static_assert(std::is_same_v<fenixA320::DigitOutProc, helmbridge::DigitOutProc>);
static_assert(std::is_same_v<fenixA320::DisplayProc, helmbridge::DisplayProc>);
static_assert(std::is_same_v<fenixA320::ServoProc, helmbridge::ServoProc>);
static_assert(std::is_same_v<fenixA320::PwmProc, helmbridge::PwmProc>);
static_assert(std::is_same_v<fenixA320::SigList, helmbridge::SigList>);

bool copyList(const fenixA320::SigList& source, helmbridge::SigList& target) {
    if (&source != &target) target = source;
    return true;
}

}  // namespace

extern "C" {

HELMBRIDGE_API bool Start(std::vector<std::string> args) {
    args.clear();
    args.shrink_to_fit();
    return core().Start();
}
HELMBRIDGE_API bool Stop() { return core().Stop(); }
HELMBRIDGE_API bool UpdateOutput() { return core().UpdateOutput(); }
HELMBRIDGE_API bool GetConnectStatus() { return core().GetConnectStatus(); }

HELMBRIDGE_API bool SetDigitIn(int32_t id, bool state) {
    if (core().GetConnectStatus()) core().SetDigitIn(id, state);
    return false;
}
HELMBRIDGE_API bool SetEncoder(int32_t id, int32_t direction) {
    if (core().GetConnectStatus()) core().SetEncoder(id, direction);
    return false;
}
HELMBRIDGE_API bool SetAnalog(int32_t id, double value) {
    if (!core().GetConnectStatus()) return false;
    try {
        core().SetAnalog(id, value);
    } catch (const std::exception&) {
        // An out-of-range throttle value is the host's mistake; never throw across the boundary.
    }
    return false;
}

HELMBRIDGE_API bool SetDigitOutProc(helmbridge::DigitOutProc proc) {
    return core().SetDigitOutProc(std::move(proc));
}
HELMBRIDGE_API bool SetDisplayProc(helmbridge::DisplayProc proc) {
    return core().SetDisplayProc(std::move(proc));
}
HELMBRIDGE_API bool SetServoProc(helmbridge::ServoProc proc) {
    return core().SetServoProc(std::move(proc));
}
HELMBRIDGE_API bool SetServoSpeedProc(helmbridge::ServoProc proc) {
    return core().SetServoSpeedProc(std::move(proc));
}
HELMBRIDGE_API bool SetPwmProc(helmbridge::PwmProc proc) {
    return core().SetPwmProc(std::move(proc));
}

HELMBRIDGE_API bool GetDigitInSigList(helmbridge::SigList& list) {
    return copyList(fenixA320::digitInSigList(), list);
}
HELMBRIDGE_API bool GetEncoderSigList(helmbridge::SigList& list) {
    return copyList(fenixA320::encoderSigList(), list);
}
HELMBRIDGE_API bool GetAnalogSigList(helmbridge::SigList& list) {
    return copyList(fenixA320::analogSigList(), list);
}
HELMBRIDGE_API bool GetDigitOutSigList(helmbridge::SigList& list) {
    return copyList(fenixA320::digitOutSigList(), list);
}
HELMBRIDGE_API bool GetDisplaySigList(helmbridge::SigList& list) {
    return copyList(fenixA320::displaySigList(), list);
}
HELMBRIDGE_API bool GetServoSigList(helmbridge::SigList& list) {
    return copyList(fenixA320::servoSigList(), list);
}
HELMBRIDGE_API bool GetPwmSigList(helmbridge::SigList& list) {
    return copyList(fenixA320::pwmSigList(), list);
}

}  // extern "C"
