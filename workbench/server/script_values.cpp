#include "workbench/server/script_values.hpp"

#include <cmath>
#include <cstdint>
#include <limits>

#include "com/bstr.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::workbench {
namespace {

void SetNumber(VARIANT& variant, double number) {
    if (number == std::floor(number) && std::abs(number) <= std::numeric_limits<std::int32_t>::max()) {
        V_VT(&variant) = VT_I4;
        V_I4(&variant) = static_cast<LONG>(number);
    } else {
        V_VT(&variant) = VT_R8;
        V_R8(&variant) = number;
    }
}

}  // namespace

void SetVariant(VARIANT& variant, const Json& value) {
    ::VariantInit(&variant);
    switch (value.type()) {
        case Json::value_t::string: {
            const std::wstring text = refhost::WideFromUtf8(value.get_ref<const std::string&>());
            V_BSTR(&variant) = MakeBstr(text).Detach();
            V_VT(&variant) = VT_BSTR;
            break;
        }
        case Json::value_t::boolean:
            V_VT(&variant) = VT_BOOL;
            V_BOOL(&variant) = value.get<bool>() ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case Json::value_t::number_integer:
        case Json::value_t::number_unsigned:
        case Json::value_t::number_float:
            SetNumber(variant, value.get<double>());
            break;
        case Json::value_t::null:
            V_VT(&variant) = VT_NULL;
            break;
        default:
            break;
    }
}

Json ReadVariant(const VARIANT& variant) {
    OwnedVariant copy;
    VARIANT source = variant;
    // Follows references.
    if (FAILED(::VariantCopyInd(copy.Receive(), &source))) {
        return nullptr;
    }
    switch (copy.Type()) {
        case VT_BSTR:
            return refhost::Utf8FromWide(View(copy.Bstr()));
        case VT_BOOL:
            return V_BOOL(&copy.Get()) != VARIANT_FALSE;
        case VT_I2:
            return V_I2(&copy.Get());
        case VT_I4:
        case VT_INT:
        case VT_ERROR:
            return static_cast<std::int64_t>(V_I4(&copy.Get()));
        case VT_R8:
            return V_R8(&copy.Get());
        default:
            return nullptr;
    }
}

}  // namespace paylodge::workbench
