#include "refhost/control/call_record.hpp"

#include "com/bstr.hpp"
#include "refhost/objects/host.hpp"

namespace paylodge::refhost {

std::wstring Argument(BSTR text) {
    return text == nullptr ? std::wstring(L"null") : L'"' + std::wstring(View(text)) + L'"';
}

std::wstring Argument(const VARIANT& value) {
    return V_VT(&value) == VT_BSTR ? Argument(V_BSTR(&value)) : L"type " + std::to_wstring(V_VT(&value));
}

std::wstring Argument(LONG number) { return std::to_wstring(number); }

std::optional<HRESULT> Record(std::wstring_view call, std::initializer_list<std::wstring> arguments) {
    std::wstring line(call);
    line += L'(';
    const wchar_t* separator = L"";
    for (const std::wstring& argument : arguments) {
        line += separator + argument;
        separator = L", ";
    }
    line += L')';
    Host::Get().Calls().push_back(std::move(line));
    return Host::Get().Plan().TakeFailure(call);
}

}  // namespace paylodge::refhost
