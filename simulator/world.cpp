// The stand-in's simulated simulator: what each client call does, frames, events and records.
#include "simulator/world.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <thread>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace helmbridge::standin {
namespace {

constexpr std::uintptr_t kHandleBase = 0x51C00000;
constexpr std::uintptr_t kHandleStep = 0x10;
constexpr sc::DWORD kMessageVersion = 4;
// What a dead link's CallDispatch returns: an NTSTATUS-style failure, as the real library gives
// after the simulator has gone, rather than E_FAIL.
constexpr sc::HRESULT kDeadLinkResult = static_cast<sc::HRESULT>(0xC000020Du);
// Bounds that keep a forgotten dispatch loop or an endless demo from eating the memory.
constexpr std::size_t kMaxPendingBytes = 16u << 20;
constexpr std::size_t kMaxRecordedCalls = 200000;
constexpr std::uint64_t kMaxSetDataBytes = 1u << 20;

constexpr const char* kDefaultTitle = "Stand-in Airliner";
constexpr const char* kClockVariable = "n_mip_clock_utc";
constexpr double kInitialClock = 43200.0;

std::string lowerCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

bool isLVarName(std::string_view name) {
    return name.size() > 2 && (name[0] == 'L' || name[0] == 'l') && name[1] == ':';
}

// The store's key: lower case, without the "L:" prefix.
std::string lvarKey(std::string_view name) {
    return lowerCase(isLVarName(name) ? name.substr(2) : name);
}

void copyText(char* destination, std::size_t capacity, const char* source) {
    if (capacity == 0) return;
    std::size_t n = 0;
    if (source != nullptr) {
        while (n + 1 < capacity && source[n] != '\0') ++n;
        std::memcpy(destination, source, n);
    }
    std::memset(destination + n, 0, capacity - n);
}

template <typename Structure>
Message toMessage(const Structure& structure) {
    Message message(sizeof(Structure));
    std::memcpy(message.data(), &structure, sizeof(Structure));
    return message;
}

template <typename Integer>
Integer saturate(double value) {
    if (std::isnan(value)) return 0;
    if (value <= static_cast<double>(std::numeric_limits<Integer>::min())) {
        return std::numeric_limits<Integer>::min();
    }
    if (value >= static_cast<double>(std::numeric_limits<Integer>::max())) {
        return std::numeric_limits<Integer>::max();
    }
    return static_cast<Integer>(value);
}

template <typename Value>
void put(unsigned char* at, Value value) {
    std::memcpy(at, &value, sizeof(value));
}

template <typename Value>
Value take(const unsigned char* at) {
    Value value{};
    std::memcpy(&value, at, sizeof(value));
    return value;
}

void encodeNumber(unsigned char* at, sc::SIMCONNECT_DATATYPE type, double value) {
    switch (type) {
        case sc::SIMCONNECT_DATATYPE_INT32:
            put(at, saturate<std::int32_t>(value));
            break;
        case sc::SIMCONNECT_DATATYPE_INT64:
            put(at, saturate<std::int64_t>(value));
            break;
        case sc::SIMCONNECT_DATATYPE_FLOAT32:
            put(at, static_cast<float>(value));
            break;
        case sc::SIMCONNECT_DATATYPE_FLOAT64:
            put(at, value);
            break;
        default:
            break;  // strings of a numeric variable stay zero
    }
}

bool decodeNumber(const unsigned char* at, sc::SIMCONNECT_DATATYPE type, double& value) {
    switch (type) {
        case sc::SIMCONNECT_DATATYPE_INT32:
            value = take<std::int32_t>(at);
            return true;
        case sc::SIMCONNECT_DATATYPE_INT64:
            value = static_cast<double>(take<std::int64_t>(at));
            return true;
        case sc::SIMCONNECT_DATATYPE_FLOAT32:
            value = take<float>(at);
            return true;
        case sc::SIMCONNECT_DATATYPE_FLOAT64:
            value = take<double>(at);
            return true;
        default:
            return false;
    }
}

bool isKnownSystemEvent(std::string_view lowerName) {
    return lowerName == "pause" || lowerName == "sim" || lowerName == "crashed" ||
           lowerName == "flightloaded" || lowerName == "aircraftloaded" ||
           lowerName == "simstart" || lowerName == "simstop";
}

StandinCall newCall(StandinFunction function, sc::HANDLE handle) {
    StandinCall call{};
    call.threadId = World::currentThreadId();
    call.function = function;
    call.handle = handle;
    return call;
}

}  // namespace

World& World::instance() {
    static auto* world = new World();  // intentionally never destroyed, see the header
    return *world;
}

World::World() { resetStateLocked(); }

