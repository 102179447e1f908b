// std::exception in Visual C++'s layout: a vftable and {what, owns-what}. Copies go through
// vcruntime140, so an exception thrown in one module can be caught and freed in another.
#pragma once
#include <eh.h>

extern "C" {
struct __std_exception_data {
    const char* _What;
    bool _DoFree;
};
__declspec(dllimport) void __cdecl __std_exception_copy(const __std_exception_data*,
                                                        __std_exception_data*);
__declspec(dllimport) void __cdecl __std_exception_destroy(__std_exception_data*);
}

namespace std {

class exception {
  public:
    exception() noexcept : _Data() {}
    explicit exception(const char* const _Message) noexcept : _Data() {
        const __std_exception_data _Init = {_Message, true};
        __std_exception_copy(&_Init, &_Data);
    }
    // A literal message is kept by pointer, never copied or freed.
    exception(const char* const _Message, int) noexcept : _Data() { _Data._What = _Message; }
    exception(const exception& _Other) noexcept : _Data() {
        __std_exception_copy(&_Other._Data, &_Data);
    }
    exception& operator=(const exception& _Other) noexcept {
        if (this != &_Other) {
            __std_exception_destroy(&_Data);
            __std_exception_copy(&_Other._Data, &_Data);
        }
        return *this;
    }
    virtual ~exception() noexcept { __std_exception_destroy(&_Data); }
    [[nodiscard]] virtual const char* what() const {
        return _Data._What ? _Data._What : "Unknown exception";
    }

  private:
    __std_exception_data _Data;
};

class bad_exception : public exception {
  public:
    bad_exception() noexcept : exception("bad exception", 1) {}
};

class bad_alloc : public exception {
  public:
    bad_alloc() noexcept : exception("bad allocation", 1) {}

  private:
    friend class bad_array_new_length;
    bad_alloc(const char* const _Message) noexcept : exception(_Message, 1) {}
};

class bad_array_new_length : public bad_alloc {
  public:
    bad_array_new_length() noexcept : bad_alloc("bad array new length") {}
};

}  // namespace std
