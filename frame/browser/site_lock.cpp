#include "frame/browser/site_lock.hpp"

#include <exdisp.h>
#include <servprov.h>
#include <shlguid.h>
#include <shlwapi.h>
#include <urlmon.h>

#include <array>
#include <optional>
#include <string>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"

namespace paylodge {
namespace {

// A page as its browser and the security manager describe it.
struct Page {
    OwnedBstr url;
    DWORD zone;
};

// Nothing when any step fails: no site, no browser behind it, no URL, no security manager.
[[nodiscard]] std::optional<Page> FindPage(IObjectWithSite& object) {
    ComPtr<IServiceProvider> services;
    ComPtr<IWebBrowser2> browser;
    ComPtr<IInternetSecurityManager> security_manager;
    Page page{};
    if (FAILED(object.GetSite(__uuidof(IServiceProvider), services.ReceiveVoid())) || !services ||
        FAILED(services->QueryService(SID_SWebBrowserApp, __uuidof(IWebBrowser2), browser.ReceiveVoid())) || !browser ||
        FAILED(services->QueryService(SID_SInternetSecurityManager, __uuidof(IInternetSecurityManager),
                                      security_manager.ReceiveVoid())) ||
        !security_manager ||  //
        FAILED(browser->get_LocationURL(page.url.Receive())) || !page.url ||
        FAILED(security_manager->MapUrlToZone(page.url.Get(), &page.zone, 0))) {
        return std::nullopt;
    }
    return page;
}

// One part of a URL, as urlmon reads it; nothing when it cannot or the part and its terminating null are longer than
// `capacity`.
template <size_t capacity>
[[nodiscard]] std::optional<std::wstring> ParseUrl(const wchar_t* url, PARSEACTION action, DWORD flags = 0) {
    std::array<wchar_t, capacity> buffer{};
    DWORD length = 0;
    if (FAILED(::CoInternetParseUrl(url, action, flags, buffer.data(), capacity, &length, 0))) {
        return std::nullopt;
    }
    return std::wstring(buffer.data());
}

}  // namespace

bool IsPageApproved(IObjectWithSite& object, std::span<const SiteEntry> table) {
    const std::optional<Page> page = FindPage(object);
    if (!page) {
        return false;
    }
    const auto url = ParseUrl<2084>(page->url.Get(), PARSE_CANONICALIZE, URL_FILE_USE_PATHURL);
    const auto scheme = url ? ParseUrl<32>(url->c_str(), PARSE_SCHEMA) : std::nullopt;
    if (!scheme) {
        return false;
    }
    // A URL without a domain is matched as one with an empty domain.
    const std::wstring domain = ParseUrl<256>(url->c_str(), PARSE_DOMAIN).value_or(std::wstring());
    return IsApproved(table, {.scheme = *scheme, .domain = domain, .zone = page->zone});
}

bool HasPage(IObjectWithSite& object) { return FindPage(object).has_value(); }

}  // namespace paylodge
