# The registration-free manifest, from the same scripts and definitions that registering uses.
set(manifest_tool ${PROJECT_SOURCE_DIR}/tools/package/manifest.py)
set(manifest_sources
    ${CMAKE_CURRENT_SOURCE_DIR}/paylodge.rgs
    ${CMAKE_CURRENT_SOURCE_DIR}/paylodge_ctrl.rgs
    ${PROJECT_SOURCE_DIR}/idl/paylodge.idl
    ${PROJECT_SOURCE_DIR}/bridge/misc_status.hpp)
set(PAYLODGE_MANIFEST ${PROJECT_BINARY_DIR}/Paylodge.manifest)
add_custom_command(
    OUTPUT ${PAYLODGE_MANIFEST}
    COMMAND Python3::Interpreter -B ${manifest_tool} ${CMAKE_SYSTEM_PROCESSOR} ${PROJECT_SOURCE_DIR} ${PAYLODGE_MANIFEST}
    DEPENDS ${manifest_tool} ${PROJECT_SOURCE_DIR}/tools/package/registry_script.py ${manifest_sources}
    COMMENT "Registration-free manifest"
    VERBATIM)

# For the module alone: in a program, it would be the manifest of the program.
set_source_files_properties(manifest.rc PROPERTIES OBJECT_DEPENDS ${PAYLODGE_MANIFEST})
add_library(paylodge_manifest OBJECT manifest.rc ${PAYLODGE_MANIFEST})
target_include_directories(paylodge_manifest PRIVATE ${PROJECT_BINARY_DIR})