std::uint64_t World::currentThreadId() {
#if defined(_WIN32)
    return GetCurrentThreadId();
#else
    return static_cast<std::uint64_t>(gettid());
#endif
}

// ---- Client calls
// --------------------------------------------------------------------------------

Connection* World::connectionForCall(sc::HANDLE handle) {
    const auto key = reinterpret_cast<std::uintptr_t>(handle);
    if (key == 0) {
        ++counters_.nullHandleCalls;
        return nullptr;
    }
    if (const auto it = connections_.find(key); it != connections_.end()) return &it->second;
    if (issuedHandles_.contains(key)) {
        ++counters_.closedHandleCalls;
    } else {
        ++counters_.unknownHandleCalls;
    }
    ++counters_.misuseCalls;
    return nullptr;
}

Connection* World::sendingConnection(sc::HANDLE handle, StandinCall& call) {
    Connection* connection = connectionForCall(handle);
    if (connection == nullptr || connection->dead) return nullptr;
    call.sendId = ++connection->lastSendId;
    return connection;
}

sc::HRESULT World::reject(Connection& connection, RecordedCall& record,
                          sc::SIMCONNECT_EXCEPTION exception, sc::DWORD argument) {
    sc::SIMCONNECT_RECV_EXCEPTION message{};
    message.dwSize = sizeof(message);
    message.dwVersion = kMessageVersion;
    message.dwID = sc::SIMCONNECT_RECV_ID_EXCEPTION;
    message.dwException = static_cast<sc::DWORD>(exception);
    message.dwSendID = record.call.sendId;
    message.dwIndex = argument;
    queueLocked(connection, toMessage(message));
    record.call.exception = message.dwException;
    record.call.exceptionIndex = argument;
    ++counters_.rejectedCalls;
    return finish(record, sc::kSOk);
}

sc::HRESULT World::finish(RecordedCall& record, sc::HRESULT result) {
    record.call.result = result;
    if (calls_.size() < kMaxRecordedCalls) {
        calls_.push_back(std::move(record));
    } else {
        ++counters_.droppedCalls;
    }
    return result;
}

sc::HRESULT World::open(sc::HANDLE* handleOut, const char* name, sc::HWND window,
                        sc::DWORD userEvent, sc::HANDLE eventHandle, sc::DWORD configIndex) {
    RecordedCall record{newCall(kStandinOpen, nullptr), {}};
    record.call.window = window;
    record.call.eventHandle = eventHandle;
    record.call.userEvent = userEvent;
    record.call.configIndex = configIndex;
    copyText(record.call.name, sizeof(record.call.name), name);

    std::lock_guard lock(mutex_);
    ++counters_.calls;
    if (handleOut == nullptr) {
        ++counters_.failedOpens;
        return finish(record, sc::kEFail);
    }
    if (openResult_ != sc::kSOk) {
        *handleOut = nullptr;
        ++counters_.failedOpens;
        return finish(record, openResult_);
    }
    const std::uintptr_t key = kHandleBase + kHandleStep * ++nextHandle_;
    Connection& connection = connections_[key];
    connection.handle = key;
    connection.clientName = name != nullptr ? name : "";
    connection.lastSendId = 1;
    record.call.sendId = 1;
    issuedHandles_.insert(key);

    sc::SIMCONNECT_RECV_OPEN opened{};
    opened.dwSize = sizeof(opened);
    opened.dwVersion = kMessageVersion;
    opened.dwID = sc::SIMCONNECT_RECV_ID_OPEN;
    copyText(opened.szApplicationName, sizeof(opened.szApplicationName), "SimConnect stand-in");
    opened.dwApplicationVersionMajor = 1;
    opened.dwSimConnectVersionMajor = 11;
    queueLocked(connection, toMessage(opened));

    *handleOut = std::bit_cast<sc::HANDLE>(key);  // a number the client never dereferences
    record.call.handle = *handleOut;
    ++counters_.opens;
    return finish(record, sc::kSOk);
}

sc::HRESULT World::close(sc::HANDLE handle) {
    RecordedCall record{newCall(kStandinClose, handle), {}};
    std::chrono::milliseconds delay{0};
    {
        std::lock_guard lock(mutex_);
        ++counters_.calls;
        Connection* connection = connectionForCall(handle);
        if (connection == nullptr) return finish(record, sc::kEFail);
        record.call.sendId = ++connection->lastSendId;
        // Closing discards everything the client defined, as the real server does.
        connections_.erase(connection->handle);
        delay = std::chrono::milliseconds(closeDelayMs_);
        finish(record, sc::kSOk);
    }
    // The real library takes its time to take the link down; other threads carry on meanwhile.
    std::this_thread::sleep_for(delay);
    return sc::kSOk;
}

