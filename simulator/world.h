// The stand-in's simulated simulator: variable store, connections, frames and the call record.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/simconnect_abi.h"
#include "simulator/standin_control.h"

namespace helmbridge::standin {

namespace sc = helmbridge::simconnect;

using Message = std::vector<unsigned char>;

struct Datum {
    std::string name;
    std::string unit;
    sc::SIMCONNECT_DATATYPE type = sc::SIMCONNECT_DATATYPE_INVALID;
    float epsilon = 0.0f;
    std::uint32_t datumId = 0;
    std::uint32_t size = 0;
    // Worked out once when added, since blocks are built every frame.
    std::string lvarKey;  // the store's key for an L: variable, empty otherwise
    bool isTitle = false;
};

struct Definition {
    std::vector<Datum> datums;
    std::uint32_t size = 0;  // bytes of one data block
};

struct Request {
    StandinRequest info{};
    std::uint64_t periods = 0;             // periods elapsed, for origin and interval
    std::uint32_t framesToNextSecond = 1;  // SECOND requests: frames until the next send
    bool sentBefore = false;
    Message lastPayload;  // for the CHANGED flag
};

struct Connection {
    std::uintptr_t handle = 0;
    std::string clientName;
    std::map<std::uint32_t, Definition> definitions;
    std::vector<std::uint32_t> definitionOrder;
    std::map<std::uint32_t, Request> requests;
    std::map<std::uint32_t, std::string> subscriptions;  // client event id -> lower-case name
    std::deque<Message> pending;
    std::size_t pendingBytes = 0;
    bool dead = false;  // the simulator side is gone
    std::uint32_t lastSendId = 0;
};

class World {
  public:
    // The one world of the process. It is never destroyed: a host or a module thread may still
    // call in while the process exits.
    static World& instance();

    // The ten client functions.
    sc::HRESULT open(sc::HANDLE* handleOut, const char* name, sc::HWND window, sc::DWORD userEvent,
                     sc::HANDLE eventHandle, sc::DWORD configIndex);
    sc::HRESULT close(sc::HANDLE handle);
    sc::HRESULT callDispatch(sc::HANDLE handle, sc::DispatchProc dispatch, void* context);
    sc::HRESULT requestSystemState(sc::HANDLE handle, sc::DWORD requestId, const char* state);
    sc::HRESULT addToDataDefinition(sc::HANDLE handle, sc::DWORD defineId, const char* datumName,
                                    const char* unitsName, sc::SIMCONNECT_DATATYPE type,
                                    float epsilon, sc::DWORD datumId);
    sc::HRESULT requestDataOnSimObject(sc::HANDLE handle, sc::DWORD requestId, sc::DWORD defineId,
                                       sc::DWORD objectId, sc::SIMCONNECT_PERIOD period,
                                       sc::DWORD flags, sc::DWORD origin, sc::DWORD interval,
                                       sc::DWORD limit);
    sc::HRESULT subscribeToSystemEvent(sc::HANDLE handle, sc::DWORD eventId, const char* name);
    sc::HRESULT unsubscribeFromSystemEvent(sc::HANDLE handle, sc::DWORD eventId);
    sc::HRESULT clearDataDefinition(sc::HANDLE handle, sc::DWORD defineId);
    sc::HRESULT setDataOnSimObject(sc::HANDLE handle, sc::DWORD defineId, sc::DWORD objectId,
                                   sc::DWORD flags, sc::DWORD arrayCount, sc::DWORD unitSize,
                                   const void* data);

