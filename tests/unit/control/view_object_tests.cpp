// Drawing on request, without a container or window.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "tests/support/drawing_surface.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {
namespace {

constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kWhite = RGB(255, 255, 255);

void ExpectRect(const RECT& expected, const RECT& actual) {
    EXPECT_TRUE(::EqualRect(&expected, &actual))
        << actual.left << "," << actual.top << "," << actual.right << "," << actual.bottom;
}

class ViewObject : public ::testing::Test {
  protected:
    void TearDown() override {
        view_.Reset();
        EXPECT_EQ(1u, References(control_));
    }
    HRESULT Draw(const RECTL& bounds, DWORD aspect = DVASPECT_CONTENT, LONG index = -1) {
        return view_->Draw(aspect, index, nullptr, nullptr, nullptr, surface_.Dc(), &bounds, nullptr, nullptr, 0);
    }

    DrawingSurface surface_{220, 120};
    ComPtr<ComObject<TestControl>> control_ = ComObject<TestControl>::Create();
    ComPtr<IViewObjectEx> view_ = Query<IViewObjectEx>(control_);
};

TEST_F(ViewObject, DrawsARectangleOverItsBounds) {
    EXPECT_HRESULT(S_OK, Draw({10, 20, 210, 100}));
    ExpectRect({10, 20, 210, 100},
               surface_.Around(surface_.All(), [](COLORREF pixel) { return pixel != DrawingSurface::kUntouched; }));
    for (const POINT corner : {POINT{10, 20}, POINT{209, 20}, POINT{10, 99}, POINT{209, 99}}) {
        EXPECT_EQ(kBlack, surface_.At(corner.x, corner.y)) << corner.x << "," << corner.y;
    }
    EXPECT_EQ(kWhite, surface_.At(11, 21));
}

TEST_F(ViewObject, WritesItsNameCentredOnABaselineInTheMiddle) {
    EXPECT_HRESULT(S_OK, Draw({10, 20, 210, 100}));
    const RECT text = surface_.Around({11, 21, 209, 99}, [](COLORREF pixel) { return pixel != kWhite; });
    ASSERT_FALSE(::IsRectEmpty(&text));
    EXPECT_NEAR(110, (text.left + text.right) / 2.0, 2.0);
    // The letters stand on the middle line, and only the tail of the "y" reaches below.
    EXPECT_LT(text.top, 55);
    EXPECT_GE(text.bottom, 60);
    EXPECT_LE(text.bottom, 66);
}

TEST_F(ViewObject, WritesNothingOutsideItsBounds) {
    const RECT bounds{100, 50, 130, 60};
    EXPECT_HRESULT(S_OK, Draw({bounds.left, bounds.top, bounds.right, bounds.bottom}));
    ExpectRect(bounds,
               surface_.Around(surface_.All(), [](COLORREF pixel) { return pixel != DrawingSurface::kUntouched; }));
}

TEST_F(ViewObject, LeavesNoClipRegionBehind) {
    EXPECT_HRESULT(S_OK, control_->OnDraw({surface_.Dc(), {0, 0, 50, 50}}));
    const Region clip(::CreateRectRgn(0, 0, 1, 1));
    EXPECT_EQ(0, ::GetClipRgn(surface_.Dc(), clip.Get()));
    EXPECT_EQ(static_cast<UINT>(TA_CENTER | TA_BASELINE), ::GetTextAlign(surface_.Dc()));
}

TEST_F(ViewObject, GivesTheContextBackAsItWas) {
    const Region mine(::CreateRectRgn(5, 5, 100, 100));
    ::SelectClipRgn(surface_.Dc(), mine.Get());
    ::SetMapMode(surface_.Dc(), MM_ANISOTROPIC);
    EXPECT_HRESULT(S_OK, Draw({0, 0, 50, 50}));
    const Region clip(::CreateRectRgn(0, 0, 1, 1));
    EXPECT_EQ(1, ::GetClipRgn(surface_.Dc(), clip.Get()));
    EXPECT_TRUE(::EqualRgn(mine.Get(), clip.Get()));
    EXPECT_EQ(static_cast<UINT>(TA_LEFT | TA_TOP), ::GetTextAlign(surface_.Dc()));
    EXPECT_EQ(MM_ANISOTROPIC, ::GetMapMode(surface_.Dc()));
}

TEST_F(ViewObject, DrawsWhereTheMappingModePutsItsBounds) {
    ::SetMapMode(surface_.Dc(), MM_ANISOTROPIC);
    ::SetWindowExtEx(surface_.Dc(), 1000, 1000, nullptr);
    ::SetViewportExtEx(surface_.Dc(), 100, 100, nullptr);
    ::SetViewportOrgEx(surface_.Dc(), 20, 10, nullptr);
    EXPECT_HRESULT(S_OK, Draw({0, 0, 1000, 500}));
    ExpectRect({20, 10, 120, 60},
               surface_.Around(surface_.All(), [](COLORREF pixel) { return pixel != DrawingSurface::kUntouched; }));
    EXPECT_EQ(20, control_->last_bounds.left);
    EXPECT_EQ(120, control_->last_bounds.right);
}

TEST_F(ViewObject, DrawsWhereAWorldTransformPutsItsBounds) {
    ::SetGraphicsMode(surface_.Dc(), GM_ADVANCED);
    const XFORM twice_as_large{2, 0, 0, 2, 10, 10};
    ASSERT_TRUE(::SetWorldTransform(surface_.Dc(), &twice_as_large));
    EXPECT_HRESULT(S_OK, Draw({0, 0, 50, 25}));
    ExpectRect({10, 10, 110, 60},
               surface_.Around(surface_.All(), [](COLORREF pixel) { return pixel != DrawingSurface::kUntouched; }));
}

// What a metafile of the old kind records.
struct Recorded {
    std::vector<WORD> functions;
    // The arguments of each RestoreDC.
    std::vector<SHORT> restored;
};

[[nodiscard]] Recorded RecordsOf(HMETAFILE metafile) {
    Recorded recorded;
    const auto add = [](HDC, HANDLETABLE*, METARECORD* record, int, LPARAM context) WINAPI -> int {
        auto& to = *reinterpret_cast<Recorded*>(context);
        // The records stand at addresses of words.
        const auto word = [record](size_t offset) {
            WORD value = 0;
            std::memcpy(&value, reinterpret_cast<const BYTE*>(record) + offset, sizeof value);
            return value;
        };
        const WORD function = word(offsetof(METARECORD, rdFunction));
        to.functions.push_back(function);
        if (function == META_RESTOREDC) {
            to.restored.push_back(static_cast<SHORT>(word(offsetof(METARECORD, rdParm))));
        }
        return 1;
    };
    const DrawingSurface surface(10, 10);
    EXPECT_TRUE(::EnumMetaFile(surface.Dc(), metafile, add, reinterpret_cast<LPARAM>(&recorded)));
    return recorded;
}

TEST_F(ViewObject, DrawnIntoAnOldMetafileKeepsThePlayersStatesAndClips) {
    const HDC recording = ::CreateMetaFileW(nullptr);
    const RECTL bounds{10, 20, 110, 70};
    EXPECT_HRESULT(
        S_OK, view_->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, recording, &bounds, nullptr, nullptr, 0));
    const HMETAFILE metafile = ::CloseMetaFile(recording);
    const Recorded recorded = RecordsOf(metafile);
    EXPECT_EQ((std::vector<SHORT>{-1}), recorded.restored) << "the state saved last, none of the player's own";
    EXPECT_EQ(1, std::ranges::count(recorded.functions, META_SAVEDC));
    EXPECT_EQ(1, std::ranges::count(recorded.functions, META_CREATEREGION));
    EXPECT_EQ(1, std::ranges::count(recorded.functions, META_RECTANGLE));
    for (const int function : {META_SETMAPMODE, META_SETWINDOWORG, META_SETVIEWPORTORG}) {
        EXPECT_EQ(0, std::ranges::count(recorded.functions, function)) << "the mapping is the player's";
    }
    EXPECT_EQ(10, control_->last_bounds.left);
    EXPECT_EQ(70, control_->last_bounds.bottom);