sc::HRESULT World::callDispatch(sc::HANDLE handle, sc::DispatchProc dispatch, void* context) {
    RecordedCall record{newCall(kStandinCallDispatch, handle), {}};
    record.call.context = context;
    std::deque<Message> batch;
    {
        std::lock_guard lock(mutex_);
        ++counters_.calls;
        Connection* connection = connectionForCall(handle);
        if (connection == nullptr || dispatch == nullptr) return finish(record, sc::kEFail);
        if (connection->dead && connection->pending.empty()) {
            return finish(record, kDeadLinkResult);
        }
        batch.swap(connection->pending);
        connection->pendingBytes = 0;
        record.call.delivered = static_cast<std::uint32_t>(batch.size());
        finish(record, sc::kSOk);
    }
    // The callback calls back into the stand-in, so the lock is not held while it runs.
    const auto key = reinterpret_cast<std::uintptr_t>(handle);
    for (Message& message : batch) {
        {
            std::lock_guard lock(mutex_);
            if (!connections_.contains(key)) break;  // closed by the callback or another thread
            if (take<sc::DWORD>(message.data() + offsetof(sc::SIMCONNECT_RECV, dwID)) ==
                sc::SIMCONNECT_RECV_ID_EXCEPTION) {
                ++counters_.deliveredExceptions;
            }
        }
        dispatch(reinterpret_cast<sc::SIMCONNECT_RECV*>(message.data()),
                 static_cast<sc::DWORD>(message.size()), context);
    }
    return sc::kSOk;
}

sc::HRESULT World::requestSystemState(sc::HANDLE handle, sc::DWORD requestId, const char* state) {
    RecordedCall record{newCall(kStandinRequestSystemState, handle), {}};
    record.call.id = requestId;
    copyText(record.call.name, sizeof(record.call.name), state);

    std::lock_guard lock(mutex_);
    ++counters_.calls;
    Connection* connection = sendingConnection(handle, record.call);
    if (connection == nullptr) return finish(record, sc::kEFail);
    sc::SIMCONNECT_RECV_SYSTEM_STATE answer{};
    answer.dwSize = sizeof(answer);
    answer.dwVersion = kMessageVersion;
    answer.dwID = sc::SIMCONNECT_RECV_ID_SYSTEM_STATE;
    answer.dwRequestID = requestId;
    const std::string name = lowerCase(state != nullptr ? state : "");
    if (name == "sim") {
        answer.dwInteger = simRunning_ ? 1 : 0;
    } else if (name == "aircraftloaded") {
        copyText(answer.szString, sizeof(answer.szString), aircraftPath_.c_str());
    } else if (name == "flightloaded") {
        copyText(answer.szString, sizeof(answer.szString), flightPath_.c_str());
    } else if (name != "dialogmode" && name != "flightplan") {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3);
    }
    if (keepAliveAnswers_) queueLocked(*connection, toMessage(answer));
    return finish(record, sc::kSOk);
}

sc::HRESULT World::addToDataDefinition(sc::HANDLE handle, sc::DWORD defineId, const char* datumName,
                                       const char* unitsName, sc::SIMCONNECT_DATATYPE type,
                                       float epsilon, sc::DWORD datumId) {
    RecordedCall record{newCall(kStandinAddToDataDefinition, handle), {}};
    record.call.id = defineId;
    record.call.datumType = type;
    record.call.epsilon = epsilon;
    record.call.datumId = datumId;
    copyText(record.call.name, sizeof(record.call.name), datumName);
    copyText(record.call.unit, sizeof(record.call.unit), unitsName);

    std::lock_guard lock(mutex_);
    ++counters_.calls;
    Connection* connection = sendingConnection(handle, record.call);
    if (connection == nullptr) return finish(record, sc::kEFail);
    if (datumName == nullptr || datumName[0] == '\0' ||
        (!unknownVariable_.empty() && lowerCase(datumName) == unknownVariable_)) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3);
    }
    const std::uint32_t size = sc::datumSize(type);
    if (size == 0) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE, 5);
    }
    auto [it, added] = connection->definitions.try_emplace(defineId);
    if (added) connection->definitionOrder.push_back(defineId);
    Datum datum;
    datum.name = datumName;
    datum.unit = unitsName != nullptr ? unitsName : "";
    datum.type = type;
    datum.epsilon = epsilon;
    datum.datumId = datumId;
    datum.size = size;
    if (isLVarName(datum.name)) datum.lvarKey = lvarKey(datum.name);
    datum.isTitle = lowerCase(datum.name) == "title" && type >= sc::SIMCONNECT_DATATYPE_STRING8 &&
                    type <= sc::SIMCONNECT_DATATYPE_STRING260;
    it->second.datums.push_back(std::move(datum));
    it->second.size += size;
    return finish(record, sc::kSOk);
}

