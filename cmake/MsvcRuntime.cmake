# The Visual C++ runtime for the clang-msvc toolchain: import libraries generated from the export
# tables of Wine's runtime DLLs, the project's static runtime part (cmake/msvc-runtime) and the
# few pieces of Microsoft's STL sources that a Visual C++ build takes from its static libraries.
# Every program and DLL defined after this file is included links all of it.

if(NOT EXISTS "${HELMBRIDGE_MSVC_STL_DIR}/stl/inc/yvals_core.h")
    message(FATAL_ERROR "Microsoft's STL not found in HELMBRIDGE_MSVC_STL_DIR "
                        "(${HELMBRIDGE_MSVC_STL_DIR})")
endif()
find_program(HELMBRIDGE_DLLTOOL NAMES llvm-dlltool-19 llvm-dlltool REQUIRED)
find_program(HELMBRIDGE_OBJDUMP NAMES llvm-objdump-19 llvm-objdump REQUIRED)

# Runtime functions that the static runtime defines itself, because a Visual C++ build takes them
# from its static libraries, because Wine 8 lacks or stubs them, or because Wine's mutexes and
# condition variables behave unlike Windows' (they hand the lock over in strict order, which
# stalls a thread that locks many times while others spin on the same mutex). The STL's own
# mutex.cpp and cond.cpp take their place: SRW locks, as in msvcp140 on Windows. These names are
# left out of the import libraries; imports.cpp points the headers' imports at the local ones.
set(helmbridge_local_runtime_symbols
    atexit _onexit
    "?_Xbad_function_call@std@@YAXXZ"
    _Thrd_sleep_for _Cnd_timedwait_for_unchecked _Thrd_abort __set_stl_sync_api_mode
    _Mtx_clear_owner _Mtx_current_owns _Mtx_destroy _Mtx_destroy_in_situ _Mtx_getconcrtcs
    _Mtx_init _Mtx_init_in_situ _Mtx_lock _Mtx_reset_owner _Mtx_timedlock _Mtx_trylock
    _Mtx_unlock
    _Cnd_broadcast _Cnd_destroy _Cnd_destroy_in_situ _Cnd_do_broadcast_at_thread_exit _Cnd_init
    _Cnd_init_in_situ _Cnd_register_at_thread_exit _Cnd_signal _Cnd_timedwait
    _Cnd_unregister_at_thread_exit _Cnd_wait)

# Wine's ucrtbase also exports the C++ runtime that Windows keeps in vcruntime140 (exception
# handling, memcpy, type_info): each name goes into the import library of the first DLL that
# exports it, in this order, so the module imports it from where Windows has it.
set(helmbridge_import_dir "${CMAKE_BINARY_DIR}/msvc-import")
file(MAKE_DIRECTORY "${helmbridge_import_dir}")
set(HELMBRIDGE_IMPORT_LIBS "")
set(taken ${helmbridge_local_runtime_symbols})
# Other system DLLs get an import library too, for the targets that name them (psapi: memory
# counters in the unload tests; version: file versions in the host tool).
set(helmbridge_runtime_dlls vcruntime140 vcruntime140_1 ucrtbase msvcp140 kernel32)
foreach(dll ${helmbridge_runtime_dlls} psapi version)
    set(dll_file "${HELMBRIDGE_WINE_DLL_DIR}/${dll}.dll")
    execute_process(COMMAND "${HELMBRIDGE_OBJDUMP}" -p "${dll_file}"
                    OUTPUT_VARIABLE table RESULT_VARIABLE failed)
    if(failed)
        message(FATAL_ERROR "cannot read the export table of ${dll_file}")
    endif()
    string(REGEX REPLACE ".*Ordinal +RVA +Name\n" "" table "${table}")
    string(REGEX MATCHALL "\n? +[0-9]+ +(0x[0-9a-f]+ +)?[^ \n]+" rows "${table}")
    set(def "LIBRARY ${dll}.dll\nEXPORTS\n")
    foreach(row IN LISTS rows)
        string(REGEX REPLACE ".* " "" name "${row}")
        if(NOT name IN_LIST taken)
            string(APPEND def "${name}\n")
            list(APPEND taken "${name}")
        endif()
    endforeach()
    set(lib "${helmbridge_import_dir}/${dll}.lib")
    set(def_file "${helmbridge_import_dir}/${dll}.def")
    file(WRITE "${def_file}.new" "${def}")
    file(COPY_FILE "${def_file}.new" "${def_file}" ONLY_IF_DIFFERENT)
    if(NOT EXISTS "${lib}" OR "${def_file}" IS_NEWER_THAN "${lib}")
        execute_process(COMMAND "${HELMBRIDGE_DLLTOOL}" -m i386:x86-64 -d "${def_file}" -l "${lib}"
                        RESULT_VARIABLE failed)
        if(failed)
            message(FATAL_ERROR "cannot make the import library ${lib}")
        endif()
    endif()
    if(dll IN_LIST helmbridge_runtime_dlls)
        list(APPEND HELMBRIDGE_IMPORT_LIBS "${lib}")
    endif()
endforeach()
link_directories("${helmbridge_import_dir}")

set(helmbridge_stl_src "${HELMBRIDGE_MSVC_STL_DIR}/stl/src")
# What msvcp140's import library carries statically, what Wine 8's msvcp140 lacks, and the mutexes.
set(helmbridge_stl_sources
    ${helmbridge_stl_src}/charconv.cpp
    ${helmbridge_stl_src}/cond.cpp
    ${helmbridge_stl_src}/filesystem.cpp
    ${helmbridge_stl_src}/locale0_implib.cpp
    ${helmbridge_stl_src}/mutex.cpp
    ${helmbridge_stl_src}/sharedmutex.cpp
    ${helmbridge_stl_src}/syserror_import_lib.cpp
    ${helmbridge_stl_src}/xcharconv_ryu_tables.cpp
    ${helmbridge_stl_src}/xnotify.cpp)
add_library(helmbridge_msvc_runtime STATIC
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/crt_sections.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/dll_main.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/dll_startup.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/exe_startup.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/heap.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/imports.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/stl_gaps.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/thread_safe_statics.cpp
    ${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/type_info.cpp
    ${helmbridge_stl_sources})
target_link_libraries(helmbridge_msvc_runtime PUBLIC ${HELMBRIDGE_IMPORT_LIBS})
# The STL's own sources are built as Microsoft builds them; the runtime's with our warnings.
set_source_files_properties(${helmbridge_stl_sources} PROPERTIES COMPILE_OPTIONS "-w;-include;windows_sdk_gaps.h;-D_CRTIMP2=;-D_CRTBLD")
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/msvc-runtime/stl_gaps.cpp
                            PROPERTIES COMPILE_OPTIONS "-D_CRTIMP2=")
helmbridge_warnings(helmbridge_msvc_runtime)
link_libraries(helmbridge_msvc_runtime)
