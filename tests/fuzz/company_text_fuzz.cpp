// Hostile texts of companies: whatever the text, it becomes true books or is refused with a sentence. What becomes
// books comes out as a text that becomes the same books again.
#include <memory>

#include "refhost/books/audit.hpp"
#include "refhost/books/company.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/books/problems.hpp"
#include "tests/fuzz/pieces.hpp"

namespace paylodge::refhost {
namespace {

// Null for a text that is refused.
[[nodiscard]] std::unique_ptr<Company> Imported(std::string_view text) {
    try {
        auto company = Company::CreateInMemory(CompanyNameIn(text));
        ImportText(*company, text);
        return company;
    } catch (const HostError& refused) {
        fuzz::ExpectTrue(*refused.what() != '\0', "refused without a word");
        return nullptr;
    }
}

void Try(std::string_view text) {
    const auto company = Imported(text);
    if (!company) {
        return;
    }
    const std::vector<std::string> findings = Audit(*company);
    fuzz::ExpectSame("", findings.empty() ? "" : findings.front(), "the books are not true");
    const std::string exported = ExportText(*company);
    const auto again = Imported(exported);
    fuzz::ExpectTrue(again != nullptr, "what was exported is refused");
    fuzz::ExpectSame(exported, ExportText(*again), "exported again");
}

}  // namespace
}  // namespace paylodge::refhost

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::refhost::Try(paylodge::fuzz::AsText(data, size));
    return 0;
}
