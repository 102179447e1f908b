// Entry point of a console program: the UCRT's view of the command line and environment, the
// program's static constructors, main, and exit(), which runs the process-wide exit table.
#include <stdlib.h>

#include "runtime.h"

extern "C" {
__declspec(dllimport) int* __cdecl __p___argc();
__declspec(dllimport) char*** __cdecl __p___argv();
__declspec(dllimport) char*** __cdecl __p__environ();
// main as the program defines it; the extra arguments are harmless in this calling convention.
int __cdecl programMain(int argc, char** argv, char** envp) __asm__("main");
}

extern "C" int __cdecl mainCRTStartup() {
    _set_app_type(_crt_console_app);
    _configure_narrow_argv(_crt_argv_unexpanded_arguments);
    _initialize_narrow_environment();
    if (!helmbridge::runtime::runInitialisers()) return 255;
    exit(programMain(*__p___argc(), *__p___argv(), *__p__environ()));
}