    // Two states of the player's own: its text alignment comes back from the first.
    const int first = ::SaveDC(surface_.Dc());
    ::SetTextAlign(surface_.Dc(), TA_RIGHT);
    ::SaveDC(surface_.Dc());
    EXPECT_TRUE(::PlayMetaFile(surface_.Dc(), metafile));
    EXPECT_EQ(static_cast<UINT>(TA_RIGHT), ::GetTextAlign(surface_.Dc()));
    EXPECT_TRUE(::RestoreDC(surface_.Dc(), -1));
    EXPECT_EQ(static_cast<UINT>(TA_RIGHT), ::GetTextAlign(surface_.Dc()));
    EXPECT_TRUE(::RestoreDC(surface_.Dc(), first));
    ::DeleteMetaFile(metafile);
}

TEST_F(ViewObject, DrawnIntoAnEnhancedMetafileLeavesTheMappingToThePlayer) {
    const HDC recording = ::CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    const RECTL bounds{10, 20, 110, 70};
    EXPECT_HRESULT(
        S_OK, view_->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, recording, &bounds, nullptr, nullptr, 0));
    EXPECT_EQ(10, control_->last_bounds.left);
    EXPECT_EQ(70, control_->last_bounds.bottom);
    const HENHMETAFILE metafile = ::CloseEnhMetaFile(recording);
    std::vector<DWORD> types;
    const auto add = [](HDC, HANDLETABLE*, const ENHMETARECORD* record, int, LPARAM context) WINAPI -> int {
        reinterpret_cast<std::vector<DWORD>*>(context)->push_back(record->iType);
        return 1;
    };
    EXPECT_TRUE(::EnumEnhMetaFile(nullptr, metafile, add, &types, nullptr));
    EXPECT_EQ(1, std::ranges::count(types, DWORD{EMR_RECTANGLE}));
    for (const int type : {EMR_SETMAPMODE, EMR_SETWINDOWORGEX, EMR_SETVIEWPORTORGEX, EMR_MODIFYWORLDTRANSFORM}) {
        EXPECT_EQ(0, std::ranges::count(types, static_cast<DWORD>(type))) << type;
    }
    ::DeleteEnhMetaFile(metafile);
}

