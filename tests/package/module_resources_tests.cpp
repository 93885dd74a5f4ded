// The resources of the built module, as the registry, toolboxes and Explorer read them.
#include <windows.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "com/module.hpp"
#include "com/owner.hpp"
#include "version.h"

namespace paylodge {
namespace {

[[nodiscard]] std::wstring ModulePath() {
    const std::wstring program = Module::Path();
    return program.substr(0, program.find_last_of(L'\\')) + L"\\..\\Paylodge.dll";
}

class ModuleResources : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(library_.Get(), nullptr); }
    [[nodiscard]] HMODULE Library() const noexcept { return library_.Get(); }

  private:
    ModuleHandle library_{::LoadLibraryW(ModulePath().c_str())};
};

TEST_F(ModuleResources, HaveTheProjectName) {
    wchar_t text[16] = {};
    ASSERT_EQ(::LoadStringW(Library(), 100, text, 16), 8);
    EXPECT_STREQ(text, L"Paylodge");
}

// The picture's colours, row by row.
[[nodiscard]] std::vector<COLORREF> Pixels(HBITMAP picture) {
    std::vector<COLORREF> pixels;
    const HDC context = ::CreateCompatibleDC(nullptr);
    const HGDIOBJ previous = ::SelectObject(context, picture);
    for (int i = 0; i < 16 * 16; ++i) {
        pixels.push_back(::GetPixel(context, i % 16, i / 16));
    }
    ::SelectObject(context, previous);
    ::DeleteDC(context);
    return pixels;
}

TEST_F(ModuleResources, HaveAPictureForToolboxes) {
    const auto picture =
        static_cast<HBITMAP>(::LoadImageW(Library(), MAKEINTRESOURCEW(103), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    ASSERT_NE(picture, nullptr);
    BITMAP size = {};
    ASSERT_NE(::GetObjectW(picture, sizeof(size), &size), 0);
    EXPECT_EQ(size.bmWidth, 16);
    EXPECT_EQ(size.bmHeight, 16);

    const std::vector<COLORREF> pixels = Pixels(picture);
    EXPECT_EQ(pixels.front(), RGB(192, 192, 192)) << "the corner is the toolbox's own grey";
    EXPECT_GE(std::set(pixels.begin(), pixels.end()).size(), 6u) << "something is drawn";
    ::DeleteObject(picture);
}

TEST_F(ModuleResources, HaveTheScriptsAndTheTypeLibrary) {
    EXPECT_NE(::FindResourceW(Library(), MAKEINTRESOURCEW(1), L"TYPELIB"), nullptr);
    EXPECT_NE(::FindResourceW(Library(), MAKEINTRESOURCEW(101), L"REGISTRY"), nullptr);
    EXPECT_NE(::FindResourceW(Library(), MAKEINTRESOURCEW(104), L"REGISTRY"), nullptr);
}

class VersionInformation : public testing::Test {
  protected:
    void SetUp() override {
        const std::wstring path = ModulePath();
        bytes_.resize(::GetFileVersionInfoSizeW(path.c_str(), nullptr));
        ASSERT_FALSE(bytes_.empty());
        ASSERT_TRUE(::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(bytes_.size()), bytes_.data()));
    }

    template <class Content>
    [[nodiscard]] const Content* Find(const std::wstring& block) const {
        void* content = nullptr;
        UINT size = 0;
        return ::VerQueryValueW(bytes_.data(), block.c_str(), &content, &size) ? static_cast<const Content*>(content)
                                                                               : nullptr;
    }
    [[nodiscard]] std::wstring Text(const wchar_t* name) const {
        const auto* text = Find<wchar_t>(std::wstring(L"\\StringFileInfo\\040904B0\\") + name);
        return text == nullptr ? L"(none)" : text;
    }

  private:
    std::vector<BYTE> bytes_;
};

TEST_F(VersionInformation, IsThatOfTheProject) {
    const std::string version = PAYLODGE_VERSION_TEXT;
    const std::wstring expected(version.begin(), version.end());
    EXPECT_EQ(Text(L"FileVersion"), expected);
    EXPECT_EQ(Text(L"ProductVersion"), expected);

    const WORD numbers[] = {PAYLODGE_VERSION_NUMBERS};
    const auto* fixed = Find<VS_FIXEDFILEINFO>(L"\\");
    ASSERT_NE(fixed, nullptr);
    EXPECT_EQ(fixed->dwFileVersionMS, static_cast<DWORD>(MAKELONG(numbers[1], numbers[0])));
    EXPECT_EQ(fixed->dwFileVersionLS, static_cast<DWORD>(MAKELONG(numbers[3], numbers[2])));
    EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_DLL));
}

TEST_F(VersionInformation, NamesTheArchitecture) {
    EXPECT_EQ(Text(L"FileDescription"), sizeof(void*) == 8 ? L"Paylodge component for Ledgerhall (x64)"
                                                           : L"Paylodge component for Ledgerhall (x86)");
    EXPECT_EQ(Text(L"OriginalFilename"), L"Paylodge.dll");
}

}  // namespace
}  // namespace paylodge
