# SPDX-License-Identifier: MIT
# Every target that the project's directories define, for the checks of the
# build (compiled_once.cmake, layers.cmake).
function(padkit_project_targets out)
    set(directories ${PROJECT_SOURCE_DIR})
    set(all "")
    while(directories)
        list(POP_FRONT directories directory)
        get_property(subdirectories DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
        list(APPEND directories ${subdirectories})
        get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
        list(APPEND all ${targets})
    endwhile()
    set(${out} ${all} PARENT_SCOPE)
endfunction()
