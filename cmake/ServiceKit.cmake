# offline_camera_service_kit: what a service program links. The build folder also has it as the
# CMake package OfflineCameraServiceKit, for programs outside the project.

add_library(offline_camera_service_kit INTERFACE)
target_link_libraries(offline_camera_service_kit INTERFACE
    offlinecamera_requests  # brings the AIDL package, the mapper and the binder NDK
    standin_log             # the program's log goes where the device's does
    Threads::Threads)
target_compile_features(offline_camera_service_kit INTERFACE cxx_std_17)
target_compile_options(offline_camera_service_kit INTERFACE
    -stdlib=libc++ -fno-rtti ${sanitizer_flags})  # the generated classes have no RTTI
target_link_options(offline_camera_service_kit INTERFACE
    -stdlib=libc++ -fuse-ld=lld-14 ${sanitizer_flags})

export(TARGETS
    offline_camera_service_kit
    offlinecamera_requests
    imaging
    vendor.zel.hardware.camera.offlinecamera-V1-ndk
    android.hardware.camera.device-V2-ndk
    android.hardware.camera.metadata-V2-ndk
    android.hardware.common-V2-ndk
    android.hardware.graphics.common-V4-ndk
    android.hardware.graphics.mapper-4.0
    base gralloctypes hidlbase vndksupport aidlcommonsupport camera_metadata binder_ndk standin_log
    FILE ${CMAKE_BINARY_DIR}/OfflineCameraServiceKitTargets.cmake)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/OfflineCameraServiceKitConfig.cmake @ONLY CONTENT [[
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "the kit is for clang with libc++: -DCMAKE_CXX_COMPILER=clang++-14")
endif()
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(TURBOJPEG REQUIRED IMPORTED_TARGET libturbojpeg)
include("@CMAKE_SOURCE_DIR@/cmake/DebianAndroid.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/OfflineCameraServiceKitTargets.cmake")
]])
