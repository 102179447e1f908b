// Loads the SimConnect client library and resolves its ten functions.
#include "platform/simconnect_binding.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>
#endif

namespace helmbridge::platform {
namespace {

#if defined(_WIN32)

using LibraryHandle = HMODULE;

LibraryHandle openLibrary(const std::filesystem::path& file) { return LoadLibraryW(file.c_str()); }

void* librarySymbol(LibraryHandle library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(library, name));
}

void releaseLibrary(LibraryHandle library) { FreeLibrary(library); }

#else

using LibraryHandle = void*;

LibraryHandle openLibrary(const std::filesystem::path& file) {
    return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* librarySymbol(LibraryHandle library, const char* name) { return dlsym(library, name); }

void releaseLibrary(LibraryHandle library) { dlclose(library); }

#endif

template <typename Fn>
bool resolve(LibraryHandle library, const char* name, Fn& out) {
    out = reinterpret_cast<Fn>(librarySymbol(library, name));
    return out != nullptr;
}

bool resolveAll(LibraryHandle library, SimConnectApi& api) {
    return resolve(library, "SimConnect_Open", api.open) &&
           resolve(library, "SimConnect_Close", api.close) &&
           resolve(library, "SimConnect_CallDispatch", api.callDispatch) &&
           resolve(library, "SimConnect_RequestSystemState", api.requestSystemState) &&
           resolve(library, "SimConnect_AddToDataDefinition", api.addToDataDefinition) &&
           resolve(library, "SimConnect_RequestDataOnSimObject", api.requestDataOnSimObject) &&
           resolve(library, "SimConnect_SubscribeToSystemEvent", api.subscribeToSystemEvent) &&
           resolve(library, "SimConnect_UnsubscribeFromSystemEvent",
                   api.unsubscribeFromSystemEvent) &&
           resolve(library, "SimConnect_ClearDataDefinition", api.clearDataDefinition) &&
           resolve(library, "SimConnect_SetDataOnSimObject", api.setDataOnSimObject);
}

// Any address inside this module serves to find the module's file.
void addressInThisModule() {}

// The value of an environment variable as a path; empty when it is not set.
std::filesystem::path environmentPath(const char* name) {
#if defined(_WIN32)
    const std::wstring wide(name, name + std::char_traits<char>::length(name));
    const DWORD size = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
    if (size == 0) return {};
    std::wstring value(size, L'\0');
    const DWORD length = GetEnvironmentVariableW(wide.c_str(), value.data(), size);
    if (length == 0 || length >= size) return {};
    value.resize(length);
    return value;
#else
    const char* value = std::getenv(name);
    return value != nullptr ? std::filesystem::path(value) : std::filesystem::path{};
#endif
}

std::string displayPath(const std::filesystem::path& file) {
    const std::u8string text = file.u8string();
    return {text.begin(), text.end()};
}

const char* outcome(BindStatus status) {
    switch (status) {
        case BindStatus::kBound:
            return "loaded";
        case BindStatus::kLibraryMissing:
            return "missing or not loadable";
        case BindStatus::kFunctionMissing:
            return "lacks a SimConnect function";
    }
    return "";
}

}  // namespace

std::filesystem::path moduleDirectory() {
#if defined(_WIN32)
    HMODULE self = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&addressInThisModule), &self)) {
        return {};
    }
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(self, name.data(), static_cast<DWORD>(name.size()));
        if (n == 0) return {};
        if (n < name.size()) {
            name.resize(n);
            break;
        }
        name.resize(name.size() * 2);  // truncated: long-path installs exceed MAX_PATH
    }
    return std::filesystem::path(name).parent_path();
#else
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(reinterpret_cast<void*>(&addressInThisModule), &info,
                reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) {
        return {};
    }
    // The main program's link map has an empty name, and dladdr's fallback for it (argv[0]) may
    // be relative or just a name found on PATH.
    if (map == nullptr || map->l_name == nullptr || map->l_name[0] == '\0') {
        std::string exe(4096, '\0');
        const ssize_t n = readlink("/proc/self/exe", exe.data(), exe.size());
        if (n <= 0 || static_cast<std::size_t>(n) >= exe.size()) return {};
        exe.resize(static_cast<std::size_t>(n));
        return std::filesystem::path(exe).parent_path();
    }
    std::error_code error;
    const auto file = std::filesystem::absolute(map->l_name, error);
    return error ? std::filesystem::path{} : file.parent_path();
#endif
}

BindStatus bindSimConnectLibrary(const std::filesystem::path& file, SimConnectApi& api) {
    api = SimConnectApi{};
    LibraryHandle library = openLibrary(file);
    if (library == nullptr) return BindStatus::kLibraryMissing;
    SimConnectApi candidate;
    if (!resolveAll(library, candidate)) {
        // Nothing of this library was handed out, so releasing it is safe.
        releaseLibrary(library);
        return BindStatus::kFunctionMissing;
    }
    api = candidate;
    return BindStatus::kBound;
}

std::vector<SearchPlace> simConnectSearchPlaces(const std::filesystem::path& moduleDirectory,
                                                const std::filesystem::path& sdk2024,
                                                const std::filesystem::path& sdk2020) {
    const std::filesystem::path name(kSimConnectLibraryName);
    const auto inSdk = [&name](const std::filesystem::path& sdk) {
        return sdk.empty() ? sdk : sdk / "SimConnect SDK" / "lib" / name;
    };
    std::vector<SearchPlace> places;
    if (!moduleDirectory.empty()) places.push_back({"next to the module", moduleDirectory / name});
    places.push_back({"search path", name});
    places.push_back({"MSFS2024_SDK", inSdk(sdk2024)});
    places.push_back({"MSFS_SDK", inSdk(sdk2020)});
    return places;
}

std::vector<SearchPlace> simConnectSearchPlaces(const std::filesystem::path& moduleDirectory) {
    return simConnectSearchPlaces(moduleDirectory, environmentPath("MSFS2024_SDK"),
                                  environmentPath("MSFS_SDK"));
}

BindStatus bindFirst(const std::vector<SearchPlace>& places, SimConnectApi& api,
                     std::string& report) {
    api = SimConnectApi{};
    report = std::string(kSimConnectLibraryName) + " not loaded; tried";
    BindStatus last = BindStatus::kLibraryMissing;
    const char* separator = ": ";
    for (const SearchPlace& place : places) {
        report += separator;
        separator = "; ";
        report += place.where;
        if (place.file.empty()) {
            report += " (not set)";
            continue;
        }
        last = bindSimConnectLibrary(place.file, api);
        if (last == BindStatus::kBound) {
            report.clear();
            return last;
        }
        report += " " + displayPath(place.file) + " (" + outcome(last) + ")";
    }
    return last;
}

namespace {

std::mutex bindMutex;
std::string lastReport;  // guarded by bindMutex

}  // namespace

const SimConnectApi* bindSimConnect() {
    static std::atomic<const SimConnectApi*> bound{nullptr};
    static SimConnectApi api;

    if (const SimConnectApi* known = bound.load(std::memory_order_acquire)) return known;
    std::lock_guard lock(bindMutex);
    if (const SimConnectApi* known = bound.load(std::memory_order_relaxed)) return known;

    const auto places = simConnectSearchPlaces(moduleDirectory());
    SimConnectApi candidate;
    if (bindFirst(places, candidate, lastReport) != BindStatus::kBound) return nullptr;
    api = candidate;
    bound.store(&api, std::memory_order_release);
    return &api;
}

std::string simConnectSearchReport() {
    std::lock_guard lock(bindMutex);
    return lastReport;
}

}  // namespace helmbridge::platform
