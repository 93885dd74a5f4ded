// A fake of the site that a browser hands to the objects of a page: services, browser and security manager.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <memory>
#include <string>
#include <vector>

#include "com/com_ptr.hpp"

namespace paylodge::test {

// What the steps from the site to the page's URL and zone return. An object that is missing comes as null with S_OK.
struct FakePage {
    std::wstring url = L"https://terminal.paylodge.example/";
    DWORD zone = 3;

    HRESULT services_result = S_OK;
    HRESULT browser_result = S_OK;
    bool has_browser = true;
    HRESULT security_manager_result = S_OK;
    bool has_security_manager = true;
    HRESULT url_result = S_OK;
    bool has_url = true;
    HRESULT zone_result = S_OK;
};

inline constexpr const wchar_t* kApprovedPage = L"https://terminal.paylodge.example/page";
inline constexpr const wchar_t* kRefusedPage = L"https://elsewhere.example/page";

// Lives on the test's stack. When it goes, everything that was handed out has to have come back.
class FakeSite {
  public:
    explicit FakeSite(FakePage page = {});
    ~FakeSite();
    FakeSite(const FakeSite&) = delete;
    FakeSite& operator=(const FakeSite&) = delete;

    FakePage page;
    // What was asked, in order: `services`, `browser`, `security manager`, `url`, `zone of URL with flags 0`.
    std::vector<std::string> calls;
    // References that others hold on the site, its browser and its security manager.
    long references = 0;

    // The site itself, without a reference.
    [[nodiscard]] IUnknown* Get() noexcept;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

// A site whose page is at this URL.
[[nodiscard]] inline FakePage PageAt(const wchar_t* url) { return {.url = url}; }

// Puts an object on a site for a while.
class OnSite {
  public:
    OnSite(IUnknown* object, FakeSite& site);
    ~OnSite();
    OnSite(const OnSite&) = delete;
    OnSite& operator=(const OnSite&) = delete;

  private:
    ComPtr<IObjectWithSite> object_;
};

}  // namespace paylodge::test
