#include "refhost/objects/utf8.hpp"

#include <windows.h>

#include <limits>
#include <new>

namespace paylodge::refhost {
namespace {

// The platform's conversions count in int.
[[nodiscard]] int Length(size_t size) {
    if (size > static_cast<size_t>(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();
    }
    return static_cast<int>(size);
}

[[nodiscard]] std::optional<std::wstring> Widen(std::string_view bytes, DWORD flags) {
    if (bytes.empty()) {
        return std::wstring();
    }
    const int size = Length(bytes.size());
    const int length = ::MultiByteToWideChar(CP_UTF8, flags, bytes.data(), size, nullptr, 0);
    if (length == 0) {
        return std::nullopt;
    }
    std::wstring text(static_cast<size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, flags, bytes.data(), size, text.data(), length);
    return text;
}

}  // namespace

std::string Utf8FromWide(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const int length = Length(text.size());
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::wstring WideFromUtf8(std::string_view text) { return Widen(text, 0).value_or(std::wstring()); }

std::optional<std::wstring> WideFromUntrustedUtf8(std::string_view bytes) { return Widen(bytes, MB_ERR_INVALID_CHARS); }

}  // namespace paylodge::refhost
