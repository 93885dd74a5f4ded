// IOleObject and IOleControl without a window.

#include <gtest/gtest.h>

#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {
namespace {

class OleObject : public ::testing::Test {
  protected:
    void TearDown() override {
        site_.Reset();
        object_.Reset();
        EXPECT_EQ(1u, References(control_));
        control_.Reset();
        EXPECT_EQ(modules_before_, Module::References());
    }
    [[nodiscard]] IOleClientSite* Site() noexcept { return site_.Get(); }

    const LONG modules_before_ = Module::References();
    Record record_;
    ComPtr<ComObject<RecordingSite>> site_ = ComObject<RecordingSite>::Create(record_);
    ComPtr<ComObject<TestControl>> control_ = ComObject<TestControl>::Create();
    ComPtr<IOleObject> object_ = Query<IOleObject>(control_);
};

TEST_F(OleObject, HoldsItsClientSite) {
    ComPtr<IOleClientSite> none;
    EXPECT_HRESULT(S_OK, object_->GetClientSite(none.Receive()));
    EXPECT_FALSE(none);
    EXPECT_HRESULT(S_OK, object_->SetClientSite(Site()));
    EXPECT_EQ(2u, References(site_));
    EXPECT_HRESULT(S_OK, object_->SetClientSite(Site()));
    EXPECT_EQ(2u, References(site_));
    ComPtr<IOleClientSite> held;
    EXPECT_HRESULT(S_OK, object_->GetClientSite(held.Receive()));
    EXPECT_EQ(Site(), held.Get());
    held.Reset();
    EXPECT_HRESULT(S_OK, object_->SetClientSite(nullptr));
    EXPECT_EQ(1u, References(site_));
    EXPECT_HRESULT(E_POINTER, object_->GetClientSite(nullptr));
}

TEST_F(OleObject, ReleasesItsSiteWhenItIsReleased) {
    EXPECT_HRESULT(S_OK, object_->SetClientSite(Site()));
    object_.Reset();
    control_.Reset();
    EXPECT_EQ(1u, References(site_));
    control_ = ComObject<TestControl>::Create();
}

TEST_F(OleObject, KnowsItsMiscStatusUnregistered) {
    DWORD status = 0;
    EXPECT_HRESULT(S_OK, object_->GetMiscStatus(DVASPECT_CONTENT, &status));
    EXPECT_EQ(131473u, status);
    EXPECT_HRESULT(S_OK, object_->GetMiscStatus(DVASPECT_ICON, &status));
    EXPECT_EQ(0u, status);
    EXPECT_HRESULT(E_POINTER, object_->GetMiscStatus(DVASPECT_CONTENT, nullptr));
}

TEST_F(OleObject, IsTwoInchesLargeUntilItIsGivenASize) {
    SIZEL size{};
    EXPECT_HRESULT(S_OK, object_->GetExtent(DVASPECT_CONTENT, &size));
    EXPECT_EQ(5080, size.cx);
    EXPECT_EQ(5080, size.cy);
    size = {1234, 567};
    EXPECT_HRESULT(S_OK, object_->SetExtent(DVASPECT_CONTENT, &size));
    size = {};
    EXPECT_HRESULT(S_OK, object_->GetExtent(DVASPECT_CONTENT, &size));
    EXPECT_EQ(1234, size.cx);
    EXPECT_EQ(567, size.cy);
}

TEST_F(OleObject, RefusesSizesThatMeanNothing) {
    for (SIZEL size : {SIZEL{-1, 5}, SIZEL{5, -1}, SIZEL{-1, -1}}) {
        EXPECT_HRESULT(E_INVALIDARG, object_->SetExtent(DVASPECT_CONTENT, &size)) << size.cx << "," << size.cy;
        EXPECT_HRESULT(S_OK, object_->GetExtent(DVASPECT_CONTENT, &size));
        EXPECT_EQ(5080, size.cx);
        EXPECT_EQ(5080, size.cy);
    }
    SIZEL size{0, 0};
    EXPECT_HRESULT(S_OK, object_->SetExtent(DVASPECT_CONTENT, &size)) << "nothing to see is a size";
    EXPECT_HRESULT(DV_E_DVASPECT, object_->SetExtent(DVASPECT_ICON, &size));
    EXPECT_HRESULT(DV_E_DVASPECT, object_->GetExtent(DVASPECT_ICON, &size));
    EXPECT_HRESULT(E_POINTER, object_->SetExtent(DVASPECT_CONTENT, nullptr));
    EXPECT_HRESULT(E_POINTER, object_->GetExtent(DVASPECT_CONTENT, nullptr));
}

TEST_F(OleObject, ClosesUnsavedWithoutASite) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, object_->Advise(site_.Get(), &cookie));
    EXPECT_HRESULT(S_OK, object_->SetClientSite(nullptr));
    control_->SetControlDirty(true);
    for (const DWORD option : {OLECLOSE_SAVEIFDIRTY, OLECLOSE_PROMPTSAVE}) {
        record_.Clear();
        EXPECT_HRESULT(S_OK, object_->Close(option));
        EXPECT_TRUE(control_->IsControlDirty());
    }
    EXPECT_HRESULT(E_INVALIDARG, object_->Close(OLECLOSE_PROMPTSAVE + 1));
}

