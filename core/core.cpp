// Construction, start and stop of the core, and its worker loops.
#include "core/core.h"

#include <chrono>
#include <thread>

#include "catalogue/bindings.h"
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

}  // namespace

FenixA320Core::FenixA320Core(const platform::Platform& seam) : seam(seam) {
    buildTables();
    initReplayMemories();
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
    for (PeriodicWorker* worker : {&connectWorker, &dispatchWorker, &servoWorker, &rudderTrimWorker,
                                   &inputRefreshWorker, &writerWorker}) {
        if (!worker->thread) continue;
        worker->keepRunning.store(false);
        worker->thread->detach();
        worker->thread.reset();
    }
}

bool FenixA320Core::Start() {
    if (!inputsBuilt) {
        BuildInputLogic();
        inputsBuilt = true;
    }
    if (running.load()) Stop();
    // From here on worker threads run module code: a host that unloads without Stop must not
    // unmap it under them.
    selfReference.take();
    linkCheckCount.store(10);
    searchReported.store(false);

    connectWorker.StopWorker();
    dispatchWorker.StopWorker();
    connectWorker.periodMs.store(1000);
    connectWorker.StartWorker([this] { ConnectLoop(*this); });
    dispatchWorker.periodMs.store(15);
    dispatchWorker.StartWorker([this] { DispatchLoop(*this); });

    servoWorker.StopWorker();
    servoWorker.periodMs.store(50);
    servoWorker.StartWorker([this] { ServoLoop(*this); });
    rudderTrimWorker.StopWorker();
    rudderTrimWorker.periodMs.store(10);
    rudderTrimWorker.StartWorker([this] { RudderTrimLoop(*this); });
    inputRefreshWorker.StopWorker();
    inputRefreshWorker.periodMs.store(50);
    inputRefreshWorker.StartWorker([this] { InputReplayLoop(*this); });

    writerWorker.StopWorker();
    clearWritePaths();
    droppedWrites.store(0);
    // The held set depends only on constant tables and was built with the core.
    writerWorker.periodMs.store(5);
    writerWorker.StartWorker([this] { WriterLoop(*this); });

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
    if (simHandle.load() != nullptr) {
        UnregisterSimData();
        // Let the writer and dispatch threads finish what is in flight.
        std::this_thread::sleep_for(milliseconds(200));
    }
    dispatchWorker.StopWorker();
    connectWorker.StopWorker();
    servoWorker.StopWorker();
    rudderTrimWorker.StopWorker();
    inputRefreshWorker.StopWorker();
    writerWorker.StopWorker();

    clearWritePaths();
    for (auto& [id, memory] : lastDigitIn) memory.seen = false;
    for (auto& [id, memory] : lastAnalog) memory.seen = false;
    // Selectors, like inputs, are re-asserted only once the host reports them in the next run.
    for (SwitchEntry& entry : input.switches) entry.reported = false;
    resetLiveness(SteadyClock::now());

    closeConnection();
    connected.store(false);
}

void FenixA320Core::resetLiveness(TimePoint now) {
    clockAdvancing.store(false);
    clockRiseCount = 0;
    lastClockValue = -1.0;
    clockSeen.store(false);
    rerequestPending.store(0);
    freshUntil.store(now);
    acceptedClock = -1.0;
    simRunning.store(true);
    simPaused.store(false);
}

void FenixA320Core::BuildInputLogic() {
    buildInputSide();
    digitOutValues = std::make_unique<std::atomic<double>[]>(kDigitOutSlots);
    displayValues = std::make_unique<std::atomic<double>[]>(kDisplaySlots);
    for (std::size_t i = 0; i < kDigitOutSlots; ++i) digitOutValues[i].store(0.0);
    for (std::size_t i = 0; i < kDisplaySlots; ++i) displayValues[i].store(0.0);
}

bool FenixA320Core::SetDigitOutProc(DigitOutProc proc) {
    digitOutProc = std::move(proc);
    return true;
}
bool FenixA320Core::SetDisplayProc(DisplayProc proc) {
    displayProc = std::move(proc);
    return true;
}
bool FenixA320Core::SetServoProc(ServoProc proc) {
    servoProc = std::move(proc);
    return true;
}
bool FenixA320Core::SetServoSpeedProc(ServoProc proc) {
    servoSpeedProc = std::move(proc);
    return true;
}

// Backlight drivers cannot show levels below 50 of 2500: send them as off.
bool FenixA320Core::SetPwmProc(PwmProc proc) {
    pwmProc = [host = std::move(proc)](unsigned int channel, double level) {
        if (!host) return false;
        return host(channel, level < 50.0 ? 0.0 : level);
    };
    return true;
}

void FenixA320Core::ServoLoop(FenixA320Core& core) {
    runPeriodic(core.servoWorker, Pacing::FixedRate,
                [&core](TimePoint now) { core.servoPass(now); });
}
void FenixA320Core::RudderTrimLoop(FenixA320Core& core) {
    runPeriodic(core.rudderTrimWorker, Pacing::FixedRateTripleStep,
                [&core](TimePoint now) { core.rudderTrimPass(now); });
}
void FenixA320Core::InputReplayLoop(FenixA320Core& core) {
    runPeriodic(core.inputRefreshWorker, Pacing::FixedPause,
                [&core](TimePoint now) { core.inputReplayPass(now); });
}

}  // namespace fenixA320
