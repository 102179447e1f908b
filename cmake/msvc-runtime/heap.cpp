// The replaceable allocation functions on the UCRT's heap, which every module of the process
// shares: memory that the host allocates the module may free, and the other way round.
#include <malloc.h>
#include <stdlib.h>

#include <new>

extern "C" __declspec(dllimport) int __cdecl _callnewh(size_t size);

namespace {

// Retries while an installed new-handler frees memory, as the standard asks.
void* allocate(size_t size) {
    if (size == 0) size = 1;
    for (;;) {
        if (void* block = malloc(size)) return block;
        if (_callnewh(size) == 0) throw std::bad_alloc();
    }
}

void* allocateAligned(size_t size, std::align_val_t alignment) {
    if (size == 0) size = 1;
    for (;;) {
        if (void* block = _aligned_malloc(size, static_cast<size_t>(alignment))) return block;
        if (_callnewh(size) == 0) throw std::bad_alloc();
    }
}

}  // namespace

const std::nothrow_t std::nothrow{};

void* __cdecl operator new(size_t size) { return allocate(size); }
void* __cdecl operator new[](size_t size) { return allocate(size); }
void* __cdecl operator new(size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void* __cdecl operator new[](size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void __cdecl operator delete(void* block) noexcept { free(block); }
void __cdecl operator delete[](void* block) noexcept { free(block); }
void __cdecl operator delete(void* block, size_t) noexcept { free(block); }
void __cdecl operator delete[](void* block, size_t) noexcept { free(block); }
void __cdecl operator delete(void* block, const std::nothrow_t&) noexcept { free(block); }
void __cdecl operator delete[](void* block, const std::nothrow_t&) noexcept { free(block); }

void* __cdecl operator new(size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
}
void* __cdecl operator new[](size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
}
void* __cdecl operator new(size_t size, std::align_val_t alignment,
                           const std::nothrow_t&) noexcept {
    try {
        return allocateAligned(size, alignment);
    } catch (...) {
        return nullptr;
    }
}
void* __cdecl operator new[](size_t size, std::align_val_t alignment,
                             const std::nothrow_t& tag) noexcept {
    return operator new(size, alignment, tag);
}
void __cdecl operator delete(void* block, std::align_val_t) noexcept { _aligned_free(block); }
void __cdecl operator delete[](void* block, std::align_val_t) noexcept { _aligned_free(block); }
void __cdecl operator delete(void* block, size_t, std::align_val_t) noexcept {
    _aligned_free(block);
}
void __cdecl operator delete[](void* block, size_t, std::align_val_t) noexcept {
    _aligned_free(block);
}
void __cdecl operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    _aligned_free(block);
}
void __cdecl operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    _aligned_free(block);
}
