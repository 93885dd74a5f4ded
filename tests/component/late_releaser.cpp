// A library that releases an object only when the process ends, after other libraries were notified of that.

#include <windows.h>

#include <unknwn.h>

namespace {

IUnknown* g_kept = nullptr;

}  // namespace

// Takes over the caller's reference.
extern "C" __declspec(dllexport) void __cdecl KeepUntilTheEnd(IUnknown* object) { g_kept = object; }

BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, void* is_process_ending) {
    if (reason == DLL_PROCESS_DETACH && is_process_ending != nullptr && g_kept != nullptr) {
        g_kept->Release();
    }
    return TRUE;
}