sc::HRESULT World::requestDataOnSimObject(sc::HANDLE handle, sc::DWORD requestId,
                                          sc::DWORD defineId, sc::DWORD objectId,
                                          sc::SIMCONNECT_PERIOD period, sc::DWORD flags,
                                          sc::DWORD origin, sc::DWORD interval, sc::DWORD limit) {
    RecordedCall record{newCall(kStandinRequestDataOnSimObject, handle), {}};
    StandinCall& call = record.call;
    call.id = requestId;
    call.defineId = defineId;
    call.objectId = objectId;
    call.period = period;
    call.flags = flags;
    call.origin = origin;
    call.interval = interval;
    call.limit = limit;

    std::lock_guard lock(mutex_);
    ++counters_.calls;
    Connection* connection = sendingConnection(handle, record.call);
    if (connection == nullptr) return finish(record, sc::kEFail);
    if (period < sc::SIMCONNECT_PERIOD_NEVER || period > sc::SIMCONNECT_PERIOD_SECOND) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_INVALID_ENUM, 5);
    }
    if (period == sc::SIMCONNECT_PERIOD_NEVER) {
        connection->requests.erase(requestId);
        return finish(record, sc::kSOk);
    }
    if (!connection->definitions.contains(defineId)) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3);
    }
    // Only the user's aircraft exists, and tagged blocks are not produced.
    if (objectId != sc::SIMCONNECT_OBJECT_ID_USER) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 4);
    }
    if ((flags & sc::SIMCONNECT_DATA_REQUEST_FLAG_TAGGED) != 0) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_ERROR, 6);
    }
    // Re-using a request id replaces the earlier request.
    Request& request = connection->requests[requestId];
    request = Request{};
    request.info =
        StandinRequest{requestId, defineId, objectId, period, flags, origin, interval, limit, 0};
    return finish(record, sc::kSOk);
}

sc::HRESULT World::subscribeToSystemEvent(sc::HANDLE handle, sc::DWORD eventId, const char* name) {
    RecordedCall record{newCall(kStandinSubscribeToSystemEvent, handle), {}};
    record.call.id = eventId;
    copyText(record.call.name, sizeof(record.call.name), name);

    std::lock_guard lock(mutex_);
    ++counters_.calls;
    Connection* connection = sendingConnection(handle, record.call);
    if (connection == nullptr) return finish(record, sc::kEFail);
    const std::string lower = lowerCase(name != nullptr ? name : "");
    if (!isKnownSystemEvent(lower)) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3);
    }
    connection->subscriptions[eventId] = lower;
    // Pause and Sim report the current state right away.
    if (lower == "pause" || lower == "sim") {
        sc::SIMCONNECT_RECV_EVENT event{};
        event.dwSize = sizeof(event);
        event.dwVersion = kMessageVersion;
        event.dwID = sc::SIMCONNECT_RECV_ID_EVENT;
        event.uGroupID = sc::SIMCONNECT_RECV_EVENT_UNKNOWN_GROUP;
        event.uEventID = eventId;
        event.dwData = (lower == "pause" ? paused_ : simRunning_) ? 1 : 0;
        queueLocked(*connection, toMessage(event));
    }
    return finish(record, sc::kSOk);
}

sc::HRESULT World::unsubscribeFromSystemEvent(sc::HANDLE handle, sc::DWORD eventId) {
    RecordedCall record{newCall(kStandinUnsubscribeFromSystemEvent, handle), {}};
    record.call.id = eventId;
    std::lock_guard lock(mutex_);
    ++counters_.calls;
    Connection* connection = sendingConnection(handle, record.call);
    if (connection == nullptr) return finish(record, sc::kEFail);
    if (connection->subscriptions.erase(eventId) == 0) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2);
    }
    return finish(record, sc::kSOk);
}

sc::HRESULT World::clearDataDefinition(sc::HANDLE handle, sc::DWORD defineId) {
    RecordedCall record{newCall(kStandinClearDataDefinition, handle), {}};
    record.call.id = defineId;
    std::lock_guard lock(mutex_);
    ++counters_.calls;
    Connection* connection = sendingConnection(handle, record.call);
    if (connection == nullptr) return finish(record, sc::kEFail);
    if (connection->definitions.erase(defineId) == 0) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2);
    }
    auto& order = connection->definitionOrder;
    order.erase(std::remove(order.begin(), order.end(), defineId), order.end());
    // Requests on the definition stay, but send nothing until it is defined again.
    return finish(record, sc::kSOk);
}

