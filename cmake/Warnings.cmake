# Warning flags applied per target, never through the global flags.
function(helmbridge_warnings target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /permissive-)
        if(HELMBRIDGE_WERROR)
            target_compile_options(${target} PRIVATE /WX)
        endif()
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
        if(HELMBRIDGE_WERROR)
            target_compile_options(${target} PRIVATE -Werror)
        endif()
    endif()
endfunction()

# Windows binaries built with MinGW carry their runtime statically, so the DLL and the test
# executables run on a machine (or a Wine prefix) without MinGW's DLLs.
function(helmbridge_static_runtime target)
    if(MINGW)
        target_link_options(${target} PRIVATE -static -static-libgcc -static-libstdc++)
    endif()
endfunction()
