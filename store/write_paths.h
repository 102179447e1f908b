// Containers of the three write paths: the ordered queue, latest values and held values.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/clock.h"

namespace fenixA320 {

// One ordered write of one 8-byte value.
struct WriteRecord {
    uint32_t defineId = 0;
    uint32_t arrayCount = 0;
    uint32_t unitSize = 0;
    std::array<uint8_t, 8> bytes{};
};

// A latest-value or held block; its buffer is reused, so rewriting allocates nothing.
struct PendingWrite {
    uint32_t arrayCount = 0;
    uint32_t unitSize = 0;
    std::vector<uint8_t> bytes;
    bool dirty = false;

    void assign(const void* data, uint32_t size) {
        const auto* p = static_cast<const uint8_t*>(data);
        bytes.assign(p, p + size);
        arrayCount = 0;
        unitSize = size;
        dirty = true;
    }
};

// Fixed-capacity FIFO of write records: full, it forgets the oldest. The storage is allocated
// once, so queueing never allocates.
class WriteQueue {
  public:
    static constexpr std::size_t kCapacity = 20000;

    WriteQueue() : ring_(kCapacity) {}

    // Appends; returns false when the oldest record had to go to make room.
    bool push(const WriteRecord& record) {
        bool kept = true;
        if (size_ == kCapacity) {
            head_ = (head_ + 1) % kCapacity;
            --size_;
            kept = false;
        }
        ring_[(head_ + size_) % kCapacity] = record;
        ++size_;
        return kept;
    }

    // Moves up to `max` records from the front into `out`; returns how many.
    std::size_t take(WriteRecord* out, std::size_t max) {
        std::size_t n = 0;
        while (n < max && size_ > 0) {
            out[n++] = ring_[head_];
            head_ = (head_ + 1) % kCapacity;
            --size_;
        }
        return n;
    }

    void clear() { head_ = size_ = 0; }

  private:
    std::vector<WriteRecord> ring_;
    std::size_t head_ = 0;
    std::size_t size_ = 0;
};

// Latest value per definition, flushed oldest-dirtied first so no entry starves behind others.
// Each definition is in the dirty order at most once, so a ring with one slot per definition
// ever seen holds it; the ring grows only when a new definition appears, so rewriting a known
// definition never allocates.
class LatestWrites {
  public:
    void set(uint32_t defineId, const void* data, uint32_t size) {
        const auto [it, added] = entries_.try_emplace(defineId);
        if (added && entries_.size() > order_.size()) grow();
        PendingWrite& entry = it->second;
        if (!entry.dirty) order_[(head_ + dirty_++) % order_.size()] = defineId;
        entry.assign(data, size);
    }

    // Sends up to `max` dirty entries in the order they became dirty, clearing their flags.
    template <typename Send>
    std::size_t flush(std::size_t max, Send&& send) {
        std::size_t sent = 0;
        while (sent < max && dirty_ > 0) {
            const uint32_t id = order_[head_];
            head_ = (head_ + 1) % order_.size();
            --dirty_;
            PendingWrite& entry = entries_[id];
            send(id, entry);
            entry.dirty = false;
            ++sent;
        }
        return sent;
    }

    std::size_t dirtyCount() const { return dirty_; }
    void clear() {
        entries_.clear();
        head_ = dirty_ = 0;
    }

  private:
    // Doubles the ring, keeping the dirty order.
    void grow() {
        std::vector<uint32_t> larger(std::max<std::size_t>(16, 2 * order_.size()));
        for (std::size_t i = 0; i < dirty_; ++i) larger[i] = order_[(head_ + i) % order_.size()];
        order_.swap(larger);
        head_ = 0;
    }

    std::unordered_map<uint32_t, PendingWrite> entries_;
    std::vector<uint32_t> order_;  // ring of dirty definitions, oldest at head_
    std::size_t head_ = 0;
    std::size_t dirty_ = 0;
};

// The open connection as the write paths see it: whether writes are taken now, and where the
// writer sends them. Plain functions with a context, so the store knows nothing of the
// connection.
struct WriteLink {
    void* context = nullptr;
    bool (*up)(const void* context) = nullptr;
    void (*send)(void* context, uint32_t defineId, uint32_t arrayCount, uint32_t unitSize,
                 const void* data) = nullptr;

    bool isUp() const { return up != nullptr && up(context); }
};

// The three write paths of the input side and the writer that empties them. The three mutexes
// are never held together.
class WritePaths {
  public:
    explicit WritePaths(WriteLink link);

    // Ordered: every value arrives, in order; full, the queue forgets the oldest record.
    void QueueWrite(uint32_t defineId, const double* value);
    // Latest value only: a rewrite before the next flush replaces the pending value.
    void SetLatestWrite(uint32_t defineId, const void* data, uint32_t size);
    // Empties the queue, the latest values and the held values; the held set stays.
    void clear();
    void resetDroppedWrites() { droppedWrites_.store(0, std::memory_order_relaxed); }
    // Records the queue had to forget since the last reset.
    uint64_t droppedWrites() const { return droppedWrites_.load(std::memory_order_relaxed); }

    // One writer pass at `now`: up to 10 queued records; every 10 ms up to 20 latest values;
    // every 200 ms each held value. Sends only while the link is up.
    void writerPass(TimePoint now);

  private:
    void send(uint32_t defineId, uint32_t arrayCount, uint32_t unitSize, const void* data) {
        link_.send(link_.context, defineId, arrayCount, unitSize, data);
    }

    WriteLink link_;
    std::mutex queueMutex_;
    WriteQueue writeQueue_;
    std::mutex latestMutex_;
    LatestWrites latestWrites_;
    std::mutex heldMutex_;
    // Depends only on constant tables: built at construction, so no worker ever sees it change.
    const std::unordered_set<uint32_t> heldDefinitions_;
    std::unordered_map<uint32_t, PendingWrite> heldWrites_;
    std::atomic<uint64_t> droppedWrites_{0};
    // Writer thread only; the first pass after a clear starts both flush intervals.
    bool flushClockSet_ = false;
    TimePoint lastLatestFlush_{};
    TimePoint lastHeldFlush_{};
};

}  // namespace fenixA320
