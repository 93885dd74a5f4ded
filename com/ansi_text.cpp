#include "com/ansi_text.hpp"

#include <limits>

namespace paylodge {
namespace {

// The platform's conversions count in int.
[[nodiscard]] int Length(size_t size) {
    if (size > static_cast<size_t>(std::numeric_limits<int>::max())) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    return static_cast<int>(size);
}

[[nodiscard]] OwnedBstr BstrFromNarrow(UINT code_page, std::string_view text) {
    if (text.empty()) {
        return MakeBstr({});
    }
    const int size = Length(text.size());
    const int length = ::MultiByteToWideChar(code_page, 0, text.data(), size, nullptr, 0);
    OwnedBstr result(::SysAllocStringLen(nullptr, static_cast<UINT>(length)));
    if (!result) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    ::MultiByteToWideChar(code_page, 0, text.data(), size, result.Get(), length);
    return result;
}

}  // namespace

std::string AnsiFromWide(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const int length = Length(text.size());
    const int size = ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(size), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

std::string AnsiFromBstr(BSTR text) { return AnsiFromWide(View(text)); }

OwnedBstr BstrFromAnsi(std::string_view text) { return BstrFromNarrow(CP_ACP, text); }

OwnedBstr BstrFromThreadAnsi(std::string_view text) { return BstrFromNarrow(CP_THREAD_ACP, text); }

}  // namespace paylodge
