// Tests of the SimConnect declarations: message layouts read back from raw bytes, and constants.
#include "platform/simconnect_abi.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace sc = helmbridge::simconnect;

namespace {

// A message buffer filled byte by byte at the client library's offsets, independent of the
// structures under test.
template <std::size_t N>
struct RawMessage {
    alignas(8) std::array<unsigned char, N> bytes{};

    void putDword(std::size_t offset, std::uint32_t value) {
        std::memcpy(bytes.data() + offset, &value, sizeof(value));
    }
    template <typename T>
    void put(std::size_t offset, T value) {
        std::memcpy(bytes.data() + offset, &value, sizeof(value));
    }
    const sc::SIMCONNECT_RECV* received() const {
        return reinterpret_cast<const sc::SIMCONNECT_RECV*>(bytes.data());
    }
};

}  // namespace

TEST(SimConnectAbi, SimObjectDataReadsBackFromTheLibraryLayout) {
    RawMessage<56> raw;
    raw.putDword(0, 56);
    raw.putDword(8, 8);      // SIMCONNECT_RECV_ID_SIMOBJECT_DATA
    raw.putDword(12, 5);     // request
    raw.putDword(20, 3009);  // definition
    raw.putDword(28, 1);     // entry
    raw.putDword(32, 1);     // out of
    raw.putDword(36, 2);     // datums
    raw.put(40, 123.25);
    raw.put(48, -7.5);

    sc::SIMCONNECT_RECV_SIMOBJECT_DATA data{};
    ASSERT_TRUE(sc::readMessage(raw.received(), 56, data));
    EXPECT_EQ(data.dwID, static_cast<sc::DWORD>(sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA));
    EXPECT_EQ(data.dwRequestID, 5u);
    EXPECT_EQ(data.dwDefineID, 3009u);
    EXPECT_EQ(data.dwDefineCount, 2u);
    double values[2] = {};
    std::memcpy(values, sc::simObjectPayload(raw.received()), sizeof(values));
    EXPECT_EQ(values[0], 123.25);
    EXPECT_EQ(values[1], -7.5);
}

TEST(SimConnectAbi, SystemStateAndFileEventReadBackFromTheLibraryLayout) {
    RawMessage<284> state;
    state.putDword(0, 284);
    state.putDword(8, 15);
    state.putDword(12, 3);
    state.putDword(16, 1);
    state.put(20, 2.5f);
    std::memcpy(state.bytes.data() + 24, "Sim", 4);
    sc::SIMCONNECT_RECV_SYSTEM_STATE answer{};
    ASSERT_TRUE(sc::readMessage(state.received(), 284, answer));
    EXPECT_EQ(answer.dwRequestID, 3u);
    EXPECT_EQ(answer.dwInteger, 1u);
    EXPECT_EQ(answer.fFloat, 2.5f);
    EXPECT_STREQ(answer.szString, "Sim");

    RawMessage<288> file;
    file.putDword(0, 288);
    file.putDword(8, 6);
    file.putDword(16, 9002);
    std::memcpy(file.bytes.data() + 24, "a.air", 6);
    file.putDword(284, 77);
    sc::SIMCONNECT_RECV_EVENT_FILENAME event{};
    ASSERT_TRUE(sc::readMessage(file.received(), 288, event));
    EXPECT_EQ(event.uEventID, 9002u);
    EXPECT_STREQ(event.szFileName, "a.air");
    EXPECT_EQ(event.dwFlags, 77u);
}

TEST(SimConnectAbi, ReadMessageRefusesMessagesShorterThanTheirStructure) {
    RawMessage<284> state;
    state.putDword(0, 100);  // claims less than a SYSTEM_STATE
    sc::SIMCONNECT_RECV_SYSTEM_STATE answer{};
    EXPECT_FALSE(sc::readMessage(state.received(), 284, answer));

    state.putDword(0, 284);
    EXPECT_FALSE(sc::readMessage(state.received(), 283, answer));  // buffer shorter than claimed
    EXPECT_TRUE(sc::readMessage(state.received(), 284, answer));
    EXPECT_FALSE(sc::readMessage(nullptr, 284, answer));
}
