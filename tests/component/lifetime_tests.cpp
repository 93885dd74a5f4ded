#include <windows.h>

#include <gtest/gtest.h>
#include <psapi.h>

#include <algorithm>
#include <array>
#include <span>

#include "tests/component/member_call.hpp"
#include "tests/component/module_under_test.hpp"

namespace paylodge::test {
namespace {

[[nodiscard]] DWORD OpenHandles() {
    DWORD count = 0;
    EXPECT_TRUE(::GetProcessHandleCount(::GetCurrentProcess(), &count));
    return count;
}

// The lowest index that is free.
[[nodiscard]] DWORD NextThreadLocalIndex() {
    const DWORD index = ::TlsAlloc();
    EXPECT_TRUE(::TlsFree(index));
    return index;
}

struct Memory {
    SIZE_T mapped = 0;     // by modules and other files
    SIZE_T reserved = 0;   // by everything else, heaps among it
    SIZE_T allocated = 0;  // in heaps
};

[[nodiscard]] SIZE_T AllocatedIn(HANDLE heap) {
    SIZE_T allocated = 0;
    PROCESS_HEAP_ENTRY entry{};
    while (::HeapWalk(heap, &entry) != FALSE) {
        allocated += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    return allocated;
}

[[nodiscard]] Memory UsedMemory() {
    Memory used;
    MEMORY_BASIC_INFORMATION region{};
    for (const BYTE* address = nullptr; ::VirtualQuery(address, &region, sizeof(region)) != 0;
         address = static_cast<const BYTE*>(region.BaseAddress) + region.RegionSize) {
        if (region.State != MEM_FREE) {
            (region.Type == MEM_PRIVATE ? used.reserved : used.mapped) += region.RegionSize;
        }
    }
    std::array<HANDLE, 64> heaps{};
    const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    for (const HANDLE heap : std::span(heaps).first(std::min<size_t>(count, heaps.size()))) {
        used.allocated += AllocatedIn(heap);
    }
    return used;
}

// Keeps what the module imports loaded, as a host does, which uses it too: the platform itself loses memory with some
// of its libraries each time they are loaded anew.
void KeepImportsLoaded() {
    const ModuleUnderTest module;
    std::array<HMODULE, 256> loaded{};
    DWORD size = 0;
    ASSERT_TRUE(::EnumProcessModules(::GetCurrentProcess(), loaded.data(), sizeof(loaded), &size));
    ASSERT_LE(size, sizeof(loaded));
    for (const HMODULE library : std::span(loaded).first(size / sizeof(HMODULE))) {
        HMODULE pinned = nullptr;
        if (library != module.Handle()) {
            EXPECT_TRUE(::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                             reinterpret_cast<const wchar_t*>(library), &pinned));
        }
    }
}

class Lifetime : public ::testing::Test {
  protected:
    Lifetime() { host.failures["CreateObjectFromClassId"] = E_ACCESSDENIED; }

    // Through the type library, and with an exception on the way.
    static void LoadUseAndUnload() {
        const ModuleUnderTest module;
        const auto paylodge = module.CreatePaylodge();
        EXPECT_EQ("null", CallSlot(*paylodge.Get(), FindMember("ItemData", Kind::kGet)).results);
        EXPECT_EQ(S_OK, CallInvoke(*paylodge.Get(), FindMember("ItemData", Kind::kPut)).result);
        EXPECT_EQ(E_FAIL, CallSlot(*paylodge.Get(), FindMember("ProcessLHRequest")).result);
    }

    // More than there are thread-local indexes in a process.
    static constexpr int kRounds = 1100;

    // What the compiler's thread library, which is linked in, made when an exception was raised and keeps for ever when
    // the module is unloaded: 1.5 KB on x64, half of that on x86.
    static constexpr SIZE_T kLostByThreadLibrary = 2048;

    FakeHost host;
};

// Each time the module is really unmapped: the value that is put is gone with it.
TEST_F(Lifetime, LoadingManyTimesLeavesNothingBehind) {
    KeepImportsLoaded();
    for (int round = 0; round < 10; ++round) {
        LoadUseAndUnload();
    }
    host.calls.clear();
    const DWORD handles = OpenHandles();
    const DWORD thread_local_index = NextThreadLocalIndex();
    const Memory before = UsedMemory();
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        LoadUseAndUnload();
        host.calls.clear();
    }
    EXPECT_EQ(handles, OpenHandles());
    EXPECT_EQ(thread_local_index, NextThreadLocalIndex());
    const Memory after = UsedMemory();
    EXPECT_EQ(before.mapped, after.mapped);
    EXPECT_GE(before.allocated + kRounds * kLostByThreadLibrary, after.allocated);
    // Heaps grow by a segment at a time.
    EXPECT_GE(before.reserved + 0x2000000, after.reserved);
}

TEST_F(Lifetime, TwoLoadsAreOneModule) {
    const HMODULE first = ::LoadLibraryW(ModulePath().c_str());
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(first, ::LoadLibraryW(ModulePath().c_str()));
    EXPECT_TRUE(::FreeLibrary(first));
    EXPECT_EQ(first, ::GetModuleHandleW(L"Paylodge.dll"));
    EXPECT_TRUE(::FreeLibrary(first));
    EXPECT_EQ(nullptr, ::GetModuleHandleW(L"Paylodge.dll"));
}

TEST_F(Lifetime, EveryMemberLeavesTheModuleUnloadable) {
    host.failures.clear();
    const NoApplication no_application;
    for (const Member& member : Members()) {
        ModuleUnderTest module;
        auto paylodge = module.CreatePaylodge();
        static_cast<void>(CallSlot(*paylodge.Get(), member));
        EXPECT_EQ(2U, paylodge->AddRef()) << NameOf(member);
        EXPECT_EQ(1U, paylodge->Release());
        EXPECT_EQ(S_FALSE, module.CanUnloadNow());
        paylodge.Reset();
        EXPECT_EQ(S_OK, module.CanUnloadNow()) << NameOf(member);
        EXPECT_EQ(0, host.live_processors);
    }
}

}  // namespace
}  // namespace paylodge::test
