set(PAYLODGE_TRIPLET i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR X86)
set(PAYLODGE_WIDL_ARCHITECTURE --win32)
# Amounts and cents have to come out with the same digits on both architectures.
set(PAYLODGE_ARCHITECTURE_FLAGS "-msse2 -mfpmath=sse")
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
