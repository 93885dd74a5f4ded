#include "refhost/host.hpp"

#include <cstdio>
#include <utility>

#include "refhost/processor.hpp"
#include "refhost/utf8.hpp"
#include "refhost/xml_reader.hpp"

namespace paylodge::refhost {
namespace {

constexpr const wchar_t* kCompanyFileVariable = L"LEDGERHALL_COMPANY_FILE";

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
        g_host = new Host;
    }
    return *g_host;
}

bool Host::Exists() noexcept { return g_host != nullptr; }

void Host::Destroy() noexcept { delete std::exchange(g_host, nullptr); }

void Host::OpenCompanyFile(const std::wstring& path) {
    if (file_ && IsSamePath(file_->Path(), path)) {
        // Read again: the lock has to be free for that.
        file_.reset();
    }
    file_ = CompanyFile::Open(path);
}

void Host::CloseCompanyFile() noexcept { file_.reset(); }

std::wstring Host::CompanyFilePath() const { return file_ ? file_->Path() : std::wstring(); }

void Host::RequireCompanyFile(const std::wstring& path) {
    if (!file_) {
        OpenCompanyFile(path);
    } else if (!IsSamePath(file_->Path(), path)) {
        throw HostError("The company file " + Quoted(Utf8FromWide(file_->Path())) +
                        " is open; close it before a session with another one begins.");
    }
}

std::wstring Host::Process(std::wstring_view request) {
    Element response;
    try {
        const Document document = ReadXml(request);
        CheckEnvelope(document);
        try {
            CompanyFile& file = OpenFile();
            response = ProcessDocument(document, file.Books(), LocalTime(), [&file] { file.Save(); });
        } catch (const RefusedRequest& refused) {
            response = RefuseRequests(document, refused.GetStatus());
        }
    } catch (const RefusedRequest& refused) {
        response = ErrorResponse(refused.GetStatus());
    }
    return WideFromUtf8(ResponseText(response));
}

std::wstring Host::NewTicket() { return L"ticket-" + std::to_wstring(++last_ticket_); }

CompanyFile& Host::OpenFile() {
    if (file_) {
        return *file_;
    }
    const std::wstring path = EnvironmentValue(kCompanyFileVariable);
    if (path.empty()) {
        throw RefusedRequest(Code::kNoCompanyFile,
                             "No company file is open: open one with OpenCompanyFile of the class "
                             "Ledgerhall.ReferenceHost, or name one in the environment variable "
                             "LEDGERHALL_COMPANY_FILE.");
    }
    try {
        OpenCompanyFile(path);
    } catch (const HostError& error) {
        throw RefusedRequest(Code::kNoCompanyFile, error.what());
    }
    return *file_;
}

std::wstring EnvironmentValue(const wchar_t* name) {
    std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

}  // namespace paylodge::refhost
