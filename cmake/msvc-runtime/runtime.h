// What the start-up code of programs and DLLs shares within the static runtime.
#pragma once
#include <corecrt_startup.h>

extern "C" {
__declspec(dllimport) void __cdecl _initterm(_PVFV* first, _PVFV* last);
__declspec(dllimport) int __cdecl _initterm_e(_PIFV* first, _PIFV* last);
}

namespace helmbridge::runtime {

// Runs the module's C initialisers, then its C++ static constructors; false when a C
// initialiser failed.
bool runInitialisers();

// A DLL keeps its own exit table, run when it detaches: a Visual C++ DLL's atexit is
// module-local. A program's atexit goes to the process-wide table that exit() runs.
void useModuleExitTable();
void runModuleExitTable();

// Frees the names that type_info::name() cached for the module's types.
void releaseTypeNames();

}  // namespace helmbridge::runtime
