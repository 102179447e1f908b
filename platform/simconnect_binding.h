// Run-time binding of the SimConnect client library: the module never links it at build time.
#pragma once

#include <filesystem>

#include "platform/simconnect_abi.h"

namespace helmbridge::platform {

// The ten client functions the module calls, all bound or none.
struct SimConnectApi {
    simconnect::OpenFn open = nullptr;
    simconnect::CloseFn close = nullptr;
    simconnect::CallDispatchFn callDispatch = nullptr;
    simconnect::RequestSystemStateFn requestSystemState = nullptr;
    simconnect::AddToDataDefinitionFn addToDataDefinition = nullptr;
    simconnect::RequestDataOnSimObjectFn requestDataOnSimObject = nullptr;
    simconnect::SubscribeToSystemEventFn subscribeToSystemEvent = nullptr;
    simconnect::UnsubscribeFromSystemEventFn unsubscribeFromSystemEvent = nullptr;
    simconnect::ClearDataDefinitionFn clearDataDefinition = nullptr;
    simconnect::SetDataOnSimObjectFn setDataOnSimObject = nullptr;
};

#if defined(_WIN32)
inline constexpr const char* kSimConnectLibraryName = "SimConnect.dll";
#else
inline constexpr const char* kSimConnectLibraryName = "libSimConnect.so";
#endif

// Binds the client library: first the file next to the module (the file that holds this code),
// then the platform's default library search. Returns null while the library or any of the ten
// functions is missing, so a caller simply tries again at its next attempt. Once bound, every
// later call returns the same table without searching; the library stays loaded for the rest of
// the process. Safe to call from any thread.
const SimConnectApi* bindSimConnect();

enum class BindStatus { kBound, kLibraryMissing, kFunctionMissing };

// Loads one library file (a bare file name means the default search) and resolves the ten
// functions into `api`. A library that lacks a function is released again and `api` is left
// empty; a bound one is never released.
BindStatus bindSimConnectLibrary(const std::filesystem::path& file, SimConnectApi& api);

// Directory of the module file (the executable when this code is linked into one); empty when
// it cannot be found.
std::filesystem::path moduleDirectory();

}  // namespace helmbridge::platform
