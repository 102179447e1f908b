// Loading the module for tests, and whether it is still mapped after an unload.
#include "tests/support/module_loader.h"

#if defined(_WIN32)
#include <windows.h>
#endif

#include "tests/support/process.h"

namespace helmbridge::testing {

std::filesystem::path programDirectory() { return host::executableDirectory(); }

bool LoadedModule::load(const std::filesystem::path& file) {
    module_.emplace();
    if (module_->load(file, error_)) return true;
    module_.reset();
    return false;
}

bool moduleMapped() {
#if defined(_WIN32)
    return GetModuleHandleA(host::moduleFileName()) != nullptr;
#else
    return readFile("/proc/self/maps").find(std::string("/") + host::moduleFileName()) !=
           std::string::npos;
#endif
}

}  // namespace helmbridge::testing
