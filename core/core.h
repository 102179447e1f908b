// The one object that owns the module's run-time state: it composes the simulator connection,
// the variable store with its write paths, the input side and the output side, and runs their
// passes on six worker threads.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "core/connection.h"
#include "core/periodic_worker.h"
#include "input/input_side.h"
#include "output/output_side.h"
#include "platform/clock.h"
#include "platform/module_lifetime.h"
#include "platform/platform.h"
#include "store/received_values.h"
#include "store/write_paths.h"

namespace fenixA320 {

namespace platform = helmbridge::platform;

class FenixA320Core {
  public:
    // The seam reaches the simulator's client library, the process and file probes, the
    // debugger output and the clock; tests hand in their own.
    explicit FenixA320Core(const platform::Platform& seam = platform::systemPlatform());
    ~FenixA320Core();
    FenixA320Core(const FenixA320Core&) = delete;
    FenixA320Core& operator=(const FenixA320Core&) = delete;

    // Host-facing operations, called by the exports.
    bool Start();
    bool Stop();
    bool UpdateOutput();
    bool GetConnectStatus() const { return connection.connected(); }
    void SetDigitIn(int32_t id, bool state);
    void SetEncoder(int32_t id, int32_t direction);
    void SetAnalog(int32_t id, double value);
    bool SetDigitOutProc(DigitOutProc proc);
    bool SetDisplayProc(DisplayProc proc);
    bool SetServoProc(ServoProc proc);
    bool SetServoSpeedProc(ServoProc proc);
    bool SetPwmProc(PwmProc proc);

    // The input side's objects and the received-value arrays; once per core, by the first Start.
    void BuildInputLogic();

    // One pass of each worker at time `now`, as its thread runs it.
    void connectPass(TimePoint now) { connection.connectPass(now); }
    void dispatchPass(TimePoint now) { connection.dispatchPass(now); }
    void servoPass(TimePoint now) { output.servoPass(now, input.trimWheelInput()); }
    void rudderTrimPass(TimePoint now) { input.rudderTrimPass(now); }
    void inputReplayPass(TimePoint now);
    void writerPass(TimePoint now) { writes.writerPass(now); }

    // One message from the simulator, handled as the dispatch worker would at `now`.
    void handleSimMessage(const sc::SIMCONNECT_RECV* message, sc::DWORD size, TimePoint now) {
        connection.handleSimMessage(message, size, now);
    }

    bool isRunning() const { return running.load(std::memory_order_relaxed); }
    int32_t variant() const { return connection.variant(); }
    uint64_t droppedWrites() const { return writes.droppedWrites(); }
    // How many worker threads exist now.
    int workerThreads() const;

  private:
    // Everything of Stop but giving back the module reference.
    void halt();
    // At process exit on Windows the workers are already gone: let go of them without joining.
    void abandonWorkers();

    struct WorkerPlan;
    static const std::array<WorkerPlan, 6> kWorkers;

    const platform::Platform& seam;
    std::atomic<bool> running{false};
    bool inputsBuilt = false;

    ReceivedValues received;
    Connection connection{seam, received};
    WritePaths writes;
    InputSide input;
    OutputSide output{received};
    std::array<PeriodicWorker, 6> workers;

    // Keeps the module loaded from Start until Stop has joined the workers.
    platform::ModuleReference selfReference;
};

}  // namespace fenixA320
