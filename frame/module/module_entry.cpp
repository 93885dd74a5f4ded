// The module's entry point. The compiler's run-time libraries are linked in, and they give neither their thread-local
// index nor their reserve for exceptions back; a host that loads and unloads the module many times would run out of
// indexes. Here both go with the module.

#include <windows.h>

#include <array>

// The run-time libraries' own start and end, for DLLs.
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, void* reserved);

namespace __gnu_cxx {
// Frees the reserve for exceptions.
void __freeres();
}  // namespace __gnu_cxx

namespace {

// Plain data: used before the run-time libraries start and after they end.
std::array<DWORD, 8> g_thread_local_indexes;
size_t g_index_count = 0;

DWORD WINAPI AllocateThreadLocalIndex() {
    const FARPROC allocate = ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "TlsAlloc");
    const DWORD index = reinterpret_cast<DWORD(WINAPI*)()>(reinterpret_cast<void*>(allocate))();
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

}  // namespace

// Stands before the import of TlsAlloc, through which all code of the module calls it.
#ifdef _WIN64
extern "C" DWORD(WINAPI* const allocate_thread_local_index)() asm("__imp_TlsAlloc");
#else
extern "C" DWORD(WINAPI* const allocate_thread_local_index)() asm("__imp__TlsAlloc@0");
#endif
DWORD(WINAPI* const allocate_thread_local_index)() = &AllocateThreadLocalIndex;

// Named for the linker alike on both architectures.
extern "C" BOOL WINAPI ModuleEntry(HINSTANCE instance, DWORD reason, void* reserved) asm("ModuleEntry");

extern "C" BOOL WINAPI ModuleEntry(HINSTANCE instance, DWORD reason, void* reserved) {
    const BOOL result = DllMainCRTStartup(instance, reason, reserved);
    // At the end of the process everything goes anyway, and other threads may have been stopped in the middle of
    // things.
    const bool is_unloaded = reason == DLL_PROCESS_DETACH && reserved == nullptr;
    if (is_unloaded) {
        __gnu_cxx::__freeres();
        FreeThreadLocalIndexes();
    }
    return result;
}
