// This process as Ledgerhall: the reference host with a company file, its libraries, and the component loaded in it.
// Nothing of it is registered.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "com/com_ptr.hpp"
#include "com/owner.hpp"
#include "refhost.h"
#include "workbench/server/messages.hpp"
#include "workbench/server/scripted_object.hpp"

namespace paylodge::workbench {

// What keeps the host from starting, in words for the user.
class CannotStart : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct ClassObjectTraits {
    using Type = DWORD;
    static constexpr Type None() noexcept { return 0; }
    static void Free(Type cookie) noexcept { ::CoRevokeClassObject(cookie); }
};
// A class object that this process offers, until it goes.
using RegisteredClass = Owner<ClassObjectTraits>;

struct ProcessedRequest {
    std::string request;
    std::string response;
};

// Used on the apartment's thread. Text is UTF-8.
class HostProcess {
  public:
    using RunScript = std::function<void(const std::string& browser_instance, std::string script)>;

    // Loads the libraries from the folder of this program, or from the one above it, and opens the company file.
    // Scripts that the component runs in a browser instance go to `run_script`. Throws CannotStart.
    HostProcess(const std::wstring& company_file, RunScript run_script);
    // Closes the company file. No object that was created may be left.
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    // A new object of the component; null for a class that it does not have.
    [[nodiscard]] ComPtr<IDispatch> CreateObject(const CLSID& class_id) const;
    // Whether no object of the component is left.
    [[nodiscard]] bool IsComponentUnused() const;

    void SetBrowserInstance(const std::string& instance);
    // The requests that went to the processor since the last time, and its responses.
    [[nodiscard]] std::vector<ProcessedRequest> TakeTraffic();
    [[nodiscard]] Outcome CallReferenceHost(const std::string& member, CallKind kind,
                                            const std::vector<Value>& arguments);

    [[nodiscard]] std::string CompanyFile() const;
    // Without its folder.
    [[nodiscard]] std::string CompanyFileName() const;
    // The version of the component's file.
    [[nodiscard]] const std::string& ComponentVersion() const noexcept { return version_; }

  private:
    void RegisterHostClasses();
    void OpenCompany(const std::wstring& company_file);
    static void __cdecl OnScript(void* context, const char* browser_instance, const char* script);

    RunScript run_script_;
    // Destroyed last: objects and class objects are released before.
    ModuleHandle reference_host_module_;
    ModuleHandle bridge_library_;
    ModuleHandle component_;
    std::vector<RegisteredClass> classes_;
    ComPtr<IReferenceHost> reference_host_;
    std::string version_;
};

}  // namespace paylodge::workbench
