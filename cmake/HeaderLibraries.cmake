# Libraries of others that are headers only, from the system's packages. The compilers find them in a folder of the
# build's own: with the whole of /usr/include on their path, those for Windows would read this machine's headers.
set(PAYLODGE_HEADERS ${PROJECT_BINARY_DIR}/header-libraries)
file(MAKE_DIRECTORY ${PAYLODGE_HEADERS})

# add_header_library(TARGET FOLDER PACKAGE)
function(add_header_library target folder package)
    if(NOT IS_DIRECTORY /usr/include/${folder})
        message(FATAL_ERROR "/usr/include/${folder} is missing: tools/setup.sh installs ${package}.")
    endif()
    file(CREATE_LINK /usr/include/${folder} ${PAYLODGE_HEADERS}/${folder} SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${PAYLODGE_HEADERS})
endfunction()

add_header_library(boost_headers boost "the Boost headers")
add_header_library(nlohmann_json nlohmann nlohmann-json3-dev)
