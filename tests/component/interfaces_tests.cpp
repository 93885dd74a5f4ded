#include <gtest/gtest.h>
#include <objsafe.h>
#include <ocidl.h>

#include "tests/component/member_call.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

constexpr IID kObjectSafety = {0xCB5BDC81, 0x93C1, 0x11CF, {0x8F, 0x20, 0x00, 0x80, 0x5F, 0x2C, 0xD0, 0x64}};
constexpr IID kObjectSafetySiteLock = {0x7FEB54AE, 0xE3F9, 0x40FC, {0xAB, 0x5A, 0x28, 0xA5, 0x45, 0xC0, 0xF1, 0x94}};

[[nodiscard]] std::vector<IID> AllInterfaces() {
    std::vector<IID> ids(InterfaceIds().begin(), InterfaceIds().end());
    ids.insert(ids.end(),
               {IID_IUnknown, IID_IDispatch, __uuidof(IObjectWithSite), kObjectSafety, kObjectSafetySiteLock});
    return ids;
}

class Interfaces : public Component {
  protected:
    [[nodiscard]] ComPtr<IUnknown> Query(REFIID id) {
        ComPtr<IUnknown> found;
        EXPECT_HRESULT(S_OK, paylodge->QueryInterface(id, found.ReceiveVoid()));
        return found;
    }
};

TEST_F(Interfaces, EveryOneIsReachedFromEveryOther) {
    for (const IID& from : AllInterfaces()) {
        const ComPtr<IUnknown> source = Query(from);
        for (const IID& to : AllInterfaces()) {
            ComPtr<IUnknown> found;
            EXPECT_HRESULT(S_OK, source->QueryInterface(to, found.ReceiveVoid()));
        }
    }
}

TEST_F(Interfaces, HaveOneIdentity) {
    const ComPtr<IUnknown> identity = Query(IID_IUnknown);
    for (const IID& id : AllInterfaces()) {
        ComPtr<IUnknown> found;
        EXPECT_HRESULT(S_OK, Query(id)->QueryInterface(IID_IUnknown, found.ReceiveVoid()));
        EXPECT_EQ(identity.Get(), found.Get());
    }
}

TEST_F(Interfaces, QueriesCountReferences) {
    for (const IID& id : AllInterfaces()) {
        {
            const ComPtr<IUnknown> found = Query(id);
            EXPECT_EQ(3U, found->AddRef());
            EXPECT_EQ(2U, found->Release());
        }
        EXPECT_EQ(2U, paylodge->AddRef());
        EXPECT_EQ(1U, paylodge->Release());
    }
}

// The chain is one table of functions.
TEST_F(Interfaces, ChainIsOneTable) {
    for (const IID& id : InterfaceIds()) {
        EXPECT_EQ(static_cast<IUnknown*>(paylodge.Get()), Query(id).Get());
    }
}

TEST_F(Interfaces, OthersAreRefused) {
    for (const IID& id : {IID_IPersist, IID_IProvideClassInfo, IID_IConnectionPointContainer, IID_IPaylodgeCtrl,
                          CLSID_Paylodge, IID_IMarshal}) {
        void* found = static_cast<void*>(&found);
        EXPECT_HRESULT(E_NOINTERFACE, paylodge->QueryInterface(id, &found));
        EXPECT_EQ(nullptr, found);
    }
}

TEST_F(Interfaces, QueryWithoutASlotIsEPointer) {
    EXPECT_HRESULT(E_POINTER, paylodge->QueryInterface(IID_IUnknown, nullptr));
}

struct Entry {
    DWORD category;
    const wchar_t* scheme;
    const wchar_t* domain;
};

// Called through slots, as a browser that has only the published interface does.
TEST_F(Interfaces, SiteLockHasItsSlotsInOrder) {
    const ComPtr<IUnknown> lock = Query(kObjectSafetySiteLock);
    DWORD supported = 7;
    DWORD enabled = 7;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 3, &IID_IDispatch, &supported, &enabled));
    EXPECT_EQ(1U, supported);
    EXPECT_EQ(0U, enabled);
    EXPECT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 4, &IID_IDispatch, DWORD{1}, DWORD{0}));
    EXPECT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 3, &IID_IDispatch, &supported, &enabled));
    EXPECT_EQ(1U, enabled);
    DWORD capability = 0;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 5, &capability));
    EXPECT_EQ(65540U, capability);
    const Entry* entries = nullptr;
    DWORD count = 0;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 6, &entries, &count));
    EXPECT_EQ(10U, count);
    EXPECT_NE(nullptr, entries);
}

