// Tables of sites against a plain restatement of what an entry means.
#include <optional>

#include "frame/browser/site_table.hpp"
#include "tests/fuzz/pieces.hpp"

namespace paylodge {
namespace {

[[nodiscard]] std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

// Before its meaning, an entry's three texts: a digit for the category, the scheme, and the domain, of which "!1" to
// "!4" stand for the markers and null.
struct Entry {
    std::uint32_t category = 0;
    std::wstring scheme;
    std::wstring domain;

    [[nodiscard]] const wchar_t* Domain() const noexcept {
        if (domain == L"!1") {
            return kIntranetOrTrustedZone;
        }
        if (domain == L"!2") {
            return kLocalMachineZone;
        }
        if (domain == L"!3") {
            return kTrustedZone;
        }
        return domain == L"!4" ? nullptr : domain.c_str();
    }
};

[[nodiscard]] bool DomainMatches(std::wstring pattern, const std::wstring& domain) {
    bool is_exact = false;
    bool is_subdomain = false;
    if (pattern.size() < 3) {
        is_exact = pattern.size() == 2 && pattern[0] == L'=';
    } else if (pattern[0] == L'*' && pattern[1] == L'.') {
        is_subdomain = true;
        pattern.erase(0, 2);
    } else if (pattern[0] == L'=') {
        is_exact = true;
        pattern.erase(0, 1);
    }
    if (domain.size() < pattern.size()) {
        return false;
    }
    const std::size_t rest = domain.size() - pattern.size();
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (domain[rest + i] != pattern[i]) {
            return false;
        }
    }
    return rest == 0 ? !is_subdomain : domain[rest - 1] == L'.' && !is_exact;
}

[[nodiscard]] bool Matches(const Entry& entry, const PageOrigin& page) {
    if (entry.scheme != page.scheme) {
        return false;
    }
    if (entry.domain == L"!1") {
        return page.zone == 1 || page.zone == 2;
    }
    if (entry.domain == L"!2") {
        return page.zone == 0;
    }
    if (entry.domain == L"!3") {
        return page.zone == 2;
    }
    if (entry.domain == L"!4") {
        return page.domain.empty();
    }
    return DomainMatches(entry.domain, std::wstring(page.domain));
}

// The zone, the scheme and the domain of the page, then three pieces for each entry.
void Try(std::string_view input) {
    std::vector<std::wstring> pieces;
    for (const std::string& piece : fuzz::Pieces(input)) {
        // A table's texts end at their first null.
        pieces.push_back(Widen(piece.substr(0, piece.find('\0'))));
    }
    pieces.resize((pieces.size() + 5) / 3 * 3);
    const PageOrigin page{pieces[1], pieces[2], pieces[0].empty() ? 0U : static_cast<std::uint32_t>(pieces[0][0] & 7)};
    std::vector<Entry> entries;
    for (std::size_t i = 3; i < pieces.size(); i += 3) {
        entries.push_back(
            {pieces[i].empty() ? 0U : static_cast<std::uint32_t>(pieces[i][0] & 3), pieces[i + 1], pieces[i + 2]});
    }
    std::vector<SiteEntry> table;
    std::optional<bool> decision;
    for (const Entry& entry : entries) {
        table.push_back({entry.category, entry.scheme.c_str(), entry.Domain()});
        if (!decision && Matches(entry, page)) {
            decision = entry.category == 0;
        }
    }
    fuzz::ExpectTrue(IsApproved(table, page) == decision.value_or(false), "approved");
}

}  // namespace
}  // namespace paylodge

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::Try(paylodge::fuzz::AsText(data, size));
    return 0;
}
