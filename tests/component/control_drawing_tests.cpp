// What the built control draws, read from the record of an enhanced metafile.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "com/owner.hpp"
#include "tests/component/control_under_test.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

struct EnhancedMetafileTraits {
    using Type = HENHMETAFILE;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type metafile) noexcept { ::DeleteEnhMetaFile(metafile); }
};
using EnhancedMetafile = Owner<EnhancedMetafileTraits>;

using Drawing = std::vector<std::string>;

[[nodiscard]] std::string Show(const char* name, const RECTL& box) {
    std::ostringstream text;
    text << name << "(" << box.left << ", " << box.top << ", " << box.right << ", " << box.bottom << ")";
    return text.str();
}

// A clip region that is one rectangle, or none at all.
[[nodiscard]] std::string ShowClip(const EMREXTSELECTCLIPRGN& record) {
    if (record.cbRgnData == 0) {
        return "no clip";
    }
    RGNDATAHEADER header{};
    std::memcpy(&header, record.RgnData, sizeof header);
    RECTL box{};
    std::memcpy(&box, record.RgnData + sizeof header, sizeof box);
    return header.nCount == 1 ? Show("clip", box) : "clip of several rectangles";
}

[[nodiscard]] std::string ShowText(const ENHMETARECORD& record) {
    EMREXTTEXTOUTW written{};
    std::memcpy(&written, &record, sizeof written);
    const auto* const bytes = reinterpret_cast<const char*>(&record) + written.emrtext.offString;
    std::string letters;
    for (size_t index = 0; index < written.emrtext.nChars; ++index) {
        letters += bytes[record.iType == EMR_EXTTEXTOUTW ? 2 * index : index];
    }
    std::ostringstream text;
    text << "\"" << letters << "\" at " << written.emrtext.ptlReference.x << ", " << written.emrtext.ptlReference.y;
    return text.str();
}

// What the control's surroundings do around its drawing: keep the context's state, and choose its units.
[[nodiscard]] bool IsPreparation(DWORD type) {
    constexpr DWORD kTypes[] = {EMR_HEADER,           EMR_EOF,
                                EMR_SAVEDC,           EMR_RESTOREDC,
                                EMR_SETMAPMODE,       EMR_SETWINDOWORGEX,
                                EMR_SETVIEWPORTORGEX, EMR_MODIFYWORLDTRANSFORM};
    return std::ranges::find(kTypes, type) != std::end(kTypes);
}

[[nodiscard]] std::string ShowRecord(const ENHMETARECORD& record) {
    const void* const start = &record;
    switch (record.iType) {
        case EMR_EXTSELECTCLIPRGN:
            return ShowClip(*static_cast<const EMREXTSELECTCLIPRGN*>(start));
        case EMR_RECTANGLE:
            return Show("rectangle", static_cast<const EMRRECTANGLE*>(start)->rclBox);
        case EMR_SETTEXTALIGN:
            return "text alignment " + std::to_string(static_cast<const EMRSETTEXTALIGN*>(start)->iMode);
        case EMR_EXTTEXTOUTA:
        case EMR_EXTTEXTOUTW:
            return ShowText(record);
        default:
            return "record " + std::to_string(record.iType);
    }
}

int CALLBACK AppendRecord(HDC /*dc*/, HANDLETABLE* /*objects*/, const ENHMETARECORD* record, int /*count*/,
                          LPARAM drawing) {
    if (!IsPreparation(record->iType)) {
        reinterpret_cast<Drawing*>(drawing)->push_back(ShowRecord(*record));
    }
    return TRUE;
}

class ControlDrawing : public ControlComponent {
  protected:
    [[nodiscard]] Drawing Draw(const RECTL& bounds) {
        ComPtr<IViewObjectEx> view;
        EXPECT_HRESULT(S_OK, control->QueryInterface(IID_IViewObjectEx, view.ReceiveVoid()));
        const HDC dc = ::CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
        EXPECT_NE(nullptr, dc);
        EXPECT_HRESULT(S_OK,
                       view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0));
        const EnhancedMetafile metafile(::CloseEnhMetaFile(dc));
        Drawing drawing;
        EXPECT_TRUE(::EnumEnhMetaFile(nullptr, metafile.Get(), AppendRecord, &drawing, nullptr));
        return drawing;
    }
};

// A rectangle's record leaves out the right and the lower edge, which drawing leaves out too.
TEST_F(ControlDrawing, IsAClippedRectangleWithTheNameInTheMiddle) {
    EXPECT_EQ((Drawing{"clip(10, 20, 210, 100)", "rectangle(10, 20, 209, 99)", "text alignment 30",
                       "\"PaylodgeCtrl\" at 110, 60", "no clip"}),
              Draw({10, 20, 210, 100}));
}

TEST_F(ControlDrawing, HalvesOfOddSumsAreWholeNumbers) {
    EXPECT_EQ((Drawing{"clip(0, 0, 101, 51)", "rectangle(0, 0, 100, 50)", "text alignment 30",
                       "\"PaylodgeCtrl\" at 50, 25", "no clip"}),
              Draw({0, 0, 101, 51}));
}

}  // namespace
}  // namespace paylodge::test
