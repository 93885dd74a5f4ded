find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(PAYLODGE_UNDATE ${CMAKE_CURRENT_LIST_DIR}/undate_type_library.py)
set(PAYLODGE_LIST_METHODS ${CMAKE_CURRENT_LIST_DIR}/list_methods.py)
find_program(PAYLODGE_WIDL ${PAYLODGE_TRIPLET}-widl REQUIRED)
set(PAYLODGE_WINE_IDL_FOLDER /usr/include/wine/wine/windows CACHE PATH "oaidl.idl and ocidl.idl")
find_path(PAYLODGE_STDOLE stdole2.tlb REQUIRED NO_CMAKE_FIND_ROOT_PATH
    PATHS /usr/lib/x86_64-linux-gnu/wine /usr/lib/i386-linux-gnu/wine /usr/lib/wine
    PATH_SUFFIXES x86_64-windows i386-windows)

# add_type_library(TARGET IDL TLB [INCLUDED]...): an interface library TARGET that gives NAME.h, with the identifiers compiled in,
# NAME_methods.hpp with the methods of its dual interfaces, and the type library TLB. NAME is the name of the IDL file;
# INCLUDED are the files that it includes.
function(add_type_library target idl tlb)
    get_filename_component(name ${idl} NAME_WE)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target})
    set(header ${folder}/${name}.h)
    set(identifiers ${folder}/${name}_i.c)
    set(methods ${folder}/${name}_methods.hpp)
    set(widl ${PAYLODGE_WIDL} ${PAYLODGE_WIDL_ARCHITECTURE} -I${PAYLODGE_WINE_IDL_FOLDER} -L${PAYLODGE_STDOLE})
    file(MAKE_DIRECTORY ${folder})
    add_custom_command(
        OUTPUT ${header} ${identifiers} ${methods} ${tlb}
        COMMAND ${widl} -h -o ${header} ${idl}
        COMMAND ${widl} -u -o ${identifiers} ${idl}
        COMMAND ${widl} -t -o ${tlb} ${idl}
        COMMAND Python3::Interpreter ${PAYLODGE_UNDATE} ${tlb}
        COMMAND Python3::Interpreter -B ${PAYLODGE_LIST_METHODS} ${header} ${methods}
        DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${idl} ${ARGN} ${PAYLODGE_UNDATE} ${PAYLODGE_LIST_METHODS}
        # The header names the file as it is given here.
        WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
        COMMENT "Interfaces and type library from ${idl}"
        VERBATIM)
    add_library(${target} STATIC ${identifiers} ${header} ${methods})
    target_include_directories(${target} SYSTEM PUBLIC ${folder})
    add_custom_target(${target}_generated DEPENDS ${header} ${identifiers} ${methods} ${tlb})
    add_dependencies(${target} ${target}_generated)
endfunction()
