// The stand-in's control functions, exported with C linkage for tests and the host tool.
#include "simulator/standin_control.h"
#include "simulator/world.h"

using helmbridge::standin::World;

namespace {

World& world() { return World::instance(); }

}  // namespace

extern "C" {

void standinReset(void) { world().reset(); }

uint64_t standinThreadId(void) { return World::currentThreadId(); }

void standinSetFramesPerSecond(uint32_t framesPerSecond) {
    world().setFramesPerSecond(framesPerSecond);
}

uint32_t standinFramesPerSecond(void) { return world().framesPerSecond(); }

void standinRunFrames(uint32_t count) { world().runFrames(count); }

void standinRunSeconds(uint32_t seconds) {
    World& w = world();
    w.runFrames(uint64_t{seconds} * w.framesPerSecond());
}

uint64_t standinFrameCount(void) { return world().frameCount(); }

int standinStartFrameThread(uint32_t framesPerSecond) {
    return world().startFrameThread(framesPerSecond) ? 1 : 0;
}

void standinStopFrameThread(void) { world().stopFrameThread(); }

void standinSetOpenResult(int32_t result) { world().setOpenResult(result); }

void standinSetKeepAliveAnswers(int answer) { world().setKeepAliveAnswers(answer != 0); }

void standinSetCloseDelay(uint32_t milliseconds) { world().setCloseDelay(milliseconds); }

void standinSetUnknownVariable(const char* name) { world().setUnknownVariable(name); }

void standinQuit(void) { world().endConnections(true); }

void standinLoseConnections(void) { world().endConnections(false); }

void* standinCurrentHandle(void) { return world().currentHandle(); }

uint32_t standinOpenConnectionCount(void) { return world().openConnectionCount(); }

uint32_t standinPendingMessageCount(void* handle) { return world().pendingMessageCount(handle); }

void standinSetPaused(int paused) { world().setPaused(paused != 0); }

void standinSetSimRunning(int run) { world().setSimRunning(run != 0); }

void standinCrash(void) { world().crash(); }

void standinLoadFlight(const char* path) { world().loadFlight(path); }

void standinLoadAircraft(const char* path) { world().loadAircraft(path); }

void standinSetTitle(const char* title) { world().setTitle(title); }

void standinSetClockStalled(int stalled) { world().setClockStalled(stalled != 0); }

void standinSetClock(double value) { world().setLVar("L:N_MIP_CLOCK_UTC", value); }

double standinClock(void) { return world().clock(); }

void standinSetLVar(const char* name, double value) { world().setLVar(name, value); }

int standinGetLVar(const char* name, double* value) {
    double found = 0.0;
    const bool exists = world().getLVar(name, found);
    if (value != nullptr) *value = found;
    return exists ? 1 : 0;
}

uint32_t standinLVarCount(void) { return world().lvarCount(); }

uint32_t standinDefinitionIds(void* handle, uint32_t* ids, uint32_t capacity) {
    return world().definitionIds(handle, ids, capacity);
}

int32_t standinDatumCount(void* handle, uint32_t defineId) {
    return world().datumCount(handle, defineId);
}

int standinDatum(void* handle, uint32_t defineId, uint32_t index, StandinDatum* out) {
    return out != nullptr && world().datum(handle, defineId, index, *out) ? 1 : 0;
}

uint32_t standinRequestIds(void* handle, uint32_t* ids, uint32_t capacity) {
    return world().requestIds(handle, ids, capacity);
}

int standinRequest(void* handle, uint32_t requestId, StandinRequest* out) {
    return out != nullptr && world().request(handle, requestId, *out) ? 1 : 0;
}

uint32_t standinSubscriptionIds(void* handle, uint32_t* ids, uint32_t capacity) {
    return world().subscriptionIds(handle, ids, capacity);
}

int standinSubscription(void* handle, uint32_t eventId, char* name, uint32_t capacity) {
    return world().subscription(handle, eventId, name, capacity) ? 1 : 0;
}

uint64_t standinCallCount(void) { return world().callCount(); }

int standinCall(uint64_t index, StandinCall* out) {
    return out != nullptr && world().call(index, *out) ? 1 : 0;
}

uint32_t standinCallData(uint64_t index, void* buffer, uint32_t capacity) {
    return world().callData(index, buffer, capacity);
}

void standinClearCalls(void) { world().clearCalls(); }

void standinCounters(StandinCounters* out) {
    if (out != nullptr) *out = world().counters();
}

}  // extern "C"
