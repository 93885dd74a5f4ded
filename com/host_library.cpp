#include "com/host_library.hpp"

namespace paylodge {

FARPROC HostLibrary::FindAddress(const char* export_name) noexcept {
    if (library_ == nullptr && ::GetModuleHandleExW(0, file_name_, &library_) == FALSE) {
        library_ =
            ::LoadLibraryExW(file_name_, nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
    return library_ == nullptr ? nullptr : ::GetProcAddress(library_, export_name);
}

}  // namespace paylodge
