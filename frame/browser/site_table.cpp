#include "frame/browser/site_table.hpp"

#include <algorithm>

namespace paylodge {
namespace {

enum Zone : std::uint32_t { kLocalMachine = 0, kIntranet = 1, kTrusted = 2 };

enum class Scope { kDomainAndSubdomains, kDomainOnly, kSubdomainsOnly };

struct DomainPattern {
    std::wstring_view domain;
    Scope scope;
};

[[nodiscard]] DomainPattern ReadPrefix(std::wstring_view pattern) noexcept {
    if (pattern.size() < 3) {
        // Too short for a prefix and a name: nothing is removed.
        return {pattern, pattern.size() == 2 && pattern[0] == L'=' ? Scope::kDomainOnly : Scope::kDomainAndSubdomains};
    }
    if (pattern.starts_with(L"*.")) {
        return {pattern.substr(2), Scope::kSubdomainsOnly};
    }
    if (pattern.starts_with(L"=")) {
        return {pattern.substr(1), Scope::kDomainOnly};
    }
    return {pattern, Scope::kDomainAndSubdomains};
}

[[nodiscard]] bool MatchesPattern(const DomainPattern& pattern, std::wstring_view domain) noexcept {
    if (!domain.ends_with(pattern.domain)) {
        return false;
    }
    const size_t subdomain_length = domain.size() - pattern.domain.size();
    if (subdomain_length == 0) {
        return pattern.scope != Scope::kSubdomainsOnly;
    }
    return domain[subdomain_length - 1] == L'.' && pattern.scope != Scope::kDomainOnly;
}

[[nodiscard]] bool MatchesDomain(const wchar_t* entry_domain, const PageOrigin& page) noexcept {
    if (entry_domain == kIntranetOrTrustedZone) {
        return page.zone == kIntranet || page.zone == kTrusted;
    }
    if (entry_domain == kLocalMachineZone) {
        return page.zone == kLocalMachine;
    }
    if (entry_domain == kTrustedZone) {
        return page.zone == kTrusted;
    }
    if (entry_domain == nullptr) {
        return page.domain.empty();
    }
    return MatchesPattern(ReadPrefix(entry_domain), page.domain);
}

}  // namespace

bool IsApproved(std::span<const SiteEntry> table, const PageOrigin& page) noexcept {
    const auto match = std::ranges::find_if(table, [&page](const SiteEntry& entry) {
        return page.scheme == entry.scheme && MatchesDomain(entry.domain, page);
    });
    return match != table.end() && match->category == 0;
}

}  // namespace paylodge
