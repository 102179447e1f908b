# One static library per folder of module code, and a check that folders include one another
# only along the declared dependencies, which must form no cycle. A file that includes a header
# of a folder its own folder does not depend on fails the configuration, so a cycle cannot creep
# in through an include.

set_property(GLOBAL PROPERTY HELMBRIDGE_LAYERS "")

# Declares that `folder` may include headers of the folders after DEPENDS (and its own).
function(helmbridge_layer folder)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "DEPENDS")
    set_property(GLOBAL APPEND PROPERTY HELMBRIDGE_LAYERS ${folder})
    set_property(GLOBAL PROPERTY HELMBRIDGE_LAYER_${folder} "${ARG_DEPENDS}")
endfunction()

# helmbridge_folder_library(<folder> <sources>... DEPENDS <folders>...): the static library
# helmbridge_<folder> of the module code in <folder>, linking its dependencies privately.
function(helmbridge_folder_library folder)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "DEPENDS")
    helmbridge_layer(${folder} DEPENDS ${ARG_DEPENDS})
    set(target helmbridge_${folder})
    add_library(${target} STATIC ${ARG_UNPARSED_ARGUMENTS})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    foreach(dependency IN LISTS ARG_DEPENDS)
        target_link_libraries(${target} PRIVATE helmbridge_${dependency})
    endforeach()
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                               VISIBILITY_INLINES_HIDDEN ON)
    helmbridge_warnings(${target})
endfunction()

# Depth-first walk that fails on a folder reached again while it is still on the path.
function(_helmbridge_visit folder path)
    if(folder IN_LIST path)
        list(APPEND path ${folder})
        list(JOIN path " -> " cycle)
        message(FATAL_ERROR "Folder dependency cycle: ${cycle}")
    endif()
    list(APPEND path ${folder})
    get_property(dependencies GLOBAL PROPERTY HELMBRIDGE_LAYER_${folder})
    foreach(dependency IN LISTS dependencies)
        _helmbridge_visit(${dependency} "${path}")
    endforeach()
endfunction()

function(helmbridge_check_layering)
    get_property(folders GLOBAL PROPERTY HELMBRIDGE_LAYERS)
    foreach(folder IN LISTS folders)
        _helmbridge_visit(${folder} "")
        get_property(allowed GLOBAL PROPERTY HELMBRIDGE_LAYER_${folder})
        list(APPEND allowed ${folder})
        file(GLOB_RECURSE files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h
             ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
        foreach(file IN LISTS files)
            file(STRINGS ${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]+\"[a-z_]+/")
            foreach(line IN LISTS includes)
                string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]+\"([a-z_]+)/.*" "\\1" used
                                     "${line}")
                if(used IN_LIST folders AND NOT used IN_LIST allowed)
                    file(RELATIVE_PATH where ${PROJECT_SOURCE_DIR} ${file})
                    list(JOIN allowed ", " names)
                    message(FATAL_ERROR
                            "${where} includes ${used}/, but ${folder}/ may use only: ${names}")
                endif()
            endforeach()
        endforeach()
    endforeach()
endfunction()
