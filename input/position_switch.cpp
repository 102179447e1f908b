// Position tracking of a multi-position switch from its contacts.
#include "input/position_switch.h"

#include <stdexcept>

namespace fenixA320 {

PositionSwitch::PositionSwitch(int32_t key, const std::map<int32_t, int32_t>& positions)
    : positions(positions), switchKey(key) {
    for (const auto& [id, position] : positions) contacts.emplace(id, false);
    for (const auto& [id, position] : positions) {
        if (position == 0) {
            contacts[id] = true;
            currentPosition = 0;
            return;
        }
    }
    throw std::invalid_argument("PositionSwitch needs a contact with value=0");
}

void PositionSwitch::OnContact(int32_t id, bool state) {
    const auto found = positions.find(id);
    if (found == positions.end()) return;
    const int32_t position = found->second;

    if (state) {
        // The model holds one closed contact: closing one opens the others.
        for (auto& [contact, closed] : contacts) closed = contact == id;
        if (position != currentPosition) report(position);
        return;
    }

    contacts[id] = false;
    if (position != currentPosition) return;  // not the contact that set the position
    for (const auto& [contact, closed] : contacts) {
        if (closed) {
            currentPosition = kUnknown;
            return;
        }
    }
    if (restPosition == kNoRest) {
        // Between two contacts of a switch without a rest position: wait for the next one.
        currentPosition = kUnknown;
        return;
    }
    if (restPosition != currentPosition) report(restPosition);
}

void PositionSwitch::report(int32_t position) {
    currentPosition = position;
    if (onChange) onChange(switchKey, position);
}

}  // namespace fenixA320
