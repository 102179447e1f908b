// The replaceable allocation functions. The static runtime defines them on the UCRT's malloc and
// free (cmake/msvc-runtime/heap.cpp), so module and host share one heap.
#pragma once
#include <vcruntime.h>

namespace std {
enum class align_val_t : size_t {};
struct nothrow_t {
    explicit nothrow_t() = default;
};
extern const nothrow_t nothrow;
}  // namespace std

[[nodiscard]] void* __cdecl operator new(size_t);
[[nodiscard]] void* __cdecl operator new(size_t, const std::nothrow_t&) noexcept;
[[nodiscard]] void* __cdecl operator new[](size_t);
[[nodiscard]] void* __cdecl operator new[](size_t, const std::nothrow_t&) noexcept;
void __cdecl operator delete(void*) noexcept;
void __cdecl operator delete(void*, const std::nothrow_t&) noexcept;
void __cdecl operator delete[](void*) noexcept;
void __cdecl operator delete[](void*, const std::nothrow_t&) noexcept;
void __cdecl operator delete(void*, size_t) noexcept;
void __cdecl operator delete[](void*, size_t) noexcept;
[[nodiscard]] void* __cdecl operator new(size_t, std::align_val_t);
[[nodiscard]] void* __cdecl operator new(size_t, std::align_val_t, const std::nothrow_t&) noexcept;
[[nodiscard]] void* __cdecl operator new[](size_t, std::align_val_t);
[[nodiscard]] void* __cdecl operator new[](size_t, std::align_val_t,
                                           const std::nothrow_t&) noexcept;
void __cdecl operator delete(void*, std::align_val_t) noexcept;
void __cdecl operator delete(void*, std::align_val_t, const std::nothrow_t&) noexcept;
void __cdecl operator delete[](void*, std::align_val_t) noexcept;
void __cdecl operator delete[](void*, std::align_val_t, const std::nothrow_t&) noexcept;
void __cdecl operator delete(void*, size_t, std::align_val_t) noexcept;
void __cdecl operator delete[](void*, size_t, std::align_val_t) noexcept;

#ifndef __PLACEMENT_NEW_INLINE
#define __PLACEMENT_NEW_INLINE
[[nodiscard]] inline void* __cdecl operator new(size_t, void* _Where) noexcept { return _Where; }
inline void __cdecl operator delete(void*, void*) noexcept {}
#endif
#ifndef __PLACEMENT_VEC_NEW_INLINE
#define __PLACEMENT_VEC_NEW_INLINE
[[nodiscard]] inline void* __cdecl operator new[](size_t, void* _Where) noexcept { return _Where; }
inline void __cdecl operator delete[](void*, void*) noexcept {}
#endif
