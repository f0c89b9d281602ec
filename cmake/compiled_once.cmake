# SPDX-License-Identifier: MIT
# Fails the configuration when a source file of the project is compiled into
# more than one target: a unit that two programs need belongs to a library
# that both link, so that it is built, warned about and covered once.
include(${CMAKE_CURRENT_LIST_DIR}/targets.cmake)

function(padkit_check_compiled_once)
    padkit_project_targets(targets)
    set(compiled "")
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL "INTERFACE_LIBRARY")
            continue()
        endif()
        get_target_property(directory ${target} SOURCE_DIR)
        get_target_property(sources ${target} SOURCES)
        foreach(source IN LISTS sources)
            get_filename_component(source ${source} ABSOLUTE BASE_DIR ${directory})
            if(NOT source MATCHES "\\.cpp$")
                continue()
            elseif(source IN_LIST compiled)
                message(FATAL_ERROR "${source} is compiled into more than one target "
                                    "(again in ${target})")
            endif()
            list(APPEND compiled ${source})
        endforeach()
    endforeach()
endfunction()
