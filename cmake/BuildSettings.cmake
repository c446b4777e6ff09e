# Language, warnings, sanitizers and output folders of every first-party target.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()
set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O2 -g1 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1 -DNDEBUG")

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Same-process HAL libraries, opened by name as on a device (mapper.zel.so and the like).
set(VENDOR_HAL_DIRECTORY ${CMAKE_BINARY_DIR}/vendor/lib64/hw)

add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-stdlib=libc++>)
add_link_options(-stdlib=libc++ -fuse-ld=lld-14)

# As a device's vendor modules: no exceptions, no RTTI.
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>)

# The same for all, programs and users of libraries that ask for -pthread: they share one
# precompiled header.
add_compile_options(-fPIC -pthread)
add_compile_options(-Wall -Wextra -Werror -fno-omit-frame-pointer -fvisibility-inlines-hidden)
add_compile_definitions(_FILE_OFFSET_BITS=64 _GNU_SOURCE)
find_package(Threads REQUIRED)
link_libraries(Threads::Threads)

# SANITIZE: empty, "address" (with undefined behaviour) or "thread".
set(SANITIZE "" CACHE STRING "sanitizers to build with: address, thread or empty")
if(SANITIZE STREQUAL "address")
    # vptr needs RTTI; a report must end the process, or a test could not fail.
    set(sanitizer_flags -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all)
elseif(SANITIZE STREQUAL "thread")
    set(sanitizer_flags -fsanitize=thread)
elseif(NOT SANITIZE STREQUAL "")
    message(FATAL_ERROR "SANITIZE=${SANITIZE}: use address, thread or nothing")
endif()
# A target's files are compiled together: most of the time goes into headers that they share. With
# a sanitizer each is compiled alone, which shows a file that does not include what it uses.
if(SANITIZE STREQUAL "")
    set(CMAKE_UNITY_BUILD ON)
    set(CMAKE_UNITY_BUILD_BATCH_SIZE 0)
endif()

# FUZZ: fuzzers in addition (tests/fuzz), and what they need in everything they link.
option(FUZZ "build the fuzzers, with the address sanitizer" OFF)
if(FUZZ)
    if(NOT SANITIZE STREQUAL "address")
        message(FATAL_ERROR "-DFUZZ=ON needs -DSANITIZE=address")
    endif()
    list(APPEND sanitizer_flags -fsanitize=fuzzer-no-link)
endif()
if(sanitizer_flags)
    add_compile_options(${sanitizer_flags})
    add_link_options(${sanitizer_flags})
endif()
