#include "com/module.hpp"

#include <comdef.h>

#include <atomic>
#include <new>

// The linker's own symbol for the start of the module's image.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace paylodge {
namespace {

std::atomic<LONG> g_references{0};
std::atomic<LONG> g_locks{0};

// What a failed allocation throws: the COM error that callers know, which is still what the language promises.
class OutOfMemory : public _com_error, public std::bad_alloc {
  public:
    OutOfMemory() noexcept : _com_error(E_OUTOFMEMORY) {}
};

[[noreturn]] void ThrowOutOfMemory() { throw OutOfMemory(); }

[[maybe_unused]] const std::new_handler g_previous_new_handler = std::set_new_handler(&ThrowOutOfMemory);

}  // namespace

void Module::AddReference() noexcept { g_references.fetch_add(1, std::memory_order_relaxed); }

void Module::RemoveReference() noexcept { g_references.fetch_sub(1, std::memory_order_acq_rel); }

void Module::Lock() noexcept { g_locks.fetch_add(1, std::memory_order_relaxed); }

void Module::Unlock() noexcept {
    LONG locks = g_locks.load(std::memory_order_relaxed);
    while (locks > 0 && !g_locks.compare_exchange_weak(locks, locks - 1, std::memory_order_acq_rel)) {
    }
}

LONG Module::References() noexcept {
    return g_references.load(std::memory_order_acquire) + g_locks.load(std::memory_order_acquire);
}

HINSTANCE Module::Instance() noexcept { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

std::wstring Module::Path() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(Instance(), path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            _com_issue_error(HRESULT_FROM_WIN32(::GetLastError()));
        }
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace paylodge
