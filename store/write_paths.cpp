// The input side's writes to the simulator: ordered queue, latest values, held values, and the
// writer pass that sends them.
#include "store/write_paths.h"

#include <algorithm>
#include <span>

#include "catalogue/behaviour.h"
#include "catalogue/bindings.h"

namespace fenixA320 {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kQueuedPerPass = 10;
constexpr std::size_t kLatestPerFlush = 20;
constexpr Nanos kLatestFlushInterval = milliseconds(10);
constexpr Nanos kHeldFlushInterval = milliseconds(200);

bool contains(std::span<const int32_t> ids, int32_t id) {
    return std::ranges::find(ids, id) != ids.end();
}

std::unordered_set<uint32_t> buildHeldDefinitions() {
    // The inputs the catalogue holds (catalogue/behaviour.h).
    const auto& digital = kHeldDigitInIds;
    const auto& analog = kHeldAnalogInIds;
    const auto& heldSwitches = kHeldSwitchNumbers;

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

}  // namespace

WritePaths::WritePaths(WriteLink link) : link_(link), heldDefinitions_(buildHeldDefinitions()) {}

void WritePaths::QueueWrite(uint32_t defineId, const double* value) {
    if (!link_.isUp()) return;
    WriteRecord record{defineId, 0, sizeof(double), {}};
    std::memcpy(record.bytes.data(), value, sizeof(double));
    {
        std::lock_guard lock(queueMutex_);
        if (!writeQueue_.push(record)) droppedWrites_.fetch_add(1, std::memory_order_relaxed);
    }
    if (heldDefinitions_.contains(defineId)) {
        std::lock_guard lock(heldMutex_);
        heldWrites_[defineId].assign(value, sizeof(double));
    }
}

void WritePaths::SetLatestWrite(uint32_t defineId, const void* data, uint32_t size) {
    if (!link_.isUp()) return;
    {
        std::lock_guard lock(latestMutex_);
        latestWrites_.set(defineId, data, size);
    }
    if (heldDefinitions_.contains(defineId)) {
        std::lock_guard lock(heldMutex_);
        heldWrites_[defineId].assign(data, size);
    }
}

void WritePaths::clear() {
    // Called only while the writer is stopped: its next run starts the flush intervals anew.
    flushClockSet_ = false;
    {
        std::lock_guard lock(queueMutex_);
        writeQueue_.clear();
    }
    {
        std::lock_guard lock(latestMutex_);
        latestWrites_.clear();
    }
    std::lock_guard lock(heldMutex_);
    heldWrites_.clear();
}

void WritePaths::writerPass(TimePoint now) {
    if (!flushClockSet_) {
        lastLatestFlush_ = lastHeldFlush_ = now;
        flushClockSet_ = true;
    }
    std::array<WriteRecord, kQueuedPerPass> batch;
    std::size_t count = 0;
    {
        std::lock_guard lock(queueMutex_);
        count = writeQueue_.take(batch.data(), batch.size());
    }
    const auto linkUp = [this] { return link_.isUp(); };
    if (linkUp()) {
        for (std::size_t i = 0; i < count; ++i) {
            send(batch[i].defineId, batch[i].arrayCount, batch[i].unitSize, batch[i].bytes.data());
        }
    }
    if (linkUp() && now - lastLatestFlush_ >= kLatestFlushInterval) {
        std::lock_guard lock(latestMutex_);
        latestWrites_.flush(kLatestPerFlush, [this](uint32_t id, const PendingWrite& entry) {
            send(id, entry.arrayCount, entry.unitSize, entry.bytes.data());
        });
        lastLatestFlush_ = now;
    }
    if (linkUp() && now - lastHeldFlush_ >= kHeldFlushInterval) {
        std::lock_guard lock(heldMutex_);
        for (const auto& [id, entry] : heldWrites_) {
            if (entry.dirty) send(id, entry.arrayCount, entry.unitSize, entry.bytes.data());
        }
        lastHeldFlush_ = now;
    }
}

}  // namespace fenixA320