TEST_F(ViewObject, ReportsWhatItsDrawingReports) {
    control_->draw_result = E_ABORT;
    EXPECT_HRESULT(E_ABORT, Draw({0, 0, 50, 50}));
}

TEST_F(ViewObject, DrawsOnlyItsContentAsAWhole) {
    const RECTL bounds{0, 0, 10, 10};
    EXPECT_HRESULT(DV_E_DVASPECT, Draw(bounds, DVASPECT_ICON));
    EXPECT_HRESULT(DV_E_LINDEX, Draw(bounds, DVASPECT_CONTENT, 0));
    EXPECT_HRESULT(E_INVALIDARG,
                   view_->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, nullptr, &bounds, nullptr, nullptr, 0));
    EXPECT_HRESULT(E_INVALIDARG, view_->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, surface_.Dc(), nullptr,
                                             nullptr, nullptr, 0));
    EXPECT_EQ(0, control_->draw_count);
}

TEST_F(ViewObject, KnowsItsExtents) {
    SIZEL size{1000, 2000};
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->SetExtent(DVASPECT_CONTENT, &size));
    size = {};
    EXPECT_HRESULT(S_OK, view_->GetExtent(DVASPECT_CONTENT, -1, nullptr, &size));
    EXPECT_EQ(1000, size.cx);
    EXPECT_EQ(2000, size.cy);
    DVEXTENTINFO request{sizeof request, DVEXTENT_CONTENT, {0, 0}};
    EXPECT_HRESULT(S_OK, view_->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, &request, &size));
    EXPECT_EQ(5080, size.cx);
    EXPECT_EQ(5080, size.cy);
    request.dwExtentMode = DVEXTENT_INTEGRAL;
    EXPECT_HRESULT(E_NOTIMPL, view_->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, &request, &size));
    EXPECT_HRESULT(DV_E_DVASPECT, view_->GetNaturalExtent(DVASPECT_ICON, -1, nullptr, nullptr, &request, &size));
    EXPECT_HRESULT(E_POINTER, view_->GetExtent(DVASPECT_CONTENT, -1, nullptr, nullptr));
    EXPECT_HRESULT(E_POINTER, view_->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, &size));
}

