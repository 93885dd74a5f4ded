#include <gtest/gtest.h>

#include "com/object_root.hpp"
#include "com/object_with_site.hpp"
#include "frame/browser/approved_sites.hpp"
#include "frame/browser/site_lock.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge {
namespace {

constexpr DWORD kSentinel = 0xDEADBEEF;

class SafeObject : public IObjectWithSiteImpl<SafeObject>, public IObjectSafetySiteLockImpl<SafeObject, 1> {
  public:
    using Row = InterfaceRow<SafeObject>;
    static constexpr std::array kInterfaces = {
        Row::Of<IObjectSafetySiteLock>(), Row::Of<IObjectSafety, IObjectSafetySiteLock>(), Row::Of<IObjectWithSite>()};
    static std::span<const SiteEntry> SiteTable() { return ApprovedSites(); }

  protected:
    ~SafeObject() = default;
};

// Refuses every interface with an HRESULT of its own.
class RefusingObject final : public IObjectSafetySiteLockImpl<RefusingObject, 1> {
  public:
    STDMETHODIMP QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_ACCESSDENIED;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    static std::span<const SiteEntry> SiteTable() { return {}; }
};

class ObjectSafety : public ::testing::Test {
  protected:
    [[nodiscard]] DWORD EnabledOptions() {
        DWORD supported = kSentinel;
        DWORD enabled = kSentinel;
        EXPECT_HRESULT(S_OK, object->GetInterfaceSafetyOptions(IID_IUnknown, &supported, &enabled));
        EXPECT_EQ(1U, supported);
        return enabled;
    }

