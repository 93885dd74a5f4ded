#include "frame/browser/site_table.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "frame/browser/approved_sites.hpp"

namespace paylodge {
namespace {

using ::testing::TestWithParam;
using ::testing::ValuesIn;

constexpr std::uint32_t kInternetZone = 3;

[[nodiscard]] bool Approves(const SiteEntry& entry, const PageOrigin& page) {
    return IsApproved(std::span(&entry, 1), page);
}

[[nodiscard]] bool MatchesDomain(const wchar_t* pattern, std::wstring_view domain) {
    return Approves({0, L"https", pattern}, {L"https", domain, kInternetZone});
}

struct PatternCase {
    const wchar_t* pattern;
    const wchar_t* domain;
    bool matches;
};

// The case reads as a sentence in a failure's text.
void PrintTo(const PatternCase& pattern_case, std::ostream* out) {
    *out << ::testing::PrintToString(std::wstring(pattern_case.pattern)) << " against "
         << ::testing::PrintToString(std::wstring(pattern_case.domain));
}

class DomainPattern : public TestWithParam<PatternCase> {};

TEST_P(DomainPattern, MatchesTheDomainsItDescribes) {
    EXPECT_EQ(GetParam().matches, MatchesDomain(GetParam().pattern, GetParam().domain));
}

constexpr PatternCase kPlainPatterns[] = {
    {L"pay.example", L"pay.example", true},
    {L"pay.example", L"shop.pay.example", true},
    {L"pay.example", L"a.b.pay.example", true},
    {L"pay.example", L".pay.example", true},
    {L"pay.example", L"..pay.example", true},
    {L"pay.example", L"xpay.example", false},
    {L"pay.example", L"x-pay.example", false},
    {L"pay.example", L"pay.example.evil.example", false},
    {L"pay.example", L"pay.example.", false},
    {L"pay.example", L"ay.example", false},
    {L"pay.example", L"example", false},
    {L"pay.example", L"", false},
    {L"pay.example", L"Pay.example", false},
    {L"pay.example", L"pay.EXAMPLE", false},
    {L"PAY.example", L"pay.example", false},
    {L"PAY.example", L"PAY.example", true},
    // A star without a dot is part of the name.
    {L"*pay.example", L"*pay.example", true},
    {L"*pay.example", L"xpay.example", false},
};
INSTANTIATE_TEST_SUITE_P(Plain, DomainPattern, ValuesIn(kPlainPatterns));

constexpr PatternCase kExactPatterns[] = {
    {L"=pay.example", L"pay.example", true},
    {L"=pay.example", L"shop.pay.example", false},
    {L"=pay.example", L".pay.example", false},
    {L"=pay.example", L"=pay.example", false},
    {L"=pay.example", L"Pay.example", false},
    {L"=pay.example", L"", false},
    {L"=ab", L"ab", true},
    {L"=ab", L"x.ab", false},
    // One prefix is removed, not two.
    {L"=*.ab", L"*.ab", true},
    {L"=*.ab", L"x.ab", false},
    {L"==a", L"=a", true},
    {L"==a", L"a", false},
};
INSTANTIATE_TEST_SUITE_P(Exact, DomainPattern, ValuesIn(kExactPatterns));

constexpr PatternCase kSubdomainPatterns[] = {
    {L"*.pay.example", L"shop.pay.example", true},
    {L"*.pay.example", L"a.b.pay.example", true},
    {L"*.pay.example", L".pay.example", true},
    {L"*.pay.example", L"pay.example", false},
    {L"*.pay.example", L"xpay.example", false},
    {L"*.pay.example", L"*.pay.example", true},
    {L"*.pay.example", L"shop.Pay.example", false},
    {L"*.pay.example", L"", false},
    {L"*.a", L"b.a", true},
    {L"*.a", L"a", false},
    {L"*.=a", L"b.=a", true},
    {L"*.=a", L"b.a", false},
    {L"*..", L"a..", true},
    {L"*..", L".", false},
};
INSTANTIATE_TEST_SUITE_P(Subdomain, DomainPattern, ValuesIn(kSubdomainPatterns));

// Fewer than three characters: nothing is removed, and only "=" with one more character means the domain alone.
constexpr PatternCase kShortPatterns[] = {
    {L"=a", L"=a", true},   {L"=a", L"a", false},   {L"=a", L"x.=a", false}, {L"*.", L"*.", true},
    {L"*.", L"x.*.", true}, {L"*.", L"a.x", false}, {L"ab", L"ab", true},    {L"ab", L"x.ab", true},
    {L"ab", L"xab", false}, {L"a", L"a", true},     {L"a", L"b.a", true},    {L"=", L"=", true},
    {L"=", L"x.=", true},   {L"=", L"", false},     {L"", L"", true},        {L"", L"x.", true},
    {L"", L"x", false},     {L"*", L"*", true},     {L"*", L"x", false},     {L"*", L"x.*", true},
};
INSTANTIATE_TEST_SUITE_P(Short, DomainPattern, ValuesIn(kShortPatterns));

struct MarkerCase {
    const char* name;
    const wchar_t* marker;
    std::vector<std::uint32_t> zones;
};

class ZoneMarker : public TestWithParam<MarkerCase> {};

TEST_P(ZoneMarker, MatchesItsZonesWhateverTheDomain) {
    constexpr std::uint32_t kZones[] = {0, 1, 2, 3, 4, 1000, 0xFFFFFFFF};
    for (const wchar_t* domain : {L"", L"pay.example"}) {
        for (const std::uint32_t zone : kZones) {
            const bool is_listed = std::ranges::count(GetParam().zones, zone) == 1;
            EXPECT_EQ(is_listed, Approves({0, L"https", GetParam().marker}, {L"https", domain, zone})) << zone;
        }
    }
}

const MarkerCase kMarkers[] = {
    {"AllOnesIsIntranetOrTrusted", reinterpret_cast<const wchar_t*>(UINTPTR_MAX), {1, 2}},
    {"AllOnesMinusOneIsLocalMachine", reinterpret_cast<const wchar_t*>(UINTPTR_MAX - 1), {0}},
    {"AllOnesMinusTwoIsTrusted", reinterpret_cast<const wchar_t*>(UINTPTR_MAX - 2), {2}},
};
INSTANTIATE_TEST_SUITE_P(Table, ZoneMarker, ValuesIn(kMarkers), [](const auto& row) { return row.param.name; });

TEST(SiteTable, ZoneMarkerNeedsItsScheme) {
    EXPECT_FALSE(Approves({0, L"https", kTrustedZone}, {L"http", L"pay.example", 2}));
}

TEST(SiteTable, NullDomainMatchesAPageWithoutADomain) {
    EXPECT_TRUE(Approves({0, L"file", nullptr}, {L"file", L"", 0}));
    EXPECT_FALSE(Approves({0, L"file", nullptr}, {L"file", L"server", 0}));
    EXPECT_FALSE(Approves({0, L"file", nullptr}, {L"https", L"", 0}));
}

TEST(SiteTable, ComparesTheWholeSchemeWithItsLetterCase) {
    for (const wchar_t* scheme : {L"http", L"httpsx", L"Https", L"HTTPS", L"ttps", L"", L"https:"}) {
        EXPECT_FALSE(Approves({0, L"https", L"pay.example"}, {scheme, L"pay.example", kInternetZone}));
    }
    EXPECT_TRUE(Approves({0, L"", L"pay.example"}, {L"", L"pay.example", kInternetZone}));
}

TEST(SiteTable, SchemeWithAnEmbeddedNullIsAnotherScheme) {
    EXPECT_FALSE(Approves({0, L"https", L"pay.example"}, {std::wstring_view(L"https\0x", 7), L"pay.example", 3}));
}

TEST(SiteTable, EmptyTableApprovesNothing) { EXPECT_FALSE(IsApproved({}, {L"https", L"pay.example", 2})); }

TEST(SiteTable, CategoryOtherThanZeroDenies) {
    for (const std::uint32_t category : {1U, 2U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(Approves({category, L"https", L"pay.example"}, {L"https", L"pay.example", kInternetZone}));
    }
}

TEST(SiteTable, FirstMatchingEntryDecides) {
    constexpr SiteEntry kEntries[] = {
        {0, L"http", L"pay.example"},        {1, L"https", L"=bad.pay.example"}, {0, L"https", L"pay.example"},
        {1, L"https", L"later.pay.example"}, {1, L"https", L"denied.example"},   {0, L"https", L"denied.example"},
    };
    const auto approves = [&](const wchar_t* scheme, const wchar_t* domain) {
        return IsApproved(kEntries, {scheme, domain, kInternetZone});
    };
    EXPECT_TRUE(approves(L"https", L"pay.example"));
    EXPECT_FALSE(approves(L"https", L"bad.pay.example"));
    EXPECT_TRUE(approves(L"https", L"x.bad.pay.example"));
    EXPECT_TRUE(approves(L"http", L"bad.pay.example"));
    EXPECT_TRUE(approves(L"https", L"later.pay.example"));
    EXPECT_FALSE(approves(L"https", L"denied.example"));
    EXPECT_FALSE(approves(L"https", L"elsewhere.example"));
}

struct ApprovedSite {
    std::wstring scheme;
    std::wstring domain;
};

// Written out once more, so that no slip in the table goes unseen.
const ApprovedSite kExpectedSites[] = {
    {L"https", L"terminal.paylodge.example"},   {L"https", L"accounts.paylodge.example"},
    {L"https", L"merchant.ledgerhall.example"}, {L"https", L"payments.ledgerhall.example"},
    {L"https", L"services.ledgerhall.example"}, {L"http", L"merchant.ledgerhall.example"},
    {L"http", L"payments.ledgerhall.example"},  {L"http", L"services.ledgerhall.example"},
    {L"http", L"qa.ledgerhall.example"},        {L"http", L"dev.ledgerhall.example"},
};

TEST(ApprovedSites, AreTheTenInTheirOrderAllAllowing) {
    const auto sites = ApprovedSites();
    ASSERT_EQ(std::size(kExpectedSites), sites.size());
    for (size_t index = 0; index < sites.size(); ++index) {
        EXPECT_EQ(0U, sites[index].category);
        EXPECT_EQ(kExpectedSites[index].scheme, sites[index].scheme);
        EXPECT_EQ(kExpectedSites[index].domain, sites[index].domain);
    }
}

TEST(ApprovedSites, EntryIsThreeFieldsAsCallersReadThem) {
    EXPECT_EQ(0U, offsetof(SiteEntry, category));
    EXPECT_EQ(sizeof(void*), offsetof(SiteEntry, scheme));
    EXPECT_EQ(2 * sizeof(void*), offsetof(SiteEntry, domain));
    EXPECT_EQ(3 * sizeof(void*), sizeof(SiteEntry));
}

class ApprovedSitesRow : public TestWithParam<ApprovedSite> {
  protected:
    [[nodiscard]] static bool Allows(const std::wstring& scheme, const std::wstring& domain) {
        return IsApproved(ApprovedSites(), {scheme, domain, kInternetZone});
    }
};

TEST_P(ApprovedSitesRow, AdmitsTheDomainAndItsSubdomainsOnly) {
    const auto& [scheme, domain] = GetParam();
    EXPECT_TRUE(Allows(scheme, domain));
    EXPECT_TRUE(Allows(scheme, L"eu." + domain));
    EXPECT_TRUE(Allows(scheme, L"a.b." + domain));
    EXPECT_FALSE(Allows(scheme, L"evil" + domain));
    EXPECT_FALSE(Allows(scheme, domain + L".evil.example"));
    EXPECT_FALSE(Allows(scheme, domain.substr(domain.find(L'.') + 1)));
    EXPECT_FALSE(Allows(L"ftp", domain));
}

TEST_P(ApprovedSitesRow, TakesLetterCaseSeriously) {
    const auto& [scheme, domain] = GetParam();
    EXPECT_FALSE(Allows(L"H" + scheme.substr(1), domain));
    EXPECT_FALSE(Allows(scheme, domain.substr(0, domain.size() - 1) + L"E"));
}

TEST_P(ApprovedSitesRow, AdmitsTheOtherSchemeOnlyWithAnEntryOfItsOwn) {
    const auto& [scheme, domain] = GetParam();
    const std::wstring other = scheme == L"https" ? L"http" : L"https";
    const bool has_both =
        domain.starts_with(L"merchant.") || domain.starts_with(L"payments.") || domain.starts_with(L"services.");
    EXPECT_EQ(has_both, Allows(other, domain));
}
INSTANTIATE_TEST_SUITE_P(Table, ApprovedSitesRow, ValuesIn(kExpectedSites));

}  // namespace
}  // namespace paylodge
