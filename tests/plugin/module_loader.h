// Loads the built module the way a host does and resolves its exports by name.
#pragma once

#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif

namespace helmbridge::testing {

// Directory of the running test program, with a trailing separator.
inline std::string programDirectory() {
#if defined(_WIN32)
    char path[MAX_PATH * 4] = {};
    const DWORD n = GetModuleFileNameA(nullptr, path, sizeof(path));
    std::string s(path, n);
    return s.substr(0, s.find_last_of("\\/") + 1);
#else
    char path[4096] = {};
    const ssize_t n = readlink("/proc/self/exe", path, sizeof(path) - 1);
    std::string s(path, n > 0 ? static_cast<std::size_t>(n) : 0);
    return s.substr(0, s.find_last_of('/') + 1);
#endif
}

class LoadedModule {
  public:
    explicit LoadedModule(const std::string& path) {
#if defined(_WIN32)
        handle_ = LoadLibraryA(path.c_str());
#else
        handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
    }
    ~LoadedModule() { unload(); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    bool loaded() const { return handle_ != nullptr; }

    template <typename Fn>
    Fn symbol(const char* name) const {
        if (!handle_) return nullptr;
#if defined(_WIN32)
        return reinterpret_cast<Fn>(
            reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name)));
#else
        return reinterpret_cast<Fn>(dlsym(handle_, name));
#endif
    }

    void unload() {
        if (!handle_) return;
#if defined(_WIN32)
        FreeLibrary(static_cast<HMODULE>(handle_));
#else
        dlclose(handle_);
#endif
        handle_ = nullptr;
    }

  private:
    void* handle_ = nullptr;
};

}  // namespace helmbridge::testing
