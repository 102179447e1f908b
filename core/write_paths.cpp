// The input side's writes to the simulator: ordered queue, latest values, held values, and the
// writer pass that sends them.
#include "catalogue/bindings.h"
#include "core/core.h"

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kQueuedPerPass = 10;
constexpr std::size_t kLatestPerFlush = 20;
constexpr Nanos kLatestFlushInterval = milliseconds(10);
constexpr Nanos kHeldFlushInterval = milliseconds(200);

bool contains(std::initializer_list<int32_t> ids, int32_t id) {
    for (int32_t candidate : ids) {
        if (candidate == id) return true;
    }
    return false;
}

}  // namespace

std::unordered_set<uint32_t> FenixA320Core::buildHeldDefinitions() {
    // Inputs whose last value the aircraft must keep seeing: engine masters, speedbrake arming,
    // gear and parking brake, throttles, speedbrake and the lighting knobs.
    const auto digital = {605, 964, 472, 449, 450, 451, 452, 453,
                          594, 595, 597, 598, 583, 743, 745};
    const auto analog = {88, 124, 89, 90, 117, 102, 103, 97, 98, 109, 110, 108};
    // Multi-position switches that a flight reload would otherwise reset: engine mode selector,
    // console/floor lights and dome light. Push/pull knobs are not held: re-sending their
    // position would keep pushing them.
    const auto heldSwitches = {397, 490, 491, 611};

    std::unordered_set<uint32_t> held;
    for (const VarBinding& row : digitInBindings()) {
        if (contains(digital, row.key)) held.insert(static_cast<uint32_t>(row.defineId));
    }
    for (const VarBinding& row : analogBindings()) {
        if (contains(analog, row.key)) held.insert(static_cast<uint32_t>(row.defineId));
    }
    for (const VarBinding& row : switchVarBindings()) {
        if (contains(heldSwitches, row.key)) held.insert(static_cast<uint32_t>(row.defineId));
    }
    return held;
}

void FenixA320Core::QueueWrite(uint32_t defineId, const double* value) {
    if (!connected.load(std::memory_order_relaxed) || simHandle.load() == nullptr) return;
    WriteRecord record{defineId, 0, sizeof(double), {}};
    std::memcpy(record.bytes.data(), value, sizeof(double));
    {
        std::lock_guard lock(queueMutex);
        if (!writeQueue.push(record)) droppedWrites.fetch_add(1, std::memory_order_relaxed);
    }
    if (heldDefinitions.count(defineId) != 0) {
        std::lock_guard lock(heldMutex);
        heldWrites[defineId].assign(value, sizeof(double));
    }
}

void FenixA320Core::SetLatestWrite(uint32_t defineId, const void* data, uint32_t size) {
    if (!connected.load(std::memory_order_relaxed) || simHandle.load() == nullptr) return;
    {
        std::lock_guard lock(latestMutex);
        latestWrites.set(defineId, data, size);
    }
    if (heldDefinitions.count(defineId) != 0) {
        std::lock_guard lock(heldMutex);
        heldWrites[defineId].assign(data, size);
    }
}

void FenixA320Core::clearWritePaths() {
    {
        std::lock_guard lock(queueMutex);
        writeQueue.clear();
    }
    {
        std::lock_guard lock(latestMutex);
        latestWrites.clear();
    }
    std::lock_guard lock(heldMutex);
    heldWrites.clear();
}

void FenixA320Core::WriterLoop(FenixA320Core& core) {
    core.lastLatestFlush = core.lastHeldFlush = SteadyClock::now();
    runPeriodic(core.writerWorker, Pacing::BoundedCatchUp,
                [&core](TimePoint now) { core.writerPass(now); });
}

void FenixA320Core::writerPass(TimePoint now) {
    std::array<WriteRecord, kQueuedPerPass> batch;
    std::size_t count = 0;
    {
        std::lock_guard lock(queueMutex);
        count = writeQueue.take(batch.data(), batch.size());
    }
    const auto linkUp = [this] {
        return connected.load(std::memory_order_relaxed) && simHandle.load() != nullptr;
    };
    if (linkUp()) {
        for (std::size_t i = 0; i < count; ++i) {
            sendData(batch[i].defineId, batch[i].arrayCount, batch[i].unitSize,
                     batch[i].bytes.data());
        }
    }
    if (linkUp() && now - lastLatestFlush >= kLatestFlushInterval) {
        std::lock_guard lock(latestMutex);
        latestWrites.flush(kLatestPerFlush, [this](uint32_t id, const PendingWrite& entry) {
            sendData(id, entry.arrayCount, entry.unitSize, entry.bytes.data());
        });
        lastLatestFlush = now;
    }
    if (linkUp() && now - lastHeldFlush >= kHeldFlushInterval) {
        std::lock_guard lock(heldMutex);
        for (const auto& [id, entry] : heldWrites) {
            if (entry.dirty) sendData(id, entry.arrayCount, entry.unitSize, entry.bytes.data());
        }
        lastHeldFlush = now;
    }
}

}  // namespace fenixA320
