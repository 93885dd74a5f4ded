# What both Windows architectures share. The -posix compilers are the ones with std::thread.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_CXX_COMPILER ${PAYLODGE_TRIPLET}-g++-posix)
set(CMAKE_C_COMPILER ${PAYLODGE_TRIPLET}-gcc-posix)
set(CMAKE_RC_COMPILER ${PAYLODGE_TRIPLET}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${PAYLODGE_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# The run-time libraries are linked in: what is delivered imports system DLLs only.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
endforeach()
