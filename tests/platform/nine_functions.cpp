// Nine of the ten SimConnect client functions (SetDataOnSimObject is missing), to be refused.
#include "platform/simconnect_abi.h"

#if defined(_WIN32)
#define NINE_EXPORT extern "C" __declspec(dllexport)
#else
#define NINE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace sc = helmbridge::simconnect;

NINE_EXPORT sc::HRESULT SimConnect_Open(sc::HANDLE*, const char*, sc::HWND, sc::DWORD, sc::HANDLE,
                                        sc::DWORD) {
    return sc::kEFail;
}
NINE_EXPORT sc::HRESULT SimConnect_Close(sc::HANDLE) { return sc::kEFail; }
NINE_EXPORT sc::HRESULT SimConnect_CallDispatch(sc::HANDLE, sc::DispatchProc, void*) {
    return sc::kEFail;
}
NINE_EXPORT sc::HRESULT SimConnect_RequestSystemState(sc::HANDLE, sc::DWORD, const char*) {
    return sc::kEFail;
}
NINE_EXPORT sc::HRESULT SimConnect_AddToDataDefinition(sc::HANDLE, sc::DWORD, const char*,
                                                       const char*, sc::SIMCONNECT_DATATYPE, float,
                                                       sc::DWORD) {
    return sc::kEFail;
}
NINE_EXPORT sc::HRESULT SimConnect_RequestDataOnSimObject(sc::HANDLE, sc::DWORD, sc::DWORD,
                                                          sc::DWORD, sc::SIMCONNECT_PERIOD,
                                                          sc::DWORD, sc::DWORD, sc::DWORD,
                                                          sc::DWORD) {
    return sc::kEFail;
}
NINE_EXPORT sc::HRESULT SimConnect_SubscribeToSystemEvent(sc::HANDLE, sc::DWORD, const char*) {
    return sc::kEFail;
}
NINE_EXPORT sc::HRESULT SimConnect_UnsubscribeFromSystemEvent(sc::HANDLE, sc::DWORD) {
    return sc::kEFail;
}
NINE_EXPORT sc::HRESULT SimConnect_ClearDataDefinition(sc::HANDLE, sc::DWORD) { return sc::kEFail; }
