# The libraries of others that the reference host is built from, compiled from their sources with the compiler of each
# flavour. tools/third-party.sh fetches them. The component uses none of them.
set(PAYLODGE_THIRD_PARTY ${PROJECT_SOURCE_DIR}/build/third-party CACHE PATH "What tools/third-party.sh has fetched")

# add_third_party(TARGET FOLDER INCLUDES source...): their warnings are not ours.
function(add_third_party target folder includes)
    set(root ${PAYLODGE_THIRD_PARTY}/${folder})
    if(NOT IS_DIRECTORY ${root})
        message(FATAL_ERROR "The sources of ${folder} are not in ${root}: tools/third-party.sh fetches them.")
    endif()
    list(TRANSFORM ARGN PREPEND ${root}/)
    add_library(${target} STATIC EXCLUDE_FROM_ALL ${ARGN})
    target_include_directories(${target} SYSTEM PUBLIC ${root}/${includes})
    target_compile_options(${target} PRIVATE -w)
    if(CMAKE_BUILD_TYPE STREQUAL "Debug")
        target_compile_options(${target} PRIVATE -O1)
    endif()
endfunction()

# The database of company files.
add_third_party(sqlite sqlite . sqlite3.c)
target_compile_definitions(sqlite PRIVATE
    SQLITE_DQS=0 SQLITE_DEFAULT_FOREIGN_KEYS=1 SQLITE_DEFAULT_MEMSTATUS=0 SQLITE_TEMP_STORE=3 SQLITE_LIKE_DOESNT_MATCH_BLOBS
    SQLITE_OMIT_DEPRECATED SQLITE_OMIT_LOAD_EXTENSION SQLITE_OMIT_SHARED_CACHE SQLITE_OMIT_TCL_VARIABLE)

# The XML parser. Without XML_DTD it knows no parameter entities, and documents with a type declaration are refused.
add_third_party(expat expat lib lib/xmlparse.c lib/xmlrole.c lib/xmltok.c)
if(WIN32)
    set(entropy "/* rand_s */")
else()
    set(entropy "#define HAVE_GETRANDOM\n#define XML_DEV_URANDOM")
endif()
file(CONFIGURE OUTPUT expat/expat_config.h CONTENT "#define BYTEORDER 1234\n#define XML_CONTEXT_BYTES 1024\n@entropy@\n" @ONLY)
target_include_directories(expat PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/expat)
target_compile_definitions(expat PUBLIC XML_STATIC)

# Case folding and canonical forms of Unicode text.
add_third_party(utf8proc utf8proc . utf8proc.c)
target_compile_definitions(utf8proc PUBLIC UTF8PROC_STATIC)
