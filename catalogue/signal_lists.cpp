// Builds the host-facing maps from the catalogue rows.
#include "catalogue/signal_lists.h"

namespace fenixA320 {
namespace {

SigList buildList(std::span<const SignalEntry> entries) {
    SigList list;
    for (const SignalEntry& e : entries) {
        list.emplace(e.id, std::make_pair(std::string(e.variable), std::string(e.label)));
    }
    return list;
}

}  // namespace

const SigList& digitInSigList() {
    static const SigList list = buildList(digitInEntries());
    return list;
}
const SigList& encoderSigList() {
    static const SigList list = buildList(encoderEntries());
    return list;
}
const SigList& analogSigList() {
    static const SigList list = buildList(analogEntries());
    return list;
}
const SigList& digitOutSigList() {
    static const SigList list = buildList(digitOutEntries());
    return list;
}
const SigList& displaySigList() {
    static const SigList list = buildList(displayEntries());
    return list;
}
const SigList& servoSigList() {
    static const SigList list = buildList(servoEntries());
    return list;
}
const SigList& pwmSigList() {
    static const SigList list = buildList(pwmEntries());
    return list;
}

}  // namespace fenixA320
