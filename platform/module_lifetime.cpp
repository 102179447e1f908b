// The module's reference to itself, and process-exit detection.
#include "platform/module_lifetime.h"

#include <atomic>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace helmbridge::platform {
namespace {

// Also the address by which the loader finds the module that holds this code.
std::atomic<bool> exiting{false};

}  // namespace

void ModuleReference::take() {
    if (handle_ != nullptr) return;
#if defined(_WIN32)
    HMODULE self = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<LPCWSTR>(&exiting), &self)) {
        handle_ = self;
    }
#else
    Dl_info info{};
    if (dladdr(static_cast<void*>(&exiting), &info) != 0 && info.dli_fname != nullptr) {
        // Finds the loaded module under the name it was loaded by and counts one more user.
        handle_ = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    }
#endif
}

void ModuleReference::giveBack() {
    if (handle_ == nullptr) return;
#if defined(_WIN32)
    FreeLibrary(static_cast<HMODULE>(handle_));
#else
    dlclose(handle_);
#endif
    handle_ = nullptr;
}

bool processExiting() { return exiting.load(); }

void noteProcessExit() { exiting.store(true); }

}  // namespace helmbridge::platform
