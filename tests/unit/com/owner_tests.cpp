// The owning types: resources, COM strings, references.

#include "com/owner.hpp"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/object_root.hpp"
#include "com/variant.hpp"
#include "tests/support/bstr_allocations.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"

namespace paylodge::test {
namespace {

using namespace std::string_literals;

std::vector<int> g_freed;

struct NumberTraits {
    using Type = int;
    static constexpr int None() noexcept { return -1; }
    static void Free(int number) { g_freed.push_back(number); }
};
using Number = Owner<NumberTraits>;

class OwnerTest : public testing::Test {
  protected:
    void SetUp() override { g_freed.clear(); }
};

TEST_F(OwnerTest, OwnsNothingAtFirst) {
    {
        const Number number;
        EXPECT_FALSE(number);
        EXPECT_EQ(-1, number.Get());
    }
    EXPECT_TRUE(g_freed.empty());
}

TEST_F(OwnerTest, FreesOnceAtTheEnd) {
    {
        const Number number(7);
        EXPECT_TRUE(number);
        EXPECT_EQ(7, number.Get());
        EXPECT_TRUE(g_freed.empty());
    }
    EXPECT_EQ(std::vector{7}, g_freed);
}

TEST_F(OwnerTest, OwnsWhatLooksLikeZero) {
    {
        const Number number(0);
    }
    EXPECT_EQ(std::vector{0}, g_freed);
}

TEST_F(OwnerTest, MovingLeavesTheSourceEmpty) {
    {
        Number source(7);
        const Number target(std::move(source));
        EXPECT_EQ(7, target.Get());
        EXPECT_EQ(-1, source.Get());
    }
    EXPECT_EQ(std::vector{7}, g_freed);
}

TEST_F(OwnerTest, AssignmentFreesWhatWasThere) {
    Number target(1);
    target = Number(2);
    EXPECT_EQ(2, target.Get());
    EXPECT_EQ(std::vector{1}, g_freed);
}

TEST_F(OwnerTest, AssignmentToItselfKeepsTheResource) {
    Number number(1);
    Number& same = number;
    number = std::move(same);
    EXPECT_EQ(1, number.Get());
    EXPECT_TRUE(g_freed.empty());
}

TEST_F(OwnerTest, DetachingGivesTheResourceAway) {
    {
        Number number(7);
        EXPECT_EQ(7, number.Detach());
        EXPECT_FALSE(number);
        EXPECT_EQ(-1, number.Detach());
    }
    EXPECT_TRUE(g_freed.empty());
}

TEST_F(OwnerTest, ResettingFreesAndReplaces) {
    Number number(1);
    number.Reset(2);
    EXPECT_EQ(2, number.Get());
    number.Reset();
    number.Reset();
    EXPECT_FALSE(number);
    EXPECT_EQ((std::vector{1, 2}), g_freed);
}

TEST_F(OwnerTest, ReceivesWhatAFunctionHandsOut) {
    {
        Number number;
        *number.Receive() = 7;
        EXPECT_EQ(7, number.Get());
    }
    EXPECT_EQ(std::vector{7}, g_freed);
}

static_assert(!std::is_copy_constructible_v<Number> && !std::is_copy_assignable_v<Number>);
static_assert(std::is_nothrow_move_constructible_v<Number> && std::is_nothrow_move_assignable_v<Number>);
static_assert(!std::is_convertible_v<int, Number>);

TEST(Variant, IsEmptyAtFirst) {
    const OwnedVariant value;
    EXPECT_EQ(VT_EMPTY, value.Type());
    EXPECT_EQ(VT_EMPTY, V_VT(&value.Get()));
}

TEST(Variant, TakesAStringOverAndFreesItOnce) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "OANOCACHE is not set: automation keeps freed strings";
    }
    const LiveAllocations allocations;
    {
        const OwnedVariant value(MakeBstr(L"text"));
        EXPECT_EQ(1, allocations.Count());
        EXPECT_EQ(VT_BSTR, value.Type());
        EXPECT_EQ(L"text", View(value.Bstr()));
    }
    EXPECT_EQ(0, allocations.Count());
}

TEST(Variant, FreesWhatAFunctionHandedOut) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "OANOCACHE is not set: automation keeps freed strings";
    }
    const LiveAllocations allocations;
    {
        OwnedVariant value;
        VARIANT* const slot = value.Receive();
        V_VT(slot) = VT_BSTR;
        V_BSTR(slot) = MakeBstr(L"text").Detach();
        EXPECT_EQ(1, allocations.Count());
    }
    EXPECT_EQ(0, allocations.Count());
}

TEST(Bstr, ViewSeesEmbeddedNulsAndTakesNullForTheEmptyText) {
    EXPECT_EQ(L"a\0b"s, View(MakeBstr(L"a\0b"s)));
    EXPECT_EQ(L"", View(static_cast<BSTR>(nullptr)));
    EXPECT_EQ(L"", View(OwnedBstr()));
}

