# GoogleTest, built from Debian's sources because the packaged library is for another C++ library,
# and host_test(), which makes one test program and names each of its cases to ctest.

if(NOT EXISTS /usr/src/googletest/CMakeLists.txt)
    message(FATAL_ERROR "/usr/src/googletest not found: install googletest")
endif()
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(library gtest gtest_main gmock gmock_main)
    # Third-party code: built as it is, without our warnings and as quickly as the tests.
    target_compile_options(${library} PRIVATE -w -O0)
endforeach()

enable_testing()
include(GoogleTest)

# Test code is compiled more often than it runs long: it shares one precompiled header and is not
# optimised, which takes less than half of the time.
file(WRITE ${CMAKE_BINARY_DIR}/precompiled_for_tests.cpp "")
add_library(precompiled_for_tests OBJECT EXCLUDE_FROM_ALL
    ${CMAKE_BINARY_DIR}/precompiled_for_tests.cpp)
target_compile_options(precompiled_for_tests PRIVATE -O0)
target_link_libraries(precompiled_for_tests PRIVATE gmock)
target_precompile_headers(precompiled_for_tests PRIVATE
    <gmock/gmock.h> <algorithm> <cstring> <filesystem> <fstream> <functional> <map> <memory>
    <string> <thread> <vector>)

# compile_as_test(TARGET): for a program or library of test code in C++.
function(compile_as_test target)
    target_compile_options(${target} PRIVATE -O0 -fPIC)
    target_precompile_headers(${target} REUSE_FROM precompiled_for_tests)
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "\\.c$")
    set_source_files_properties(${sources} PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
endfunction()

# host_test(NAME SOURCES file... LIBRARIES target... [TIMEOUT seconds] [OPTIMISED])
#
# Cases run as separate processes, in any order and in parallel. They find the HAL libraries of
# this build through STANDIN_HAL_PATH. OPTIMISED is for cases with long loops of their own.
function(host_test name)
    cmake_parse_arguments(TEST "OPTIMISED" "TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
    if(NOT TEST_TIMEOUT)
        set(TEST_TIMEOUT 60)
    endif()
    add_executable(${name} ${TEST_SOURCES})
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    if(NOT TEST_OPTIMISED)
        compile_as_test(${name})
    endif()
    target_link_libraries(${name} PRIVATE ${TEST_LIBRARIES} gmock gmock_main)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    gtest_discover_tests(${name}
        TEST_PREFIX "${name}/"
        DISCOVERY_MODE PRE_TEST
        PROPERTIES TIMEOUT ${TEST_TIMEOUT}
        ENVIRONMENT "STANDIN_HAL_PATH=${VENDOR_HAL_DIRECTORY}")
endfunction()
