// Control interface of the simulator stand-in, for tests and the host tool (never the module).
//
// The stand-in is a shared library named like the SimConnect client library and exporting the
// same ten functions, so the module binds it exactly as it binds the real one. Everything here
// is a C function with plain types and caller-provided buffers: on Windows each DLL carries its
// own C++ runtime, so no standard-library object may cross the boundary. The inline C++ helpers
// at the end run entirely on the caller's side.
//
// Model: one simulated world (L: variables, title, cockpit clock, pause and sim state) and any
// number of connections opened through SimConnect_Open, each with its own definitions, data
// requests, event subscriptions and queue of pending messages. Messages are delivered only by
// SimConnect_CallDispatch, on the caller's thread, never while the stand-in's lock is held.
// Frames happen only when a test runs them (standinRunFrames) or while the real-time frame
// thread runs. Every function may be called from any thread at any time.
//
// Errors come back as the real library gives them. The library itself refuses only what it
// cannot send: no handle, a closed or unknown one, a dead link, no dispatch callback, data it
// cannot copy. Every other call returns S_OK and is numbered on its connection, as
// SimConnect_GetLastSentPacketID would report it (Open is send id 1, each later call on the
// handle except CallDispatch the next). When the simulator refuses a call (an unknown id, name
// or data type, a block of the wrong size), the next dispatch delivers a
// SIMCONNECT_RECV_EXCEPTION with the exception code, that send id and the 1-based index of the
// offending argument, the handle being argument 1. The call record names each such call.
#pragma once

#include <cstdint>

#if defined(_WIN32)
#if defined(HELMBRIDGE_STANDIN_BUILDING)
#define HELMBRIDGE_STANDIN_API __declspec(dllexport)
#else
#define HELMBRIDGE_STANDIN_API __declspec(dllimport)
#endif
#else
#define HELMBRIDGE_STANDIN_API __attribute__((visibility("default")))
#endif

// The client function a call record is about.
enum StandinFunction {
    kStandinOpen = 0,
    kStandinClose = 1,
    kStandinCallDispatch = 2,
    kStandinRequestSystemState = 3,
    kStandinAddToDataDefinition = 4,
    kStandinRequestDataOnSimObject = 5,
    kStandinSubscribeToSystemEvent = 6,
    kStandinUnsubscribeFromSystemEvent = 7,
    kStandinClearDataDefinition = 8,
    kStandinSetDataOnSimObject = 9,
};

// One recorded client call with its arguments; fields a function does not have stay 0.
struct StandinCall {
    uint64_t threadId;  // the caller's operating-system thread id, as standinThreadId() gives it
    int32_t function;   // a StandinFunction
    int32_t result;     // the HRESULT returned
    void* handle;       // the handle passed in; for Open the handle handed out (or null)
    uint32_t sendId;    // the call's number on its connection; 0 when nothing was sent
    // The SIMCONNECT_EXCEPTION the simulator answered the call with (0: none) and the argument
    // it names, as the EXCEPTION message carries them
    uint32_t exception;
    uint32_t exceptionIndex;
    // Open
    void* window;
    void* eventHandle;
    uint32_t userEvent;
    uint32_t configIndex;
    // CallDispatch: the context pointer and the number of messages taken for delivery
    void* context;
    uint32_t delivered;
    // The id argument: definition id (AddToDataDefinition, ClearDataDefinition,
    // SetDataOnSimObject), request id (RequestSystemState, RequestDataOnSimObject) or client
    // event id (Subscribe/UnsubscribeFromSystemEvent)
    uint32_t id;
    uint32_t defineId;  // RequestDataOnSimObject's definition
    uint32_t objectId;
    int32_t period;
    uint32_t flags;
    uint32_t origin;
    uint32_t interval;
    uint32_t limit;
    int32_t datumType;
    float epsilon;
    uint32_t datumId;
    uint32_t arrayCount;
    uint32_t unitSize;
    uint32_t dataSize;  // bytes of SetDataOnSimObject's data; read them with standinCallData
    char name[256];     // client, datum, state or event name, cut to 255 characters
    char unit[64];
};

