#include "refhost/commands/result_names.hpp"

#include <winerror.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "com/hresult_names.hpp"
#include "refhost/books/values.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

struct ResultName {
    HRESULT result;
    std::string_view name;
};

// What has no name of the platform's: errors of the script language that pages meet most, and the reference host's own.
constexpr std::array kNames{
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

}  // namespace

std::string SystemText(HRESULT result) {
    wchar_t text[512] = {};
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                         static_cast<DWORD>(result), 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    return std::string(Trimmed(Utf8FromWide({text, length})));
}

std::string DescribeResult(HRESULT result) {
    char number[16] = {};
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(result));
    const auto* const found = std::ranges::find(kNames, result, &ResultName::result);
    const std::string name(found == kNames.end() ? HResultName(result) : found->name);
    const std::string system = SystemText(result);
    return number + (name.empty() ? "" : ' ' + name) + (system.empty() ? "" : ": " + system);
}

}  // namespace paylodge::refhost
