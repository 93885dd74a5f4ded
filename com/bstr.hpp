// COM strings: length-prefixed UTF-16, owned by an OwnedBstr wherever the library keeps one.
#pragma once

#include <windows.h>

#include <comdef.h>
#include <oleauto.h>

#include <limits>
#include <string_view>

#include "com/owner.hpp"

namespace paylodge {

struct BstrTraits {
    using Type = BSTR;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type text) noexcept { ::SysFreeString(text); }
};
using OwnedBstr = Owner<BstrTraits>;

// The text of a COM string, embedded nulls included; a null string is the empty text.
[[nodiscard]] inline std::wstring_view View(BSTR text) noexcept {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text, ::SysStringLen(text));
}
[[nodiscard]] inline std::wstring_view View(const OwnedBstr& text) noexcept { return View(text.Get()); }

// A new COM string with exactly this text, never null. Throws E_OUTOFMEMORY.
[[nodiscard]] inline OwnedBstr MakeBstr(std::wstring_view text) {
    if (text.size() > std::numeric_limits<UINT>::max() / sizeof(wchar_t)) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    OwnedBstr result(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!result) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    return result;
}

// A COM string that is a constant: with its length before it, as the platform keeps them, but never allocated. For [in]
// arguments of functions that only read it.
template <size_t size>
class ConstantBstr {
  public:
    explicit consteval ConstantBstr(const wchar_t (&text)[size]) noexcept {
        for (size_t index = 0; index < size; ++index) {
            image_.text[index] = text[index];
        }
    }
    [[nodiscard]] BSTR Get() const noexcept { return const_cast<BSTR>(image_.text); }

  private:
    struct alignas(8) Image {
        UINT unused = 0;
        UINT bytes = (size - 1) * sizeof(wchar_t);
        wchar_t text[size] = {};
    } image_;
};

// A copy byte for byte; a null string stays null. Throws E_OUTOFMEMORY.
[[nodiscard]] inline OwnedBstr CopyBstr(BSTR text) {
    if (text == nullptr) {
        return {};
    }
    const UINT bytes = ::SysStringByteLen(text);
    OwnedBstr result(::SysAllocStringByteLen(nullptr, bytes));
    if (!result) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    std::char_traits<char>::copy(reinterpret_cast<char*>(result.Get()), reinterpret_cast<const char*>(text), bytes);
    return result;
}

}  // namespace paylodge