TEST_F(ViewObject, IsHitInsideItsBounds) {
    const RECT bounds{0, 0, 10, 10};
    DWORD result = 99;
    EXPECT_HRESULT(S_OK, view_->QueryHitPoint(DVASPECT_CONTENT, &bounds, {9, 9}, 0, &result));
    EXPECT_EQ(static_cast<DWORD>(HITRESULT_HIT), result);
    EXPECT_HRESULT(S_OK, view_->QueryHitPoint(DVASPECT_CONTENT, &bounds, {10, 9}, 0, &result));
    EXPECT_EQ(static_cast<DWORD>(HITRESULT_OUTSIDE), result);
    const RECT across{5, 5, 20, 20};
    EXPECT_HRESULT(S_OK, view_->QueryHitRect(DVASPECT_CONTENT, &bounds, &across, 0, &result));
    EXPECT_EQ(static_cast<DWORD>(HITRESULT_HIT), result);
    const RECT beside{10, 0, 20, 10};
    EXPECT_HRESULT(S_OK, view_->QueryHitRect(DVASPECT_CONTENT, &bounds, &beside, 0, &result));
    EXPECT_EQ(static_cast<DWORD>(HITRESULT_OUTSIDE), result);
    EXPECT_HRESULT(DV_E_DVASPECT, view_->QueryHitPoint(DVASPECT_ICON, &bounds, {1, 1}, 0, &result));
    EXPECT_HRESULT(E_POINTER, view_->QueryHitPoint(DVASPECT_CONTENT, nullptr, {1, 1}, 0, &result));
    EXPECT_HRESULT(E_POINTER, view_->QueryHitRect(DVASPECT_CONTENT, &bounds, &bounds, 0, nullptr));
}

TEST_F(ViewObject, UnsupportedMethodsReturnTheirStockResults) {
    LOGPALETTE* colors = nullptr;
    EXPECT_HRESULT(S_FALSE, view_->GetColorSet(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, &colors));
    EXPECT_HRESULT(E_POINTER, view_->GetColorSet(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, nullptr));
    RECTL bounds;
    EXPECT_HRESULT(E_NOTIMPL, view_->GetRect(DVASPECT_CONTENT, &bounds));
    EXPECT_HRESULT(E_POINTER, view_->GetRect(DVASPECT_CONTENT, nullptr));
    DWORD key = 0;
    EXPECT_HRESULT(E_NOTIMPL, view_->Freeze(DVASPECT_CONTENT, -1, nullptr, &key));
    EXPECT_HRESULT(E_NOTIMPL, view_->Unfreeze(1));
    DWORD status = 0;
    EXPECT_HRESULT(S_OK, view_->GetViewStatus(&status));
    EXPECT_EQ(static_cast<DWORD>(VIEWSTATUS_OPAQUE), status);
    EXPECT_HRESULT(E_POINTER, view_->GetViewStatus(nullptr));
}

TEST_F(ViewObject, NeedsEachOfItsArguments) {
    const RECT bounds{0, 0, 10, 10};
    DWORD hit = 0;
    EXPECT_HRESULT(E_POINTER, view_->QueryHitPoint(DVASPECT_CONTENT, nullptr, {1, 1}, 0, &hit));
    EXPECT_HRESULT(E_POINTER, view_->QueryHitPoint(DVASPECT_CONTENT, &bounds, {1, 1}, 0, nullptr));
    EXPECT_HRESULT(E_POINTER, view_->QueryHitRect(DVASPECT_CONTENT, nullptr, &bounds, 0, &hit));
    EXPECT_HRESULT(E_POINTER, view_->QueryHitRect(DVASPECT_CONTENT, &bounds, nullptr, 0, &hit));
    EXPECT_HRESULT(E_POINTER, view_->QueryHitRect(DVASPECT_CONTENT, &bounds, &bounds, 0, nullptr));
    DVEXTENTINFO request{sizeof request, DVEXTENT_CONTENT, {}};
    SIZEL size{};
    EXPECT_HRESULT(E_POINTER, view_->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, &size));
    EXPECT_HRESULT(E_POINTER, view_->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, &request, nullptr));
}

