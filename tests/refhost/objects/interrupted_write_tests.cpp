// A process that dies while it stores a download time leaves the company file whole, with the old values or the new.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <vector>

#include "com/owner.hpp"
#include "refhost/books/audit.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/books/data_file_records.hpp"
#include "refhost/control/fault_plan.hpp"
#include "tests/refhost/objects/host_server.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::ElementsAre;

constexpr std::string_view kCategory = "Vexlor:MAS:PaylodgeKey";
// More steps than a write can have.
constexpr int kTooManySteps = 200;

// Runs the writer; its exit code.
[[nodiscard]] DWORD Store(const std::wstring& company_file, std::wstring_view account, std::wstring_view time,
                          int last_step) {
    std::wstring command = L'"' + PathBesideProgram(L"download_time_writer.exe") + L"\" \"" + company_file + L"\" ";
    command.append(account).append(L" ").append(time).append(L" ").append(std::to_wstring(last_step));
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    EXPECT_TRUE(
        ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process));
    const Handle thread(process.hThread);
    const Handle started(process.hProcess);
    EXPECT_EQ(::WaitForSingleObject(started.Get(), 60'000), WAIT_OBJECT_0);
    DWORD exit_code = STILL_ACTIVE;
    EXPECT_TRUE(::GetExitCodeProcess(started.Get(), &exit_code));
    return exit_code;
}

// What the company file holds for an account, and whether all else in it is as in the sample.
struct Stored {
    std::optional<PropertyText> account;
    std::optional<PropertyText> time;

    bool operator==(const Stored&) const = default;
};

[[nodiscard]] std::string TextOf(const std::optional<PropertyText>& value) { return value ? value->text : "(none)"; }

void PrintTo(const Stored& stored, std::ostream* output) {
    *output << TextOf(stored.account) << " / " << TextOf(stored.time);
}

[[nodiscard]] Stored Stores(std::string_view account, std::string_view time) {
    const auto value = [](std::string_view text) {
        return text.empty() ? std::nullopt : std::optional(PropertyText{"string", std::string(text)});
    };
    return {value(account), value(time)};
}

// The company's text without its data file records.
[[nodiscard]] std::string WithoutRecords(const std::string& text) {
    return text.substr(0, text.find("  <DataFileRecords>"));
}
[[nodiscard]] std::string WithoutEnd(const std::string& text) { return text.substr(0, text.find("</CompanyFile>")); }

// What the first two records of the file hold. The file has to be whole, with all else as in the sample.
using Records = std::array<Stored, 2>;

[[nodiscard]] Records ReadRecords(const TemporaryCompanyFile& sample) {
    static const TemporaryCompanyFile untouched;
    static const std::string untouched_text = WithoutEnd(ExportText(*untouched.Open()));
    const auto company = sample.Open();
    EXPECT_THAT(Audit(*company), ::testing::IsEmpty());
    EXPECT_EQ(WithoutEnd(WithoutRecords(ExportText(*company))), untouched_text);
    Records records;
    for (std::int32_t number = 1; number <= 2; ++number) {
        const DataFileRecord record = DataFileRecordTable(*company).Content({std::string(kCategory), number});
        records.at(static_cast<size_t>(number) - 1) = {record.Find("MerchantAccountNumber"),
                                                       record.Find("LastPLDownloadTime")};
    }
    return records;
}

// Stores the time again and again from the same beginning, each time in a process that dies one step later, until one
// outlives it. What each left behind, without repetitions; that of the last one is what a whole run leaves.
[[nodiscard]] std::vector<Records> LeftBehind(const TemporaryCompanyFile& sample, std::wstring_view account,
                                              std::wstring_view time) {
    const std::string before = sample.Bytes();
    std::vector<Records> left;
    for (int step = 1; step < kTooManySteps; ++step) {
        sample.Write(before);
        const DWORD exit_code = Store(sample.Path(), account, time, step);
        EXPECT_THAT(exit_code, ::testing::AnyOf(0U, kPlannedExitCode)) << "step " << step;
        if (const Records records = ReadRecords(sample); left.empty() || left.back() != records) {
            left.push_back(records);
        }
        if (exit_code != kPlannedExitCode) {
            EXPECT_GT(step, 20) << "a write has more steps than these";
            return left;
        }
    }
    ADD_FAILURE() << "the writer never got through";
    return left;
}

TEST(InterruptedWrite, OfAKnownAccountLeavesTheOldTimeOrTheNew) {
    const TemporaryCompanyFile sample;
    ASSERT_EQ(Store(sample.Path(), L"4711", L"old", 0), 0U);
    const Stored old_time = Stores("4711", "old");
    const Stored new_time = Stores("4711", "new");
    EXPECT_THAT(LeftBehind(sample, L"4711", L"new"),
                ElementsAre(Records{old_time, Stored()}, Records{new_time, Stored()}));
}

TEST(InterruptedWrite, OfANewAccountLeavesTheOthersAndTheAccountWithItsTimeOrWithoutOrNothing) {
    const TemporaryCompanyFile sample;
    ASSERT_EQ(Store(sample.Path(), L"4711", L"old", 0), 0U);
    const Stored other = Stores("4711", "old");
    EXPECT_THAT(LeftBehind(sample, L"4712", L"new"),
                ElementsAre(Records{other, Stored()}, Records{other, Stores("4712", "")},
                            Records{other, Stores("4712", "new")}));
}

}  // namespace
}  // namespace paylodge::refhost
