// The control's picture as a metafile, and data notifications.

#include <gtest/gtest.h>

#include "tests/support/drawing_surface.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {
namespace {

class DataObject : public ::testing::Test {
  protected:
    void TearDown() override {
        data_.Reset();
        EXPECT_EQ(1u, References(control_));
        control_.Reset();
        EXPECT_EQ(1u, References(site_));
    }

    Record record_;
    ComPtr<ComObject<RecordingSite>> site_ = ComObject<RecordingSite>::Create(record_);
    ComPtr<ComObject<TestControl>> control_ = ComObject<TestControl>::Create();
    ComPtr<IDataObject> data_ = Query<IDataObject>(control_);
    FORMATETC picture_ = {CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, -1, TYMED_MFPICT};
};

TEST_F(DataObject, RendersTheControlAsAMetafileOfItsExtent) {
    SIZEL extent{2540, 1270};
    ASSERT_HRESULT(S_OK, Query<IOleObject>(control_)->SetExtent(DVASPECT_CONTENT, &extent));
    STGMEDIUM medium{};
    ASSERT_HRESULT(S_OK, data_->GetData(&picture_, &medium));
    ASSERT_EQ(static_cast<DWORD>(TYMED_MFPICT), medium.tymed);
    EXPECT_EQ(nullptr, medium.pUnkForRelease);
    EXPECT_GE(::GlobalSize(medium.hMetaFilePict), sizeof(METAFILEPICT));
    const auto* const picture = static_cast<const METAFILEPICT*>(::GlobalLock(medium.hMetaFilePict));
    ASSERT_NE(nullptr, picture);
    EXPECT_EQ(MM_ANISOTROPIC, picture->mm);
    EXPECT_EQ(2540, picture->xExt);
    EXPECT_EQ(1270, picture->yExt);

    // Played at the size that it was recorded at: the clip region of the drawing is recorded in pixels.
    DrawingSurface surface(200, 100);
    const int width = ::MulDiv(2540, ::GetDeviceCaps(surface.Dc(), LOGPIXELSX), 2540);
    const int height = ::MulDiv(1270, ::GetDeviceCaps(surface.Dc(), LOGPIXELSY), 2540);
    ::SetMapMode(surface.Dc(), MM_ANISOTROPIC);
    ::SetViewportExtEx(surface.Dc(), width, height, nullptr);
    EXPECT_TRUE(::PlayMetaFile(surface.Dc(), picture->hMF));
    const RECT drawn =
        surface.Around(surface.All(), [](COLORREF pixel) { return pixel != DrawingSurface::kUntouched; });
    EXPECT_EQ(0, drawn.left);
    EXPECT_EQ(0, drawn.top);
    EXPECT_NEAR(width, drawn.right, 1);
    EXPECT_NEAR(height, drawn.bottom, 1);
    ::GlobalUnlock(medium.hMetaFilePict);
    ::ReleaseStgMedium(&medium);
}

TEST_F(DataObject, ReportsADrawingThatFails) {
    control_->draw_result = E_ABORT;
    STGMEDIUM medium{};
    EXPECT_HRESULT(E_ABORT, data_->GetData(&picture_, &medium));
    EXPECT_EQ(static_cast<DWORD>(TYMED_NULL), medium.tymed);
}

TEST_F(DataObject, RendersNothingElse) {
    const auto refusal = [this](FORMATETC format) {
        STGMEDIUM medium{};
        const HRESULT result = data_->GetData(&format, &medium);
        EXPECT_HRESULT(result, data_->QueryGetData(&format));
        return result;
    };
    EXPECT_HRESULT(S_OK, data_->QueryGetData(&picture_));
    FORMATETC either{CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, -1, TYMED_MFPICT | TYMED_HGLOBAL};
    EXPECT_HRESULT(S_OK, data_->QueryGetData(&either)) << "one of the media is enough";
    EXPECT_HRESULT(DV_E_TYMED, refusal({CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL | TYMED_FILE}));
    EXPECT_HRESULT(DV_E_FORMATETC, refusal({CF_TEXT, nullptr, DVASPECT_CONTENT, -1, TYMED_MFPICT}));
    EXPECT_HRESULT(DV_E_DVASPECT, refusal({CF_METAFILEPICT, nullptr, DVASPECT_ICON, -1, TYMED_MFPICT}));
    EXPECT_HRESULT(DV_E_LINDEX, refusal({CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, 0, TYMED_MFPICT}));
    EXPECT_HRESULT(DV_E_TYMED, refusal({CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL}));
    STGMEDIUM medium{};
    EXPECT_HRESULT(E_POINTER, data_->GetData(nullptr, &medium));
    EXPECT_HRESULT(E_POINTER, data_->GetData(&picture_, nullptr));
    EXPECT_HRESULT(E_POINTER, data_->QueryGetData(nullptr));
    EXPECT_HRESULT(E_NOTIMPL, data_->GetDataHere(&picture_, &medium));
    EXPECT_HRESULT(E_NOTIMPL, data_->SetData(&picture_, &medium, FALSE));
}

TEST_F(DataObject, EnumeratesItsFormat) {
    ComPtr<IEnumFORMATETC> formats;
    ASSERT_HRESULT(S_OK, data_->EnumFormatEtc(DATADIR_GET, formats.Receive()));
    FORMATETC format{};
    EXPECT_HRESULT(S_OK, formats->Next(1, &format, nullptr));
    EXPECT_HRESULT(S_OK, data_->QueryGetData(&format));
    EXPECT_HRESULT(S_FALSE, formats->Next(1, &format, nullptr));
    ComPtr<IEnumFORMATETC> none;
    EXPECT_HRESULT(E_NOTIMPL, data_->EnumFormatEtc(DATADIR_SET, none.Receive()));
    EXPECT_HRESULT(E_POINTER, data_->EnumFormatEtc(DATADIR_GET, nullptr));
}

TEST_F(DataObject, RendersAlikeForAllDevices) {
    DVTARGETDEVICE device{};
    FORMATETC asked = picture_;
    asked.ptd = &device;
    FORMATETC canonical{};
    EXPECT_HRESULT(DATA_S_SAMEFORMATETC, data_->GetCanonicalFormatEtc(&asked, &canonical));
    EXPECT_EQ(nullptr, canonical.ptd);
    EXPECT_EQ(picture_.cfFormat, canonical.cfFormat);
    EXPECT_HRESULT(E_POINTER, data_->GetCanonicalFormatEtc(&asked, nullptr));
    EXPECT_HRESULT(E_POINTER, data_->GetCanonicalFormatEtc(nullptr, &canonical));
}

TEST_F(DataObject, NotifiesItsSinksOfANewSize) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, data_->DAdvise(&picture_, ADVF_NODATA, site_.Get(), &cookie));
    EXPECT_NE(0u, cookie);
    SIZEL extent{1, 2};
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->SetExtent(DVASPECT_CONTENT, &extent));
    EXPECT_EQ("OnDataChange", record_.Take());
    EXPECT_HRESULT(S_OK, data_->DUnadvise(cookie));
    EXPECT_HRESULT(OLE_E_NOCONNECTION, data_->DUnadvise(cookie));
    extent = {3, 4};
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->SetExtent(DVASPECT_CONTENT, &extent));
    EXPECT_EQ("", record_.Take());
}

