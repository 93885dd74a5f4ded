#include "workbench/server/page_site.hpp"

#include <exdisp.h>
#include <servprov.h>
#include <shlguid.h>
#include <urlmon.h>

#include <string>

#include "com/boundary.hpp"
#include "com/bstr.hpp"
#include "com/object_root.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::workbench {
namespace {

// Of a browser only the address is asked for.
class CPageBrowser : public IWebBrowser2 {
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

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP GoBack() override { return E_NOTIMPL; }
    STDMETHODIMP GoForward() override { return E_NOTIMPL; }
    STDMETHODIMP GoHome() override { return E_NOTIMPL; }
    STDMETHODIMP GoSearch() override { return E_NOTIMPL; }
    STDMETHODIMP Navigate(BSTR, VARIANT*, VARIANT*, VARIANT*, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP Refresh() override { return E_NOTIMPL; }
    STDMETHODIMP Refresh2(VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP Stop() override { return E_NOTIMPL; }
    STDMETHODIMP get_Application(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP get_Parent(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP get_Container(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP get_Document(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP get_TopLevelContainer(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Type(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Left(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Left(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP get_Top(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Top(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP get_Width(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Width(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP get_Height(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Height(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP get_LocationName(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Busy(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP Quit() override { return E_NOTIMPL; }
    STDMETHODIMP ClientToWindow(int*, int*) override { return E_NOTIMPL; }
    STDMETHODIMP PutProperty(BSTR, VARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP GetProperty(BSTR, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Name(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_HWND(SHANDLE_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_FullName(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Path(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Visible(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Visible(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_StatusBar(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_StatusBar(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_StatusText(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP put_StatusText(BSTR) override { return E_NOTIMPL; }
    STDMETHODIMP get_ToolBar(int*) override { return E_NOTIMPL; }
    STDMETHODIMP put_ToolBar(int) override { return E_NOTIMPL; }
    STDMETHODIMP get_MenuBar(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_MenuBar(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_FullScreen(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_FullScreen(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP Navigate2(VARIANT*, VARIANT*, VARIANT*, VARIANT*, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryStatusWB(OLECMDID, OLECMDF*) override { return E_NOTIMPL; }
    STDMETHODIMP ExecWB(OLECMDID, OLECMDEXECOPT, VARIANT*, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP ShowBrowserBar(VARIANT*, VARIANT*, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP get_ReadyState(READYSTATE*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Offline(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Offline(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_Silent(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Silent(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_RegisterAsBrowser(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_RegisterAsBrowser(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_RegisterAsDropTarget(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_RegisterAsDropTarget(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_TheaterMode(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_TheaterMode(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_AddressBar(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_AddressBar(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP get_Resizable(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Resizable(VARIANT_BOOL) override { return E_NOTIMPL; }

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
