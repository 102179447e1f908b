// A multi-position cockpit switch: one digital contact per position, one variable per switch.
#pragma once

#include <cstdint>
#include <functional>
#include <map>

namespace fenixA320 {

class PositionSwitch {
  public:
    static constexpr int32_t kUnknown = -100;  // currentPosition when no position is known
    static constexpr int32_t kNoRest = -200;   // restPosition of a switch without one

    // `positions` maps contact id to position number; one of them must be position 0, where the
    // switch starts (that contact taken as closed, nothing reported). std::invalid_argument
    // otherwise.
    PositionSwitch(int32_t key, const std::map<int32_t, int32_t>& positions);

    // A contact closed (state true) or opened. Ids that are not contacts of this switch are
    // ignored. Reports (switchKey, position) through onChange when the position changes.
    void OnContact(int32_t id, bool state);

    void bind(std::function<void(int, int)> callback) { onChange = std::move(callback); }
    void setRestPosition(int32_t position) { restPosition = position; }

    bool hasContact(int32_t id) const { return positions.contains(id); }
    int32_t position() const { return currentPosition; }
    int32_t key() const { return switchKey; }

  private:
    std::map<int32_t, bool> contacts;
    std::map<int32_t, int32_t> positions;
    int32_t currentPosition = kUnknown;
    int32_t switchKey;
    int32_t restPosition = kNoRest;
    std::function<void(int, int)> onChange;

    void report(int32_t position);
};

}  // namespace fenixA320
