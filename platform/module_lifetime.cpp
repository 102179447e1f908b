// Module pinning and process-exit detection.
#include "platform/module_lifetime.h"

#include <atomic>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace helmbridge::platform {
namespace {

std::atomic<bool> exiting{false};

}  // namespace

void pinModule() {
#if defined(_WIN32)
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&pinModule), &self);
#else
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&pinModule), &info) != 0 && info.dli_fname != nullptr) {
        // Takes no new reference: only marks the loaded object as never to be unmapped.
        if (void* handle = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE)) {
            dlclose(handle);
        }
    }
#endif
}

bool processExiting() { return exiting.load(); }

void noteProcessExit() { exiting.store(true); }

}  // namespace helmbridge::platform