// A datum of a definition, in the order it was added.
struct StandinDatum {
    char name[256];
    char unit[64];
    int32_t type;  // a SIMCONNECT_DATATYPE
    float epsilon;
    uint32_t datumId;
    uint32_t size;  // bytes in a data block
};

// An active data request of a connection.
struct StandinRequest {
    uint32_t requestId;
    uint32_t defineId;
    uint32_t objectId;
    int32_t period;  // a SIMCONNECT_PERIOD
    uint32_t flags;
    uint32_t origin;
    uint32_t interval;
    uint32_t limit;
    uint64_t sends;  // data messages produced so far
};

struct StandinCounters {
    uint64_t calls;               // every client call, recorded or not
    uint64_t misuseCalls;         // closedHandleCalls + unknownHandleCalls
    uint64_t closedHandleCalls;   // handle was issued by Open and closed since (or reset)
    uint64_t unknownHandleCalls;  // handle was never issued
    uint64_t nullHandleCalls;     // null handle: failed with E_FAIL, not misuse
    uint64_t opens;               // successful Open calls
    uint64_t failedOpens;
    uint64_t droppedMessages;      // pending messages dropped because nobody dispatched
    uint64_t droppedCalls;         // calls not recorded because the record was full
    uint64_t rejectedCalls;        // calls answered with an EXCEPTION message
    uint64_t deliveredExceptions;  // EXCEPTION messages handed to a dispatch callback
};

