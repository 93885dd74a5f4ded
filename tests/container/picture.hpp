// Pictures of windows, and PNG files of pictures.
#pragma once

#include <windows.h>

#include <span>
#include <vector>

namespace paylodge::test {

struct Picture {
    UINT width = 0;
    UINT height = 0;
    // From the top left corner, a row after the other: blue, green, red and a byte without meaning each.
    std::vector<BYTE> bytes;
};

// What is to be seen of a window.
[[nodiscard]] Picture PictureOf(HWND window);

// An empty picture when the bytes are not those of a PNG file.
[[nodiscard]] Picture ReadPng(std::span<BYTE> file);
[[nodiscard]] bool WritePng(const Picture& picture, const wchar_t* file_name);

// The share of pixels in which two pictures of the same size are visibly different; 1 for different sizes.
[[nodiscard]] double Difference(const Picture& first, const Picture& second);

}  // namespace paylodge::test
