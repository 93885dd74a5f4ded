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
// clip region. Where the region cannot be created, nothing is clipped and nothing is removed.
class ClipToRectangle {
  public:
    ClipToRectangle(HDC dc, const RECTL& rectangle) noexcept : dc_(dc) {
        // Regions are in the units of the device. A metafile of the old kind has none, and leaves the corners alone.
        POINT corners[] = {{rectangle.left, rectangle.top}, {rectangle.right, rectangle.bottom}};
        ::LPtoDP(dc, corners, 2);
        region_.Reset(::CreateRectRgn(corners[0].x, corners[0].y, corners[1].x, corners[1].y));
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

// Restores a context's settings at the end.
class SavedDc {
  public:
    explicit SavedDc(HDC dc) noexcept : dc_(dc), is_saved_(::SaveDC(dc) != 0) {}
    ~SavedDc() {
        if (is_saved_) {
            // The state saved last, not the one of a number: recorded in a metafile, a number would restore a state of
            // whoever plays it.
            constexpr int kLastSaved = -1;
            ::RestoreDC(dc_, kLastSaved);
        }
    }
    SavedDc(const SavedDc&) = delete;
    SavedDc& operator=(const SavedDc&) = delete;

  private:
    HDC dc_;
    bool is_saved_;
};

}  // namespace paylodge