sc::HRESULT World::setDataOnSimObject(sc::HANDLE handle, sc::DWORD defineId, sc::DWORD objectId,
                                      sc::DWORD flags, sc::DWORD arrayCount, sc::DWORD unitSize,
                                      const void* data) {
    RecordedCall record{newCall(kStandinSetDataOnSimObject, handle), {}};
    StandinCall& call = record.call;
    call.id = defineId;
    call.objectId = objectId;
    call.flags = flags;
    call.arrayCount = arrayCount;
    call.unitSize = unitSize;
    // An array count of 0 means one element.
    const std::uint64_t elements = arrayCount == 0 ? 1 : arrayCount;
    const std::uint64_t total = elements * unitSize;
    const bool readable = data != nullptr && total <= kMaxSetDataBytes;
    if (readable) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        record.data.assign(bytes, bytes + total);
        call.dataSize = static_cast<std::uint32_t>(total);
    }

    std::lock_guard lock(mutex_);
    ++counters_.calls;
    // Data the library cannot copy never leaves the client.
    Connection* connection = connectionForCall(handle);
    if (connection == nullptr || connection->dead || !readable) return finish(record, sc::kEFail);
    call.sendId = ++connection->lastSendId;
    const auto definition = connection->definitions.find(defineId);
    if (definition == connection->definitions.end()) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2);
    }
    if (objectId != sc::SIMCONNECT_OBJECT_ID_USER) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3);
    }
    if ((flags & sc::SIMCONNECT_DATA_SET_FLAG_TAGGED) != 0) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_ERROR, 4);
    }
    if (elements != 1) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_INVALID_ARRAY, 5);
    }
    if (unitSize != definition->second.size) {
        return reject(*connection, record, sc::SIMCONNECT_EXCEPTION_SIZE_MISMATCH, 6);
    }
    // The values follow the definition's datums in order, each at its type's size.
    const unsigned char* at = record.data.data();
    for (const Datum& datum : definition->second.datums) {
        double value = 0.0;
        if (!datum.lvarKey.empty() && decodeNumber(at, datum.type, value)) {
            assignLVarLocked(datum.lvarKey, value);
        }
        at += datum.size;
    }
    return finish(record, sc::kSOk);
}

// ---- Frames ------------------------------------------------------------------------------------

void World::runFrames(std::uint64_t count) {
    std::lock_guard lock(mutex_);
    for (std::uint64_t i = 0; i < count; ++i) runFrameLocked();
}

void World::runFrameLocked() {
    ++frameCount_;
    advanceClockLocked();
    if (!simRunning_) return;  // no user aircraft, no data
    for (auto& [key, connection] : connections_) {
        if (connection.dead) continue;
        for (auto it = connection.requests.begin(); it != connection.requests.end();) {
            bool finished = false;
            serveRequestLocked(connection, it->second, finished);
            it = finished ? connection.requests.erase(it) : std::next(it);
        }
    }
}

void World::serveRequestLocked(Connection& connection, Request& request, bool& finished) {
    StandinRequest& info = request.info;
    bool due = false;
    switch (info.period) {
        case sc::SIMCONNECT_PERIOD_ONCE:
            due = true;
            finished = true;
            break;
        case sc::SIMCONNECT_PERIOD_VISUAL_FRAME:
        case sc::SIMCONNECT_PERIOD_SIM_FRAME:
            due = true;
            break;
        case sc::SIMCONNECT_PERIOD_SECOND:
            if (request.framesToNextSecond <= 1) {
                due = true;
                request.framesToNextSecond = framesPerSecond_;
            } else {
                --request.framesToNextSecond;
            }
            break;
        default:
            break;
    }
    if (!due) return;
    const auto definition = connection.definitions.find(info.defineId);
    if (definition == connection.definitions.end()) return;
    const std::uint64_t period = request.periods++;
    if (period < info.origin) return;
    if ((period - info.origin) % (std::uint64_t{info.interval} + 1) != 0) return;

    Message payload = dataBlockLocked(definition->second);
    const bool onlyChanges = (info.flags & sc::SIMCONNECT_DATA_REQUEST_FLAG_CHANGED) != 0;
    if (onlyChanges && request.sentBefore && payload == request.lastPayload) return;

    sc::SIMCONNECT_RECV_SIMOBJECT_DATA header{};
    header.dwSize = static_cast<sc::DWORD>(sc::kSimObjectDataHeaderSize + payload.size());
    header.dwVersion = kMessageVersion;
    header.dwID = sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA;
    header.dwRequestID = info.requestId;
    header.dwObjectID = info.objectId;
    header.dwDefineID = info.defineId;
    header.dwFlags = info.flags;
    header.dwentrynumber = 1;
    header.dwoutof = 1;
    header.dwDefineCount = static_cast<sc::DWORD>(definition->second.datums.size());
    Message message(header.dwSize);
    std::memcpy(message.data(), &header, sc::kSimObjectDataHeaderSize);
    std::copy(payload.begin(), payload.end(), message.begin() + sc::kSimObjectDataHeaderSize);
    queueLocked(connection, std::move(message));

    ++info.sends;
    request.sentBefore = true;
    if (onlyChanges) request.lastPayload = std::move(payload);
    if (info.limit != 0 && info.sends >= info.limit) finished = true;
}

