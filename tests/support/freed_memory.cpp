// Linked into each test program: memory that is freed is filled and kept back for a while, so that code that goes on
// using it fails at once instead of finding what was there. This program and the libraries that it loads from anywhere
// but the system's folder free through here; their calls arrive because the slots of their import tables are changed.

#include <windows.h>

#include <malloc.h>
#include <objbase.h>
#include <oleauto.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace paylodge::test {
namespace {

constexpr unsigned char kFill = 0xDD;
// What is larger is filled and freed at once.
constexpr size_t kLargestKept = size_t{64} * 1024;
constexpr size_t kMostBlocks = 4096;
constexpr size_t kMostBytes = size_t{32} * 1024 * 1024;

using FreeBlock = void __cdecl(void* block);
using FreeHeapBlock = BOOL WINAPI(HANDLE heap, DWORD flags, void* block);
using FreeTaskMemory = void WINAPI(void* block);
using FreeString = void WINAPI(BSTR text);

// The functions whose slots were changed.
FreeBlock* g_free_block = nullptr;
FreeHeapBlock* g_free_heap_block = nullptr;
FreeTaskMemory* g_free_task_memory = nullptr;
FreeString* g_free_string = nullptr;

// Blocks that the program has freed and the system still has, the oldest first. Plain data: frees come before and after
// everything that has a constructor.
struct KeptBlock {
    unsigned char* block;
    size_t size;
};
std::array<KeptBlock, kMostBlocks> g_kept;
size_t g_oldest = 0;
size_t g_count = 0;
size_t g_bytes = 0;
std::atomic_flag g_is_busy = ATOMIC_FLAG_INIT;

void CheckFill(const KeptBlock& kept) {
    for (size_t index = 0; index < kept.size; ++index) {
        if (kept.block[index] != kFill) {
            std::fprintf(stderr, "freed memory was written to: byte %zu of a block of %zu\n", index, kept.size);
            std::fflush(stderr);
            std::abort();
        }
    }
}

void ReleaseOldest() {
    const KeptBlock oldest = g_kept[g_oldest];
    g_oldest = (g_oldest + 1) % kMostBlocks;
    --g_count;
    g_bytes -= oldest.size;
    CheckFill(oldest);
    g_free_block(oldest.block);
}

void Keep(const KeptBlock& freed) {
    while (g_is_busy.test_and_set(std::memory_order_acquire)) {
        ::Sleep(0);
    }
    while (g_count == kMostBlocks || g_bytes + freed.size > kMostBytes) {
        ReleaseOldest();
    }
    g_kept[(g_oldest + g_count) % kMostBlocks] = freed;
    ++g_count;
    g_bytes += freed.size;
    g_is_busy.clear(std::memory_order_release);
}

void __cdecl FillAndKeep(void* block) {
    if (block == nullptr) {
        return;
    }
    const size_t size = ::_msize(block);
    std::memset(block, kFill, size);
    if (size > kLargestKept) {
        g_free_block(block);
    } else {
        Keep({static_cast<unsigned char*>(block), size});
    }
}

// The others are only filled: tests count what is left of them.
BOOL WINAPI FillHeapBlock(HANDLE heap, DWORD flags, void* block) {
    if (block != nullptr) {
        std::memset(block, kFill, ::HeapSize(heap, flags, block));
    }
    return g_free_heap_block(heap, flags, block);
}

void WINAPI FillTaskMemory(void* block) {
    IMalloc* allocator = nullptr;
    if (block != nullptr && SUCCEEDED(::CoGetMalloc(1, &allocator))) {
        std::memset(block, kFill, allocator->GetSize(block));
        allocator->Release();
    }
    g_free_task_memory(block);
}

void WINAPI FillString(BSTR text) {
    if (text != nullptr) {
        std::memset(text, kFill, ::SysStringByteLen(text));
    }
    g_free_string(text);
}

// Puts `function` into a slot that holds `original`, or the first function that any slot of this name held.
template <class Function>
void Change(void** slot, Function*& original, Function* function) {
    if (original == nullptr) {
        original = reinterpret_cast<Function*>(*slot);
    }
    if (*slot != reinterpret_cast<void*>(original)) {
        return;
    }
    DWORD protection = 0;
    if (::VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection) != FALSE) {
        *slot = reinterpret_cast<void*>(function);
        ::VirtualProtect(slot, sizeof *slot, protection, &protection);
    }
}

void ChangeSlot(std::string_view name, void** slot) {
    if (name == "free") {
        Change(slot, g_free_block, &FillAndKeep);
    } else if (name == "HeapFree") {
        Change(slot, g_free_heap_block, &FillHeapBlock);
    } else if (name == "CoTaskMemFree") {
        Change(slot, g_free_task_memory, &FillTaskMemory);
    } else if (name == "SysFreeString") {
        Change(slot, g_free_string, &FillString);
    }
}

void ChangeSlots(void* module) {
    auto* const image = static_cast<unsigned char*>(module);
    const auto* const headers =
        reinterpret_cast<IMAGE_NT_HEADERS*>(image + static_cast<IMAGE_DOS_HEADER*>(module)->e_lfanew);
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    if (imports == 0) {
        return;
    }
    for (auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(image + imports);
         library->OriginalFirstThunk != 0 && library->FirstThunk != 0; ++library) {
        const auto* name = reinterpret_cast<IMAGE_THUNK_DATA*>(image + library->OriginalFirstThunk);
        auto* slot = reinterpret_cast<void**>(image + library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                const auto* const imported = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(image + name->u1.AddressOfData);
                ChangeSlot(reinterpret_cast<const char*>(imported->Name), slot);
            }
        }
    }
}

// The system's notification of libraries that are loaded; the platform's headers leave it out.
struct CountedText {
    USHORT bytes;
    USHORT capacity;
    const wchar_t* text;
};
struct LibraryNotification {
    ULONG flags;
    const CountedText* path;
    const CountedText* name;
    void* base;
    ULONG size;
};
using Notify = void CALLBACK(ULONG reason, const LibraryNotification* library, void* context);
using RegisterNotification = LONG NTAPI(ULONG flags, Notify* notify, void* context, void** cookie);

[[nodiscard]] bool IsOfSystem(std::wstring_view path) {
    std::array<wchar_t, MAX_PATH> windows{};
    const UINT length = ::GetWindowsDirectoryW(windows.data(), MAX_PATH);
    return path.size() > length && ::_wcsnicmp(path.data(), windows.data(), length) == 0;
}

void CALLBACK OnLibrary(ULONG reason, const LibraryNotification* library, void* /*context*/) {
    constexpr ULONG kLoaded = 1;
    if (reason == kLoaded && !IsOfSystem({library->path->text, library->path->bytes / sizeof(wchar_t)})) {
        ChangeSlots(library->base);
    }
}

__attribute__((constructor)) void Start() {
    ChangeSlots(::GetModuleHandleW(nullptr));
    auto* const register_notification = reinterpret_cast<RegisterNotification*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification")));
    void* cookie = nullptr;
    if (register_notification == nullptr || register_notification(0, &OnLibrary, nullptr, &cookie) != 0) {
        std::fputs("the system does not notify of libraries\n", stderr);
        std::abort();
    }
}

}  // namespace
}  // namespace paylodge::test
