// The recording output callbacks.
#include "host/outputs.h"

#include <algorithm>
#include <utility>

namespace helmbridge::host {

bool OutputSnapshot::lamp(int32_t id) const {
    const auto i = static_cast<std::size_t>(id);
    return id >= 0 && i < lamps.size() && lampSeen[i] && lamps[i];
}

const std::string* OutputSnapshot::display(int32_t id) const {
    const auto i = static_cast<std::size_t>(id);
    return id >= 0 && i < displays.size() && displaySeen[i] ? &displays[i] : nullptr;
}

std::size_t OutputSnapshot::lampsOn() const {
    std::size_t n = 0;
    for (std::size_t i = 0; i < lamps.size(); ++i) n += lampSeen[i] && lamps[i] ? 1 : 0;
    return n;
}

OutputRecorder::OutputRecorder(std::size_t lampSlots, std::size_t displaySlots) {
    state_.lampSeen.assign(lampSlots, false);
    state_.lamps.assign(lampSlots, false);
    state_.displaySeen.assign(displaySlots, false);
    state_.displays.assign(displaySlots, std::string());
}

void OutputRecorder::install(const Exports& exports) {
    exports.setDigitOutProc([this](unsigned int id, bool on) {
        std::lock_guard lock(mutex_);
        ++state_.calls;
        if (id < state_.lamps.size()) {
            state_.lampSeen[id] = true;
            state_.lamps[id] = on;
        }
        return true;
    });
    exports.setDisplayProc([this](unsigned int id, std::string text) {
        std::lock_guard lock(mutex_);
        ++state_.calls;
        if (id < state_.displays.size()) {
            state_.displaySeen[id] = true;
            state_.displays[id] = std::move(text);
        }
        return true;
    });
    exports.setServoProc([this](unsigned int id, double position) {
        std::lock_guard lock(mutex_);
        ++state_.calls;
        if (id < state_.servos.size()) {
            state_.servoSeen[id] = true;
            state_.servos[id] = position;
        }
        return true;
    });
    exports.setServoSpeedProc([this](unsigned int id, double speed) {
        std::lock_guard lock(mutex_);
        ++state_.calls;
        if (id < state_.servoSpeeds.size()) {
            state_.servoSpeedSeen[id] = true;
            state_.servoSpeeds[id] = speed;
        }
        return true;
    });
    exports.setPwmProc([this](unsigned int channel, double level) {
        std::lock_guard lock(mutex_);
        ++state_.calls;
        if (channel < state_.pwm.size()) {
            state_.pwmSeen[channel] = true;
            state_.pwm[channel] = level;
        }
        return true;
    });
}

OutputSnapshot OutputRecorder::snapshot() const {
    std::lock_guard lock(mutex_);
    return state_;
}

}  // namespace helmbridge::host
