// A built core with an open connection and no workers, and readers of what it wrote.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "core/core.h"

namespace fenixA320::testing {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Values written since the last drain: queued records in order, and the dirty latest-value
// blocks by definition.
struct Writes {
    std::vector<std::pair<uint32_t, double>> queued;
    std::map<uint32_t, std::vector<double>> latest;

    std::vector<double> queuedTo(uint32_t defineId) const {
        std::vector<double> values;
        for (const auto& [id, value] : queued) {
            if (id == defineId) values.push_back(value);
        }
        return values;
    }
    bool none() const { return queued.empty() && latest.empty(); }
};

class InputHarness : public ::testing::Test {
  protected:
    void SetUp() override {
        core.BuildInputLogic();
        core.connected = true;
        core.simHandle = reinterpret_cast<void*>(0x1);
        t0 = core.input.builtAt + seconds(1);  // past the key gates that start at build
    }
    void TearDown() override {
        core.simHandle = nullptr;  // never a real connection: nothing to close
        core.connected = false;
    }

    Writes drain() {
        Writes writes;
        WriteRecord record;
        while (core.writeQueue.take(&record, 1) == 1) {
            double value = 0.0;
            std::memcpy(&value, record.bytes.data(), sizeof value);
            writes.queued.emplace_back(record.defineId, value);
        }
        core.latestWrites.flush(100000, [&](uint32_t id, const PendingWrite& entry) {
            std::vector<double> values(entry.bytes.size() / sizeof(double));
            std::memcpy(values.data(), entry.bytes.data(), values.size() * sizeof(double));
            writes.latest[id] = std::move(values);
        });
        return writes;
    }

    // The single value latest-written to `defineId` since the last drain, or NaN.
    static double latestValue(const Writes& writes, uint32_t defineId) {
        const auto found = writes.latest.find(defineId);
        return found == writes.latest.end() || found->second.size() != 1 ? std::nan("")
                                                                         : found->second[0];
    }

    void digital(int32_t id, bool state, TimePoint at) { core.setDigitIn(id, state, at); }
    void digital(int32_t id, bool state) { digital(id, state, t0); }

    FenixA320Core core;
    TimePoint t0{};
};

}  // namespace fenixA320::testing
