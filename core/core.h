// The one object that owns the module's run-time state and its six worker threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

#include "core/periodic_worker.h"
#include "core/write_paths.h"
#include "input/input_state.h"
#include "output/output_state.h"
#include "platform/module_lifetime.h"
#include "platform/platform.h"
#include "platform/simconnect_abi.h"
#include "platform/simconnect_binding.h"
#include "plugin/helmbridge_a320.h"

namespace fenixA320 {

namespace platform = helmbridge::platform;
using helmbridge::DigitOutProc;
using helmbridge::DisplayProc;
using helmbridge::PwmProc;
using helmbridge::ServoProc;

inline constexpr std::size_t kDigitOutSlots = 502;  // one spare: slots are positions, not ids
inline constexpr std::size_t kDisplaySlots = 143;

// A remembered digital input, replayed after a flight reload.
struct DigitInMemory {
    bool seen = false;
    bool state = false;
};

// A remembered analog input.
struct AnalogMemory {
    bool seen = false;
    double value = 0.0;
};

class FenixA320Core {
  public:
    // The seam reaches the simulator's client library, the process and file probes and the
    // debugger output; tests hand in their own.
    explicit FenixA320Core(const platform::Platform& seam = platform::systemPlatform());
    ~FenixA320Core();
    FenixA320Core(const FenixA320Core&) = delete;
    FenixA320Core& operator=(const FenixA320Core&) = delete;

    // Host-facing operations, called by the exports.
    bool Start();
    bool Stop();
    bool UpdateOutput();
    bool GetConnectStatus() const { return connected.load(std::memory_order_relaxed); }
    void SetDigitIn(int32_t id, bool state);
    void SetEncoder(int32_t id, int32_t direction);
    void SetAnalog(int32_t id, double value);
    bool SetDigitOutProc(DigitOutProc proc);
    bool SetDisplayProc(DisplayProc proc);
    bool SetServoProc(ServoProc proc);
    bool SetServoSpeedProc(ServoProc proc);
    bool SetPwmProc(PwmProc proc);

    // Worker loops: each runs its pass on the worker's schedule until the worker is stopped.
    static void ConnectLoop(FenixA320Core& core);
    static void DispatchLoop(FenixA320Core& core);
    static void ServoLoop(FenixA320Core& core);
    static void RudderTrimLoop(FenixA320Core& core);
    static void InputReplayLoop(FenixA320Core& core);
    static void WriterLoop(FenixA320Core& core);

    // One pass of each loop at time `now`.
    void connectPass(TimePoint now);
    void dispatchPass(TimePoint now);
    void servoPass(TimePoint now);
    void rudderTrimPass(TimePoint now);
    void inputReplayPass(TimePoint now);
    void writerPass(TimePoint now);

    // The output cycle's three passes, and the dome light switch position the backlight reads.
    void updateDigitOut();
    void updateDisplayOut();
    void updatePwmOut();
    double domeLightSwitchValue() const;

    // The simulator connection.
    static void HELMBRIDGE_SIMCONNECT_CALL
    HandleSimMessage(helmbridge::simconnect::SIMCONNECT_RECV* data,
                     helmbridge::simconnect::DWORD size, void* context);
    void handleSimMessage(const helmbridge::simconnect::SIMCONNECT_RECV* message,
                          helmbridge::simconnect::DWORD size, TimePoint now);
    void RegisterSimData();
    void UnregisterSimData();
    void RerequestSimData();

    // Builds the input-side objects and the received-value arrays; once per core.
    void BuildInputLogic();
    // Input-side parts of construction and of BuildInputLogic.
    void initReplayMemories();
    void buildInputSide();

    // Input side. SetDigitIn with the event time handed in (the key gates read it); true when
    // one of the rules for 963, 605 or 964 took the event.
    bool setDigitIn(int32_t id, bool state, TimePoint now);
    // One replay pass that calls `pause` after each replayed analog value.
    void inputReplayPass(TimePoint now, void (*pause)());
    // Hands a digital event to the position switches; called with the input lock held.
    void FeedSwitches(int32_t id, bool state);
    // Callback of the position switches: writes the new position of switch variable `key`.
    void OnSwitchPosition(int32_t key, int32_t position);
    // The value last written for a switch variable (by definition id); 0.0 before
    // BuildInputLogic or for an id that is none. Any thread.
    double switchVarValue(int32_t defineId) const;

