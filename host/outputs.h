// What the module last handed to the host's five output callbacks, with a count of the calls.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "host/module.h"

namespace helmbridge::host {

struct OutputSnapshot {
    // Indexed by signal id; `seen` is false until the module first reported the signal.
    std::vector<bool> lampSeen;
    std::vector<bool> lamps;
    std::vector<bool> displaySeen;
    std::vector<std::string> displays;
    std::array<bool, 16> pwmSeen{};
    std::array<double, 16> pwm{};
    std::array<bool, 5> servoSeen{};
    std::array<double, 5> servos{};
    std::array<bool, 5> servoSpeedSeen{};
    std::array<double, 5> servoSpeeds{};
    uint64_t calls = 0;  // every callback call, in range or not

    bool lamp(int32_t id) const;
    const std::string* display(int32_t id) const;  // null until reported
    std::size_t lampsOn() const;
};

class OutputRecorder {
  public:
    OutputRecorder(std::size_t lampSlots, std::size_t displaySlots);

    // Installs the five callbacks. The module calls them from the thread that runs UpdateOutput
    // and from its servo thread; the recorder must outlive the module's Stop.
    void install(const Exports& exports);
    OutputSnapshot snapshot() const;

  private:
    mutable std::mutex mutex_;
    OutputSnapshot state_;
};

}  // namespace helmbridge::host
