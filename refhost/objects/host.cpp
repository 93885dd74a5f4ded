#include "refhost/objects/host.hpp"

#include <cstdio>
#include <filesystem>
#include <utility>

#include "com/module.hpp"
#include "hostapi/libraries.hpp"
#include "refhost/books/processor.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

constexpr const wchar_t* kCompanyFileVariable = L"LEDGERHALL_COMPANY_FILE";

// The component takes its host's libraries from the process that it is in, as Ledgerhall's has them loaded: here they
// are the ones beside this module. They stay loaded until the process ends.
void LoadOwnLibraries() {
    const auto folder = std::filesystem::path(Module::Path()).parent_path();
    for (const wchar_t* const name : {kUtilityLibrary, kFeatureFlagLibrary}) {
        static_cast<void>(::LoadLibraryW((folder / name).c_str()));
    }
}

// Plain data, so that nothing is run for it when the module goes.
Host* g_host = nullptr;

[[nodiscard]] std::string LocalTime() {
    SYSTEMTIME time = {};
    ::GetLocalTime(&time);
    char text[64] = {};
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", time.wYear, time.wMonth, time.wDay, time.wHour,
                  time.wMinute, time.wSecond);
    return text;
}

}  // namespace

Host& Host::Get() {
    if (g_host == nullptr) {
        LoadOwnLibraries();
        g_host = new Host;
    }
    return *g_host;
}

bool Host::Exists() noexcept { return g_host != nullptr; }

void Host::Destroy() noexcept { delete std::exchange(g_host, nullptr); }

void OpenCompany::Save() const {
    file_->Save([this](std::wstring_view step) {
        if (Host::Get().Plan().TakeFailure(step)) {
            throw HostError("The company file " + Quoted(Utf8FromWide(file_->Path())) + " cannot be saved: the step " +
                            Utf8FromWide(step) + " was planned to fail.");
        }
    });
}

void Host::OpenCompanyFile(const std::wstring& path) {
    if (company_ && IsSamePath(company_->Path(), path)) {
        // Read again: the lock has to be free for that.
        company_.reset();
    }
    company_ = std::make_shared<OpenCompany>(CompanyFile::Open(path));
}

void Host::CloseCompanyFile() noexcept { company_.reset(); }

std::wstring Host::CompanyFilePath() const { return company_ ? company_->Path() : std::wstring(); }

void Host::RequireCompanyFile(const std::wstring& path) {
    if (!company_) {
        OpenCompanyFile(path);
    } else if (!IsSamePath(company_->Path(), path)) {
        throw HostError("The company file " + Quoted(Utf8FromWide(company_->Path())) +
                        " is open; close it before a session with another one begins.");
    }
}

std::shared_ptr<OpenCompany> Host::CurrentCompany() {
    if (!company_) {
        const std::wstring path = EnvironmentValue(kCompanyFileVariable);
        if (path.empty()) {
            throw HostError(
                "No company file is open: open one with OpenCompanyFile of the class Ledgerhall.ReferenceHost, or name "
                "one in the environment variable LEDGERHALL_COMPANY_FILE.");
        }
        OpenCompanyFile(path);
    }
    return company_;
}

std::wstring Host::Process(std::wstring_view request) {
    Element response;
    try {
        const Document document = ReadXml(request);
        CheckEnvelope(document);
        try {
            const auto company = CurrentCompany();
            response = ProcessDocument(document, company->Books(), LocalTime(), [&company] { company->Save(); });
        } catch (const HostError& error) {
            response = RefuseRequests(document, {Code::kNoCompanyFile, error.what()});
        }
    } catch (const RefusedRequest& refused) {
        response = ErrorResponse(refused.GetStatus());
    }
    return WideFromUtf8(ResponseText(response));
}

std::wstring Host::NewTicket() { return L"ticket-" + std::to_wstring(++last_ticket_); }

std::wstring EnvironmentValue(const wchar_t* name) {
    std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

}  // namespace paylodge::refhost
