#include "refhost/books/company_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "refhost/books/fields.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"
#include "refhost/objects/utf8.hpp"
#include "tests/refhost/host_server.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::HasSubstr;

[[nodiscard]] std::string FailureToOpen(const std::wstring& path) {
    try {
        static_cast<void>(CompanyFile::Open(path));
    } catch (const HostError& error) {
        return error.what();
    }
    return "(opened)";
}

void AddAccount(Company& books, std::string_view name) {
    Element account = books.NewRecord(kAccounts, "2025-03-11T10:20:30");
    AddText(account, "Name", name);
    static_cast<void>(books.Add(kAccounts, std::move(account)));
}

TEST(CompanyFile, IsSavedByteForByteAsItWasRead) {
    const TemporaryCompanyFile sample;
    const std::string before = sample.Bytes();
    CompanyFile::Open(sample.Path())->Save();
    EXPECT_EQ(sample.Bytes(), before);
}

TEST(CompanyFile, KeepsWhatWasAdded) {
    const TemporaryCompanyFile sample;
    {
        const auto file = CompanyFile::Open(sample.Path());
        AddAccount(file->Books(), "R\xC3\xA9serve & <more>");
        file->Save();
    }
    const auto file = CompanyFile::Open(sample.Path());
    EXPECT_NE(file->Books().FindByName(kAccounts, "R\xC3\xA9serve & <more>"), nullptr);
    EXPECT_FALSE(std::filesystem::exists(sample.Path() + L".new"));
}

TEST(CompanyFile, IsAsBeforeWhenSavingFails) {
    const TemporaryCompanyFile sample;
    const std::string before = sample.Bytes();
    const std::wstring obstacle = sample.Path() + L".new";
    std::filesystem::create_directory(obstacle);
    const auto file = CompanyFile::Open(sample.Path());
    AddAccount(file->Books(), "Savings");
    EXPECT_THROW(file->Save(), HostError);
    EXPECT_EQ(sample.Bytes(), before);
    std::filesystem::remove(obstacle);
    EXPECT_NO_THROW(file->Save());
    EXPECT_NE(sample.Bytes(), before);
}

TEST(CompanyFile, ThatIsMissingIsNamed) {
    EXPECT_THAT(FailureToOpen(L"no-such-folder\\nothing.lhcompany"), HasSubstr("nothing.lhcompany"));
    EXPECT_FALSE(std::filesystem::exists(L"nothing.lhcompany.lock"));
}

TEST(CompanyFile, OfAnotherContentIsRefused) {
    const TemporaryCompanyFile sample;
    for (const char* text :
         {"", "not XML", "<CompanyFile", "<Other/>", "<CompanyFile/>", "<CompanyFile format=\"2\"/>",
          "<CompanyFile format=\"1\" nextNumber=\"x\"/>", "<CompanyFile format=\"1\">\xFF</CompanyFile>"}) {
        sample.Write(text);
        EXPECT_THAT(FailureToOpen(sample.Path()), HasSubstr("is not a company file")) << text;
    }
    sample.Write("\xEF\xBB\xBF<CompanyFile format=\"1\" nextNumber=\"1\"/>");
    EXPECT_EQ(FailureToOpen(sample.Path()), "(opened)");
}

TEST(CompanyFileLock, RefusesASecondOpenerAndNamesTheFirst) {
    const TemporaryCompanyFile sample;
    const auto file = CompanyFile::Open(sample.Path());
    const std::string failure = FailureToOpen(sample.Path());
    EXPECT_THAT(failure, HasSubstr("in use by process " + std::to_string(::GetCurrentProcessId())));
    EXPECT_THAT(failure, HasSubstr("refhost_tests"));
    EXPECT_THAT(failure, HasSubstr("close it there first"));
}

TEST(CompanyFileLock, GoesWithTheFileThatIsClosed) {
    const TemporaryCompanyFile sample;
    auto file = CompanyFile::Open(sample.Path());
    EXPECT_TRUE(std::filesystem::exists(sample.Path() + L".lock"));
    file.reset();
    EXPECT_FALSE(std::filesystem::exists(sample.Path() + L".lock"));
    EXPECT_EQ(FailureToOpen(sample.Path()), "(opened)");
}

TEST(CompanyFileLock, IsReleasedWhenTheContentIsRefused) {
    const TemporaryCompanyFile sample;
    sample.Write("nothing");
    EXPECT_THAT(FailureToOpen(sample.Path()), HasSubstr("is not a company file"));
    EXPECT_FALSE(std::filesystem::exists(sample.Path() + L".lock"));
}

