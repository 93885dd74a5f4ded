#include "workbench/server/page_site.hpp"

#include <exdisp.h>
#include <servprov.h>
#include <shlguid.h>
#include <urlmon.h>

#include <string>

#include "com/boundary.hpp"
#include "com/bstr.hpp"
#include "com/object_root.hpp"
#include "refhost/objects/empty_web_browser.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::workbench {
namespace {

// Of a browser only the address is asked for.
class CPageBrowser : public refhost::EmptyWebBrowser {
  public:
    using Row = InterfaceRow<CPageBrowser>;
    static constexpr std::array kInterfaces = {Row::Of<IWebBrowser2>(), Row::Of<IWebBrowserApp, IWebBrowser2>(),
                                               Row::Of<IWebBrowser, IWebBrowser2>(),
                                               Row::Of<IDispatch, IWebBrowser2>()};

    explicit CPageBrowser(std::wstring address) noexcept : address_(std::move(address)) {}

    STDMETHODIMP get_LocationURL(BSTR* url) override {
        return AtBoundary([&] {
            if (url == nullptr) {
                return E_POINTER;
            }
            *url = MakeBstr(address_).Detach();
            return S_OK;
        });
    }

  protected:
    ~CPageBrowser() = default;

  private:
    std::wstring address_;
};

class CPageSite : public IServiceProvider {
  public:
    using Row = InterfaceRow<CPageSite>;
    static constexpr std::array kInterfaces = {Row::Of<IServiceProvider>()};

    CPageSite(ComPtr<IWebBrowser2> browser, ComPtr<IInternetSecurityManager> security_manager) noexcept
        : browser_(std::move(browser)), security_manager_(std::move(security_manager)) {}

    STDMETHODIMP QueryService(REFGUID service, REFIID id, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (IsEqualGUID(service, SID_SWebBrowserApp)) {
            return browser_->QueryInterface(id, object);
        }
        if (IsEqualGUID(service, SID_SInternetSecurityManager)) {
            return security_manager_->QueryInterface(id, object);
        }
        return E_NOINTERFACE;
    }

  protected:
    ~CPageSite() = default;

  private:
    ComPtr<IWebBrowser2> browser_;
    ComPtr<IInternetSecurityManager> security_manager_;
};

void Check(HRESULT result) {
    if (FAILED(result)) {
        _com_issue_error(result);
    }
}

}  // namespace

ComPtr<IUnknown> MakePageSite(std::string_view address) {
    ComPtr<IInternetSecurityManager> security_manager;
    ComPtr<IWebBrowser2> browser;
    ComPtr<IUnknown> site;
    // The system's own, which knows the zones of this machine.
    Check(::CoInternetCreateSecurityManager(nullptr, security_manager.Receive(), 0));
    Check(ComObject<CPageBrowser>::Create(refhost::WideFromUtf8(address)).As(browser));
    Check(ComObject<CPageSite>::Create(std::move(browser), std::move(security_manager)).As(site));
    return site;
}

}  // namespace paylodge::workbench
