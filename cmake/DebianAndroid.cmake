# Debian's packages of the platform's own liblog, libcutils and libutils.
# Compiler and linker do not search their folders, /usr/include/android and the "android" folder of
# the multiarch library directory.

find_path(DEBIAN_ANDROID_INCLUDE cutils/native_handle.h PATHS /usr/include/android NO_DEFAULT_PATH)
if(NOT DEBIAN_ANDROID_INCLUDE)
    message(FATAL_ERROR "cutils/native_handle.h not found: install android-libcutils-dev")
endif()

foreach(name log cutils utils)
    find_library(DEBIAN_ANDROID_${name} NAMES ${name}
        PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH)
    if(NOT DEBIAN_ANDROID_${name})
        message(FATAL_ERROR "lib${name} not found: install android-lib${name}-dev")
    endif()
    add_library(android_${name} SHARED IMPORTED GLOBAL)
    set_target_properties(android_${name} PROPERTIES
        IMPORTED_LOCATION ${DEBIAN_ANDROID_${name}}
        INTERFACE_INCLUDE_DIRECTORIES ${DEBIAN_ANDROID_INCLUDE}
        INTERFACE_SYSTEM_INCLUDE_DIRECTORIES ${DEBIAN_ANDROID_INCLUDE})
endforeach()