Message World::dataBlockLocked(const Definition& definition) {
    Message block(definition.size, 0);
    unsigned char* at = block.data();
    for (const Datum& datum : definition.datums) {
        if (!datum.lvarKey.empty()) {
            const auto value = lvars_.find(datum.lvarKey);
            encodeNumber(at, datum.type, value != lvars_.end() ? value->second : 0.0);
        } else if (datum.isTitle) {
            copyText(reinterpret_cast<char*>(at), datum.size, title_.c_str());
        }
        // Other simulation variables are not simulated: they read as zero.
        at += datum.size;
    }
    return block;
}

void World::advanceClockLocked() {
    if (!simRunning_ || paused_ || clockStalled_) return;
    ++clockFrames_;
    lvars_[kClockVariable] = clockBase_ + static_cast<double>(clockFrames_) / framesPerSecond_;
}

void World::rebaseClockLocked(double value) {
    clockBase_ = value;
    clockFrames_ = 0;
    lvars_[kClockVariable] = value;
}

void World::assignLVarLocked(const std::string& key, double value) {
    if (key == kClockVariable) {
        rebaseClockLocked(value);
    } else {
        lvars_[key] = value;
    }
}

void World::queueLocked(Connection& connection, Message message) {
    connection.pendingBytes += message.size();
    connection.pending.push_back(std::move(message));
    while (connection.pendingBytes > kMaxPendingBytes && connection.pending.size() > 1) {
        connection.pendingBytes -= connection.pending.front().size();
        connection.pending.pop_front();
        ++counters_.droppedMessages;
    }
}

void World::sendEventLocked(std::string_view eventName, sc::DWORD data) {
    for (auto& [key, connection] : connections_) {
        if (connection.dead) continue;
        for (const auto& [eventId, name] : connection.subscriptions) {
            if (name != eventName) continue;
            sc::SIMCONNECT_RECV_EVENT event{};
            event.dwSize = sizeof(event);
            event.dwVersion = kMessageVersion;
            event.dwID = sc::SIMCONNECT_RECV_ID_EVENT;
            event.uGroupID = sc::SIMCONNECT_RECV_EVENT_UNKNOWN_GROUP;
            event.uEventID = eventId;
            event.dwData = data;
            queueLocked(connection, toMessage(event));
        }
    }
}

void World::sendFileEventLocked(std::string_view eventName, const std::string& path) {
    for (auto& [key, connection] : connections_) {
        if (connection.dead) continue;
        for (const auto& [eventId, name] : connection.subscriptions) {
            if (name != eventName) continue;
            sc::SIMCONNECT_RECV_EVENT_FILENAME event{};
            event.dwSize = sizeof(event);
            event.dwVersion = kMessageVersion;
            event.dwID = sc::SIMCONNECT_RECV_ID_EVENT_FILENAME;
            event.uGroupID = sc::SIMCONNECT_RECV_EVENT_UNKNOWN_GROUP;
            event.uEventID = eventId;
            copyText(event.szFileName, sizeof(event.szFileName), path.c_str());
            queueLocked(connection, toMessage(event));
        }
    }
}

// ---- Real-time frames --------------------------------------------------------------------------

bool World::startFrameThread(std::uint32_t framesPerSecond) {
    if (framesPerSecond == 0) return false;
    std::lock_guard threadLock(frameThreadMutex_);
    if (frameThread_.joinable()) return false;
    {
        std::lock_guard lock(mutex_);
        rebaseClockLocked(lvars_[kClockVariable]);
        framesPerSecond_ = framesPerSecond;
        frameThreadStop_ = false;
    }
    frameThread_ = std::thread([this] { frameThreadMain(); });
    return true;
}

void World::stopFrameThread() {
    std::lock_guard threadLock(frameThreadMutex_);
    if (!frameThread_.joinable()) return;
    {
        std::lock_guard lock(mutex_);
        frameThreadStop_ = true;
    }
    frameWake_.notify_all();
    frameThread_.join();
}

