#include "refhost/objects/application_locator.hpp"

#include "refhost/control/call_record.hpp"
#include "refhost/control/fault_plan.hpp"
#include "refhost/objects/company_object.hpp"
#include "refhost/objects/host.hpp"

namespace paylodge::refhost {
namespace {

constexpr const wchar_t* kLogFolderVariable = L"LEDGERHALL_LOG_FOLDER";

[[nodiscard]] std::wstring LogFolder() {
    const std::wstring named = EnvironmentValue(kLogFolderVariable);
    return named.empty() ? Host::Get().CurrentCompany()->Path() + L".logs" : named;
}

class CAddInGoodies : public IHostAddInGoodies {
  public:
    using Row = InterfaceRow<CAddInGoodies>;
    static constexpr std::array kInterfaces = {Row::Of<IUnknown, IHostAddInGoodies>()};

    // E_FAIL with a description when no company file can be opened.
    STDMETHODIMP AttachToCurrentCompany(IHostCompany** company) override {
        return ServeResult(kAttachCall, company,
                           [&] { return Return<CCompany>(company, Host::Get().CurrentCompany()); });
    }

  protected:
    ~CAddInGoodies() = default;
};

class CApplication : public IHostApplication, public IHostFolders {
  public:
    using Row = InterfaceRow<CApplication>;
    static constexpr std::array kInterfaces = {Row::Of<IHostApplication>(), Row::Of<IHostFolders>()};

    STDMETHODIMP GetAddInGoodies(IHostAddInGoodies** goodies) override {
        return ServeResult(kGetGoodiesCall, goodies, [&] { return Return<CAddInGoodies>(goodies); });
    }

    // E_INVALIDARG for any other kind than kLogFolderKind; E_FAIL with a description without a company file.
    STDMETHODIMP GetFolder(LONG kind, BSTR* path) override {
        return ServeResult(
            kGetFolderCall, path, [&] { return kind == kLogFolderKind ? Return(LogFolder(), path) : E_INVALIDARG; },
            kind);
    }

  protected:
    ~CApplication() = default;
};

}  // namespace

HRESULT CApplicationLocator::GetRunningApplication(IUnknown** application) {
    return ServeResult(kGetApplicationCall, application, [&]() -> HRESULT {
        const auto running = ComObject<CApplication>::Create();
        return running ? running->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(application)) : E_OUTOFMEMORY;
    });
}

}  // namespace paylodge::refhost