TEST_F(OleObject, NotifiesItsSinksWhenItCloses) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, object_->Advise(site_.Get(), &cookie));
    EXPECT_NE(0u, cookie);
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_NOSAVE));
    EXPECT_EQ("OnClose", record_.Take());
    EXPECT_HRESULT(S_OK, object_->Unadvise(cookie));
    EXPECT_HRESULT(OLE_E_NOCONNECTION, object_->Unadvise(cookie));
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_NOSAVE));
    EXPECT_EQ("", record_.Take());
}

TEST_F(OleObject, AdvisesNobodyWithoutASink) {
    DWORD cookie = 1;
    EXPECT_HRESULT(E_INVALIDARG, object_->Advise(nullptr, &cookie));
    EXPECT_EQ(0u, cookie);
    EXPECT_HRESULT(E_POINTER, object_->Advise(site_.Get(), nullptr));
    EXPECT_HRESULT(OLE_E_NOCONNECTION, object_->Unadvise(1));
}

TEST_F(OleObject, EnumeratesItsAdviseConnections) {
    EXPECT_HRESULT(E_POINTER, object_->EnumAdvise(nullptr));
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, object_->Advise(site_.Get(), &cookie));
    ComPtr<IEnumSTATDATA> connections;
    ASSERT_HRESULT(S_OK, object_->EnumAdvise(connections.Receive()));
    STATDATA connection{};
    ULONG fetched = 0;
    EXPECT_HRESULT(S_OK, connections->Next(1, &connection, &fetched));
    EXPECT_EQ(1u, fetched);
    EXPECT_EQ(static_cast<IAdviseSink*>(site_.Get()), connection.pAdvSink);
    connection.pAdvSink->Release();
}

TEST_F(OleObject, SavesThroughItsSiteOnlyWhatIsDirty) {
    EXPECT_HRESULT(S_OK, object_->SetClientSite(Site()));
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_SAVEIFDIRTY));
    EXPECT_EQ("", record_.Take());
    control_->SetControlDirty(true);
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_NOSAVE));
    EXPECT_EQ("", record_.Take());
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_SAVEIFDIRTY));
    EXPECT_EQ("SaveObject", record_.Take());
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_PROMPTSAVE));
    EXPECT_EQ("SaveObject", record_.Take());
    site_->answers["SaveObject"] = E_ACCESSDENIED;
    EXPECT_HRESULT(E_ACCESSDENIED, object_->Close(OLECLOSE_SAVEIFDIRTY));
    EXPECT_HRESULT(E_INVALIDARG, object_->Close(3));
}