class ViewAdvise : public ViewObject {
  protected:
    void TearDown() override {
        ViewObject::TearDown();
        control_.Reset();
        EXPECT_EQ(1u, References(site_));
    }
    void SetWidth(LONG width) {
        SIZEL size{width, 100};
        EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->SetExtent(DVASPECT_CONTENT, &size));
    }

    Record record_;
    ComPtr<ComObject<RecordingSite>> site_ = ComObject<RecordingSite>::Create(record_);
};

TEST_F(ViewAdvise, IsHeldAndNotifiedOfANewSize) {
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    EXPECT_EQ(2u, References(site_));
    SetWidth(1);
    SetWidth(1);
    EXPECT_EQ("OnViewChange(1,-1)", record_.Take());
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, 0, nullptr));
    EXPECT_EQ(1u, References(site_));
    SetWidth(2);
    EXPECT_EQ("", record_.Take());
}

TEST_F(ViewAdvise, IsNotifiedAtOnceWhenItAsks) {
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, ADVF_PRIMEFIRST, site_.Get()));
    EXPECT_EQ("OnViewChange(1,-1)", record_.Take());
}

TEST_F(ViewAdvise, IsNotifiedOnlyOnceWhenItAsks) {
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, ADVF_ONLYONCE, site_.Get()));
    SetWidth(1);
    SetWidth(2);
    EXPECT_EQ("OnViewChange(1,-1)", record_.Take());
    EXPECT_EQ(1u, References(site_));
}

TEST_F(ViewAdvise, IsHandedOut) {
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, ADVF_PRIMEFIRST, site_.Get()));
    DWORD aspects = 0;
    DWORD flags = 0;
    ComPtr<IAdviseSink> sink;
    EXPECT_HRESULT(S_OK, view_->GetAdvise(&aspects, &flags, sink.Receive()));
    EXPECT_EQ(static_cast<DWORD>(DVASPECT_CONTENT), aspects);
    EXPECT_EQ(static_cast<DWORD>(ADVF_PRIMEFIRST), flags);
    EXPECT_EQ(static_cast<IAdviseSink*>(site_.Get()), sink.Get());
    EXPECT_HRESULT(S_OK, view_->GetAdvise(nullptr, nullptr, nullptr));
}

TEST_F(ViewAdvise, IsReleasedByClosing) {
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, ADVF_ONLYONCE, site_.Get()));
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->Close(OLECLOSE_NOSAVE));
    EXPECT_EQ(1u, References(site_));
    DWORD aspects = 7;
    DWORD flags = 7;
    ComPtr<IAdviseSink> sink;
    EXPECT_HRESULT(S_OK, view_->GetAdvise(&aspects, &flags, sink.Receive()));
    EXPECT_EQ(0u, aspects);
    EXPECT_EQ(0u, flags);
    EXPECT_FALSE(sink);
    SetWidth(1);
    EXPECT_EQ("", record_.Take());
}

TEST_F(ViewAdvise, StaysWhenClosingFails) {
    const auto object = Query<IOleObject>(control_);
    EXPECT_HRESULT(S_OK, object->SetClientSite(site_.Get()));
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    control_->SetControlDirty(true);
    site_->answers["SaveObject"] = E_ACCESSDENIED;
    EXPECT_HRESULT(E_ACCESSDENIED, object->Close(OLECLOSE_SAVEIFDIRTY));
    EXPECT_EQ(3u, References(site_));
    EXPECT_HRESULT(S_OK, object->Close(OLECLOSE_NOSAVE));
    EXPECT_HRESULT(S_OK, object->SetClientSite(nullptr));
}

TEST_F(ViewAdvise, IsTakenAwayWhateverTheAspect) {
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    EXPECT_HRESULT(S_OK, view_->SetAdvise(DVASPECT_ICON, 0, nullptr));
    ComPtr<IAdviseSink> sink;
    EXPECT_HRESULT(S_OK, view_->GetAdvise(nullptr, nullptr, sink.Receive()));
    EXPECT_FALSE(sink);
}

TEST_F(ViewAdvise, IsOnlyForTheContent) {
    EXPECT_HRESULT(OLE_E_ADVISENOTSUPPORTED, view_->SetAdvise(DVASPECT_ICON, 0, site_.Get()));
    EXPECT_EQ(1u, References(site_));
}

}  // namespace
}  // namespace paylodge::test