TEST(CompanyFileLock, LeftBehindIsTakenOver) {
    const TemporaryCompanyFile sample;
    std::ofstream(std::filesystem::path(sample.Path() + L".lock")) << "process 4294967294, gone.exe";
    EXPECT_EQ(FailureToOpen(sample.Path()), "(opened)");
}

// Another process that has a company file open, until it is killed.
class LockHolder {
  public:
    explicit LockHolder(const std::wstring& path) {
        const std::wstring event_name = L"refhost-test-locked-" + std::to_wstring(::GetCurrentProcessId());
        const HANDLE locked = ::CreateEventW(nullptr, TRUE, FALSE, event_name.c_str());
        std::wstring command =
            L'"' + PathBesideProgram(L"refhost_lock_holder.exe") + L"\" \"" + path + L"\" " + event_name;
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        EXPECT_TRUE(::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                     &process_));
        EXPECT_EQ(::WaitForSingleObject(locked, 30'000), WAIT_OBJECT_0);
        ::CloseHandle(locked);
    }
    ~LockHolder() {
        Kill();
        ::CloseHandle(process_.hThread);
        ::CloseHandle(process_.hProcess);
    }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    [[nodiscard]] DWORD Id() const noexcept { return process_.dwProcessId; }

    void Kill() const {
        ::TerminateProcess(process_.hProcess, 1);
        ::WaitForSingleObject(process_.hProcess, 30'000);
    }

  private:
    PROCESS_INFORMATION process_ = {};
};

TEST(CompanyFileLock, OfAProcessThatIsKilledIsTakenOver) {
    const TemporaryCompanyFile sample;
    const LockHolder holder(sample.Path());
    const std::string failure = FailureToOpen(sample.Path());
    EXPECT_THAT(failure, HasSubstr("process " + std::to_string(holder.Id())));
    EXPECT_THAT(failure, HasSubstr("refhost_lock_holder"));
    holder.Kill();
    EXPECT_EQ(FailureToOpen(sample.Path()), "(opened)");
}

TEST(SampleCompanyFile, HasEnoughOfEverything) {
    const TemporaryCompanyFile sample;
    const auto file = CompanyFile::Open(sample.Path());
    const Company& books = file->Books();
    EXPECT_GE(books.Records(kAccounts).size(), 30U);
    EXPECT_GE(books.Records(kCustomers).size(), 20U);
    EXPECT_GE(books.Records(kItems).size(), 20U);
    EXPECT_GE(books.Records(kPaymentMethods).size(), 5U);
    EXPECT_GE(books.Records(kSalesTaxCodes).size(), 2U);
    for (const std::string_view type : kAccountTypes) {
        EXPECT_TRUE(std::ranges::any_of(books.Records(kAccounts), [type](const Element& account) {
            return ChildText(account, "AccountType") == type;
        })) << type;
    }
}

[[nodiscard]] std::int64_t Total(std::span<const Element> records, std::string_view field) {
    std::int64_t cents = 0;
    for (const Element& record : records) {
        cents += ParseCents(ChildText(record, field)).value_or(0);
    }
    return cents;
}

TEST(SampleCompanyFile, HasBalancesThatAgree) {
    const TemporaryCompanyFile sample;
    const auto file = CompanyFile::Open(sample.Path());
    const Company& books = file->Books();
    const std::int64_t open = Total(books.Records(kInvoices), "BalanceRemaining");
    EXPECT_GT(open, 0);
    EXPECT_EQ(Total(books.Records(kCustomers), "Balance"), open);
    EXPECT_EQ(ParseCents(ChildText(*books.FindByName(kAccounts, "Accounts Receivable"), "Balance")), open);
}

TEST(SampleCompanyFile, GivesEachRecordAnIdOfItsOwn) {
    const TemporaryCompanyFile sample;
    const auto file = CompanyFile::Open(sample.Path());
    std::set<std::string_view> ids;
    size_t records = 0;
    for (const ListKind& kind : {kAccounts, kCustomers, kItems, kPaymentMethods, kSalesTaxCodes, kInvoices}) {
        for (const Element& record : file->Books().Records(kind)) {
            ids.insert(ChildText(record, kind.id));
            ++records;
        }
    }
    EXPECT_EQ(ids.size(), records);
    EXPECT_EQ(*FindAttribute(file->Books().Root(), "nextNumber"), std::to_string(records + 1));
}

}  // namespace
}  // namespace paylodge::refhost
