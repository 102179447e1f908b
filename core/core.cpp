// Construction, start and stop of the core, and the table of its workers.
#include "core/core.h"

#include <chrono>

#include "catalogue/bindings.h"
#include "catalogue/position_switches.h"
#include "catalogue/signal_lists.h"
#include "platform/module_lifetime.h"

namespace fenixA320 {

using std::chrono::milliseconds;

namespace {

// The tables are built on first use and destroyed in the reverse order of their building. Built
// before the core, they outlive it: the exit-time Stop and the workers it stops still read them.
void buildTables() {
    const void* tables[] = {
        &digitInSigList(),    &encoderSigList(),  &analogSigList(),  &digitOutSigList(),
        &displaySigList(),    &servoSigList(),    &pwmSigList(),     &digitInBindings(),
        &switchVarBindings(), &encoderBindings(), &analogBindings(), &cduKeyGroup(),
        &fcuKeyGroup(),       &aspKeyGroup(),     &rmpKeyGroup(),    &atcKeyGroup(),
    };
    static_cast<void>(tables);
    static_cast<void>(variableNumber({}));
}

// Stop lets the writer and dispatch threads finish what is in flight before it stops them.
constexpr Nanos kUnregisterPause = milliseconds(200);
constexpr int32_t kDomeLightKey = variableNumberOf("S_OH_INT_LT_DOME");

WriteLink linkOf(Connection& connection) {
    return {&connection,
            [](const void* context) { return static_cast<const Connection*>(context)->linkUp(); },
            [](void* context, uint32_t defineId, uint32_t arrayCount, uint32_t unitSize,
               const void* data) {
                static_cast<Connection*>(context)->sendData(defineId, arrayCount, unitSize, data);
            }};
}

WriteTarget targetOf(WritePaths& writes) {
    return {&writes,
            [](void* context, uint32_t defineId, const double* value) {
                static_cast<WritePaths*>(context)->QueueWrite(defineId, value);
            },
            [](void* context, uint32_t defineId, const void* data, uint32_t size) {
                static_cast<WritePaths*>(context)->SetLatestWrite(defineId, data, size);
            }};
}

}  // namespace

// One worker: its period as Start sets it, its pacing and the pass it repeats.
struct FenixA320Core::WorkerPlan {
    const char* name;
    uint16_t periodMs;
    Pacing pacing;
    void (FenixA320Core::*pass)(TimePoint now);
};

// In the order Start starts them; the writer last, after its paths were emptied.
const std::array<FenixA320Core::WorkerPlan, 6> FenixA320Core::kWorkers{{
    {"connect", 1000, Pacing::BoundedCatchUp, &FenixA320Core::connectPass},
    {"dispatch", 15, Pacing::BoundedCatchUp, &FenixA320Core::dispatchPass},
    {"servo", 50, Pacing::FixedRate, &FenixA320Core::servoPass},
    {"rudder trim", 10, Pacing::FixedRateTripleStep, &FenixA320Core::rudderTrimPass},
    {"input refresh", 50, Pacing::FixedPause, &FenixA320Core::inputReplayPass},
    {"writer", 5, Pacing::BoundedCatchUp, &FenixA320Core::writerPass},
}};

FenixA320Core::FenixA320Core(const platform::Platform& seam)
    : seam(seam),
      writes(linkOf(connection)),
      input(seam, targetOf(writes), received, [this] { return connection.connected(); }) {
    buildTables();
}

FenixA320Core::~FenixA320Core() {
    if (platform::processExiting()) {
        abandonWorkers();
        return;
    }
    // A real unload comes only after Stop gave the module reference back; with the reference
    // still held this runs at process exit, where giving it back could unmap this very code.
    halt();
}

void FenixA320Core::abandonWorkers() {
    for (PeriodicWorker& worker : workers) {
        if (!worker.thread) continue;
        worker.keepRunning.store(false);
        worker.thread->detach();
        worker.thread.reset();
    }
}

void FenixA320Core::BuildInputLogic() {
    if (inputsBuilt) return;
    input.BuildInputLogic(seam.now());
    received.allocate();
    inputsBuilt = true;
}

bool FenixA320Core::Start() {
    BuildInputLogic();
    if (running.load()) Stop();
    // From here on worker threads run module code: a host that unloads without Stop must not
    // unmap it under them.
    selfReference.take();
    connection.begin();

    const LoopClock clock{seam.now, seam.sleepUntil};
    for (std::size_t i = 0; i < kWorkers.size(); ++i) {
        const WorkerPlan& plan = kWorkers[i];
        PeriodicWorker& worker = workers[i];
        worker.StopWorker();
        if (&plan == &kWorkers.back()) {
            writes.clear();
            writes.resetDroppedWrites();
        }
        worker.periodMs.store(plan.periodMs);
        worker.StartWorker([this, &worker, &plan, clock] {
            runPeriodic(
                worker, plan.pacing, [this, &plan](TimePoint now) { (this->*plan.pass)(now); },
                clock);
        });
    }

    running.store(true);
    return true;
}

bool FenixA320Core::Stop() {
    halt();
    // No module code runs on another thread any more. The host that calls Stop holds its own
    // reference to the module, so this is never the one whose release unmaps it.
    selfReference.giveBack();
    return true;
}

void FenixA320Core::halt() {
    running.store(false);
    if (connection.hasHandle()) {
        connection.UnregisterSimData();
        seam.sleepUntil(seam.now() + kUnregisterPause);
    }
    // The dispatch worker first, so no message arrives while the others stop.
    for (const std::size_t i : {1, 0, 2, 3, 4, 5}) workers[i].StopWorker();

    writes.clear();
    input.forgetReported();
    connection.close(seam.now());
}

int FenixA320Core::workerThreads() const {
    int count = 0;
    for (const PeriodicWorker& worker : workers) count += worker.thread ? 1 : 0;
    return count;
}

void FenixA320Core::inputReplayPass(TimePoint now) {
    input.inputReplayPass(now,
                          {running.load(), connection.connected(), connection.clockAdvancing()});
}

bool FenixA320Core::UpdateOutput() {
    if (!connection.connected()) return false;
    if (running.load()) output.updateOutput(input.switchVarValue(kDomeLightKey));
    return true;
}

void FenixA320Core::SetDigitIn(int32_t id, bool state) { input.SetDigitIn(id, state, seam.now()); }
void FenixA320Core::SetEncoder(int32_t id, int32_t direction) { input.SetEncoder(id, direction); }
void FenixA320Core::SetAnalog(int32_t id, double value) { input.SetAnalog(id, value); }

bool FenixA320Core::SetDigitOutProc(DigitOutProc proc) {
    output.SetDigitOutProc(std::move(proc));
    return true;
}
bool FenixA320Core::SetDisplayProc(DisplayProc proc) {
    output.SetDisplayProc(std::move(proc));
    return true;
}
bool FenixA320Core::SetServoProc(ServoProc proc) {
    output.SetServoProc(std::move(proc));
    return true;
}
bool FenixA320Core::SetServoSpeedProc(ServoProc proc) {
    output.SetServoSpeedProc(std::move(proc));
    return true;
}
bool FenixA320Core::SetPwmProc(PwmProc proc) {
    output.SetPwmProc(std::move(proc));
    return true;
}

}  // namespace fenixA320
