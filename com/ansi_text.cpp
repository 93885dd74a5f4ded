#include "com/ansi_text.hpp"

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

namespace paylodge {
namespace {

// The platform's conversions count in int.
[[nodiscard]] int Length(size_t size) {
    if (size > static_cast<size_t>(std::numeric_limits<int>::max())) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    return static_cast<int>(size);
}

// These characters are the same in every ANSI code page, and most texts have no others: converting them here takes a
// fraction of the platform's time.
template <class Character>
[[nodiscard]] bool IsAscii(std::basic_string_view<Character> text) noexcept {
    // Without a way out of the loop, it takes many characters at a time.
    std::make_unsigned_t<Character> all = 0;
    for (const Character character : text) {
        all |= static_cast<std::make_unsigned_t<Character>>(character);
    }
    return all < 0x80;
}

[[nodiscard]] OwnedBstr BstrFromNarrow(UINT code_page, std::string_view text) {
    if (text.empty()) {
        return MakeBstr({});
    }
    // No code page has a character of fewer than one byte, and most have one byte for each: asking for the length first
    // would convert everything twice.
    const int size = Length(text.size());
    OwnedBstr result(::SysAllocStringLen(nullptr, static_cast<UINT>(size)));
    if (!result) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    if (IsAscii(text)) {
        std::ranges::copy(text, result.Get());
        return result;
    }
    const int length = ::MultiByteToWideChar(code_page, 0, text.data(), size, result.Get(), size);
    return length == size ? std::move(result) : MakeBstr({result.Get(), static_cast<size_t>(length)});
}

}  // namespace

std::string NarrowFromWide(UINT code_page, std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const int length = Length(text.size());
    DWORD flags = WC_NO_BEST_FIT_CHARS;
    // In most code pages each character is one byte.
    std::string result(text.size(), '\0');
    int size = ::WideCharToMultiByte(code_page, flags, text.data(), length, result.data(), length, nullptr, nullptr);
    if (size == length) {
        return result;
    }
    size = ::WideCharToMultiByte(code_page, flags, text.data(), length, nullptr, 0, nullptr, nullptr);
    if (size == 0 && ::GetLastError() == ERROR_INVALID_FLAGS) {
        // Code pages with every character, such as UTF-8, have no use for the flag and refuse it.
        flags = 0;
        size = ::WideCharToMultiByte(code_page, flags, text.data(), length, nullptr, 0, nullptr, nullptr);
    }
    result.resize(static_cast<size_t>(size));
    ::WideCharToMultiByte(code_page, flags, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

std::string AnsiFromWide(std::wstring_view text) {
    if (!IsAscii(text)) {
        return NarrowFromWide(CP_ACP, text);
    }
    std::string result(text.size(), '\0');
    std::ranges::transform(text, result.begin(), [](wchar_t character) { return static_cast<char>(character); });
    return result;
}

std::string AnsiFromBstr(BSTR text) { return AnsiFromWide(View(text)); }

OwnedBstr BstrFromAnsi(std::string_view text) { return BstrFromNarrow(CP_ACP, text); }

OwnedBstr BstrFromThreadAnsi(std::string_view text) { return BstrFromNarrow(CP_THREAD_ACP, text); }

}  // namespace paylodge