TEST_F(Interfaces, SiteLockListsTheApprovedSites) {
    const Entry expected[] = {
        {0, L"https", L"terminal.paylodge.example"},   {0, L"https", L"accounts.paylodge.example"},
        {0, L"https", L"merchant.ledgerhall.example"}, {0, L"https", L"payments.ledgerhall.example"},
        {0, L"https", L"services.ledgerhall.example"}, {0, L"http", L"merchant.ledgerhall.example"},
        {0, L"http", L"payments.ledgerhall.example"},  {0, L"http", L"services.ledgerhall.example"},
        {0, L"http", L"qa.ledgerhall.example"},        {0, L"http", L"dev.ledgerhall.example"},
    };
    const Entry* entries = nullptr;
    DWORD count = 0;
    ASSERT_HRESULT(S_OK, CallThroughSlot(*Query(kObjectSafetySiteLock).Get(), 6, &entries, &count));
    ASSERT_EQ(std::size(expected), count);
    for (DWORD index = 0; index < count; ++index) {
        EXPECT_EQ(expected[index].category, entries[index].category) << index;
        EXPECT_STREQ(expected[index].scheme, entries[index].scheme) << index;
        EXPECT_STREQ(expected[index].domain, entries[index].domain) << index;
    }
}

TEST_F(Interfaces, SiteLockReturnsItsCapabilities) {
    const ComPtr<IUnknown> lock = Query(kObjectSafetySiteLock);
    DWORD capability = 1;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 5, &capability));
    EXPECT_EQ(0U, capability);
    capability = 2;
    EXPECT_HRESULT(E_NOTIMPL, CallThroughSlot(*lock.Get(), 5, &capability));
    EXPECT_EQ(0U, capability);
}

TEST_F(Interfaces, SafetyHasOneOptionOnly) {
    const ComPtr<IUnknown> lock = Query(kObjectSafetySiteLock);
    ASSERT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 4, &IID_IDispatch, DWORD{1}, DWORD{1}));
    EXPECT_HRESULT(E_FAIL, CallThroughSlot(*lock.Get(), 4, &IID_IDispatch, DWORD{2}, DWORD{1}));
    EXPECT_HRESULT(E_FAIL, CallThroughSlot(*lock.Get(), 4, &IID_IDispatch, DWORD{3}, DWORD{1}));
    EXPECT_HRESULT(E_NOINTERFACE, CallThroughSlot(*lock.Get(), 4, &IID_IPaylodgeCtrl, DWORD{1}, DWORD{1}));
    DWORD supported = 7;
    DWORD enabled = 7;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*lock.Get(), 3, &IID_IDispatch, &supported, &enabled));
    EXPECT_EQ(1U, enabled);
}

TEST_F(Interfaces, NullOutParametersOfSafetyAndSiteLockAreEPointer) {
    const ComPtr<IUnknown> lock = Query(kObjectSafetySiteLock);
    DWORD* const no_number = nullptr;
    DWORD number = 7;
    EXPECT_HRESULT(E_POINTER, CallThroughSlot(*lock.Get(), 3, &IID_IDispatch, no_number, &number));
    EXPECT_HRESULT(E_POINTER, CallThroughSlot(*lock.Get(), 3, &IID_IDispatch, &number, no_number));
    EXPECT_HRESULT(E_POINTER, CallThroughSlot(*lock.Get(), 5, no_number));
    const Entry** const no_entries = nullptr;
    const Entry* entries = nullptr;
    EXPECT_HRESULT(E_POINTER, CallThroughSlot(*lock.Get(), 6, no_entries, &number));
    EXPECT_HRESULT(E_POINTER, CallThroughSlot(*lock.Get(), 6, &entries, no_number));
}

TEST_F(Interfaces, SafetyIsSharedByBothItsInterfaces) {
    EXPECT_HRESULT(S_OK, CallThroughSlot(*Query(kObjectSafety).Get(), 4, &IID_IDispatch, DWORD{1}, DWORD{1}));
    DWORD supported = 7;
    DWORD enabled = 7;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*Query(kObjectSafetySiteLock).Get(), 3, &IID_IDispatch, &supported, &enabled));
    EXPECT_EQ(1U, enabled);
    EXPECT_HRESULT(E_NOINTERFACE,
                   CallThroughSlot(*Query(kObjectSafety).Get(), 3, &IID_IPaylodgeCtrl, &supported, &enabled));
    EXPECT_EQ(0U, supported);
    EXPECT_EQ(0U, enabled);
}

}  // namespace
}  // namespace paylodge::test
