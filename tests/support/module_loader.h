// The built module loaded as a host loads it, through the host tool's loader: the nineteen
// exports resolved by name, unloaded on request.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/module.h"

namespace helmbridge::testing {

// Where the build puts the tests, the module, the stand-in and the tools side by side.
std::filesystem::path programDirectory();

class LoadedModule {
  public:
    // The module beside the running program, or `file`; false with the reason in error() when
    // the file is missing or lacks an export.
    bool load(const std::filesystem::path& file = host::Module::defaultPath());
    void unload() { module_.reset(); }
    bool loaded() const { return module_.has_value(); }
    const std::string& error() const { return error_; }
    const host::Exports* operator->() const { return &module_->exports(); }

  private:
    std::optional<host::Module> module_;
    std::string error_;
};

// Whether the module's file is mapped into this process, loaded by anyone.
bool moduleMapped();

}  // namespace helmbridge::testing
