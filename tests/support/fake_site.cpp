#include "tests/support/fake_site.hpp"

#include <exdisp.h>
#include <gtest/gtest.h>
#include <servprov.h>
#include <shlguid.h>
#include <urlmon.h>

#include "com/ansi_text.hpp"
#include "com/bstr.hpp"
#include "refhost/objects/empty_web_browser.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

// An interface of the fake: the object lives on the stack and only counts who holds it.
template <class Base, class Interface>
class Counted : public Base {
  public:
    explicit Counted(FakeSite& site) : site_(site) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, __uuidof(Interface));
        *object = is_known ? static_cast<Interface*>(this) : nullptr;
        return is_known ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++site_.references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--site_.references); }

  protected:
    ~Counted() = default;
    FakeSite& site_;
};

class Browser final : public Counted<refhost::EmptyWebBrowser, IWebBrowser2> {
  public:
    using Counted::Counted;

    STDMETHODIMP get_LocationURL(BSTR* url) override {
        site_.calls.emplace_back("url");
        if (FAILED(site_.page.url_result)) {
            return site_.page.url_result;
        }
        *url = site_.page.has_url ? MakeBstr(site_.page.url).Detach() : nullptr;
        return site_.page.url_result;
    }
};

class SecurityManager final : public Counted<IInternetSecurityManager, IInternetSecurityManager> {
  public:
    using Counted::Counted;

    STDMETHODIMP MapUrlToZone(LPCWSTR url, DWORD* zone, DWORD flags) override {
        site_.calls.push_back("zone of " + AnsiFromWide(url) + " with flags " + std::to_string(flags));
        if (SUCCEEDED(site_.page.zone_result)) {
            *zone = site_.page.zone;
        }
        return site_.page.zone_result;
    }
    STDMETHODIMP SetSecuritySite(IInternetSecurityMgrSite*) override { return E_NOTIMPL; }
    STDMETHODIMP GetSecuritySite(IInternetSecurityMgrSite**) override { return E_NOTIMPL; }
    STDMETHODIMP GetSecurityId(LPCWSTR, BYTE*, DWORD*, DWORD_PTR) override { return E_NOTIMPL; }
    STDMETHODIMP ProcessUrlAction(LPCWSTR, DWORD, BYTE*, DWORD, BYTE*, DWORD, DWORD, DWORD) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP QueryCustomPolicy(LPCWSTR, REFGUID, BYTE**, DWORD*, BYTE*, DWORD, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP SetZoneMapping(DWORD, LPCWSTR, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP GetZoneMappings(DWORD, IEnumString**, DWORD) override { return E_NOTIMPL; }
};

class Site final : public Counted<IServiceProvider, IServiceProvider> {
  public:
    explicit Site(FakeSite& site) : Counted(site), browser_(site), security_manager_(site) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (IsEqualIID(id, __uuidof(IServiceProvider))) {
            site_.calls.emplace_back("services");
            if (FAILED(site_.page.services_result)) {
                *object = nullptr;
                return site_.page.services_result;
            }
        }
        return Counted::QueryInterface(id, object);
    }

    STDMETHODIMP QueryService(REFGUID service, REFIID id, void** object) override {
        *object = nullptr;
        if (IsEqualGUID(service, SID_SWebBrowserApp) && IsEqualIID(id, __uuidof(IWebBrowser2))) {
            site_.calls.emplace_back("browser");
            return Answer(site_.page.browser_result, site_.page.has_browser, browser_, id, object);
        }
        if (IsEqualGUID(service, SID_SInternetSecurityManager) && IsEqualIID(id, __uuidof(IInternetSecurityManager))) {
            site_.calls.emplace_back("security manager");
            return Answer(site_.page.security_manager_result, site_.page.has_security_manager, security_manager_, id,
                          object);
        }
        site_.calls.emplace_back("an unknown service");
        return E_NOINTERFACE;
    }

  private:
    static HRESULT Answer(HRESULT result, bool is_there, IUnknown& part, REFIID id, void** object) {
        return SUCCEEDED(result) && is_there ? part.QueryInterface(id, object) : result;
    }

    Browser browser_;
    SecurityManager security_manager_;
};

}  // namespace

struct FakeSite::Parts {
    explicit Parts(FakeSite& fake) : site(fake) {}
    Site site;
};

FakeSite::FakeSite(FakePage page_at_start) : page(std::move(page_at_start)), parts_(std::make_unique<Parts>(*this)) {}

FakeSite::~FakeSite() { EXPECT_EQ(0, references); }

IUnknown* FakeSite::Get() noexcept { return &parts_->site; }

OnSite::OnSite(IUnknown* object, FakeSite& site) {
    EXPECT_HRESULT(S_OK, object->QueryInterface(__uuidof(IObjectWithSite), object_.ReceiveVoid()));
    EXPECT_HRESULT(S_OK, object_->SetSite(site.Get()));
}

OnSite::~OnSite() { EXPECT_HRESULT(S_OK, object_->SetSite(nullptr)); }

}  // namespace paylodge::test
