// Run-time binding of the SimConnect client library: the module never links it at build time.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

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

// Binds the client library from the first place of simConnectSearchPlaces() that holds a
// loadable library with all ten functions. Returns null while there is none, so a caller simply
// tries again at its next attempt; simConnectSearchReport() then says what was tried. Once bound,
// every later call returns the same table without searching; the library stays loaded for the
// rest of the process. Safe to call from any thread.
const SimConnectApi* bindSimConnect();

// One line naming every place the last unsuccessful bindSimConnect() tried and why each failed;
// empty when the library is bound or no search was made.
std::string simConnectSearchReport();

enum class BindStatus { kBound, kLibraryMissing, kFunctionMissing };

// Loads one library file (a bare file name means the default search) and resolves the ten
// functions into `api`. A library that lacks a function is released again and `api` is left
// empty; a bound one is never released.
BindStatus bindSimConnectLibrary(const std::filesystem::path& file, SimConnectApi& api);

// A place to look for the client library. An empty file stands for an SDK variable that is not
// set; a bare file name for the system's own search (on Windows the host's folder first, as for
// a linked import).
struct SearchPlace {
    std::string where;  // "next to the module", "search path", "MSFS2024_SDK", "MSFS_SDK"
    std::filesystem::path file;
};

// The search order: next to the module, the system's search, then the SimConnect SDKs that the
// SDK installers name in MSFS2024_SDK and MSFS_SDK ("<SDK>/SimConnect SDK/lib/").
std::vector<SearchPlace> simConnectSearchPlaces(const std::filesystem::path& moduleDirectory,
                                                const std::filesystem::path& sdk2024,
                                                const std::filesystem::path& sdk2020);

// The same, for a module in `moduleDirectory`, with the SDKs this process's environment names.
std::vector<SearchPlace> simConnectSearchPlaces(const std::filesystem::path& moduleDirectory);

// Binds from the first place that works; otherwise leaves `api` empty and `report` naming each
// place with its outcome.
BindStatus bindFirst(const std::vector<SearchPlace>& places, SimConnectApi& api,
                     std::string& report);

// Directory of the module file (the executable when this code is linked into one); empty when
// it cannot be found.
std::filesystem::path moduleDirectory();

}  // namespace helmbridge::platform