    ComPtr<ComObject<SafeObject>> object = ComObject<SafeObject>::Create();
};

TEST_F(ObjectSafety, NothingIsEnabledAtFirst) { EXPECT_EQ(0U, EnabledOptions()); }

TEST_F(ObjectSafety, GetWithANullOutParameterIsEPointer) {
    DWORD value = kSentinel;
    EXPECT_HRESULT(E_POINTER, object->GetInterfaceSafetyOptions(IID_IUnknown, nullptr, &value));
    EXPECT_HRESULT(E_POINTER, object->GetInterfaceSafetyOptions(IID_IUnknown, &value, nullptr));
    EXPECT_HRESULT(E_POINTER, object->GetInterfaceSafetyOptions(IID_IDataObject, nullptr, nullptr));
    EXPECT_EQ(kSentinel, value);
}

TEST_F(ObjectSafety, GetForAnInterfaceThatTheObjectLacksClearsBothResults) {
    EXPECT_HRESULT(S_OK, object->SetInterfaceSafetyOptions(IID_IUnknown, 1, 1));
    DWORD supported = kSentinel;
    DWORD enabled = kSentinel;
    EXPECT_HRESULT(E_NOINTERFACE, object->GetInterfaceSafetyOptions(IID_IDataObject, &supported, &enabled));
    EXPECT_EQ(0U, supported);
    EXPECT_EQ(0U, enabled);
}

TEST_F(ObjectSafety, GetPassesTheCodeOfQueryInterfaceOnAndSetDoesNot) {
    RefusingObject refusing;
    DWORD supported = kSentinel;
    DWORD enabled = kSentinel;
    EXPECT_HRESULT(E_ACCESSDENIED, refusing.GetInterfaceSafetyOptions(IID_IUnknown, &supported, &enabled));
    EXPECT_EQ(0U, supported);
    EXPECT_EQ(0U, enabled);
    EXPECT_HRESULT(E_NOINTERFACE, refusing.SetInterfaceSafetyOptions(IID_IUnknown, 1, 1));
}

TEST_F(ObjectSafety, OptionsAreOneSetForAllInterfaces) {
    EXPECT_HRESULT(S_OK, object->SetInterfaceSafetyOptions(__uuidof(IObjectWithSite), 1, 1));
    EXPECT_EQ(1U, EnabledOptions());
}

struct SetCase {
    DWORD before;
    DWORD mask;
    DWORD enabled;
    DWORD after;
};

class ObjectSafetySet : public ObjectSafety, public ::testing::WithParamInterface<SetCase> {};

TEST_P(ObjectSafetySet, ClearsTheEnabledBitsAndSetsTheMaskedOnes) {
    ASSERT_HRESULT(S_OK, object->SetInterfaceSafetyOptions(IID_IUnknown, GetParam().before, 1));
    ASSERT_EQ(GetParam().before, EnabledOptions());
    EXPECT_HRESULT(S_OK, object->SetInterfaceSafetyOptions(IID_IUnknown, GetParam().mask, GetParam().enabled));
    EXPECT_EQ(GetParam().after, EnabledOptions());
}

constexpr SetCase kSetCases[] = {
    {0, 0, 0, 0}, {0, 0, 1, 0}, {0, 1, 0, 1}, {0, 1, 1, 1}, {1, 0, 0, 1},
    {1, 0, 1, 0}, {1, 1, 0, 1}, {1, 1, 1, 1}, {1, 0, 2, 1}, {1, 0, 0xFFFFFFFF, 0},
};
INSTANTIATE_TEST_SUITE_P(Table, ObjectSafetySet, ::testing::ValuesIn(kSetCases));

TEST_F(ObjectSafety, SetOfAnUnknownOptionFailsAndChangesNothing) {
    ASSERT_HRESULT(S_OK, object->SetInterfaceSafetyOptions(IID_IUnknown, 1, 1));
    for (const DWORD mask : {2U, 3U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_HRESULT(E_FAIL, object->SetInterfaceSafetyOptions(IID_IUnknown, mask, 1));
    }
    EXPECT_EQ(1U, EnabledOptions());
}

TEST_F(ObjectSafety, SetForAnInterfaceThatTheObjectLacksIsENoInterface) {
    EXPECT_HRESULT(E_NOINTERFACE, object->SetInterfaceSafetyOptions(IID_IDataObject, 1, 1));
    EXPECT_HRESULT(E_NOINTERFACE, object->SetInterfaceSafetyOptions(IID_IDataObject, 2, 2));
    EXPECT_EQ(0U, EnabledOptions());
}

TEST_F(ObjectSafety, QueriesForInterfacesLeaveNoReference) {
    DWORD supported = 0;
    DWORD enabled = 0;
    EXPECT_HRESULT(S_OK, object->GetInterfaceSafetyOptions(IID_IUnknown, &supported, &enabled));
    EXPECT_HRESULT(S_OK, object->SetInterfaceSafetyOptions(IID_IUnknown, 1, 1));
    EXPECT_EQ(2U, object->AddRef());
    EXPECT_EQ(1U, object->Release());
}

TEST_F(ObjectSafety, SiteLockCapability) {
    DWORD value = 0;
    EXPECT_HRESULT(S_OK, object->GetSiteLockCapability(&value));
    EXPECT_EQ(0x10004U, value);
    value = 1;
    EXPECT_HRESULT(S_OK, object->GetSiteLockCapability(&value));
    EXPECT_EQ(0U, value);
    for (const DWORD question : {2U, 0x10004U, 0xFFFFFFFFU}) {
        value = question;
        EXPECT_HRESULT(E_NOTIMPL, object->GetSiteLockCapability(&value));
        EXPECT_EQ(0U, value);
    }
    EXPECT_HRESULT(E_POINTER, object->GetSiteLockCapability(nullptr));
}

TEST_F(ObjectSafety, ApprovedSiteListIsTheTableOfTheClass) {
    const SiteEntry* entries = nullptr;
    DWORD count = kSentinel;
    EXPECT_HRESULT(S_OK, object->GetApprovedSiteList(&entries, &count));
    EXPECT_EQ(ApprovedSites().data(), entries);
    EXPECT_EQ(10U, count);
    EXPECT_HRESULT(E_POINTER, object->GetApprovedSiteList(nullptr, &count));
    EXPECT_HRESULT(E_POINTER, object->GetApprovedSiteList(&entries, nullptr));
}

}  // namespace
}  // namespace paylodge
