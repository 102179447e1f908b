// The SimConnect message reader on raw bytes laid out at the client library's offsets; the
// structures' layouts themselves are pinned at compile time in the header.
#include "platform/simconnect_abi.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace sc = helmbridge::simconnect;

namespace {

// A message buffer filled byte by byte, independent of the structures under test.
template <std::size_t N>
struct RawMessage {
    alignas(8) std::array<unsigned char, N> bytes{};

    template <typename T>
    void put(std::size_t offset, T value) {
        std::memcpy(bytes.data() + offset, &value, sizeof(value));
    }
    const sc::SIMCONNECT_RECV* received() const {
        return reinterpret_cast<const sc::SIMCONNECT_RECV*>(bytes.data());
    }
};

}  // namespace

// The message is longer than its structure: the values follow the 40-byte header.
TEST(SimConnectAbi, SimObjectDataReadsBackWithItsValuesAfterTheHeader) {
    RawMessage<56> raw;
    raw.put(0, 56u);
    raw.put(36, 2u);  // datums
    raw.put(40, 123.25);
    raw.put(48, -7.5);
    sc::SIMCONNECT_RECV_SIMOBJECT_DATA data{};
    ASSERT_TRUE(sc::readMessage(raw.received(), 56, data));
    EXPECT_EQ(data.dwDefineCount, 2u);
    double values[2] = {};
    std::memcpy(values, sc::simObjectPayload(raw.received()), sizeof(values));
    EXPECT_EQ(values[0], 123.25);
    EXPECT_EQ(values[1], -7.5);
}

TEST(SimConnectAbi, ReadMessageRefusesMessagesShorterThanTheirStructure) {
    RawMessage<284> state;
    state.put(0, 100u);  // claims less than a SYSTEM_STATE
    state.put(16, 1u);
    std::memcpy(state.bytes.data() + 24, "Sim", 4);
    sc::SIMCONNECT_RECV_SYSTEM_STATE answer{};
    EXPECT_FALSE(sc::readMessage(state.received(), 284, answer));

    state.put(0, 284u);
    EXPECT_FALSE(sc::readMessage(state.received(), 283, answer));  // buffer shorter than claimed
    EXPECT_FALSE(sc::readMessage(nullptr, 284, answer));
    EXPECT_EQ(answer.dwInteger, 0u);  // nothing copied by a refusal
    ASSERT_TRUE(sc::readMessage(state.received(), 284, answer));
    EXPECT_EQ(answer.dwInteger, 1u);
    EXPECT_STREQ(answer.szString, "Sim");
}
