// Keeps the module mapped while its threads may run, and tells when the process is exiting.
#pragma once

namespace helmbridge::platform {

// Pins the module that holds this code in memory for the rest of the process: a host that
// unloads it without stopping it first must not pull the code from under running workers.
// Harmless when called again, or when this code is linked into an executable.
void pinModule();

// True once the operating system has started tearing the process down with the module still
// loaded. On Windows the other threads are gone by then and the loader lock is held, so the
// module must neither join threads nor call into other libraries.
bool processExiting();

// Called by the Windows entry point when the process detaches the module at exit.
void noteProcessExit();

}  // namespace helmbridge::platform
