// The initialiser tables and the exit table of one module. The linker sorts the .CRT$X?? sections
// by name, so the markers here bound every C initialiser (.CRT$XI*) and every C++ static
// constructor (.CRT$XC*) that the module's objects contributed.
#include <corecrt_startup.h>

#include "runtime.h"

#pragma section(".CRT$XIA", long, read)
#pragma section(".CRT$XIZ", long, read)
#pragma section(".CRT$XCA", long, read)
#pragma section(".CRT$XCZ", long, read)

// Objects that use floating point refer to this; Visual C++'s runtime defines it with this value.
extern "C" int _fltused = 0x9875;

namespace {

__declspec(allocate(".CRT$XIA")) _PIFV cInitBegin[] = {nullptr};
__declspec(allocate(".CRT$XIZ")) _PIFV cInitEnd[] = {nullptr};
__declspec(allocate(".CRT$XCA")) _PVFV cxxInitBegin[] = {nullptr};
__declspec(allocate(".CRT$XCZ")) _PVFV cxxInitEnd[] = {nullptr};

bool moduleExitTableInUse = false;
_onexit_table_t moduleExitTable{};

}  // namespace

namespace helmbridge::runtime {

bool runInitialisers() {
    if (_initterm_e(cInitBegin, cInitEnd) != 0) return false;
    _initterm(cxxInitBegin, cxxInitEnd);
    return true;
}

void useModuleExitTable() {
    _initialize_onexit_table(&moduleExitTable);
    moduleExitTableInUse = true;
}

void runModuleExitTable() { _execute_onexit_table(&moduleExitTable); }

}  // namespace helmbridge::runtime

// clang registers the destructor of every static object with atexit. The UCRT's tables hold
// _onexit_t entries and call them without looking at a result, as Visual C++'s runtime does.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wcast-function-type-mismatch"
extern "C" int __cdecl atexit(_PVFV function) {
    if (!moduleExitTableInUse) return _crt_atexit(function);
    return _register_onexit_function(&moduleExitTable, reinterpret_cast<_onexit_t>(function));
}

extern "C" _onexit_t __cdecl _onexit(_onexit_t function) {
    return atexit(reinterpret_cast<_PVFV>(function)) == 0 ? function : nullptr;
}
#pragma clang diagnostic pop
