// Entry point of a DLL: runs the module's static constructors before its DllMain sees the
// attach, and its DllMain before the module's exit table (static destructors, atexit) at detach,
// as Visual C++'s runtime orders them.
#include <windows.h>

#include "runtime.h"

extern "C" {
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
}

namespace {

void detachRuntime() {
    helmbridge::runtime::runModuleExitTable();
    helmbridge::runtime::releaseTypeNames();
}

}  // namespace

extern "C" BOOL WINAPI _DllMainCRTStartup(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH) {
        helmbridge::runtime::useModuleExitTable();
        if (!helmbridge::runtime::runInitialisers()) {
            detachRuntime();
            return FALSE;
        }
        if (!DllMain(instance, reason, reserved)) {
            detachRuntime();
            return FALSE;
        }
        return TRUE;
    }
    const BOOL result = DllMain(instance, reason, reserved);
    if (reason == DLL_PROCESS_DETACH) detachRuntime();
    return result;
}
