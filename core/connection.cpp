// The SimConnect connection: search and open, keep-alive, stall watchdog, message handling and
// the registration of every data definition, request and event.
#include <cstring>
#include <string>

#include "catalogue/bindings.h"
#include "catalogue/signal_lists.h"
#include "core/core.h"
#include "core/variant.h"

namespace fenixA320 {

namespace sc = helmbridge::simconnect;
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

constexpr int32_t kKeepAliveFirst = 3;
constexpr int32_t kReconnectCount = 5;
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

// Copies a read block into its value array when the block carries every datum.
void copyBlock(const sc::SIMCONNECT_RECV* message, sc::DWORD size, std::size_t count,
               std::atomic<double>* values) {
    if (values == nullptr || count == 0) return;
    if (size < sc::kSimObjectDataHeaderSize + 8 * count) return;
    const unsigned char* payload = sc::simObjectPayload(message);
    for (std::size_t slot = 0; slot < count; ++slot) {
        double value = 0.0;
        std::memcpy(&value, payload + 8 * slot, sizeof(value));
        values[slot].store(value, std::memory_order_relaxed);
    }
}

}  // namespace

void FenixA320Core::ConnectLoop(FenixA320Core& core) {
    runPeriodic(core.connectWorker, Pacing::BoundedCatchUp,
                [&core](TimePoint now) { core.connectPass(now); });
}

void FenixA320Core::DispatchLoop(FenixA320Core& core) {
    runPeriodic(core.dispatchWorker, Pacing::BoundedCatchUp,
                [&core](TimePoint now) { core.dispatchPass(now); });
}

void FenixA320Core::connectPass(TimePoint now) {
    int32_t count = linkCheckCount.load();
    if (count < kReconnectCount) {
        count = linkCheckCount.fetch_add(1) + 1;
        if (count < kReconnectCount) {
            if (count >= kKeepAliveFirst) requestKeepAlive();
            stallCheck(now);
            return;
        }
    }
    reconnect();
    stallCheck(now);
}

void FenixA320Core::requestKeepAlive() {
    // Sent while searching too, on the null handle: the client library answers with a failure.
    std::lock_guard lock(simMutex);
    const platform::SimConnectApi* api = simApi.load();
    if (api != nullptr) api->requestSystemState(simHandle.load(), REQ_SIM_STATE, "Sim");
}

void FenixA320Core::reconnect() {
    connected.store(false);
    // Each attempt binds the client library if it is not bound yet; while it is missing the
    // attempt fails like a refused open and no SimConnect call is made.
    const platform::SimConnectApi* api = simApi.load();
    if (api == nullptr) {
        api = seam.bindSimConnect();
        simApi.store(api);
        if (api == nullptr && seam.simConnectSearchReport != nullptr &&
            !searchReported.exchange(true)) {
            const std::string line = "[HelmBridge] " + seam.simConnectSearchReport() + "\n";
            seam.debugOutput(line.c_str());
        }
    }
    {
        std::lock_guard lock(simMutex);
        if (api != nullptr) api->close(simHandle.load());
        simHandle.store(nullptr);
    }
    const platform::ProbeResult probe = seam.probeSimulatorProcess();
    const bool configFile = seam.simConnectCfgPresent();
    if (probe == platform::ProbeResult::kNotFound && !configFile) {
        linkCheckCount.store(0);
        return;
    }
    if (api != nullptr) {
        std::lock_guard lock(simMutex);
        sc::HANDLE handle = nullptr;
        if (api->open(&handle, kClientName, nullptr, 0, nullptr, 0) == 0 && handle != nullptr) {
            simHandle.store(handle);
            connected.store(true);
        }
    }
    linkCheckCount.store(0);
}

void FenixA320Core::stallCheck(TimePoint now) {
    if (!connected.load() || !clockSeen.load() || simHandle.load() == nullptr ||
        !simRunning.load() || simPaused.load()) {
        return;
    }
    const Nanos age = now - freshUntil.load();
    if (rerequestPending.load() == 0) {
        if (age >= kStallAge) {
            RerequestSimData();
            rerequestPending.store(1);
            rerequestTime = now;
        }
    } else if (age < kStallAge) {
        rerequestPending.store(0);
    } else if (now - rerequestTime >= kStallAge) {
        linkCheckCount.store(kReconnectCount);
        rerequestPending.store(0);
    }
}

void FenixA320Core::dispatchPass(TimePoint now) {
    if (!connected.load() || simHandle.load() == nullptr) return;
    std::lock_guard lock(simMutex);
    const platform::SimConnectApi* api = simApi.load();
    sc::HANDLE handle = simHandle.load();
    if (api == nullptr || handle == nullptr) return;
    dispatchNow = now;
    api->callDispatch(handle, &FenixA320Core::HandleSimMessage, this);
}

void HELMBRIDGE_SIMCONNECT_CALL FenixA320Core::HandleSimMessage(sc::SIMCONNECT_RECV* data,
                                                                sc::DWORD size, void* context) {
    if (context == nullptr) return;
    auto* core = static_cast<FenixA320Core*>(context);
    core->handleSimMessage(data, size, core->dispatchNow);
}

