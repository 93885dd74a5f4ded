// The one host of the process: the company file that it has open, what it was asked, and what was planned for it.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/company.hpp"
#include "refhost/books/data_file_records.hpp"
#include "refhost/control/fault_plan.hpp"

namespace paylodge::refhost {

struct RecordedRequest {
    std::wstring request;
    // As it left the host; empty when the call failed or returned nothing.
    std::wstring response;
};

// A company with what the host knows of it while it is open.
class OpenCompany {
  public:
    OpenCompany(std::wstring path, std::unique_ptr<Company> books) noexcept
        : path_(std::move(path)), books_(std::move(books)), records_(*books_) {}

    // The full path of the company file.
    [[nodiscard]] const std::wstring& Path() const noexcept { return path_; }
    [[nodiscard]] Company& Books() noexcept { return *books_; }
    [[nodiscard]] DataFileRecordTable& Records() noexcept { return records_; }

  private:
    std::wstring path_;
    std::unique_ptr<Company> books_;
    DataFileRecordTable records_;
};

// Used on the host's user-interface thread only, as all of its objects are.
class Host {
  public:
    // Made on first use.
    [[nodiscard]] static Host& Get();
    [[nodiscard]] static bool Exists() noexcept;
    // To be called when the module is unloaded.
    static void Destroy() noexcept;

    // Opens the file in place of the one that is open. Throws HostError; the old one stays open then.
    void OpenCompanyFile(const std::wstring& path);
    void CloseCompanyFile() noexcept;
    // The full path; empty when none is open.
    [[nodiscard]] std::wstring CompanyFilePath() const;
    // Makes sure that this file is the one that is open. Throws HostError when another one is, or it cannot be opened.
    void RequireCompanyFile(const std::wstring& path);

    // The company that is open; when none is, the file that the environment names is opened. Throws HostError. Who
    // keeps it for longer than a call keeps a weak reference, so that it goes when it is closed.
    [[nodiscard]] std::shared_ptr<OpenCompany> CurrentCompany();

    // The response to a request document; errors of every kind are responses, too.
    [[nodiscard]] std::wstring Process(std::wstring_view request);

    [[nodiscard]] FaultPlan& Plan() noexcept { return plan_; }
    // One readable line for each call, and the texts of each ProcessRequest.
    [[nodiscard]] std::vector<std::wstring>& Calls() noexcept { return calls_; }
    [[nodiscard]] std::vector<RecordedRequest>& RecordedRequests() noexcept { return recorded_requests_; }

    // No two are alike.
    [[nodiscard]] std::wstring NewTicket();

  private:
    Host();

    std::shared_ptr<OpenCompany> company_;
    FaultPlan plan_;
    std::vector<std::wstring> calls_;
    std::vector<RecordedRequest> recorded_requests_;
    unsigned last_ticket_ = 0;
};

// The value of an environment variable; empty when it is not set.
[[nodiscard]] std::wstring EnvironmentValue(const wchar_t* name);

}  // namespace paylodge::refhost
