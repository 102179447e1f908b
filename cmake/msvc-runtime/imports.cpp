// Import pointers for the runtime functions that the headers declare imported but the static
// runtime defines itself (the list in MsvcRuntime.cmake). A caller compiled against such a
// declaration jumps through __imp_<name>; defining that pointer here sends it to the local
// function, and is also what brings the defining objects into every link that needs them.

// Declared under another name so that no header's import attribute applies; only the address is
// taken, so the type does not matter.
#define HELMBRIDGE_LOCAL_IMPORT(id, symbol)                                     \
    extern "C" void helmbridgeLocal_##id() __asm__(symbol);                     \
    extern "C" void (*const helmbridgeImport_##id)() __asm__("__imp_" symbol) = \
        &helmbridgeLocal_##id;

HELMBRIDGE_LOCAL_IMPORT(atexit, "atexit")
HELMBRIDGE_LOCAL_IMPORT(onexit, "_onexit")
HELMBRIDGE_LOCAL_IMPORT(Xbad_function_call, "?_Xbad_function_call@std@@YAXXZ")

HELMBRIDGE_LOCAL_IMPORT(Mtx_clear_owner, "_Mtx_clear_owner")
HELMBRIDGE_LOCAL_IMPORT(Mtx_current_owns, "_Mtx_current_owns")
HELMBRIDGE_LOCAL_IMPORT(Mtx_destroy, "_Mtx_destroy")
HELMBRIDGE_LOCAL_IMPORT(Mtx_destroy_in_situ, "_Mtx_destroy_in_situ")
HELMBRIDGE_LOCAL_IMPORT(Mtx_getconcrtcs, "_Mtx_getconcrtcs")
HELMBRIDGE_LOCAL_IMPORT(Mtx_init, "_Mtx_init")
HELMBRIDGE_LOCAL_IMPORT(Mtx_init_in_situ, "_Mtx_init_in_situ")
HELMBRIDGE_LOCAL_IMPORT(Mtx_lock, "_Mtx_lock")
HELMBRIDGE_LOCAL_IMPORT(Mtx_reset_owner, "_Mtx_reset_owner")
HELMBRIDGE_LOCAL_IMPORT(Mtx_timedlock, "_Mtx_timedlock")
HELMBRIDGE_LOCAL_IMPORT(Mtx_trylock, "_Mtx_trylock")
HELMBRIDGE_LOCAL_IMPORT(Mtx_unlock, "_Mtx_unlock")

HELMBRIDGE_LOCAL_IMPORT(Cnd_broadcast, "_Cnd_broadcast")
HELMBRIDGE_LOCAL_IMPORT(Cnd_destroy, "_Cnd_destroy")
HELMBRIDGE_LOCAL_IMPORT(Cnd_destroy_in_situ, "_Cnd_destroy_in_situ")
HELMBRIDGE_LOCAL_IMPORT(Cnd_do_broadcast_at_thread_exit, "_Cnd_do_broadcast_at_thread_exit")
HELMBRIDGE_LOCAL_IMPORT(Cnd_init, "_Cnd_init")
HELMBRIDGE_LOCAL_IMPORT(Cnd_init_in_situ, "_Cnd_init_in_situ")
HELMBRIDGE_LOCAL_IMPORT(Cnd_register_at_thread_exit, "_Cnd_register_at_thread_exit")
HELMBRIDGE_LOCAL_IMPORT(Cnd_signal, "_Cnd_signal")
HELMBRIDGE_LOCAL_IMPORT(Cnd_timedwait, "_Cnd_timedwait")
HELMBRIDGE_LOCAL_IMPORT(Cnd_unregister_at_thread_exit, "_Cnd_unregister_at_thread_exit")
HELMBRIDGE_LOCAL_IMPORT(Cnd_wait, "_Cnd_wait")
