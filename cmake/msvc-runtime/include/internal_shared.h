// What the STL's runtime sources take from Visual C++'s private runtime headers: the runtime's
// allocation functions (the plain heap here) and the owner of a malloc'ed buffer.
#pragma once
#include <stdlib.h>

template <class T>
class __crt_unique_heap_ptr {
  public:
    __crt_unique_heap_ptr() noexcept = default;
    explicit __crt_unique_heap_ptr(T* owned) noexcept : block(owned) {}
    __crt_unique_heap_ptr(__crt_unique_heap_ptr&& other) noexcept : block(other.detach()) {}
    __crt_unique_heap_ptr& operator=(__crt_unique_heap_ptr&& other) noexcept {
        if (this != &other) {
            free(block);
            block = other.detach();
        }
        return *this;
    }
    __crt_unique_heap_ptr(const __crt_unique_heap_ptr&) = delete;
    __crt_unique_heap_ptr& operator=(const __crt_unique_heap_ptr&) = delete;
    ~__crt_unique_heap_ptr() { free(block); }

    T* get() const noexcept { return block; }
    T* detach() noexcept {
        T* const owned = block;
        block = nullptr;
        return owned;
    }
    explicit operator bool() const noexcept { return block != nullptr; }

  private:
    T* block = nullptr;
};

#define _malloc_crt malloc
#define _calloc_crt calloc
#define _free_crt free

#define _malloc_crt_t(type, count) \
    (__crt_unique_heap_ptr<type>(static_cast<type*>(malloc(sizeof(type) * (count)))))
