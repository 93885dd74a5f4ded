#include "refhost/objects/host.hpp"

#include <cstdio>
#include <filesystem>
#include <utility>

#include "com/module.hpp"
#include "hostapi/libraries.hpp"
#include "refhost/books/processor.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/watched_vfs.hpp"
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

// Throws HostError.
[[nodiscard]] std::wstring FullPath(const std::wstring& path) {
    const DWORD size = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full_path(size, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), size, full_path.data(), nullptr);
    if (length == 0 || length >= size) {
        throw HostError(Problem::kMissing,
                        "The path " + Quoted(Utf8FromWide(path)) + " of the company file cannot be used.");
    }
    full_path.resize(length);
    return full_path;
}

// Both are full paths.
[[nodiscard]] bool IsSamePath(const std::wstring& left, const std::wstring& right) {
    return ::CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_EQUAL;
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

void Host::Destroy() noexcept {
    WatchSteps({});
    delete std::exchange(g_host, nullptr);
}

Host::Host() {
    WatchSteps([this](FileStep step) { return plan_.TakeFailure(WideFromUtf8(NameOf(step))); });
}

void Host::OpenCompanyFile(const std::wstring& path) {
    std::wstring full_path = FullPath(path);
    if (company_ && IsSamePath(company_->Path(), full_path)) {
        // Read again: the file has to be free for that.
        company_.reset();
    }
    auto books = Company::Open(Utf8FromWide(full_path));
    company_ = std::make_shared<OpenCompany>(std::move(full_path), std::move(books));
}

void Host::CloseCompanyFile() noexcept { company_.reset(); }

std::wstring Host::CompanyFilePath() const { return company_ ? company_->Path() : std::wstring(); }

void Host::RequireCompanyFile(const std::wstring& path) {
    if (!company_) {
        OpenCompanyFile(path);
    } else if (!IsSamePath(company_->Path(), FullPath(path))) {
        throw HostError(Problem::kOtherFileOpen, "The company file " + Quoted(Utf8FromWide(company_->Path())) +
                                                     " is open; close it before a session with another one begins.");
    }
}

std::shared_ptr<OpenCompany> Host::CurrentCompany() {
    if (!company_) {
        const std::wstring path = EnvironmentValue(kCompanyFileVariable);
        if (path.empty()) {
            throw HostError(
                Problem::kNoFileOpen,
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
        const Document document = ReadXml(Utf8FromWide(request));
        CheckEnvelope(document);
        try {
            const auto company = CurrentCompany();
            response = ProcessDocument(document, company->Books(), LocalTime());
        } catch (const HostError& error) {
            response = RefuseRequests(document, error);
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
