# GoogleTest, built from Debian's sources because the packaged library is for another C++ library,
# and host_test(), which makes one test program and names each of its cases to ctest.

if(NOT EXISTS /usr/src/googletest/CMakeLists.txt)
    message(FATAL_ERROR "/usr/src/googletest not found: install googletest")
endif()
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(library gtest gtest_main gmock gmock_main)
    # Third-party code: built as it is, without our warnings.
    target_compile_options(${library} PRIVATE -w)
endforeach()

enable_testing()
include(GoogleTest)

# host_test(NAME SOURCES file... LIBRARIES target... [TIMEOUT seconds] [PROCESSORS n])
#
# A case counts as n of the cases that run at the same time (1).
# Cases run as separate processes, in any order and in parallel. They find the HAL libraries of
# this build through STANDIN_HAL_PATH.
function(host_test name)
    cmake_parse_arguments(TEST "" "TIMEOUT;PROCESSORS" "SOURCES;LIBRARIES" ${ARGN})
    if(NOT TEST_TIMEOUT)
        set(TEST_TIMEOUT 60)
    endif()
    if(NOT TEST_PROCESSORS)
        set(TEST_PROCESSORS 1)
    endif()
    add_executable(${name} ${TEST_SOURCES})
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${TEST_LIBRARIES} gmock gmock_main)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    gtest_discover_tests(${name}
        TEST_PREFIX "${name}/"
        DISCOVERY_MODE PRE_TEST
        PROPERTIES TIMEOUT ${TEST_TIMEOUT} PROCESSORS ${TEST_PROCESSORS}
        ENVIRONMENT "STANDIN_HAL_PATH=${VENDOR_HAL_DIRECTORY}")
endfunction()
