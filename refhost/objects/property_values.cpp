#include "refhost/objects/property_values.hpp"

#include <comdef.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cwchar>

#include "com/bstr.hpp"
#include "com/variant.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

struct Kind {
    VARTYPE type;
    std::string_view name;
};

// Values whose texts give exactly the same value again.
constexpr std::array kKinds{Kind{VT_BSTR, "string"}, Kind{VT_I2, "int16"}, Kind{VT_I4, "int32"},
                            Kind{VT_BOOL, "boolean"}, Kind{VT_CY, "currency"}};

constexpr size_t kEscapeLength = 6;

// The same texts whatever the user's country.
[[nodiscard]] HRESULT Convert(const VARIANT& value, VARTYPE type, VARIANT* converted) noexcept {
    VARIANT source = value;
    return ::VariantChangeTypeEx(converted, &source, LOCALE_INVARIANT, 0, type);
}

[[nodiscard]] bool IsHighSurrogate(wchar_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
[[nodiscard]] bool IsLowSurrogate(wchar_t unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

[[nodiscard]] bool IsPlain(wchar_t unit) noexcept { return unit >= 0x20 && unit < 0xFFFE && unit != L'\\'; }

void AppendEscape(std::wstring& output, wchar_t unit) {
    wchar_t escape[kEscapeLength + 1] = {};
    std::swprintf(escape, std::size(escape), L"\\u%04X", static_cast<unsigned>(unit));
    output += escape;
}

[[nodiscard]] bool IsEscape(std::wstring_view text) noexcept {
    constexpr std::wstring_view kDigits = L"0123456789ABCDEFabcdef";
    return text.size() >= kEscapeLength && text.starts_with(L"\\u") &&
           text.substr(2, 4).find_first_not_of(kDigits) == std::wstring_view::npos;
}

}  // namespace

std::string EscapedText(std::wstring_view text) {
    std::wstring output;
    for (size_t i = 0; i < text.size(); ++i) {
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            output.append(text, i++, 2);
        } else if (IsPlain(text[i]) && !IsHighSurrogate(text[i]) && !IsLowSurrogate(text[i])) {
            output += text[i];
        } else {
            AppendEscape(output, text[i]);
        }
    }
    return Utf8FromWide(output);
}

std::wstring UnescapedText(std::string_view text) {
    const std::wstring wide = WideFromUtf8(text);
    std::wstring output;
    for (std::wstring_view rest = wide; !rest.empty();) {
        if (IsEscape(rest)) {
            output += static_cast<wchar_t>(std::wcstoul(std::wstring(rest.substr(2, 4)).c_str(), nullptr, 16));
            rest.remove_prefix(kEscapeLength);
        } else {
            output += rest.front();
            rest.remove_prefix(1);
        }
    }
    return output;
}

std::optional<PropertyText> TextFromValue(const VARIANT& value) {
    const auto kind = std::ranges::find(kKinds, V_VT(&value), &Kind::type);
    if (kind == kKinds.end()) {
        return std::nullopt;
    }
    if (kind->type == VT_BSTR) {
        return PropertyText{std::string(kind->name), EscapedText(View(V_BSTR(&value)))};
    }
    OwnedVariant text;
    const HRESULT result = Convert(value, VT_BSTR, text.Receive());
    if (FAILED(result)) {
        _com_issue_error(result);
    }
    return PropertyText{std::string(kind->name), EscapedText(View(text.Bstr()))};
}

HRESULT ValueFromText(const PropertyText& text, VARIANT* value) {
    const auto kind = std::ranges::find(kKinds, text.kind, &Kind::name);
    if (kind == kKinds.end()) {
        return DISP_E_BADVARTYPE;
    }
    const OwnedVariant string(MakeBstr(UnescapedText(text.text)));
    return Convert(string.Get(), kind->type, value);
}

}  // namespace paylodge::refhost