    // The two write operations of the input side: ordered, and latest value only.
    void QueueWrite(uint32_t defineId, const double* value);
    void SetLatestWrite(uint32_t defineId, const void* data, uint32_t size);
    // Empties the queue, the latest values and the held values.
    void clearWritePaths();
    // One SetDataOnSimObject on the user's aircraft, if the connection is open.
    void sendData(uint32_t defineId, uint32_t arrayCount, uint32_t unitSize, const void* data);
    static std::unordered_set<uint32_t> buildHeldDefinitions();

    std::atomic<int32_t> linkCheckCount{0};
    std::atomic<bool> running{false};
    std::atomic<bool> connected{false};

    PeriodicWorker connectWorker;
    PeriodicWorker dispatchWorker;
    PeriodicWorker servoWorker;
    PeriodicWorker rudderTrimWorker;
    PeriodicWorker inputRefreshWorker;
    PeriodicWorker writerWorker;

    const platform::Platform& seam;
    std::atomic<const platform::SimConnectApi*> simApi{nullptr};
    // The failed search for the client library is reported once per Start, not on every attempt.
    std::atomic<bool> searchReported{false};
    std::atomic<void*> simHandle{nullptr};
    // Held by every SimConnect call, so closing waits for a call in progress and no call is ever
    // made on a closed handle. Recursive: message handling runs inside CallDispatch and calls in.
    std::recursive_mutex simMutex;
    TimePoint dispatchNow{};  // dispatch thread only: the pass time seen by message handling

    // Received values, written by the dispatch thread and read elsewhere without a lock.
    std::unique_ptr<std::atomic<double>[]> digitOutValues;
    std::unique_ptr<std::atomic<double>[]> displayValues;

    std::atomic<int32_t> variant{0};

    std::unordered_map<int32_t, DigitInMemory> lastDigitIn;
    std::unordered_map<int32_t, AnalogMemory> lastAnalog;

    // Simulation liveness.
    std::atomic<bool> clockAdvancing{false};
    std::atomic<bool> clockSeen{false};
    std::atomic<bool> simRunning{true};
    std::atomic<bool> simPaused{false};
    int32_t clockRiseCount = 0;
    double lastClockValue = -1.0;
    double acceptedClock = -1.0;
    std::atomic<TimePoint> freshUntil{TimePoint{}};
    std::atomic<int32_t> rerequestPending{0};
    TimePoint rerequestTime{};

    // Write paths; the three mutexes are never held together.
    std::mutex queueMutex;
    WriteQueue writeQueue;
    std::mutex latestMutex;
    LatestWrites latestWrites;
    std::mutex heldMutex;
    // Depends only on constant tables: built at construction, so no worker ever sees it change.
    const std::unordered_set<uint32_t> heldDefinitions = buildHeldDefinitions();
    std::unordered_map<uint32_t, PendingWrite> heldWrites;
    std::atomic<uint64_t> droppedWrites{0};
    TimePoint lastLatestFlush{};  // writer thread only
    TimePoint lastHeldFlush{};    // writer thread only

    DigitOutProc digitOutProc;
    DisplayProc displayProc;
    ServoProc servoProc;
    ServoProc servoSpeedProc;
    PwmProc pwmProc;

    bool inputsBuilt = false;
    InputState input;
    OutputState output;

  private:
    // Keeps the module loaded from Start until Stop has joined the workers.
    platform::ModuleReference selfReference;

    // Everything of Stop but giving back the module reference.
    void halt();
    // At process exit on Windows the workers are already gone: let go of them without joining.
    void abandonWorkers();
    void resetLiveness(TimePoint now);
    void requestKeepAlive();
    void reconnect();
    void stallCheck(TimePoint now);
    void keepAliveAnswered();
    void closeConnection();
    void requestBlocks(const platform::SimConnectApi& api, void* handle);
    void onEvent(helmbridge::simconnect::DWORD eventId, helmbridge::simconnect::DWORD value,
                 TimePoint now);
    void onSimObjectData(const helmbridge::simconnect::SIMCONNECT_RECV* message,
                         helmbridge::simconnect::DWORD size, TimePoint now);
    void clockReset(TimePoint now);
    void clockReading(double value, TimePoint now);
};

}  // namespace fenixA320
