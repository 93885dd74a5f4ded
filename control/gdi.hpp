// Owning types for what drawing borrows from the system.
#pragma once

#include <windows.h>

#include "com/owner.hpp"

namespace paylodge {

struct RegionTraits {
    using Type = HRGN;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type region) noexcept { ::DeleteObject(region); }
};
using Region = Owner<RegionTraits>;

// Whether drawing on dc records it.
[[nodiscard]] inline bool IsMetafile(HDC dc) noexcept {
    const DWORD type = ::GetObjectType(dc);
    return type == OBJ_METADC || type == OBJ_ENHMETADC;
}

// While it lives, drawing on dc is clipped to the rectangle, which is in logical units; afterwards the context has no
// clip region. Where the region cannot be created, nothing is clipped and nothing is removed. Nor is it in a metafile
// of the old kind: that is played at any size, and a region recorded in it would keep its own.
class ClipToRectangle {
  public:
    ClipToRectangle(HDC dc, const RECTL& rectangle) noexcept : dc_(dc) {
        if (::GetObjectType(dc) != OBJ_METADC) {
            // Regions are in the units of the device.
            POINT corners[] = {{rectangle.left, rectangle.top}, {rectangle.right, rectangle.bottom}};
            ::LPtoDP(dc, corners, 2);
            region_.Reset(::CreateRectRgn(corners[0].x, corners[0].y, corners[1].x, corners[1].y));
        }
        if (region_) {
            ::SelectClipRgn(dc_, region_.Get());
        }
    }
    ~ClipToRectangle() {
        if (region_) {
            ::SelectClipRgn(dc_, nullptr);
        }
    }
    ClipToRectangle(const ClipToRectangle&) = delete;
    ClipToRectangle& operator=(const ClipToRectangle&) = delete;

  private:
    HDC dc_;
    Region region_;
};

// Gives a context its settings back.
class SavedDc {
  public:
    explicit SavedDc(HDC dc) noexcept : dc_(dc), state_(::SaveDC(dc)) {}
    ~SavedDc() { ::RestoreDC(dc_, state_); }
    SavedDc(const SavedDc&) = delete;
    SavedDc& operator=(const SavedDc&) = delete;

  private:
    HDC dc_;
    int state_;
};

}  // namespace paylodge
