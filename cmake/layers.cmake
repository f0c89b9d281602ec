# SPDX-License-Identifier: MIT
# The layers of the code, lowest first, each a row of folders. Configuration
# fails when a source includes a header of a folder in a later row, when a
# product source lies in a folder without a row, or when a library of the
# project links a library that depends on it.
include(${CMAKE_CURRENT_LIST_DIR}/targets.cmake)

set(padkit_layers
    "paths"                     # the path seam: the run lock resolves its path
    "runtime"
    "properties"
    "registers fileprops sim"   # sim: the simulated board's units of both seams
    "platform"
    "tune/sweep tune/usage"     # padkit-tune's parts that know no property
    "memtest"                   # padkit-memtest, which knows no property either
    "tune/board"                # board reading and writing
    "tune/profile"              # profiles
    "tune/campaign"             # the campaign driver under every kind
    "tune cli completion"       # the commands, the programs
)

# The project's targets that TARGET links directly.
function(padkit_linked_targets target targets out)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "INTERFACE_LIBRARY")
        get_target_property(linked ${target} INTERFACE_LINK_LIBRARIES)
    else()
        get_target_property(linked ${target} LINK_LIBRARIES)
    endif()
    set(ours "")
    foreach(library IN LISTS linked)
        if(library IN_LIST targets)
            list(APPEND ours ${library})
        endif()
    endforeach()
    set(${out} ${ours} PARENT_SCOPE)
endfunction()

function(padkit_check_link_cycles)
    padkit_project_targets(targets)
    foreach(target IN LISTS targets)
        set(queue ${target})
        set(reached "")
        while(queue)
            list(POP_FRONT queue library)
            padkit_linked_targets(${library} "${targets}" linked)
            if(target IN_LIST linked)
                message(FATAL_ERROR "${library} links ${target}, which depends on ${library}")
            endif()
            foreach(next IN LISTS linked)
                if(NOT next IN_LIST reached)
                    list(APPEND reached ${next})
                    list(APPEND queue ${next})
                endif()
            endforeach()
        endwhile()
    endforeach()
endfunction()

function(padkit_check_layers)
    set(layer 0)
    set(placed "")
    foreach(row IN LISTS padkit_layers)
        string(REPLACE " " ";" folders "${row}")
        foreach(folder IN LISTS folders)
            set(layer_of_${folder} ${layer})
        endforeach()
        list(APPEND placed ${folders})
        math(EXPR layer "${layer} + 1")
    endforeach()

    padkit_project_targets(targets)
    foreach(target IN LISTS targets)
        get_target_property(directory ${target} SOURCE_DIR)
        get_target_property(sources ${target} SOURCES)
        foreach(source IN LISTS sources)
            get_filename_component(source ${source} ABSOLUTE BASE_DIR ${directory})
            file(RELATIVE_PATH source ${PROJECT_SOURCE_DIR} ${source})
            get_filename_component(folder ${source} DIRECTORY)
            if(source MATCHES "\\.cpp$" AND NOT source MATCHES "^(\\.\\./|tests/)"
               AND NOT folder IN_LIST placed)
                message(SEND_ERROR "${source}: its folder has no layer in cmake/layers.cmake")
            endif()
        endforeach()
    endforeach()

    foreach(folder IN LISTS placed)
        file(GLOB sources ${PROJECT_SOURCE_DIR}/${folder}/*.h ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
        foreach(source IN LISTS sources)
            file(STRINGS ${source} includes REGEX "^#include \"[^\"]*/")
            foreach(line IN LISTS includes)
                string(REGEX REPLACE "^#include \"(.*)/[^/]*\".*" "\\1" included "${line}")
                if(DEFINED layer_of_${included}
                   AND ${layer_of_${included}} GREATER ${layer_of_${folder}})
                    message(SEND_ERROR "${source}: ${line} reaches up from ${folder} "
                                       "to ${included}, a later layer")
                endif()
            endforeach()
        endforeach()
    endforeach()
endfunction()
