// The site lock of the module as shipped, seen from pages.

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <shlwapi.h>
#include <urlmon.h>

#include <array>
#include <string>

#include "tests/component/member_call.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/support/fake_site.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

// What the platform takes for the host of an address.
[[nodiscard]] std::wstring HostOf(const wchar_t* url) {
    std::array<wchar_t, 2084> canonical{};
    std::array<wchar_t, 256> host{};
    DWORD length = 0;
    EXPECT_HRESULT(S_OK, ::CoInternetParseUrl(url, PARSE_CANONICALIZE, URL_FILE_USE_PATHURL, canonical.data(),
                                              static_cast<DWORD>(canonical.size()), &length, 0));
    EXPECT_HRESULT(S_OK, ::CoInternetParseUrl(canonical.data(), PARSE_DOMAIN, 0, host.data(),
                                              static_cast<DWORD>(host.size()), &length, 0));
    return host.data();
}

class ApprovedPages : public Component {
  protected:
    // Whether a page may use the object: a request goes out only then.
    [[nodiscard]] bool IsServed(const FakePage& page) {
        host.requests.clear();
        FakeSite site(page);
        const OnSite on_site(paylodge.Get(), site);
        EXPECT_HRESULT(S_OK, CallSlot(*paylodge.Get(), FindMember("GetItems")).result);
        return !host.requests.empty();
    }
    [[nodiscard]] bool IsServedAt(const wchar_t* url) { return IsServed(PageAt(url)); }
};

TEST_F(ApprovedPages, OfEveryRowAreServed) {
    for (const wchar_t* url : {
             L"https://terminal.paylodge.example/",
             L"https://accounts.paylodge.example/",
             L"https://merchant.ledgerhall.example/",
             L"https://payments.ledgerhall.example/",
             L"https://services.ledgerhall.example/",
             L"http://merchant.ledgerhall.example/",
             L"http://payments.ledgerhall.example/",
             L"http://services.ledgerhall.example/",
             L"http://qa.ledgerhall.example/",
             L"http://dev.ledgerhall.example/",
             L"https://eu.terminal.paylodge.example:8443/shop?x=1",
         }) {
        EXPECT_TRUE(IsServedAt(url)) << url;
    }
}

TEST_F(ApprovedPages, OthersAreNot) {
    for (const wchar_t* url : {
             L"http://terminal.paylodge.example/",
             L"http://accounts.paylodge.example/",
             L"https://qa.ledgerhall.example/",
             L"https://evilterminal.paylodge.example/",
             L"https://terminal.paylodge.example.evil.example/",
             L"https://terminal.paylodge.example@evil.example/",
             L"file:///C:/page.html",
             L"about:blank",
             L"",
         }) {
        EXPECT_FALSE(IsServedAt(url)) << url;
    }
}

// Hosts are compared letter by letter. Wine before version 10 leaves the host of an address as it is written; Windows
// and newer versions write it in lower case, and then it is the approved one.
TEST_F(ApprovedPages, WithCapitalLettersAreServedWhereThePlatformLowersThem) {
    constexpr const wchar_t* kUrl = L"https://Terminal.paylodge.example/";
    const std::wstring name = HostOf(kUrl);
    ASSERT_THAT(name, ::testing::AnyOf(L"Terminal.paylodge.example", L"terminal.paylodge.example"));
    EXPECT_EQ(name == L"terminal.paylodge.example", IsServedAt(kUrl)) << name;
}

TEST_F(ApprovedPages, ZoneDoesNotMatter) {
    for (const DWORD zone : {0U, 1U, 2U, 4U}) {
        EXPECT_FALSE(IsServed({.url = kRefusedPage, .zone = zone}));
        EXPECT_TRUE(IsServed({.url = kApprovedPage, .zone = zone}));
    }
}

TEST_F(ApprovedPages, ObjectWhosePageIsUnknownIsServed) {
    EXPECT_TRUE(IsServed({.url = kRefusedPage, .services_result = E_NOINTERFACE}));
    EXPECT_TRUE(IsServed({.url = kRefusedPage, .browser_result = E_NOINTERFACE}));
    EXPECT_TRUE(IsServed({.url = kRefusedPage, .security_manager_result = E_FAIL}));
    EXPECT_TRUE(IsServed({.url = kRefusedPage, .url_result = E_FAIL}));
    EXPECT_TRUE(IsServed({.url = kRefusedPage, .zone_result = E_FAIL}));
}

TEST_F(ApprovedPages, SiteIsReleasedWithTheObject) {
    FakeSite site;
    ComPtr<IObjectWithSite> with_site;
    ASSERT_HRESULT(S_OK, paylodge.As(with_site));
    EXPECT_HRESULT(S_OK, with_site->SetSite(site.Get()));
    EXPECT_EQ(1, site.references);
    with_site.Reset();
    paylodge.Reset();
    EXPECT_EQ(0, site.references);
}

}  // namespace
}  // namespace paylodge::test
