// An owned file of the platform.
#pragma once

#include <windows.h>

#include "com/owner.hpp"

namespace paylodge::refhost {

struct FileHandleTraits {
    using Type = HANDLE;
    static Type None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Free(Type file) noexcept { ::CloseHandle(file); }
};
using FileHandle = Owner<FileHandleTraits>;

}  // namespace paylodge::refhost
