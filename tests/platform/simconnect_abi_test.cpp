// The SimConnect message reader on raw bytes laid out at the client library's offsets; the
// structures' layouts themselves are pinned at compile time in the header.
#include "platform/simconnect_abi.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <utility>

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

// A message is read only when the buffer and its own size both cover the structure, and nothing
// is copied otherwise; a data message is longer than its structure, its values after the 40-byte
// header.
TEST(SimConnectAbi, ReadMessageRefusesShortMessagesAndFindsTheValuesAfterTheHeader) {
    RawMessage<284> state;
    state.put(0, 100u);  // claims less than a SYSTEM_STATE
    state.put(16, 1u);
    std::memcpy(state.bytes.data() + 24, "Sim", 4);
    sc::SIMCONNECT_RECV_SYSTEM_STATE answer{};
    EXPECT_FALSE(sc::readMessage(state.received(), 284, answer));
    state.put(0, 284u);
    EXPECT_FALSE(sc::readMessage(state.received(), 283, answer));  // buffer shorter than claimed
    EXPECT_FALSE(sc::readMessage(nullptr, 284, answer));
    EXPECT_EQ(answer.dwInteger, 0u);
    ASSERT_TRUE(sc::readMessage(state.received(), 284, answer));
    EXPECT_EQ(answer.dwInteger, 1u);
    EXPECT_STREQ(answer.szString, "Sim");

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

// The client library's numbers; the stand-in shares this header, so only this pins them. Every
// message id and exception named here; periods and data types are numbered without gaps, so the
// last ones pin their count and the used ones stand for their order.
TEST(SimConnectAbi, EnumsCarryTheClientLibrarysNumbers) {
    const std::pair<int, int> named[] = {{sc::SIMCONNECT_RECV_ID_EXCEPTION, 1},
                                         {sc::SIMCONNECT_RECV_ID_OPEN, 2},
                                         {sc::SIMCONNECT_RECV_ID_QUIT, 3},
                                         {sc::SIMCONNECT_RECV_ID_EVENT, 4},
                                         {sc::SIMCONNECT_RECV_ID_EVENT_FILENAME, 6},
                                         {sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA, 8},
                                         {sc::SIMCONNECT_RECV_ID_SYSTEM_STATE, 15},
                                         {sc::SIMCONNECT_EXCEPTION_ERROR, 1},
                                         {sc::SIMCONNECT_EXCEPTION_SIZE_MISMATCH, 2},
                                         {sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3},
                                         {sc::SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 7},
                                         {sc::SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE, 18},
                                         {sc::SIMCONNECT_EXCEPTION_INVALID_ARRAY, 21},
                                         {sc::SIMCONNECT_EXCEPTION_INVALID_ENUM, 27},
                                         {sc::SIMCONNECT_PERIOD_SIM_FRAME, 3},
                                         {sc::SIMCONNECT_PERIOD_SECOND, 4},
                                         {sc::SIMCONNECT_DATATYPE_FLOAT64, 4},
                                         {sc::SIMCONNECT_DATATYPE_STRING256, 9},
                                         {sc::SIMCONNECT_DATATYPE_XYZ, 16}};
    for (const auto& [value, number] : named) EXPECT_EQ(value, number);
}
