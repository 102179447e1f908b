// Keeps the module mapped while its threads may run, and tells when the process is exiting.
#pragma once

namespace helmbridge::platform {

// One counted reference to the module that holds this code. While it is held, a host that
// unloads the module without stopping it first leaves the code mapped under the running
// workers; once it is given back, the host's unload really unloads. In a program that links
// this code directly there is nothing to unload and the reference does no harm.
class ModuleReference {
  public:
    ModuleReference() = default;
    ModuleReference(const ModuleReference&) = delete;
    ModuleReference& operator=(const ModuleReference&) = delete;
    // Leaves a held reference held: the module is then being torn down at process exit, and
    // giving it back could be what unmaps the code running the teardown.
    ~ModuleReference() = default;

    // Takes the reference unless it is held already.
    void take();
    // Gives a held reference back. It must never be the module's last one, or the module would
    // be unmapped under this very call: only while the host still holds its own reference.
    void giveBack();

  private:
    void* handle_ = nullptr;
};

// True once the operating system has started tearing the process down with the module still
// loaded. On Windows the other threads are gone by then and the loader lock is held, so the
// module must neither join threads nor call into other libraries.
bool processExiting();

// Called by the Windows entry point when the process detaches the module at exit.
void noteProcessExit();

}  // namespace helmbridge::platform
