// The output side: lamps, displays and backlight levels handed to the host's callbacks on every
// output cycle, and the servo pass.
#pragma once

#include <functional>
#include <string>

#include "output/output_state.h"
#include "platform/clock.h"
#include "store/received_values.h"

namespace fenixA320 {

// The host's output callbacks, as the module's public header declares them.
using DigitOutProc = std::function<bool(unsigned int, bool)>;
using DisplayProc = std::function<bool(unsigned int, std::string)>;
using ServoProc = std::function<bool(unsigned int, double)>;
using PwmProc = std::function<bool(unsigned int, double)>;

class OutputSide {
  public:
    explicit OutputSide(const ReceivedValues& received) : received_(received) {}
    OutputSide(const OutputSide&) = delete;
    OutputSide& operator=(const OutputSide&) = delete;

    // A missing callback is skipped; one that throws costs only its own call.
    void SetDigitOutProc(DigitOutProc proc) { digitOutProc_ = std::move(proc); }
    void SetDisplayProc(DisplayProc proc) { displayProc_ = std::move(proc); }
    void SetServoProc(ServoProc proc) { servoProc_ = std::move(proc); }
    void SetServoSpeedProc(ServoProc proc) { servoSpeedProc_ = std::move(proc); }
    // Backlight drivers cannot show levels below 50 of 2500: they are sent as off.
    void SetPwmProc(PwmProc proc);

    // One output cycle: every lamp, then every display, then the backlight channels, whose dome
    // channels follow the dome light switch position `domeSwitch`. Nothing before the received
    // values exist.
    void updateOutput(double domeSwitch);
    void updateDigitOut();
    void updateDisplayOut();
    void updatePwmOut(double domeSwitch);
    // One servo pass at `now`; `wheel` is the trim wheel position the hardware last reported.
    void servoPass(TimePoint now, double wheel);

  private:
    const ReceivedValues& received_;
    DigitOutProc digitOutProc_;
    DisplayProc displayProc_;
    ServoProc servoProc_;
    ServoProc servoSpeedProc_;
    PwmProc pwmProc_;
    ServoState servo_;  // servo thread only, kept across Stop and Start
};

}  // namespace fenixA320
