# share_precompiled_header(FOLDER...): the C++ targets of these folders and their subfolders share
# one precompiled header of the standard's and the binder NDK's headers, which take most of the
# compiler's time. Not with a sanitizer: there each file shows that it includes what it uses.

if(SANITIZE STREQUAL "")
    file(WRITE ${CMAKE_BINARY_DIR}/precompiled.cpp "")
    add_library(precompiled OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/precompiled.cpp)
    target_include_directories(precompiled PRIVATE
        ${CMAKE_SOURCE_DIR}/host/libbinder_ndk/include)
    target_precompile_headers(precompiled PRIVATE
        <algorithm> <atomic> <chrono> <condition_variable> <cstdio> <cstdlib> <cstring> <functional>
        <map> <memory> <mutex> <optional> <set> <sstream> <string> <thread> <vector>
        <android/binder_auto_utils.h> <android/binder_interface_utils.h>
        <android/binder_parcel_utils.h>)
endif()

function(share_precompiled_header)
    if(NOT TARGET precompiled)
        return()
    endif()
    foreach(folder ${ARGN})
        get_directory_property(subfolders DIRECTORY ${folder} SUBDIRECTORIES)
        share_precompiled_header(${subfolders})
        get_directory_property(targets DIRECTORY ${folder} BUILDSYSTEM_TARGETS)
        foreach(target ${targets})
            get_target_property(type ${target} TYPE)
            get_target_property(standard ${target} CXX_STANDARD)
            get_target_property(visibility ${target} CXX_VISIBILITY_PRESET)
            if(type MATCHES "LIBRARY|EXECUTABLE" AND NOT type MATCHES "INTERFACE"
                    AND standard EQUAL CMAKE_CXX_STANDARD AND NOT visibility)
                target_precompile_headers(${target} REUSE_FROM precompiled)
            endif()
        endforeach()
    endforeach()
endfunction()
