// A picture in memory to draw on and to look at pixel by pixel.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <span>

namespace paylodge::test {

class DrawingSurface {
  public:
    static constexpr COLORREF kUntouched = RGB(0, 0, 255);

    // All pixels have the colour kUntouched.
    DrawingSurface(int width, int height) : width_(width), height_(height), dc_(::CreateCompatibleDC(nullptr)) {
        BITMAPINFO format{};
        format.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        bitmap_ = ::CreateDIBSection(dc_, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
        EXPECT_NE(nullptr, bitmap_);
        pixels_ = static_cast<DWORD*>(bits);
        previous_ = ::SelectObject(dc_, bitmap_);
        std::ranges::fill(Pixels(), kBlueBits);
    }
    ~DrawingSurface() {
        ::SelectObject(dc_, previous_);
        ::DeleteObject(bitmap_);
        ::DeleteDC(dc_);
    }
    DrawingSurface(const DrawingSurface&) = delete;
    DrawingSurface& operator=(const DrawingSurface&) = delete;

    [[nodiscard]] HDC Dc() const noexcept { return dc_; }
    [[nodiscard]] COLORREF At(int x, int y) const noexcept {
        const DWORD pixel = pixels_[y * width_ + x];
        return RGB(pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF);
    }
    // The smallest rectangle around all pixels with this property; empty without any.
    template <class Predicate>
    [[nodiscard]] RECT Around(const RECT& where, Predicate has_property) const {
        RECT around{};
        for (int y = where.top; y < where.bottom; ++y) {
            for (int x = where.left; x < where.right; ++x) {
                if (has_property(At(x, y))) {
                    const RECT pixel{x, y, x + 1, y + 1};
                    ::UnionRect(&around, &around, &pixel);
                }
            }
        }
        return around;
    }
    [[nodiscard]] RECT All() const noexcept { return {0, 0, width_, height_}; }

  private:
    static constexpr DWORD kBlueBits = 0x0000FF;
    [[nodiscard]] std::span<DWORD> Pixels() noexcept { return {pixels_, static_cast<size_t>(width_ * height_)}; }

    int width_;
    int height_;
    HDC dc_;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ previous_ = nullptr;
    DWORD* pixels_ = nullptr;
};

}  // namespace paylodge::test
