// Windows entry point of the module: it notes a process exit and, at an unload, frees what the
// runtime linked into the module would leave behind; the core does the rest.
#if defined(_WIN32)
#include <windows.h>

#include "platform/module_lifetime.h"

#if defined(__GLIBCXX__)
// The runtime's release of its emergency buffer for exceptions, which no header declares.
namespace __gnu_cxx {
void __freeres() noexcept;
}
#endif

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    if (reason != DLL_PROCESS_DETACH) return TRUE;
    // A non-null reserved pointer on detach means the process is terminating, not FreeLibrary.
    if (reserved != nullptr) {
        helmbridge::platform::noteProcessExit();
        return TRUE;
    }
#if defined(__GLIBCXX__)
    // The runtime is linked into the module statically, so each load allocates its own buffer
    // (about 70 kB) in the host's heap, and nothing frees it: a host that reloads the module
    // would lose one each time.
    __gnu_cxx::__freeres();
#endif
    return TRUE;
}
#endif
