// The ten SimConnect client functions, exported with C linkage under their ABI names.
#include <type_traits>

#include "platform/simconnect_abi.h"
#include "simulator/world.h"

#if defined(_WIN32)
#define HELMBRIDGE_SIMCONNECT_EXPORT __declspec(dllexport)
#else
#define HELMBRIDGE_SIMCONNECT_EXPORT __attribute__((visibility("default")))
#endif

namespace sc = helmbridge::simconnect;
using helmbridge::standin::World;

extern "C" {

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_Open(sc::HANDLE* phSimConnect, sc::LPCSTR szName, sc::HWND hWnd,
                sc::DWORD UserEventWin32, sc::HANDLE hEventHandle, sc::DWORD ConfigIndex) {
    return World::instance().open(phSimConnect, szName, hWnd, UserEventWin32, hEventHandle,
                                  ConfigIndex);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_Close(sc::HANDLE hSimConnect) {
    return World::instance().close(hSimConnect);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_CallDispatch(sc::HANDLE hSimConnect, sc::DispatchProc pfcnDispatch, void* pContext) {
    return World::instance().callDispatch(hSimConnect, pfcnDispatch, pContext);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL SimConnect_RequestSystemState(
    sc::HANDLE hSimConnect, sc::SIMCONNECT_DATA_REQUEST_ID RequestID, const char* szState) {
    return World::instance().requestSystemState(hSimConnect, RequestID, szState);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL SimConnect_AddToDataDefinition(
    sc::HANDLE hSimConnect, sc::SIMCONNECT_DATA_DEFINITION_ID DefineID, const char* DatumName,
    const char* UnitsName, sc::SIMCONNECT_DATATYPE DatumType, float fEpsilon, sc::DWORD DatumID) {
    return World::instance().addToDataDefinition(hSimConnect, DefineID, DatumName, UnitsName,
                                                 DatumType, fEpsilon, DatumID);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_RequestDataOnSimObject(sc::HANDLE hSimConnect, sc::SIMCONNECT_DATA_REQUEST_ID RequestID,
                                  sc::SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                  sc::SIMCONNECT_OBJECT_ID ObjectID, sc::SIMCONNECT_PERIOD Period,
                                  sc::SIMCONNECT_DATA_REQUEST_FLAG Flags, sc::DWORD origin,
                                  sc::DWORD interval, sc::DWORD limit) {
    return World::instance().requestDataOnSimObject(hSimConnect, RequestID, DefineID, ObjectID,
                                                    Period, Flags, origin, interval, limit);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_SubscribeToSystemEvent(sc::HANDLE hSimConnect, sc::SIMCONNECT_CLIENT_EVENT_ID EventID,
                                  const char* SystemEventName) {
    return World::instance().subscribeToSystemEvent(hSimConnect, EventID, SystemEventName);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_UnsubscribeFromSystemEvent(sc::HANDLE hSimConnect,
                                      sc::SIMCONNECT_CLIENT_EVENT_ID EventID) {
    return World::instance().unsubscribeFromSystemEvent(hSimConnect, EventID);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_ClearDataDefinition(sc::HANDLE hSimConnect, sc::SIMCONNECT_DATA_DEFINITION_ID DefineID) {
    return World::instance().clearDataDefinition(hSimConnect, DefineID);
}

HELMBRIDGE_SIMCONNECT_EXPORT sc::HRESULT HELMBRIDGE_SIMCONNECT_CALL
SimConnect_SetDataOnSimObject(sc::HANDLE hSimConnect, sc::SIMCONNECT_DATA_DEFINITION_ID DefineID,
                              sc::SIMCONNECT_OBJECT_ID ObjectID, sc::SIMCONNECT_DATA_SET_FLAG Flags,
                              sc::DWORD ArrayCount, sc::DWORD cbUnitSize, void* pDataSet) {
    return World::instance().setDataOnSimObject(hSimConnect, DefineID, ObjectID, Flags, ArrayCount,
                                                cbUnitSize, pDataSet);
}

}  // extern "C"

// The exports must have exactly the types the module binds them as.
static_assert(std::is_same_v<decltype(&SimConnect_Open), sc::OpenFn>);
static_assert(std::is_same_v<decltype(&SimConnect_Close), sc::CloseFn>);
static_assert(std::is_same_v<decltype(&SimConnect_CallDispatch), sc::CallDispatchFn>);
static_assert(std::is_same_v<decltype(&SimConnect_RequestSystemState), sc::RequestSystemStateFn>);
static_assert(std::is_same_v<decltype(&SimConnect_AddToDataDefinition), sc::AddToDataDefinitionFn>);
static_assert(
    std::is_same_v<decltype(&SimConnect_RequestDataOnSimObject), sc::RequestDataOnSimObjectFn>);
static_assert(
    std::is_same_v<decltype(&SimConnect_SubscribeToSystemEvent), sc::SubscribeToSystemEventFn>);
static_assert(std::is_same_v<decltype(&SimConnect_UnsubscribeFromSystemEvent),
                             sc::UnsubscribeFromSystemEventFn>);
static_assert(std::is_same_v<decltype(&SimConnect_ClearDataDefinition), sc::ClearDataDefinitionFn>);
static_assert(std::is_same_v<decltype(&SimConnect_SetDataOnSimObject), sc::SetDataOnSimObjectFn>);