void World::frameThreadMain() {
    using Clock = std::chrono::steady_clock;
    std::unique_lock lock(mutex_);
    auto next = Clock::now();
    while (!frameThreadStop_) {
        runFrameLocked();
        const auto period = std::chrono::nanoseconds(1'000'000'000 / framesPerSecond_);
        next += period;
        // After a long hold-up (a debugger, a loaded machine) carry on from now, without a burst.
        if (Clock::now() - next > 5 * period) next = Clock::now();
        frameWake_.wait_until(lock, next, [this] { return frameThreadStop_; });
    }
}

// ---- Control -----------------------------------------------------------------------------------

void World::reset() {
    stopFrameThread();
    std::lock_guard lock(mutex_);
    resetStateLocked();
}

void World::resetStateLocked() {
    connections_.clear();  // handles stay in issuedHandles_: later use counts as closed
    calls_.clear();
    counters_ = StandinCounters{};
    lvars_.clear();
    title_ = kDefaultTitle;
    flightPath_.clear();
    aircraftPath_.clear();
    simRunning_ = true;
    paused_ = false;
    clockStalled_ = false;
    keepAliveAnswers_ = true;
    closeDelayMs_ = 0;
    unknownVariable_.clear();
    openResult_ = sc::kSOk;
    framesPerSecond_ = 30;
    frameCount_ = 0;
    rebaseClockLocked(kInitialClock);
}

void World::setFramesPerSecond(std::uint32_t framesPerSecond) {
    if (framesPerSecond == 0) return;
    std::lock_guard lock(mutex_);
    rebaseClockLocked(lvars_[kClockVariable]);  // the clock keeps its value across the change
    framesPerSecond_ = framesPerSecond;
}

std::uint32_t World::framesPerSecond() {
    std::lock_guard lock(mutex_);
    return framesPerSecond_;
}

std::uint64_t World::frameCount() {
    std::lock_guard lock(mutex_);
    return frameCount_;
}

void World::setOpenResult(sc::HRESULT result) {
    std::lock_guard lock(mutex_);
    openResult_ = result;
}

void World::setKeepAliveAnswers(bool answer) {
    std::lock_guard lock(mutex_);
    keepAliveAnswers_ = answer;
}

void World::setCloseDelay(std::uint32_t milliseconds) {
    std::lock_guard lock(mutex_);
    closeDelayMs_ = milliseconds;
}

void World::setUnknownVariable(const char* name) {
    std::lock_guard lock(mutex_);
    unknownVariable_ = lowerCase(name != nullptr ? name : "");
}

void World::endConnections(bool sendQuit) {
    std::lock_guard lock(mutex_);
    for (auto& [key, connection] : connections_) {
        if (connection.dead) continue;
        if (sendQuit) {
            sc::SIMCONNECT_RECV_QUIT quit{};
            quit.dwSize = sizeof(quit);
            quit.dwVersion = kMessageVersion;
            quit.dwID = sc::SIMCONNECT_RECV_ID_QUIT;
            queueLocked(connection, toMessage(quit));
        }
        connection.dead = true;
    }
}

Connection* World::connectionForQuery(void* handle) {
    if (handle == nullptr) {
        return connections_.empty() ? nullptr : &connections_.rbegin()->second;
    }
    const auto it = connections_.find(reinterpret_cast<std::uintptr_t>(handle));
    return it != connections_.end() ? &it->second : nullptr;
}

void* World::currentHandle() {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(nullptr);
    return connection != nullptr ? std::bit_cast<void*>(connection->handle) : nullptr;
}

std::uint32_t World::openConnectionCount() {
    std::lock_guard lock(mutex_);
    return static_cast<std::uint32_t>(connections_.size());
}

std::uint32_t World::pendingMessageCount(void* handle) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    return connection != nullptr ? static_cast<std::uint32_t>(connection->pending.size()) : 0;
}

void World::setPaused(bool paused) {
    std::lock_guard lock(mutex_);
    paused_ = paused;
    sendEventLocked("pause", paused ? 1 : 0);
}

void World::setSimRunning(bool running) {
    std::lock_guard lock(mutex_);
    simRunning_ = running;
    sendEventLocked("sim", running ? 1 : 0);
    sendEventLocked(running ? "simstart" : "simstop", 0);
}

void World::crash() {
    std::lock_guard lock(mutex_);
    sendEventLocked("crashed", 0);
}

void World::loadFlight(const char* path) {
    std::lock_guard lock(mutex_);
    flightPath_ = path != nullptr ? path : "";
    sendFileEventLocked("flightloaded", flightPath_);
}

void World::loadAircraft(const char* path) {
    std::lock_guard lock(mutex_);
    aircraftPath_ = path != nullptr ? path : "";
    sendFileEventLocked("aircraftloaded", aircraftPath_);
}

void World::setTitle(const char* title) {
    std::lock_guard lock(mutex_);
    title_ = title != nullptr ? title : "";
}