    // Control.
    void reset();
    void setFramesPerSecond(std::uint32_t framesPerSecond);
    std::uint32_t framesPerSecond();
    void runFrames(std::uint64_t count);
    std::uint64_t frameCount();
    bool startFrameThread(std::uint32_t framesPerSecond);
    void stopFrameThread();
    void setOpenResult(sc::HRESULT result);
    void setKeepAliveAnswers(bool answer);
    void setCloseDelay(std::uint32_t milliseconds);
    void setUnknownVariable(const char* name);
    void endConnections(bool sendQuit);
    void* currentHandle();
    std::uint32_t openConnectionCount();
    std::uint32_t pendingMessageCount(void* handle);
    void setPaused(bool paused);
    void setSimRunning(bool running);
    void crash();
    void loadFlight(const char* path);
    void loadAircraft(const char* path);
    void setTitle(const char* title);
    void setClockStalled(bool stalled);
    double clock();
    void setLVar(const char* name, double value);
    bool getLVar(const char* name, double& value);
    std::uint32_t lvarCount();
    std::uint32_t definitionIds(void* handle, std::uint32_t* ids, std::uint32_t capacity);
    std::int32_t datumCount(void* handle, std::uint32_t defineId);
    bool datum(void* handle, std::uint32_t defineId, std::uint32_t index, StandinDatum& out);
    std::uint32_t requestIds(void* handle, std::uint32_t* ids, std::uint32_t capacity);
    bool request(void* handle, std::uint32_t requestId, StandinRequest& out);
    std::uint32_t subscriptionIds(void* handle, std::uint32_t* ids, std::uint32_t capacity);
    bool subscription(void* handle, std::uint32_t eventId, char* name, std::uint32_t capacity);
    std::uint64_t callCount();
    bool call(std::uint64_t index, StandinCall& out);
    std::uint32_t callData(std::uint64_t index, void* buffer, std::uint32_t capacity);
    void clearCalls();
    StandinCounters counters();

    static std::uint64_t currentThreadId();

  private:
    World();

    struct RecordedCall {
        StandinCall call{};
        std::vector<unsigned char> data;
    };

    // Looks the handle up for a client call, counting null, closed and unknown handles.
    Connection* connectionForCall(sc::HANDLE handle);
    // A control query's connection: the given one, or the newest open one for null.
    Connection* connectionForQuery(void* handle);
    // The open, live connection a call goes out on, with the call numbered; null when the
    // library refuses the call itself.
    Connection* sendingConnection(sc::HANDLE handle, StandinCall& call);
    sc::HRESULT finish(RecordedCall& record, sc::HRESULT result);
    // The simulator refuses the call: S_OK now, the EXCEPTION on the next dispatch.
    sc::HRESULT reject(Connection& connection, RecordedCall& record,
                       sc::SIMCONNECT_EXCEPTION exception, sc::DWORD argument);

    void runFrameLocked();
    void serveRequestLocked(Connection& connection, Request& request, bool& finished);
    Message dataBlockLocked(const Definition& definition);
    void advanceClockLocked();
    void rebaseClockLocked(double value);
    void assignLVarLocked(const std::string& key, double value);
    void queueLocked(Connection& connection, Message message);
    void sendEventLocked(std::string_view eventName, sc::DWORD data);
    void sendFileEventLocked(std::string_view eventName, const std::string& path);
    void resetStateLocked();
    void frameThreadMain();

    std::mutex mutex_;
    std::mutex frameThreadMutex_;  // serialises starting and stopping the frame thread
    std::condition_variable frameWake_;
    std::thread frameThread_;
    bool frameThreadStop_ = false;

    std::map<std::uintptr_t, Connection> connections_;
    std::unordered_set<std::uintptr_t> issuedHandles_;
    std::uintptr_t nextHandle_ = 0;
    std::vector<RecordedCall> calls_;
    StandinCounters counters_{};

    std::unordered_map<std::string, double> lvars_;  // lower-case name without "L:"
    std::string title_;
    std::string flightPath_;
    std::string aircraftPath_;
    bool simRunning_ = true;
    bool paused_ = false;
    bool clockStalled_ = false;
    bool keepAliveAnswers_ = true;
    std::uint32_t closeDelayMs_ = 0;
    std::string unknownVariable_;  // lower case; empty: every variable is known
    sc::HRESULT openResult_ = sc::kSOk;
    std::uint32_t framesPerSecond_ = 30;
    std::uint64_t frameCount_ = 0;
    double clockBase_ = 0.0;
    std::uint64_t clockFrames_ = 0;
};

}  // namespace helmbridge::standin
