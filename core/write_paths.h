// Containers of the three write paths: the ordered queue, latest values and held values.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <unordered_map>
#include <vector>

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

    const WriteRecord& at(std::size_t i) const { return ring_[(head_ + i) % kCapacity]; }
    std::size_t size() const { return size_; }
    void clear() { head_ = size_ = 0; }

  private:
    std::vector<WriteRecord> ring_;
    std::size_t head_ = 0;
    std::size_t size_ = 0;
};

// Latest value per definition, flushed oldest-dirtied first so no entry starves behind others.
class LatestWrites {
  public:
    void set(uint32_t defineId, const void* data, uint32_t size) {
        PendingWrite& entry = entries_[defineId];
        if (!entry.dirty) dirtyOrder_.push_back(defineId);
        entry.assign(data, size);
    }

    // Sends up to `max` dirty entries in the order they became dirty, clearing their flags.
    template <typename Send>
    std::size_t flush(std::size_t max, Send&& send) {
        std::size_t sent = 0;
        while (sent < max && !dirtyOrder_.empty()) {
            const uint32_t id = dirtyOrder_.front();
            dirtyOrder_.pop_front();
            PendingWrite& entry = entries_[id];
            send(id, entry);
            entry.dirty = false;
            ++sent;
        }
        return sent;
    }

    const PendingWrite* find(uint32_t defineId) const {
        const auto it = entries_.find(defineId);
        return it == entries_.end() ? nullptr : &it->second;
    }
    std::size_t dirtyCount() const { return dirtyOrder_.size(); }
    void clear() {
        entries_.clear();
        dirtyOrder_.clear();
    }

  private:
    std::unordered_map<uint32_t, PendingWrite> entries_;
    std::deque<uint32_t> dirtyOrder_;
};

}  // namespace fenixA320