TEST_F(OleObject, CannotBeShownWithoutASite) {
    for (const LONG verb :
         {OLEIVERB_PRIMARY, OLEIVERB_SHOW, OLEIVERB_OPEN, OLEIVERB_INPLACEACTIVATE, OLEIVERB_UIACTIVATE}) {
        EXPECT_HRESULT(OLEOBJ_S_CANNOT_DOVERB_NOW, object_->DoVerb(verb, nullptr, nullptr, 0, nullptr, nullptr))
            << verb;
    }
    EXPECT_HRESULT(S_OK, object_->DoVerb(OLEIVERB_HIDE, nullptr, nullptr, 0, nullptr, nullptr));
    EXPECT_HRESULT(S_OK, object_->DoVerb(OLEIVERB_DISCARDUNDOSTATE, nullptr, nullptr, 0, nullptr, nullptr));
    EXPECT_HRESULT(E_NOTIMPL, object_->DoVerb(-100, nullptr, nullptr, 0, nullptr, nullptr));
}

TEST_F(OleObject, NeedsNoRegistrationForItsIdentity) {
    CLSID id{};
    EXPECT_HRESULT(S_OK, object_->GetUserClassID(&id));
    EXPECT_TRUE(IsEqualCLSID(kTestControlId, id));
    EXPECT_HRESULT(E_POINTER, object_->GetUserClassID(nullptr));
    ComPtr<IEnumOLEVERB> verbs;
    EXPECT_HRESULT(OLEOBJ_E_NOVERBS, object_->EnumVerbs(verbs.Receive()));
    EXPECT_FALSE(verbs);
    EXPECT_HRESULT(E_POINTER, object_->EnumVerbs(nullptr));
    LPOLESTR name = nullptr;
    EXPECT_TRUE(FAILED(object_->GetUserType(USERCLASSTYPE_FULL, &name)));
    EXPECT_EQ(nullptr, name);
    EXPECT_HRESULT(E_POINTER, object_->GetUserType(USERCLASSTYPE_FULL, nullptr));
}

TEST_F(OleObject, UnsupportedMethodsReturnTheirStockResults) {
    ComPtr<IMoniker> moniker;
    EXPECT_HRESULT(E_NOTIMPL, object_->GetMoniker(0, 0, moniker.Receive()));
    EXPECT_HRESULT(E_POINTER, object_->GetMoniker(0, 0, nullptr));
    EXPECT_HRESULT(E_NOTIMPL, object_->SetMoniker(0, nullptr));
    EXPECT_HRESULT(E_NOTIMPL, object_->InitFromData(nullptr, FALSE, 0));
    ComPtr<IDataObject> data;
    EXPECT_HRESULT(E_NOTIMPL, object_->GetClipboardData(0, data.Receive()));
    EXPECT_HRESULT(E_POINTER, object_->GetClipboardData(0, nullptr));
    EXPECT_HRESULT(E_NOTIMPL, object_->SetColorScheme(nullptr));
    EXPECT_HRESULT(S_OK, object_->SetHostNames(L"host", nullptr));
    EXPECT_HRESULT(S_OK, object_->Update());
    EXPECT_HRESULT(S_OK, object_->IsUpToDate());
}

TEST_F(OleObject, IsAControlWithoutMnemonics) {
    const auto control = Query<IOleControl>(object_);
    CONTROLINFO info{};
    EXPECT_HRESULT(E_NOTIMPL, control->GetControlInfo(&info));
    EXPECT_HRESULT(E_POINTER, control->GetControlInfo(nullptr));
    EXPECT_HRESULT(S_OK, control->OnMnemonic(nullptr));
    EXPECT_HRESULT(S_OK, control->OnAmbientPropertyChange(DISPID_UNKNOWN));
    EXPECT_HRESULT(S_OK, control->FreezeEvents(TRUE));
    EXPECT_HRESULT(S_OK, control->FreezeEvents(FALSE));
}

}  // namespace
}  // namespace paylodge::test
