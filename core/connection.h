// The simulator connection: search and open, keep-alive, stall watchdog, message handling, the
// registration of every data definition, request and event, and the variant detection.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "platform/clock.h"
#include "platform/platform.h"
#include "platform/simconnect_abi.h"
#include "platform/simconnect_binding.h"
#include "store/received_values.h"

namespace fenixA320 {

namespace sc = helmbridge::simconnect;

class Connection {
  public:
    // Received blocks land in `received`; the seam reaches the client library, the probes and
    // the debugger output.
    Connection(const helmbridge::platform::Platform& seam, ReceivedValues& received)
        : seam_(seam), received_(received) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Before the workers start: the first connect pass tries at once, and a client library that
    // cannot be found is reported again.
    void begin();
    // One pass of the connection worker: keep-alive, reconnect and stall watchdog.
    void connectPass(TimePoint now);
    // One pass of the dispatch worker: delivers waiting messages to handleSimMessage.
    void dispatchPass(TimePoint now);
    // Handles one message of `size` bytes as received at `now`; malformed ones are ignored.
    void handleSimMessage(const sc::SIMCONNECT_RECV* message, sc::DWORD size, TimePoint now);

    // The definitions, requests and subscriptions of an open connection, made and undone.
    void RegisterSimData();
    void UnregisterSimData();
    // Asks again for the frame blocks and the clock after the stream stalled.
    void RerequestSimData();

    // Stop's end: closes an open connection and forgets it, and resets the liveness state.
    void close(TimePoint now);
    bool hasHandle() const { return simHandle_.load() != nullptr; }

    bool connected() const { return connected_.load(std::memory_order_relaxed); }
    // The cockpit clock moved on its last two readings: the simulation runs.
    bool clockAdvancing() const { return clockAdvancing_.load(std::memory_order_relaxed); }
    int32_t variant() const { return variant_.load(std::memory_order_relaxed); }
    // Open with a handle: writes are sent.
    bool linkUp() const { return connected() && hasHandle(); }
    // One SetDataOnSimObject on the user's aircraft, if the connection is open.
    void sendData(uint32_t defineId, uint32_t arrayCount, uint32_t unitSize, const void* data);

  private:
    static void HELMBRIDGE_SIMCONNECT_CALL HandleSimMessage(sc::SIMCONNECT_RECV* data,
                                                            sc::DWORD size, void* context);
    void resetLiveness(TimePoint now);
    void requestKeepAlive();
    void reconnect();
    void stallCheck(TimePoint now);
    void keepAliveAnswered();
    static void requestBlocks(const helmbridge::platform::SimConnectApi& api, void* handle);
    void onEvent(sc::DWORD eventId, sc::DWORD value, TimePoint now);
    void onSimObjectData(const sc::SIMCONNECT_RECV* message, sc::DWORD size, TimePoint now);
    void clockReset(TimePoint now);
    void clockReading(double value, TimePoint now);

    const helmbridge::platform::Platform& seam_;
    ReceivedValues& received_;

    std::atomic<int32_t> linkCheckCount_{0};
    std::atomic<bool> connected_{false};
    std::atomic<const helmbridge::platform::SimConnectApi*> simApi_{nullptr};
    // The failed search for the client library is reported once per Start, not on every attempt.
    std::atomic<bool> searchReported_{false};
    std::atomic<void*> simHandle_{nullptr};
    // Held by every SimConnect call, so closing waits for a call in progress and no call is ever
    // made on a closed handle. Recursive: message handling runs inside CallDispatch and calls in.
    std::recursive_mutex simMutex_;
    TimePoint dispatchNow_{};  // dispatch thread only: the pass time seen by message handling

    std::atomic<int32_t> variant_{0};

    // Simulation liveness.
    std::atomic<bool> clockAdvancing_{false};
    std::atomic<bool> clockSeen_{false};
    std::atomic<bool> simRunning_{true};
    std::atomic<bool> simPaused_{false};
    int32_t clockRiseCount_ = 0;
    double lastClockValue_ = -1.0;
    double acceptedClock_ = -1.0;
    std::atomic<TimePoint> freshUntil_{TimePoint{}};
    std::atomic<int32_t> rerequestPending_{0};
    TimePoint rerequestTime_{};
};

}  // namespace fenixA320
