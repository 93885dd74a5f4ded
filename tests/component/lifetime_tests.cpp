#include <gtest/gtest.h>

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

// Everything that occupies the process's addresses.
[[nodiscard]] SIZE_T UsedMemory() {
    SIZE_T used = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const BYTE* address = nullptr; ::VirtualQuery(address, &region, sizeof(region)) != 0;
         address = static_cast<const BYTE*>(region.BaseAddress) + region.RegionSize) {
        used += region.State == MEM_FREE ? 0 : region.RegionSize;
    }
    return used;
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

    FakeHost host;
};

// Each time the module is really unmapped: the value that is put is gone with it.
TEST_F(Lifetime, LoadingManyTimesLeavesNothingBehind) {
    for (int round = 0; round < 10; ++round) {
        LoadUseAndUnload();
    }
    host.calls.clear();
    const DWORD handles = OpenHandles();
    const DWORD thread_local_index = NextThreadLocalIndex();
    const SIZE_T memory = UsedMemory();
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        LoadUseAndUnload();
        host.calls.clear();
    }
    EXPECT_EQ(handles, OpenHandles());
    EXPECT_EQ(thread_local_index, NextThreadLocalIndex());
    // Heaps may have grown by a page or two for their own sake.
    EXPECT_GE(memory + 0x10000, UsedMemory());
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