void World::setClockStalled(bool stalled) {
    std::lock_guard lock(mutex_);
    if (!stalled) rebaseClockLocked(lvars_[kClockVariable]);  // resumes from where it stood
    clockStalled_ = stalled;
}

double World::clock() {
    std::lock_guard lock(mutex_);
    return lvars_[kClockVariable];
}

void World::setLVar(const char* name, double value) {
    if (name == nullptr || name[0] == '\0') return;
    std::lock_guard lock(mutex_);
    assignLVarLocked(lvarKey(name), value);
}

bool World::getLVar(const char* name, double& value) {
    value = 0.0;
    if (name == nullptr) return false;
    std::lock_guard lock(mutex_);
    const auto it = lvars_.find(lvarKey(name));
    if (it == lvars_.end()) return false;
    value = it->second;
    return true;
}

std::uint32_t World::lvarCount() {
    std::lock_guard lock(mutex_);
    return static_cast<std::uint32_t>(lvars_.size());
}

namespace {

template <typename Ids>
std::uint32_t copyIds(const Ids& source, std::uint32_t* ids, std::uint32_t capacity) {
    std::uint32_t n = 0;
    for (const std::uint32_t id : source) {
        if (ids != nullptr && n < capacity) ids[n] = id;
        ++n;
    }
    return n;
}

template <typename Map>
std::vector<std::uint32_t> keysOf(const Map& map) {
    std::vector<std::uint32_t> keys;
    keys.reserve(map.size());
    for (const auto& entry : map) keys.push_back(entry.first);
    return keys;
}

}  // namespace

std::uint32_t World::definitionIds(void* handle, std::uint32_t* ids, std::uint32_t capacity) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    return connection != nullptr ? copyIds(connection->definitionOrder, ids, capacity) : 0;
}

std::int32_t World::datumCount(void* handle, std::uint32_t defineId) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    if (connection == nullptr) return -1;
    const auto it = connection->definitions.find(defineId);
    return it != connection->definitions.end() ? static_cast<std::int32_t>(it->second.datums.size())
                                               : -1;
}

bool World::datum(void* handle, std::uint32_t defineId, std::uint32_t index, StandinDatum& out) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    if (connection == nullptr) return false;
    const auto it = connection->definitions.find(defineId);
    if (it == connection->definitions.end() || index >= it->second.datums.size()) return false;
    const Datum& datum = it->second.datums[index];
    copyText(out.name, sizeof(out.name), datum.name.c_str());
    copyText(out.unit, sizeof(out.unit), datum.unit.c_str());
    out.type = datum.type;
    out.epsilon = datum.epsilon;
    out.datumId = datum.datumId;
    out.size = datum.size;
    return true;
}

std::uint32_t World::requestIds(void* handle, std::uint32_t* ids, std::uint32_t capacity) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    return connection != nullptr ? copyIds(keysOf(connection->requests), ids, capacity) : 0;
}

bool World::request(void* handle, std::uint32_t requestId, StandinRequest& out) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    if (connection == nullptr) return false;
    const auto it = connection->requests.find(requestId);
    if (it == connection->requests.end()) return false;
    out = it->second.info;
    return true;
}

std::uint32_t World::subscriptionIds(void* handle, std::uint32_t* ids, std::uint32_t capacity) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    return connection != nullptr ? copyIds(keysOf(connection->subscriptions), ids, capacity) : 0;
}

bool World::subscription(void* handle, std::uint32_t eventId, char* name, std::uint32_t capacity) {
    std::lock_guard lock(mutex_);
    const Connection* connection = connectionForQuery(handle);
    if (connection == nullptr || name == nullptr) return false;
    const auto it = connection->subscriptions.find(eventId);
    if (it == connection->subscriptions.end()) return false;
    copyText(name, capacity, it->second.c_str());
    return true;
}

std::uint64_t World::callCount() {
    std::lock_guard lock(mutex_);
    return calls_.size();
}

bool World::call(std::uint64_t index, StandinCall& out) {
    std::lock_guard lock(mutex_);
    if (index >= calls_.size()) return false;
    out = calls_[index].call;
    return true;
}

std::uint32_t World::callData(std::uint64_t index, void* buffer, std::uint32_t capacity) {
    std::lock_guard lock(mutex_);
    if (index >= calls_.size()) return 0;
    const auto& data = calls_[index].data;
    if (buffer != nullptr && !data.empty()) {
        std::memcpy(buffer, data.data(), std::min<std::size_t>(capacity, data.size()));
    }
    return static_cast<std::uint32_t>(data.size());
}

void World::clearCalls() {
    std::lock_guard lock(mutex_);
    calls_.clear();
}

StandinCounters World::counters() {
    std::lock_guard lock(mutex_);
    return counters_;
}

}  // namespace helmbridge::standin
