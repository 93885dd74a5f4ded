# GoogleTest is built from the distribution's sources with the compiler of each flavour.
set(PAYLODGE_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
set(INSTALL_GTEST OFF)
add_subdirectory(${PAYLODGE_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
# Optimising it takes longer than all tests together gain.
foreach(library gtest gmock)
    target_compile_options(${library} PRIVATE -Og)
endforeach()