#ifdef __cplusplus
extern "C" {
#endif

// Back to the initial state: connections closed (their handles count as closed from now on),
// frame thread stopped, records and counters emptied, L: variables removed, the sim running and
// unpaused, keep-alive answers on, opens succeeding, every variable known, Close returning at
// once, 30 frames per second, the title "Stand-in Airliner" and the cockpit clock at 43200 and
// advancing. The stand-in is loaded in this state too.
HELMBRIDGE_STANDIN_API void standinReset(void);

// The calling thread's operating-system id, as call records carry it.
HELMBRIDGE_STANDIN_API uint64_t standinThreadId(void);

// ---- Frames and time -------------------------------------------------------------------------
// A frame: the cockpit clock advances by 1/framesPerSecond (unless paused, stalled or the sim is
// stopped), then every connection's data requests are served. SIM_FRAME and VISUAL_FRAME
// requests send every frame; a SECOND request sends on the first frame after it is made and then
// every framesPerSecond frames; ONCE sends on the next frame. While the sim is stopped (no user
// aircraft) no data is sent.
HELMBRIDGE_STANDIN_API void standinSetFramesPerSecond(uint32_t framesPerSecond);  // 0 is ignored
HELMBRIDGE_STANDIN_API uint32_t standinFramesPerSecond(void);
HELMBRIDGE_STANDIN_API void standinRunFrames(uint32_t count);
HELMBRIDGE_STANDIN_API void standinRunSeconds(uint32_t seconds);  // seconds * framesPerSecond
HELMBRIDGE_STANDIN_API uint64_t standinFrameCount(void);
// Real-time frames on a thread of the stand-in at the given rate (which becomes the frames per
// second). Returns 0 when the thread already runs or the rate is 0.
HELMBRIDGE_STANDIN_API int standinStartFrameThread(uint32_t framesPerSecond);
HELMBRIDGE_STANDIN_API void standinStopFrameThread(void);

// ---- Connections -----------------------------------------------------------------------------
// 0: Open succeeds. Any other value: every Open returns it and hands out no handle.
HELMBRIDGE_STANDIN_API void standinSetOpenResult(int32_t result);
// Off: RequestSystemState still returns S_OK but no SYSTEM_STATE answer is ever sent.
HELMBRIDGE_STANDIN_API void standinSetKeepAliveAnswers(int answer);
// How long SimConnect_Close on an open connection takes before it returns, in milliseconds. The
// real library takes about 100 ms; the stand-in starts at 0 so that tests stay fast, and programs
// that want the real timing (the soak) set 100. The connection ends when Close is called: a call
// on its handle during the wait counts as misuse.
HELMBRIDGE_STANDIN_API void standinSetCloseDelay(uint32_t milliseconds);
// A variable the simulator does not know (letter case ignored): AddToDataDefinition with it is
// answered with NAME_UNRECOGNIZED and adds nothing, as a simulator answers a misspelt or missing
// simulation variable. Null or "" makes every variable known again.
HELMBRIDGE_STANDIN_API void standinSetUnknownVariable(const char* name);
// The user leaves the simulator: every open connection gets QUIT, then its link is dead. A dead
// connection's calls fail, and CallDispatch fails once its pending messages are delivered; its
// handle stays valid until closed.
HELMBRIDGE_STANDIN_API void standinQuit(void);
// The simulator vanishes without QUIT (a crash): every open connection's link is dead.
HELMBRIDGE_STANDIN_API void standinLoseConnections(void);
// The newest open connection's handle, or null.
HELMBRIDGE_STANDIN_API void* standinCurrentHandle(void);
HELMBRIDGE_STANDIN_API uint32_t standinOpenConnectionCount(void);
// In the functions below a null handle means the newest open connection.
HELMBRIDGE_STANDIN_API uint32_t standinPendingMessageCount(void* handle);

// ---- Simulation state and system events -------------------------------------------------------
// Each of these sends its event to every subscriber of it, also when the state does not change.
HELMBRIDGE_STANDIN_API void standinSetPaused(int paused);         // "Pause", dwData 1/0
HELMBRIDGE_STANDIN_API void standinSetSimRunning(int run);        // "Sim" 1/0, "SimStart"/"SimStop"
HELMBRIDGE_STANDIN_API void standinCrash(void);                   // "Crashed", dwData 0
HELMBRIDGE_STANDIN_API void standinLoadFlight(const char* path);  // "FlightLoaded"
HELMBRIDGE_STANDIN_API void standinLoadAircraft(const char* path);  // "AircraftLoaded"
HELMBRIDGE_STANDIN_API void standinSetTitle(const char* title);     // simulation variable TITLE
// A stalled clock keeps its value through frames.
HELMBRIDGE_STANDIN_API void standinSetClockStalled(int stalled);
// The cockpit clock is the L: variable N_MIP_CLOCK_UTC, in seconds.
HELMBRIDGE_STANDIN_API void standinSetClock(double value);
HELMBRIDGE_STANDIN_API double standinClock(void);

// ---- L: variables (names with or without "L:", letter case ignored) ---------------------------
HELMBRIDGE_STANDIN_API void standinSetLVar(const char* name, double value);
// 1 and the value when the variable exists; 0 (and *value 0.0) otherwise.
HELMBRIDGE_STANDIN_API int standinGetLVar(const char* name, double* value);
HELMBRIDGE_STANDIN_API uint32_t standinLVarCount(void);

// ---- A connection's registrations --------------------------------------------------------------
// The id lists return the total count and fill at most `capacity` ids. Definitions come in the
// order they were first added to, requests and subscriptions in ascending id.
HELMBRIDGE_STANDIN_API uint32_t standinDefinitionIds(void* handle, uint32_t* ids,
                                                     uint32_t capacity);
// Number of datums of a definition, or -1 when it does not exist.
HELMBRIDGE_STANDIN_API int32_t standinDatumCount(void* handle, uint32_t defineId);
HELMBRIDGE_STANDIN_API int standinDatum(void* handle, uint32_t defineId, uint32_t index,
                                        struct StandinDatum* out);
HELMBRIDGE_STANDIN_API uint32_t standinRequestIds(void* handle, uint32_t* ids, uint32_t capacity);
HELMBRIDGE_STANDIN_API int standinRequest(void* handle, uint32_t requestId,
                                          struct StandinRequest* out);
HELMBRIDGE_STANDIN_API uint32_t standinSubscriptionIds(void* handle, uint32_t* ids,
                                                       uint32_t capacity);
// The system event name a client event id is subscribed to, NUL-terminated in `name`.
HELMBRIDGE_STANDIN_API int standinSubscription(void* handle, uint32_t eventId, char* name,
                                               uint32_t capacity);

// ---- Call record -------------------------------------------------------------------------------
// Calls are recorded in the order they entered the stand-in, up to a bound (then counted in
// droppedCalls).
HELMBRIDGE_STANDIN_API uint64_t standinCallCount(void);
HELMBRIDGE_STANDIN_API int standinCall(uint64_t index, struct StandinCall* out);
// Copies up to `capacity` data bytes of a recorded call; returns the full size.
HELMBRIDGE_STANDIN_API uint32_t standinCallData(uint64_t index, void* buffer, uint32_t capacity);
HELMBRIDGE_STANDIN_API void standinClearCalls(void);
HELMBRIDGE_STANDIN_API void standinCounters(struct StandinCounters* out);

#ifdef __cplusplus
}  // extern "C"

