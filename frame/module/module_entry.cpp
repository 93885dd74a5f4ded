// The module's entry point, and what has to stand before the compiler's run-time libraries, which are linked in.

#include <windows.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// The run-time libraries' own start and end, for DLLs.
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, void* reserved);

namespace __gnu_cxx {
// Frees the reserve for exceptions.
void __freeres();

// What becomes of an exception that nobody catches. The library's own would name its type on a console that the host
// does not have, with a tenth of the module's code.
[[noreturn]] void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx

namespace {

// Thread-local indexes: the run-time libraries do not free theirs, and a host that loads and unloads the module
// many times would run out of them. Plain data: used before the run-time libraries start and after they end.
std::array<DWORD, 8> g_thread_local_indexes;
size_t g_index_count = 0;

// A function of the system, found without the import that stands for it here.
template <class Function>
[[nodiscard]] Function* SystemFunction(const char* name) noexcept {
    const FARPROC function = ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(function));
}

DWORD WINAPI AllocateThreadLocalIndex() {
    const DWORD index = SystemFunction<DWORD WINAPI()>("TlsAlloc")();
    if (index != TLS_OUT_OF_INDEXES && g_index_count < g_thread_local_indexes.size()) {
        g_thread_local_indexes[g_index_count++] = index;
    }
    return index;
}

void FreeThreadLocalIndexes() {
    while (g_index_count > 0) {
        ::TlsFree(g_thread_local_indexes[--g_index_count]);
    }
}

// Unwind tables: the compiler's start-up code registers them with this library where the process has it loaded, but
// exceptions are thrown by the run-time library that is linked in, which then would not find them.
HMODULE WINAPI FindModule(const char* name) {
    if (name != nullptr && std::strcmp(name, "libgcc_s_dw2-1.dll") == 0) {
        return nullptr;
    }
    return SystemFunction<HMODULE WINAPI(const char*)>("GetModuleHandleA")(name);
}

}  // namespace

// Each stands before the import of the function, through which all code of the module calls it.
#ifdef _WIN64
extern "C" DWORD(WINAPI* const allocate_thread_local_index)() asm("__imp_TlsAlloc");
extern "C" HMODULE(WINAPI* const find_module)(const char*) asm("__imp_GetModuleHandleA");
#else
extern "C" DWORD(WINAPI* const allocate_thread_local_index)() asm("__imp__TlsAlloc@0");
extern "C" HMODULE(WINAPI* const find_module)(const char*) asm("__imp__GetModuleHandleA@4");
#endif
DWORD(WINAPI* const allocate_thread_local_index)() = &AllocateThreadLocalIndex;
HMODULE(WINAPI* const find_module)(const char*) = &FindModule;

// The stack guard's value and what happens when it was overwritten. The compiler's library would ask the cryptographic
// provider for a value, which means loading a library and reading the registry while the loader's lock is held.
extern "C" {
std::uintptr_t __stack_chk_guard = 0;

// Ends the process at once, without running any code of it.
[[noreturn]] void __stack_chk_fail() {
    constexpr int kStackCookieCheckFailure = 2;
    asm volatile("int $0x29" : : "c"(kStackCookieCheckFailure));
    __builtin_unreachable();
}
}

namespace {

// From what differs between processes and moments, with a zero byte that no text copies over.
[[gnu::no_stack_protector]] void SetStackGuard() {
    LARGE_INTEGER counter;
    ::QueryPerformanceCounter(&counter);
    FILETIME time;
    ::GetSystemTimeAsFileTime(&time);
    std::uint64_t value = static_cast<std::uint64_t>(counter.QuadPart) ^ reinterpret_cast<std::uintptr_t>(&counter);
    for (const std::uint64_t part : {std::uint64_t{time.dwLowDateTime}, std::uint64_t{time.dwHighDateTime},
                                     std::uint64_t{::GetCurrentProcessId()}, std::uint64_t{::GetCurrentThreadId()}}) {
        value = (value ^ part) * 0x9E3779B97F4A7C15;
        value ^= value >> 29;
    }
    __stack_chk_guard = static_cast<std::uintptr_t>(value) & ~std::uintptr_t{0xFF};
}

}  // namespace

// Named for the linker alike on both architectures.
extern "C" BOOL WINAPI ModuleEntry(HINSTANCE instance, DWORD reason, void* reserved) asm("ModuleEntry");

extern "C" [[gnu::no_stack_protector]] BOOL WINAPI ModuleEntry(HINSTANCE instance, DWORD reason, void* reserved) {
    // At the end of the process everything goes anyway: other modules may still release objects of this one, and other
    // threads have been stopped in the middle of things. Nothing is taken apart.
    const bool is_process_ending = reason == DLL_PROCESS_DETACH && reserved != nullptr;
    if (is_process_ending) {
        return TRUE;
    }
    if (reason == DLL_PROCESS_ATTACH) {
        SetStackGuard();
    }
    const BOOL result = DllMainCRTStartup(instance, reason, reserved);
    if (reason == DLL_PROCESS_DETACH) {
        __gnu_cxx::__freeres();
        FreeThreadLocalIndexes();
    }
    return result;
}