TEST(Bstr, EmptyTextIsAStringOfItsOwn) {
    const OwnedBstr text = MakeBstr(L"");
    EXPECT_TRUE(text);
    EXPECT_EQ(0U, ::SysStringLen(text.Get()));
}

TEST(Bstr, CopyIsAnotherStringWithTheSameBytes) {
    const OwnedBstr odd(::SysAllocStringByteLen("a\0bcd", 5));
    const OwnedBstr copy = CopyBstr(odd.Get());
    EXPECT_NE(odd.Get(), copy.Get());
    ASSERT_EQ(5U, ::SysStringByteLen(copy.Get()));
    EXPECT_EQ("a\0bcd"s, std::string(reinterpret_cast<const char*>(copy.Get()), 5));
}

TEST(Bstr, CopyOfNullIsNullAndOfAnEmptyStringIsNot) {
    EXPECT_FALSE(CopyBstr(nullptr));
    EXPECT_TRUE(CopyBstr(MakeBstr(L"").Get()));
}

TEST(Bstr, FailedAllocationIsThrown) {
    const OwnedBstr text = MakeBstr(L"text");
    for (const auto make :
         {+[](BSTR from) { return CopyBstr(from); }, +[](BSTR from) { return MakeBstr(View(from)); }}) {
        const BstrAllocations allocations(1);
        EXPECT_THROW(static_cast<void>(make(text.Get())), _com_error);
    }
}

class Lock : public IClassFactory {
  public:
    using Row = InterfaceRow<Lock>;
    static constexpr std::array kInterfaces = {Row::Of<IClassFactory>()};

    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  protected:
    ~Lock() = default;
};

[[nodiscard]] ULONG ReferencesOn(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

class ComPtrTest : public testing::Test {
  protected:
    ComPtr<IClassFactory> object_{ComObject<Lock>::Create().Get()};
};

TEST_F(ComPtrTest, OwnsNothingAtFirst) {
    ComPtr<IClassFactory> empty;
    EXPECT_FALSE(empty);
    EXPECT_EQ(nullptr, empty.Get());
    EXPECT_EQ(nullptr, empty.Detach());
    empty.Reset();
    EXPECT_FALSE(ComPtr<IClassFactory>(empty));
    EXPECT_FALSE(ComPtr<IClassFactory>(nullptr));
}

TEST_F(ComPtrTest, CopiesHoldReferencesOfTheirOwn) {
    {
        const ComPtr<IClassFactory> copy(object_);
        const ComPtr<IClassFactory> from_raw(object_.Get());
        EXPECT_EQ(3U, ReferencesOn(object_.Get()));
    }
    EXPECT_EQ(1U, ReferencesOn(object_.Get()));
}

TEST_F(ComPtrTest, MovingKeepsTheCount) {
    ComPtr<IClassFactory> source(object_);
    const ComPtr<IClassFactory> target(std::move(source));
    EXPECT_FALSE(source);
    EXPECT_EQ(2U, ReferencesOn(target.Get()));
}

TEST_F(ComPtrTest, AssignmentReleasesWhatWasThere) {
    const ComPtr<IClassFactory> other(ComObject<Lock>::Create().Get());
    ComPtr<IClassFactory> target(object_);
    target = other;
    EXPECT_EQ(1U, ReferencesOn(object_.Get()));
    EXPECT_EQ(2U, ReferencesOn(other.Get()));
    const ComPtr<IClassFactory>& same = target;
    target = same;
    EXPECT_EQ(2U, ReferencesOn(other.Get()));
}

TEST_F(ComPtrTest, AttachAndDetachPassAReferenceOn) {
    auto* const raw = ComPtr<IClassFactory>(object_).Detach();
    EXPECT_EQ(2U, ReferencesOn(object_.Get()));
    {
        const auto attached = ComPtr<IClassFactory>::Attach(raw);
    }
    EXPECT_EQ(1U, ReferencesOn(object_.Get()));
}

TEST_F(ComPtrTest, ReceivesWhatAFunctionHandsOut) {
    {
        ComPtr<IUnknown> received;
        EXPECT_HRESULT(S_OK, object_->QueryInterface(IID_IUnknown, received.ReceiveVoid()));
        EXPECT_EQ(2U, ReferencesOn(object_.Get()));
    }
    EXPECT_EQ(1U, ReferencesOn(object_.Get()));
}

TEST_F(ComPtrTest, AsksForAnotherInterface) {
    ComPtr<IUnknown> unknown;
    EXPECT_HRESULT(S_OK, object_.As(unknown));
    EXPECT_EQ(object_.Get(), unknown.Get());
    ComPtr<IDispatch> dispatch;
    EXPECT_HRESULT(E_NOINTERFACE, object_.As(dispatch));
    EXPECT_FALSE(dispatch);
    EXPECT_HRESULT(E_POINTER, ComPtr<IClassFactory>().As(dispatch));
}

}  // namespace
}  // namespace paylodge::test