TEST_F(DataObject, GivesItsSinksThePicture) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, data_->DAdvise(&picture_, ADVF_PRIMEFIRST, site_.Get(), &cookie));
    EXPECT_EQ("OnDataChangeWithData", record_.Take());
    EXPECT_HRESULT(S_OK, data_->DUnadvise(cookie));
}

TEST_F(DataObject, NullPointersForSinksAreRefused) {
    DWORD cookie = 1;
    EXPECT_HRESULT(E_INVALIDARG, data_->DAdvise(&picture_, 0, nullptr, &cookie));
    EXPECT_EQ(0u, cookie);
    EXPECT_HRESULT(E_POINTER, data_->DAdvise(nullptr, 0, site_.Get(), &cookie));
    EXPECT_HRESULT(E_POINTER, data_->DAdvise(&picture_, 0, site_.Get(), nullptr));
    EXPECT_HRESULT(E_POINTER, data_->EnumDAdvise(nullptr));
    EXPECT_HRESULT(OLE_E_NOCONNECTION, data_->DUnadvise(1));
}

TEST_F(DataObject, EnumeratesItsAdviseConnections) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, data_->DAdvise(&picture_, ADVF_NODATA, site_.Get(), &cookie));
    ComPtr<IEnumSTATDATA> connections;
    ASSERT_HRESULT(S_OK, data_->EnumDAdvise(connections.Receive()));
    STATDATA connection{};
    EXPECT_HRESULT(S_OK, connections->Next(1, &connection, nullptr));
    EXPECT_EQ(cookie, connection.dwConnection);
    connection.pAdvSink->Release();
    ::CoTaskMemFree(connection.formatetc.ptd);
}

}  // namespace
}  // namespace paylodge::test
