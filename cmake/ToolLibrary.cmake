# tool_library(): a library of the tool's own sources, which are the same for a device and for a
# workstation. A device's compiler may be set to C++17 or C++20, so each is compiled as both; the
# second form is only compiled.
#
# The tool calls through empty references as it is built to; -fsanitize=null would end such a run
# in another way than a device does.
function(tool_library name)
    add_library(${name} STATIC ${ARGN})
    add_library(${name}_cxx20 OBJECT ${ARGN})
    set_target_properties(${name}_cxx20 PROPERTIES CXX_STANDARD 20 UNITY_BUILD OFF)
    foreach(target ${name} ${name}_cxx20)
        target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR})
        if(SANITIZE STREQUAL "address")
            target_compile_options(${target} PRIVATE -fno-sanitize=null)
        endif()
    endforeach()
    target_link_libraries(${name}_cxx20 PRIVATE
        $<TARGET_PROPERTY:${name},INTERFACE_LINK_LIBRARIES>)
endfunction()
