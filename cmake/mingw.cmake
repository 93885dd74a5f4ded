# What both Windows architectures share. The -posix compilers are the ones with std::thread.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_CXX_COMPILER ${PAYLODGE_TRIPLET}-g++-posix)
set(CMAKE_C_COMPILER ${PAYLODGE_TRIPLET}-gcc-posix)
set(CMAKE_RC_COMPILER ${PAYLODGE_TRIPLET}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${PAYLODGE_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Names and line numbers for the debug files, guarded stacks, and no word of where the sources lie: the same sources give
# the same bytes in every folder.
foreach(language C CXX)
    set(CMAKE_${language}_FLAGS_INIT "${PAYLODGE_ARCHITECTURE_FLAGS} -g1 -fstack-protector-strong \
\"-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.\" \"-ffile-prefix-map=${CMAKE_BINARY_DIR}=build\"")
endforeach()

# The run-time libraries are linked in: what is delivered imports system DLLs only. Without time stamps, linking twice
# gives the same bytes.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++ \
-Wl,--no-insert-timestamp,--dynamicbase,--nxcompat${PAYLODGE_ARCHITECTURE_LINKER_FLAGS}")
endforeach()
