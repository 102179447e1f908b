// Fuzz target: the simulator message handler fed arbitrary messages of arbitrary sizes.
//
// The input is a sequence of records, decoded until the bytes run out:
//   shape   1 byte   bits 0-3 pick a message id to stamp (15: keep the raw bytes), bit 4 stamps a
//                    request or event id the handler knows, bit 5 makes dwSize equal the buffer
//                    length, bits 6-7 advance the clock by 0, 1, 5 or 61 seconds
//   length  2 bytes  little endian; the buffer is this long, or shorter when the input ends
//   bytes   length   the message
// Each message lands in a heap block of exactly its length, so any read past the size the
// handler was given is an overread that AddressSanitizer reports.
#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/core.h"
#include "fuzz/fuzz_targets.h"

namespace helmbridge::fuzz {
namespace {

namespace sc = helmbridge::simconnect;
using fenixA320::FenixA320Core;
using fenixA320::TimePoint;

// No client library: registration and re-requests return before any call, so only the
// handler's own logic runs.
const platform::Platform kNoSimulator{
    [] { return static_cast<const platform::SimConnectApi*>(nullptr); },
    [] { return platform::ProbeResult::kNotFound; },
    [] { return false; },
    [](const char*) {},
};

constexpr sc::DWORD kMessageIds[15] = {
    sc::SIMCONNECT_RECV_ID_NULL,           sc::SIMCONNECT_RECV_ID_EXCEPTION,
    sc::SIMCONNECT_RECV_ID_OPEN,           sc::SIMCONNECT_RECV_ID_QUIT,
    sc::SIMCONNECT_RECV_ID_EVENT,          sc::SIMCONNECT_RECV_ID_EVENT_FILENAME,
    sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA, sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA,
    sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA, sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA,
    sc::SIMCONNECT_RECV_ID_SYSTEM_STATE,   sc::SIMCONNECT_RECV_ID_EVENT,
    sc::SIMCONNECT_RECV_ID_EVENT_FILENAME, 0xFFFFFFFFu,
    sc::SIMCONNECT_RECV_ID_EVENT_FRAME,
};
constexpr sc::DWORD kRequestIds[6] = {0, 1, 4, 5, 3, 2};
constexpr sc::DWORD kSecondsStep[4] = {0, 1, 5, 61};

void putWord(unsigned char* message, std::size_t length, std::size_t offset, sc::DWORD value) {
    if (offset + sizeof(value) <= length) std::memcpy(message + offset, &value, sizeof(value));
}

// Stamps the fields the shape byte asks for, never past the buffer.
void stamp(unsigned char shape, unsigned char* message, std::size_t length) {
    const sc::DWORD id = (shape & 0x0F) == 0x0F ? 0 : kMessageIds[shape & 0x0F];
    if ((shape & 0x0F) != 0x0F) putWord(message, length, 8, id);
    if ((shape & 0x10) != 0) {
        // An event's id sits at offset 16, a request's at 12; the byte found there picks one.
        const bool event =
            id == sc::SIMCONNECT_RECV_ID_EVENT || id == sc::SIMCONNECT_RECV_ID_EVENT_FILENAME;
        const std::size_t at = event ? 16 : 12;
        const unsigned char pick = length > at ? message[at] : 0;
        putWord(message, length, at, event ? 9001 + pick % 5u : kRequestIds[pick % 6u]);
    }
    if ((shape & 0x20) != 0) putWord(message, length, 0, static_cast<sc::DWORD>(length));
}

}  // namespace

int simMessageOneInput(const uint8_t* data, std::size_t size) {
    static FenixA320Core& handler = []() -> FenixA320Core& {
        auto* created = new FenixA320Core(kNoSimulator);  // lives for the whole run
        created->BuildInputLogic();
        return *created;
    }();
    TimePoint now = TimePoint{} + std::chrono::hours(1);
    std::size_t at = 0;
    while (at + 3 <= size) {
        const unsigned char shape = data[at];
        const std::size_t claimed = data[at + 1] | (std::size_t{data[at + 2]} << 8);
        at += 3;
        const std::size_t length = claimed < size - at ? claimed : size - at;
        // Exactly `length` bytes, allocated apart from the input so ASan sees its end.
        std::vector<unsigned char> message(data + at, data + at + length);
        at += length;
        stamp(shape, message.data(), length);
        now += std::chrono::seconds(kSecondsStep[shape >> 6]);
        handler.handleSimMessage(reinterpret_cast<const sc::SIMCONNECT_RECV*>(message.data()),
                                 static_cast<sc::DWORD>(length), now);
    }
    // The connection pass reads what the messages left behind; without a client library it
    // calls nothing.
    handler.connectPass(now);
    return 0;
}

}  // namespace helmbridge::fuzz

#if defined(HELMBRIDGE_FUZZ_ENTRY)
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    return helmbridge::fuzz::simMessageOneInput(data, size);
}
#endif