void FenixA320Core::handleSimMessage(const sc::SIMCONNECT_RECV* message, sc::DWORD size,
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

void FenixA320Core::keepAliveAnswered() {
    // An answer proves the link, not the data stream: it must not cancel a reconnect that the
    // stall check has armed. Otherwise the answer to a keep-alive sent in the arming pass resets
    // the count, and with a keep-alive every 3 passes and a stall cycle of 6 the two can stay in
    // step, so a stalled stream would never be rebuilt.
    int32_t count = linkCheckCount.load();
    while (count < kReconnectCount && !linkCheckCount.compare_exchange_weak(count, 0)) {
    }
}

void FenixA320Core::onEvent(sc::DWORD eventId, sc::DWORD value, TimePoint now) {
    switch (eventId) {
        case EVT_PAUSE:
            simPaused.store(value != 0);
            if (value == 0) {
                freshUntil.store(now + kResumeGrace);
                rerequestPending.store(0);
            }
            break;
        case EVT_SIM:
            simRunning.store(value != 0);
            if (value != 0) {
                freshUntil.store(now + kEventGrace);
                rerequestPending.store(0);
            }
            break;
        case EVT_CRASHED:
            clockReset(now);
            break;
        default:
            break;
    }
}

void FenixA320Core::onSimObjectData(const sc::SIMCONNECT_RECV* message, sc::DWORD size,
                                    TimePoint now) {
    sc::SIMCONNECT_RECV_SIMOBJECT_DATA data{};
    // The structure's own size counts one datum; shorter messages carry no request id.
    if (size < sc::kSimObjectDataHeaderSize) return;
    std::memcpy(&data, message, sc::kSimObjectDataHeaderSize);
    if (data.dwSize < size) size = data.dwSize;
    switch (data.dwRequestID) {
        case REQ_DIGIT_OUT:
            copyBlock(message, size, digitOutSigList().size(), digitOutValues.get());
            break;
        case REQ_DISPLAY:
            copyBlock(message, size, displaySigList().size(), displayValues.get());
            break;
        case REQ_TITLE:
            if (size >= kTitleMessageSize) {
                char title[257] = {};
                std::memcpy(title, sc::simObjectPayload(message), 256);
                DetectVariant(&variant, title, seam.debugOutput);
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

void FenixA320Core::clockReset(TimePoint now) {
    clockAdvancing.store(false);
    clockRiseCount = 0;
    lastClockValue = -1.0;
    freshUntil.store(now + kEventGrace);
    rerequestPending.store(0);
}

void FenixA320Core::clockReading(double value, TimePoint now) {
    if (value > 0.5) {
        clockSeen.store(true);
        if (simRunning.load() && !simPaused.load()) {
            if (acceptedClock < 0.0 ||
                (value >= acceptedClock && value <= acceptedClock + kClockWindow)) {
                acceptedClock = value;
                freshUntil.store(now);
            }
        }
        if (value > lastClockValue) {
            if (++clockRiseCount >= 2) clockAdvancing.store(true);
            lastClockValue = value;
            return;
        }
    }
    clockRiseCount = 0;
    clockAdvancing.store(false);
    lastClockValue = value;
}

void FenixA320Core::RegisterSimData() {
    std::lock_guard lock(simMutex);
    const platform::SimConnectApi* api = simApi.load();
    sc::HANDLE handle = simHandle.load();
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

void FenixA320Core::requestBlocks(const platform::SimConnectApi& api, void* handle) {
    api.requestDataOnSimObject(handle, REQ_DISPLAY, DEF_DISPLAY, sc::SIMCONNECT_OBJECT_ID_USER,
                               sc::SIMCONNECT_PERIOD_SIM_FRAME, 0, 0, 0, 0);
    api.requestDataOnSimObject(handle, REQ_DIGIT_OUT, DEF_DIGIT_OUT, sc::SIMCONNECT_OBJECT_ID_USER,
                               sc::SIMCONNECT_PERIOD_SIM_FRAME, 0, 0, 0, 0);
}

void FenixA320Core::RerequestSimData() {
    std::lock_guard lock(simMutex);
    const platform::SimConnectApi* api = simApi.load();
    sc::HANDLE handle = simHandle.load();
    if (api == nullptr || handle == nullptr) return;
    requestBlocks(*api, handle);
    api->requestDataOnSimObject(handle, REQ_CLOCK, DEF_CLOCK, sc::SIMCONNECT_OBJECT_ID_USER,
                                sc::SIMCONNECT_PERIOD_SECOND, 0, 0, 0, 0);
}

void FenixA320Core::UnregisterSimData() {
    std::lock_guard lock(simMutex);
    const platform::SimConnectApi* api = simApi.load();
    sc::HANDLE handle = simHandle.load();
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

void FenixA320Core::closeConnection() {
    std::lock_guard lock(simMutex);
    const platform::SimConnectApi* api = simApi.load();
    sc::HANDLE handle = simHandle.load();
    if (api != nullptr && handle != nullptr) api->close(handle);
    simHandle.store(nullptr);
}

void FenixA320Core::sendData(uint32_t defineId, uint32_t arrayCount, uint32_t unitSize,
                             const void* data) {
    std::lock_guard lock(simMutex);
    const platform::SimConnectApi* api = simApi.load();
    sc::HANDLE handle = simHandle.load();
    if (api == nullptr || handle == nullptr || !connected.load(std::memory_order_relaxed)) return;
    api->setDataOnSimObject(handle, defineId, sc::SIMCONNECT_OBJECT_ID_USER, 0, arrayCount,
                            unitSize, const_cast<void*>(data));
}

}  // namespace fenixA320
