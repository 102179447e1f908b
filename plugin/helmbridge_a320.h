// Public interface of the HelmBridge A320 module: the nineteen functions a host calls.
//
// Calling order:
//   1. Load the module. It is stopped and disconnected.
//   2. Read the signal lists (Get...SigList) at any time, from any thread.
//   3. Install the five output callbacks (Set...Proc) before Start.
//   4. Start. A second Start while running stops and starts again.
//   5. While running, report hardware events (SetDigitIn, SetEncoder, SetAnalog) and call
//      UpdateOutput at the host's own rate. Input functions and UpdateOutput may run on
//      different host threads; Start and Stop must not overlap any other call.
//   6. Stop, then unload. The module may then be loaded again: it starts as new. Unloaded
//      without Stop, it stays loaded with its workers running until the process ends.
//
// Host and module share one C++ standard library and heap: standard-library objects cross the
// boundary by value and by reference.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#if defined(_WIN32)
#if defined(HELMBRIDGE_BUILDING_MODULE)
#define HELMBRIDGE_API __declspec(dllexport)
#else
#define HELMBRIDGE_API __declspec(dllimport)
#endif
#else
#define HELMBRIDGE_API __attribute__((visibility("default")))
#endif

namespace helmbridge {

// Signal id -> (variable name, label). Ids are dense from 0; id 0 is the unbound entry.
using SigList = std::map<int32_t, std::pair<std::string, std::string>>;

// Lamp state of a digital output (id, on). The result is not read.
using DigitOutProc = std::function<bool(unsigned int, bool)>;
// Text of a display (id, text); a fresh string each call. The result is not read.
using DisplayProc = std::function<bool(unsigned int, std::string)>;
// Servo position or speed (id, value).
using ServoProc = std::function<bool(unsigned int, double)>;
// PWM level (channel, level 0..2500; values below 50 arrive as 0).
using PwmProc = std::function<bool(unsigned int, double)>;

}  // namespace helmbridge

extern "C" {

// Starts the worker threads and the simulator search; the argument is not read. Always true.
HELMBRIDGE_API bool Start(std::vector<std::string> args);
// Disconnects and joins the workers (up to about 1.2 s), and lets the module unload with the
// host's next unload. Always true; idempotent.
HELMBRIDGE_API bool Stop();
// Runs one output cycle on the calling thread: every lamp, then every display, then every PWM
// channel, in ascending id. False when not connected; true at once when connected but stopped.
HELMBRIDGE_API bool UpdateOutput();
// True while the simulator connection is open.
HELMBRIDGE_API bool GetConnectStatus();

// Hardware events; dropped while not connected. Always false.
HELMBRIDGE_API bool SetDigitIn(int32_t id, bool state);
// One detent: direction 1 steps up, any other value steps down.
HELMBRIDGE_API bool SetEncoder(int32_t id, int32_t direction);
// Axis or knob position; throttles take -1.0..1.0, other inputs their own range.
HELMBRIDGE_API bool SetAnalog(int32_t id, double value);

// Output callbacks; each replaces the previous one. Always true. Called from module threads
// (servos) and from the thread that calls UpdateOutput.
HELMBRIDGE_API bool SetDigitOutProc(helmbridge::DigitOutProc proc);
HELMBRIDGE_API bool SetDisplayProc(helmbridge::DisplayProc proc);
HELMBRIDGE_API bool SetServoProc(helmbridge::ServoProc proc);
HELMBRIDGE_API bool SetServoSpeedProc(helmbridge::ServoProc proc);
HELMBRIDGE_API bool SetPwmProc(helmbridge::PwmProc proc);

// Replace the caller's map with a copy of a signal list. Always true; any time, any thread.
HELMBRIDGE_API bool GetDigitInSigList(helmbridge::SigList& list);
HELMBRIDGE_API bool GetEncoderSigList(helmbridge::SigList& list);
HELMBRIDGE_API bool GetAnalogSigList(helmbridge::SigList& list);
HELMBRIDGE_API bool GetDigitOutSigList(helmbridge::SigList& list);
HELMBRIDGE_API bool GetDisplaySigList(helmbridge::SigList& list);
HELMBRIDGE_API bool GetServoSigList(helmbridge::SigList& list);
HELMBRIDGE_API bool GetPwmSigList(helmbridge::SigList& list);

}  // extern "C"

namespace helmbridge {

// Function types for hosts that load the module at run time and resolve exports by name.
using StartFn = bool (*)(std::vector<std::string>);
using VoidFn = bool (*)();
using SetDigitInFn = bool (*)(int32_t, bool);
using SetEncoderFn = bool (*)(int32_t, int32_t);
using SetAnalogFn = bool (*)(int32_t, double);
using SetDigitOutProcFn = bool (*)(DigitOutProc);
using SetDisplayProcFn = bool (*)(DisplayProc);
using SetServoProcFn = bool (*)(ServoProc);
using SetPwmProcFn = bool (*)(PwmProc);
using GetSigListFn = bool (*)(SigList&);

// The exported names, in declaration order.
inline constexpr const char* kExportNames[] = {
    "Start",
    "Stop",
    "UpdateOutput",
    "GetConnectStatus",
    "SetDigitIn",
    "SetEncoder",
    "SetAnalog",
    "SetDigitOutProc",
    "SetDisplayProc",
    "SetServoProc",
    "SetServoSpeedProc",
    "SetPwmProc",
    "GetDigitInSigList",
    "GetEncoderSigList",
    "GetAnalogSigList",
    "GetDigitOutSigList",
    "GetDisplaySigList",
    "GetServoSigList",
    "GetPwmSigList",
};

}  // namespace helmbridge
