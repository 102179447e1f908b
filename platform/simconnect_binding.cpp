// Loads the SimConnect client library and resolves its ten functions.
#include "platform/simconnect_binding.h"

#include <atomic>
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

const SimConnectApi* bindSimConnect() {
    static std::atomic<const SimConnectApi*> bound{nullptr};
    static std::mutex bindMutex;
    static SimConnectApi api;

    if (const SimConnectApi* known = bound.load(std::memory_order_acquire)) return known;
    std::lock_guard lock(bindMutex);
    if (const SimConnectApi* known = bound.load(std::memory_order_relaxed)) return known;

    const std::filesystem::path name(kSimConnectLibraryName);
    const std::filesystem::path directory = moduleDirectory();
    SimConnectApi candidate;
    if ((!directory.empty() &&
         bindSimConnectLibrary(directory / name, candidate) == BindStatus::kBound) ||
        bindSimConnectLibrary(name, candidate) == BindStatus::kBound) {
        api = candidate;
        bound.store(&api, std::memory_order_release);
        return &api;
    }
    return nullptr;
}

}  // namespace helmbridge::platform
