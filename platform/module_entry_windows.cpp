// Windows entry point of the module: it only notes a process exit, the core does the rest.
#if defined(_WIN32)
#include <windows.h>

#include "platform/module_lifetime.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    // A non-null reserved pointer on detach means the process is terminating, not FreeLibrary.
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr) {
        helmbridge::platform::noteProcessExit();
    }
    return TRUE;
}
#endif
