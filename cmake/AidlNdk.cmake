# aidl_ndk_library(): a C++ library from .aidl files, generated at build time.

# aidl_ndk_library(NAME ROOT folder FILES path... [VERSION n HASH text] [IMPORTS target...])
#
# ROOT is the folder in which the package's folders start; FILES are relative to it. IMPORTS are
# other aidl_ndk_library targets whose types the files use; what links to NAME gets them, too.
# Headers are generated into ${CMAKE_BINARY_DIR}/gen/NAME/include.
function(aidl_ndk_library name)
    cmake_parse_arguments(AIDL "" "ROOT;VERSION;HASH" "FILES;IMPORTS" ${ARGN})
    set(output ${CMAKE_BINARY_DIR}/gen/${name})

    # An imported file's change is a reason to compile again, so its path is kept with its target.
    set(roots ${AIDL_ROOT})
    set(inputs)
    foreach(import ${AIDL_IMPORTS})
        get_target_property(import_roots ${import} AIDL_ROOTS)
        get_target_property(import_inputs ${import} AIDL_INPUTS)
        list(APPEND roots ${import_roots})
        list(APPEND inputs ${import_inputs})
    endforeach()
    list(REMOVE_DUPLICATES roots)

    set(sources)
    set(headers)
    set(files)
    foreach(file ${AIDL_FILES})
        list(APPEND files ${AIDL_ROOT}/${file})
        cmake_path(GET file PARENT_PATH folder)
        cmake_path(GET file STEM type)
        list(APPEND sources ${output}/src/aidl/${folder}/${type}.cpp)
        file(STRINGS ${AIDL_ROOT}/${file} interface REGEX "^ *(oneway +)?interface +${type}")
        set(base ${type})
        if(interface)
            string(SUBSTRING ${type} 1 -1 base)
        endif()
        foreach(header ${type} Bn${base} Bp${base})
            list(APPEND headers ${output}/include/aidl/${folder}/${header}.h)
        endforeach()
    endforeach()
    list(APPEND inputs ${files})
    list(REMOVE_DUPLICATES inputs)

    set(arguments --out ${output})
    foreach(root ${roots})
        list(APPEND arguments -I ${root})
    endforeach()
    if(AIDL_VERSION)
        list(APPEND arguments --version ${AIDL_VERSION} --hash ${AIDL_HASH})
    endif()
    add_custom_command(
        OUTPUT ${sources} ${headers}
        COMMAND aidlc ${arguments} ${files}
        DEPENDS aidlc ${inputs}
        COMMENT "Generating ${name}"
        VERBATIM)

    add_library(${name} STATIC ${sources} ${headers})
    set_target_properties(${name} PROPERTIES
        UNITY_BUILD ON
        UNITY_BUILD_BATCH_SIZE 0
        AIDL_ROOTS "${roots}"
        AIDL_INPUTS "${inputs}")
    target_compile_definitions(${name} PRIVATE BINDER_STABILITY_SUPPORT)
    target_include_directories(${name} PUBLIC ${output}/include)
    target_link_libraries(${name} PUBLIC binder_ndk ${AIDL_IMPORTS})
endfunction()