#include <string>
#include <vector>

// Caller-side conveniences over the C interface.
namespace helmbridge::standin {

struct Call : StandinCall {
    std::vector<unsigned char> data;
};

inline std::vector<Call> calls() {
    std::vector<Call> out;
    const uint64_t count = standinCallCount();
    out.reserve(count);
    for (uint64_t i = 0; i < count; ++i) {
        Call call{};
        if (!standinCall(i, &call)) break;
        call.data.resize(call.dataSize);
        if (call.dataSize > 0) standinCallData(i, call.data.data(), call.dataSize);
        out.push_back(std::move(call));
    }
    return out;
}

// The calls the simulator answered with an EXCEPTION message.
inline std::vector<Call> rejectedCalls() {
    std::vector<Call> out;
    for (Call& call : calls()) {
        if (call.exception != 0) out.push_back(std::move(call));
    }
    return out;
}

inline std::vector<Call> calls(StandinFunction function) {
    std::vector<Call> out;
    for (Call& call : calls()) {
        if (call.function == function) out.push_back(std::move(call));
    }
    return out;
}

inline StandinCounters counters() {
    StandinCounters out{};
    standinCounters(&out);
    return out;
}

inline double lvar(const char* name) {
    double value = 0.0;
    standinGetLVar(name, &value);
    return value;
}

// Reads one of the id lists; the list may grow between the two calls, never past the buffer.
template <typename List>
std::vector<uint32_t> readIds(List list, void* handle) {
    std::vector<uint32_t> ids(list(handle, nullptr, 0));
    const uint32_t total = list(handle, ids.data(), static_cast<uint32_t>(ids.size()));
    if (total < ids.size()) ids.resize(total);
    return ids;
}

inline std::vector<uint32_t> definitionIds(void* handle = nullptr) {
    return readIds(&standinDefinitionIds, handle);
}

inline std::vector<StandinDatum> datums(uint32_t defineId, void* handle = nullptr) {
    std::vector<StandinDatum> out;
    const int32_t count = standinDatumCount(handle, defineId);
    for (int32_t i = 0; i < count; ++i) {
        StandinDatum datum{};
        if (standinDatum(handle, defineId, static_cast<uint32_t>(i), &datum)) out.push_back(datum);
    }
    return out;
}

inline std::vector<uint32_t> requestIds(void* handle = nullptr) {
    return readIds(&standinRequestIds, handle);
}

inline std::vector<uint32_t> subscriptionIds(void* handle = nullptr) {
    return readIds(&standinSubscriptionIds, handle);
}

inline std::string subscription(uint32_t eventId, void* handle = nullptr) {
    char name[256] = {};
    return standinSubscription(handle, eventId, name, sizeof(name)) ? std::string(name)
                                                                    : std::string();
}

}  // namespace helmbridge::standin
#endif
