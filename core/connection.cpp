// The SimConnect connection: search and open, keep-alive, stall watchdog, message handling and
// the registration of every data definition, request and event.
#include "core/connection.h"

#include <cstring>
#include <string>

#include "catalogue/bindings.h"
#include "catalogue/signal_lists.h"
#include "core/variant.h"

namespace fenixA320 {

namespace platform = helmbridge::platform;
using std::chrono::seconds;

namespace {

constexpr const char* kClientName = "HelmBridge";
constexpr sc::DWORD REQ_DIGIT_OUT = 0;
constexpr sc::DWORD REQ_DISPLAY = 1;
constexpr sc::DWORD REQ_SIM_STATE = 3;
constexpr sc::DWORD REQ_TITLE = 4;
constexpr sc::DWORD REQ_CLOCK = 5;
constexpr sc::DWORD EVT_FLIGHT_LOADED = 9001;
constexpr sc::DWORD EVT_AIRCRAFT_LOADED = 9002;
constexpr sc::DWORD EVT_PAUSE = 9003;
constexpr sc::DWORD EVT_SIM = 9004;
constexpr sc::DWORD EVT_CRASHED = 9005;

// The keep-alive counter counts connect passes (one a second): keep-alives from the third pass
// of a cycle, a reconnect at the fifth. Start sets it beyond, so the first pass connects.
constexpr int32_t kKeepAliveFirst = 3;
constexpr int32_t kReconnectCount = 5;
constexpr int32_t kConnectAtOnce = 10;
constexpr Nanos kStallAge = seconds(5);
constexpr Nanos kResumeGrace = seconds(10);
constexpr Nanos kEventGrace = seconds(60);
constexpr double kClockWindow = 60.0;
constexpr std::size_t kTitleMessageSize = 296;
constexpr std::size_t kClockMessageSize = 48;

struct EventName {
    sc::DWORD id;
    const char* name;
};
constexpr EventName kEvents[] = {
    {EVT_FLIGHT_LOADED, "FlightLoaded"},
    {EVT_AIRCRAFT_LOADED, "AircraftLoaded"},
    {EVT_PAUSE, "Pause"},
    {EVT_SIM, "Sim"},
    {EVT_CRASHED, "Crashed"},
};

// The per-variable definitions, in declaration order.
template <typename Visit>
void forEachVariableDefinition(Visit&& visit) {
    for (const auto* table :
         {&digitInBindings(), &switchVarBindings(), &analogBindings(), &encoderBindings()}) {
        for (const VarBinding& row : *table) visit(row);
    }
}

std::string lvar(std::string_view name) {
    std::string datum("L:");
    datum.append(name);
    return datum;
}

}  // namespace

void Connection::begin() {
    linkCheckCount_.store(kConnectAtOnce);
    searchReported_.store(false);
}

void Connection::connectPass(TimePoint now) {
    int32_t count = linkCheckCount_.load();
    if (count < kReconnectCount) {
        count = linkCheckCount_.fetch_add(1) + 1;
        if (count < kReconnectCount) {
            if (count >= kKeepAliveFirst) requestKeepAlive();
            stallCheck(now);
            return;
        }
    }
    reconnect();
    stallCheck(now);
}

void Connection::requestKeepAlive() {
    // Sent while searching too, on the null handle: the client library answers with a failure.
    std::lock_guard lock(simMutex_);
    const platform::SimConnectApi* api = simApi_.load();
    if (api != nullptr) api->requestSystemState(simHandle_.load(), REQ_SIM_STATE, "Sim");
}

void Connection::reconnect() {
    connected_.store(false);
    // Each attempt binds the client library if it is not bound yet; while it is missing the
    // attempt fails like a refused open and no SimConnect call is made.
    const platform::SimConnectApi* api = simApi_.load();
    if (api == nullptr) {
        api = seam_.bindSimConnect();
        simApi_.store(api);
        if (api == nullptr && seam_.simConnectSearchReport != nullptr &&
            !searchReported_.exchange(true)) {
            const std::string line = "[HelmBridge] " + seam_.simConnectSearchReport() + "\n";
            seam_.debugOutput(line.c_str());
        }
    }
    {
        std::lock_guard lock(simMutex_);
        if (api != nullptr) api->close(simHandle_.load());
        simHandle_.store(nullptr);
    }
    const platform::ProbeResult probe = seam_.probeSimulatorProcess();
    const bool configFile = seam_.simConnectCfgPresent();
    if (probe == platform::ProbeResult::kNotFound && !configFile) {
        linkCheckCount_.store(0);
        return;
    }
    if (api != nullptr) {
        std::lock_guard lock(simMutex_);
        sc::HANDLE handle = nullptr;
        if (api->open(&handle, kClientName, nullptr, 0, nullptr, 0) == 0 && handle != nullptr) {
            simHandle_.store(handle);
            connected_.store(true);
        }
    }
    linkCheckCount_.store(0);
}

void Connection::stallCheck(TimePoint now) {
    if (!connected_.load() || !clockSeen_.load() || simHandle_.load() == nullptr ||
        !simRunning_.load() || simPaused_.load()) {
        return;
    }
    const Nanos age = now - freshUntil_.load();
    if (rerequestPending_.load() == 0) {
        if (age >= kStallAge) {
            RerequestSimData();
            rerequestPending_.store(1);
            rerequestTime_ = now;
        }
    } else if (age < kStallAge) {
        rerequestPending_.store(0);
    } else if (now - rerequestTime_ >= kStallAge) {
        linkCheckCount_.store(kReconnectCount);
        rerequestPending_.store(0);
    }
}

void Connection::dispatchPass(TimePoint now) {
    if (!connected_.load() || simHandle_.load() == nullptr) return;
    std::lock_guard lock(simMutex_);
    const platform::SimConnectApi* api = simApi_.load();
    sc::HANDLE handle = simHandle_.load();
    if (api == nullptr || handle == nullptr) return;
    dispatchNow_ = now;
    api->callDispatch(handle, &Connection::HandleSimMessage, this);
}

void HELMBRIDGE_SIMCONNECT_CALL Connection::HandleSimMessage(sc::SIMCONNECT_RECV* data,
                                                             sc::DWORD size, void* context) {
    if (context == nullptr) return;
    auto* connection = static_cast<Connection*>(context);
    connection->handleSimMessage(data, size, connection->dispatchNow_);
}

void Connection::handleSimMessage(const sc::SIMCONNECT_RECV* message, sc::DWORD size,
                                  TimePoint now) {
    sc::SIMCONNECT_RECV header{};
    if (!sc::readMessage(message, size, header)) return;
    switch (header.dwID) {
        case sc::SIMCONNECT_RECV_ID_OPEN:
            RegisterSimData();
            break;
        case sc::SIMCONNECT_RECV_ID_QUIT:
            // The keep-alive notices the closed connection and reconnects.
            UnregisterSimData();
            break;
        case sc::SIMCONNECT_RECV_ID_EVENT: {
            sc::SIMCONNECT_RECV_EVENT event{};
            if (sc::readMessage(message, size, event)) onEvent(event.uEventID, event.dwData, now);
            break;
        }
        case sc::SIMCONNECT_RECV_ID_EVENT_FILENAME: {
            sc::SIMCONNECT_RECV_EVENT_FILENAME event{};
            if (sc::readMessage(message, size, event) &&
                (event.uEventID == EVT_FLIGHT_LOADED || event.uEventID == EVT_AIRCRAFT_LOADED)) {
                clockReset(now);
            }
            break;
        }
        case sc::SIMCONNECT_RECV_ID_SIMOBJECT_DATA:
            onSimObjectData(message, size, now);
            break;
        case sc::SIMCONNECT_RECV_ID_SYSTEM_STATE: {
            sc::SIMCONNECT_RECV_SYSTEM_STATE state{};
            if (sc::readMessage(message, size, state) && state.dwRequestID == REQ_SIM_STATE) {
                keepAliveAnswered();
            }
            break;
        }
        default:
            break;
    }
}

void Connection::keepAliveAnswered() {
    // An answer proves the link, not the data stream: it must not cancel a reconnect that the
    // stall check has armed. Otherwise the answer to a keep-alive sent in the arming pass resets
    // the count, and with a keep-alive every 3 passes and a stall cycle of 6 the two can stay in
    // step, so a stalled stream would never be rebuilt.
    int32_t count = linkCheckCount_.load();
    while (count < kReconnectCount && !linkCheckCount_.compare_exchange_weak(count, 0)) {
    }
}

void Connection::onEvent(sc::DWORD eventId, sc::DWORD value, TimePoint now) {
    switch (eventId) {
        case EVT_PAUSE:
            simPaused_.store(value != 0);
            if (value == 0) {
                freshUntil_.store(now + kResumeGrace);
                rerequestPending_.store(0);
            }
            break;
        case EVT_SIM:
            simRunning_.store(value != 0);
            if (value != 0) {
                freshUntil_.store(now + kEventGrace);
                rerequestPending_.store(0);
            }
            break;
        case EVT_CRASHED:
            clockReset(now);
            break;
        default:
            break;
    }
}

void Connection::onSimObjectData(const sc::SIMCONNECT_RECV* message, sc::DWORD size,
                                 TimePoint now) {
    sc::SIMCONNECT_RECV_SIMOBJECT_DATA data{};
    // The structure's own size counts one datum; shorter messages carry no request id.
    if (size < sc::kSimObjectDataHeaderSize) return;
    std::memcpy(&data, message, sc::kSimObjectDataHeaderSize);
    if (data.dwSize < size) size = data.dwSize;
    switch (data.dwRequestID) {
        case REQ_DIGIT_OUT:
            // A block that lacks a datum is dropped whole.
            if (size >= sc::kSimObjectDataHeaderSize + 8 * digitOutSigList().size())
                received_.storeDigitOut(sc::simObjectPayload(message), digitOutSigList().size());
            break;
        case REQ_DISPLAY:
            if (size >= sc::kSimObjectDataHeaderSize + 8 * displaySigList().size())
                received_.storeDisplay(sc::simObjectPayload(message), displaySigList().size());
            break;
        case REQ_TITLE:
            if (size >= kTitleMessageSize) {
                char title[257] = {};
                std::memcpy(title, sc::simObjectPayload(message), 256);
                DetectVariant(&variant_, title, seam_.debugOutput);
            }
            break;
        case REQ_CLOCK:
            if (size >= kClockMessageSize) {
                double value = 0.0;
                std::memcpy(&value, sc::simObjectPayload(message), sizeof(value));
                clockReading(value, now);
            }
            break;
        default:
            break;
    }
}

void Connection::clockReset(TimePoint now) {
    clockAdvancing_.store(false);
    clockRiseCount_ = 0;
    lastClockValue_ = -1.0;
    freshUntil_.store(now + kEventGrace);
    rerequestPending_.store(0);
}

void Connection::clockReading(double value, TimePoint now) {
    if (value > 0.5) {
        clockSeen_.store(true);
        if (simRunning_.load() && !simPaused_.load()) {
            if (acceptedClock_ < 0.0 ||
                (value >= acceptedClock_ && value <= acceptedClock_ + kClockWindow)) {
                acceptedClock_ = value;
                freshUntil_.store(now);
            }
        }
        if (value > lastClockValue_) {
            if (++clockRiseCount_ >= 2) clockAdvancing_.store(true);
            lastClockValue_ = value;
            return;
        }
    }
    clockRiseCount_ = 0;
    clockAdvancing_.store(false);
    lastClockValue_ = value;
}

void Connection::RegisterSimData() {
    std::lock_guard lock(simMutex_);
    const platform::SimConnectApi* api = simApi_.load();
    sc::HANDLE handle = simHandle_.load();
    if (api == nullptr || handle == nullptr) return;
    const auto addNumber = [&](uint32_t defineId, std::string_view variable) {
        api->addToDataDefinition(handle, defineId, lvar(variable).c_str(), "number",
                                 sc::SIMCONNECT_DATATYPE_FLOAT64, 0.0f, sc::SIMCONNECT_UNUSED);
    };
    forEachVariableDefinition([&](const VarBinding& row) {
        addNumber(static_cast<uint32_t>(row.defineId), row.variable);
    });
    const std::pair<uint32_t, const std::vector<GroupKey>*> groups[] = {
        {DEF_CDU_KEYS, &cduKeyGroup()}, {DEF_FCU_KEYS, &fcuKeyGroup()},
        {DEF_ASP_KEYS, &aspKeyGroup()}, {DEF_RMP_KEYS, &rmpKeyGroup()},
        {DEF_ATC_KEYS, &atcKeyGroup()},
    };
    for (const auto& [defineId, keys] : groups) {
        for (const GroupKey& key : *keys) addNumber(defineId, key.variable);
    }
    for (const auto& [defineId, list] : {std::pair{DEF_DIGIT_OUT, &digitOutSigList()},
                                         std::pair{DEF_DISPLAY, &displaySigList()}}) {
        for (const auto& [id, entry] : *list) {
            addNumber(defineId, id == 0 ? kPlaceholderVariable : std::string_view(entry.first));
        }
    }
    requestBlocks(*api, handle);
    api->addToDataDefinition(handle, DEF_TITLE, "TITLE", nullptr, sc::SIMCONNECT_DATATYPE_STRING256,
                             0.0f, sc::SIMCONNECT_UNUSED);
    api->requestDataOnSimObject(handle, REQ_TITLE, DEF_TITLE, sc::SIMCONNECT_OBJECT_ID_USER,
                                sc::SIMCONNECT_PERIOD_SECOND, 0, 0, 0, 0);
    api->addToDataDefinition(handle, DEF_CLOCK, "L:N_MIP_CLOCK_UTC", "number",
                             sc::SIMCONNECT_DATATYPE_FLOAT64, 0.0f, sc::SIMCONNECT_UNUSED);
    api->requestDataOnSimObject(handle, REQ_CLOCK, DEF_CLOCK, sc::SIMCONNECT_OBJECT_ID_USER,
                                sc::SIMCONNECT_PERIOD_SECOND, 0, 0, 0, 0);
    for (const EventName& event : kEvents)
        api->subscribeToSystemEvent(handle, event.id, event.name);
}

void Connection::requestBlocks(const platform::SimConnectApi& api, void* handle) {
    api.requestDataOnSimObject(handle, REQ_DISPLAY, DEF_DISPLAY, sc::SIMCONNECT_OBJECT_ID_USER,
                               sc::SIMCONNECT_PERIOD_SIM_FRAME, 0, 0, 0, 0);
    api.requestDataOnSimObject(handle, REQ_DIGIT_OUT, DEF_DIGIT_OUT, sc::SIMCONNECT_OBJECT_ID_USER,
                               sc::SIMCONNECT_PERIOD_SIM_FRAME, 0, 0, 0, 0);
}

void Connection::RerequestSimData() {
    std::lock_guard lock(simMutex_);
    const platform::SimConnectApi* api = simApi_.load();
    sc::HANDLE handle = simHandle_.load();
    if (api == nullptr || handle == nullptr) return;
    requestBlocks(*api, handle);
    api->requestDataOnSimObject(handle, REQ_CLOCK, DEF_CLOCK, sc::SIMCONNECT_OBJECT_ID_USER,
                                sc::SIMCONNECT_PERIOD_SECOND, 0, 0, 0, 0);
}

void Connection::UnregisterSimData() {
    std::lock_guard lock(simMutex_);
    const platform::SimConnectApi* api = simApi_.load();
    sc::HANDLE handle = simHandle_.load();
    if (api == nullptr || handle == nullptr) return;
    forEachVariableDefinition([&](const VarBinding& row) {
        api->clearDataDefinition(handle, static_cast<uint32_t>(row.defineId));
    });
    for (uint32_t defineId : {DEF_FCU_KEYS, DEF_ASP_KEYS, DEF_CDU_KEYS, DEF_RMP_KEYS, DEF_ATC_KEYS,
                              DEF_DIGIT_OUT, DEF_DISPLAY, DEF_TITLE, DEF_CLOCK}) {
        api->clearDataDefinition(handle, defineId);
    }
    for (const EventName& event : kEvents) api->unsubscribeFromSystemEvent(handle, event.id);
}

void Connection::close(TimePoint now) {
    resetLiveness(now);
    {
        std::lock_guard lock(simMutex_);
        const platform::SimConnectApi* api = simApi_.load();
        sc::HANDLE handle = simHandle_.load();
        if (api != nullptr && handle != nullptr) api->close(handle);
        simHandle_.store(nullptr);
    }
    connected_.store(false);
}

void Connection::resetLiveness(TimePoint now) {
    clockAdvancing_.store(false);
    clockRiseCount_ = 0;
    lastClockValue_ = -1.0;
    clockSeen_.store(false);
    rerequestPending_.store(0);
    freshUntil_.store(now);
    acceptedClock_ = -1.0;
    simRunning_.store(true);
    simPaused_.store(false);
}

void Connection::sendData(uint32_t defineId, uint32_t arrayCount, uint32_t unitSize,
                          const void* data) {
    std::lock_guard lock(simMutex_);
    const platform::SimConnectApi* api = simApi_.load();
    sc::HANDLE handle = simHandle_.load();
    if (api == nullptr || handle == nullptr || !connected_.load(std::memory_order_relaxed)) return;
    api->setDataOnSimObject(handle, defineId, sc::SIMCONNECT_OBJECT_ID_USER, 0, arrayCount,
                            unitSize, const_cast<void*>(data));
}

}  // namespace fenixA320
