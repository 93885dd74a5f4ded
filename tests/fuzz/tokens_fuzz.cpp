// Lists of account types against the C library's tokenizer; names and spaces against plain loops.
#include <strings.h>
#include <cstring>

#include "operations/account_types.hpp"
#include "operations/check_matching.hpp"
#include "tests/fuzz/pieces.hpp"

namespace paylodge {
namespace {

using fuzz::ExpectSame;
using fuzz::ExpectTrue;

[[nodiscard]] std::string Joined(const auto& texts) {
    std::string joined;
    for (const auto& text : texts) {
        joined.append("<").append(text).append(">");
    }
    return joined;
}

[[nodiscard]] std::vector<std::string> LibraryTokens(std::string text) {
    std::vector<std::string> tokens;
    char* rest = nullptr;
    for (const char* token = ::strtok_r(text.data(), ", ", &rest); token != nullptr;
         token = ::strtok_r(nullptr, ", ", &rest)) {
        tokens.emplace_back(token);
    }
    return tokens;
}

[[nodiscard]] std::string WithoutSpaces(std::string text) {
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    while (!text.empty() && text.front() == ' ') {
        text.erase(0, 1);
    }
    return text;
}

void Try(std::string_view input) {
    ExpectSame(WithoutSpaces(std::string(input)), TrimSpaces(input), "trimmed");
    // To the C library a text ends at its first null.
    const std::string text(input.substr(0, input.find('\0')));
    ExpectSame(Joined(LibraryTokens(text)), Joined(SplitAccountTypes(text)), "tokens");
    ExpectTrue(IsBankAccountType(text) == (::strcasecmp(text.c_str(), "bank") == 0), "bank");
}

}  // namespace
}  // namespace paylodge

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::Try(paylodge::fuzz::AsText(data, size));
    return 0;
}
