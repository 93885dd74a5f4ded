#include "refhost/commands/result_names.hpp"

#include <winerror.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "refhost/books/values.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

struct ResultName {
    HRESULT result;
    std::string_view name;
};

// Errors of the script language have no names of the platform's; these are the ones that pages meet most.
constexpr std::array kNames{
    ResultName{E_FAIL, "E_FAIL"},
    ResultName{E_INVALIDARG, "E_INVALIDARG"},
    ResultName{E_POINTER, "E_POINTER"},
    ResultName{E_NOTIMPL, "E_NOTIMPL"},
    ResultName{E_NOINTERFACE, "E_NOINTERFACE"},
    ResultName{E_ABORT, "E_ABORT"},
    ResultName{E_ACCESSDENIED, "E_ACCESSDENIED"},
    ResultName{E_OUTOFMEMORY, "E_OUTOFMEMORY"},
    ResultName{E_UNEXPECTED, "E_UNEXPECTED"},
    ResultName{DISP_E_UNKNOWNNAME, "DISP_E_UNKNOWNNAME"},
    ResultName{DISP_E_MEMBERNOTFOUND, "DISP_E_MEMBERNOTFOUND"},
    ResultName{DISP_E_TYPEMISMATCH, "DISP_E_TYPEMISMATCH"},
    ResultName{DISP_E_BADPARAMCOUNT, "DISP_E_BADPARAMCOUNT"},
    ResultName{DISP_E_PARAMNOTOPTIONAL, "DISP_E_PARAMNOTOPTIONAL"},
    ResultName{DISP_E_BADINDEX, "DISP_E_BADINDEX"},
    ResultName{DISP_E_EXCEPTION, "DISP_E_EXCEPTION"},
    ResultName{REGDB_E_CLASSNOTREG, "REGDB_E_CLASSNOTREG"},
    ResultName{CO_E_CLASSSTRING, "CO_E_CLASSSTRING"},
    ResultName{CO_E_OBJNOTCONNECTED, "CO_E_OBJNOTCONNECTED"},
    ResultName{static_cast<HRESULT>(0x800A01AD), "(script) the object cannot be created"},
    ResultName{static_cast<HRESULT>(0x800A01B6), "(script) the object has no such property or method"},
    ResultName{static_cast<HRESULT>(0x800A138A), "(script) a function was expected"},
    ResultName{static_cast<HRESULT>(0x800A138F), "(script) an object was expected"},
    ResultName{static_cast<HRESULT>(0x800A1391), "(script) the name is not defined"},
    ResultName{kNoCompanyOpen, "no company file is open"},
    ResultName{kOtherCompanyOpen, "another company file is open"},
    ResultName{kNewerCompanyFile, "the company file is of a newer version"},
    ResultName{kForeignCompanyFile, "the file is not a company file"},
};

[[nodiscard]] std::string SystemText(HRESULT result) {
    wchar_t text[512] = {};
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                         static_cast<DWORD>(result), 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    return std::string(Trimmed(Utf8FromWide({text, length})));
}

}  // namespace

std::string DescribeResult(HRESULT result) {
    char number[16] = {};
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(result));
    const auto* const found = std::ranges::find(kNames, result, &ResultName::result);
    const std::string name = found == kNames.end() ? std::string() : ' ' + std::string(found->name);
    const std::string system = SystemText(result);
    return number + name + (system.empty() ? "" : ": " + system);
}

}  // namespace paylodge::refhost
