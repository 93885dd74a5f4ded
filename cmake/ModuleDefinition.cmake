# target_module_definition(TARGET FILE.def.in): exports under plain names. On x86 the compiler decorates __stdcall
# functions with the size of their arguments, which @STDCALL_n@ in the file stands for.
function(target_module_definition target definition)
    foreach(size 0 4 8 12)
        if(CMAKE_SYSTEM_PROCESSOR STREQUAL X86)
            set(STDCALL_${size} "@${size}")
        else()
            set(STDCALL_${size} "")
        endif()
    endforeach()
    get_filename_component(name ${definition} NAME_WLE)
    configure_file(${definition} ${CMAKE_CURRENT_BINARY_DIR}/${target}/${name} @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}/${name})
endfunction()
