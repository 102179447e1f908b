// The parts of type_info that a Visual C++ build takes from its static runtime: the destructor,
// the vftable that every RTTI record points to, and the list head under which vcruntime140
// caches the names that type_info::name() builds for this module.
#include <windows.h>

#include <typeinfo>

#include "runtime.h"

struct __type_info_node {
    SLIST_HEADER names;
};
__type_info_node __type_info_root_node{};

extern "C" __declspec(dllimport) void __cdecl __std_type_info_destroy_list(__type_info_node* root);

type_info::~type_info() noexcept {}

// The vftable's one entry is the deleting destructor; no code deletes a type_info, but the entry
// still points at a real one.
extern "C" void* __cdecl helmbridgeTypeInfoDeletingDestructor(type_info* self, unsigned flags) {
    self->type_info::~type_info();
    if ((flags & 1U) != 0) ::operator delete(self);
    return self;
}
__asm__(
    ".section .rdata,\"dr\"\n"
    ".globl \"??_7type_info@@6B@\"\n"
    ".p2align 3\n"
    "\"??_7type_info@@6B@\":\n"
    ".quad helmbridgeTypeInfoDeletingDestructor\n"
    ".text\n");

namespace helmbridge::runtime {

void releaseTypeNames() { __std_type_info_destroy_list(&__type_info_root_node); }

}  // namespace helmbridge::runtime
