#include "refhost/objects/company_object.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "com/variant.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/objects/application_locator.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/utf8.hpp"
#include "tests/refhost/objects/host_server.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/source_file.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr HRESULT kPlanned = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x1234);

class DataFileRecords : public HostTest {
  protected:
    [[nodiscard]] ComPtr<IUnknown> Running() const {
        ComPtr<IUnknown> running;
        EXPECT_HRESULT(S_OK, host_.Create<IHostApplicationLocator>(kHostApplicationLocatorClass)
                                 ->GetRunningApplication(running.Receive()));
        return running;
    }

    template <class Interface>
    [[nodiscard]] ComPtr<Interface> Application() const {
        ComPtr<Interface> application;
        EXPECT_HRESULT(S_OK, Running().As(application));
        return application;
    }

    [[nodiscard]] ComPtr<IHostAddInGoodies> Goodies() const {
        ComPtr<IHostAddInGoodies> goodies;
        EXPECT_HRESULT(S_OK, Application<IHostApplication>()->GetAddInGoodies(goodies.Receive()));
        return goodies;
    }

    [[nodiscard]] ComPtr<IHostCompany> Attached() const {
        ComPtr<IHostCompany> company;
        EXPECT_HRESULT(S_OK, Goodies()->AttachToCurrentCompany(company.Receive()));
        return company;
    }

    [[nodiscard]] ComPtr<IHostDataFileRecords> Records(std::wstring_view category = L"Notes") const {
        ComPtr<IHostDataFileRecords> records;
        EXPECT_HRESULT(S_OK, Attached()->GetDataFileRecords(MakeBstr(category).Get(), records.Receive()));
        return records;
    }

    [[nodiscard]] bool Exists(LONG number, std::wstring_view category = L"Notes") const {
        VARIANT_BOOL exists = 7;
        EXPECT_HRESULT(S_OK, Records(category)->Exists(number, &exists));
        EXPECT_TRUE(exists == VARIANT_TRUE || exists == VARIANT_FALSE);
        return exists == VARIANT_TRUE;
    }

    [[nodiscard]] ComPtr<IHostDataFileRecord> Added(LONG number, std::wstring_view category = L"Notes") const {
        ComPtr<IHostDataFileRecord> record;
        EXPECT_HRESULT(S_OK, Records(category)->Add(number, record.Receive()));
        return record;
    }

    [[nodiscard]] ComPtr<IHostDataFileRecord> Item(LONG number, std::wstring_view category = L"Notes") const {
        ComPtr<IHostDataFileRecord> record;
        EXPECT_HRESULT(S_OK, Records(category)->Item(number, record.Receive()));
        return record;
    }

    [[nodiscard]] static ComPtr<IHostPropertyBag> Bag(const ComPtr<IHostDataFileRecord>& record) {
        ComPtr<IHostPropertyBag> bag;
        EXPECT_HRESULT(S_OK, record->GetPropertyBag(bag.Receive()));
        return bag;
    }

    [[nodiscard]] static bool Lock(const ComPtr<IHostDataFileRecord>& record) {
        VARIANT_BOOL is_locked = 7;
        EXPECT_HRESULT(S_OK, record->Lock(&is_locked));
        EXPECT_TRUE(is_locked == VARIANT_TRUE || is_locked == VARIANT_FALSE);
        return is_locked == VARIANT_TRUE;
    }

    [[nodiscard]] static HRESULT Write(const ComPtr<IHostDataFileRecord>& record, std::wstring_view name,
                                       std::wstring_view text) {
        const OwnedVariant value(MakeBstr(text));
        return Bag(record)->Write(MakeBstr(name).Get(), value.Get());
    }

    // The text of a string property; "(none)" for an empty value.
    [[nodiscard]] static std::wstring Read(const ComPtr<IHostDataFileRecord>& record, std::wstring_view name) {
        OwnedVariant value;
        EXPECT_HRESULT(S_OK, Bag(record)->Read(MakeBstr(name).Get(), value.Receive()));
        return value.Type() == VT_EMPTY ? L"(none)" : std::wstring(View(value.Bstr()));
    }

    // A record that is saved with one property.
    void Store(LONG number, std::wstring_view text) const {
        const auto record = Exists(number) ? Item(number) : Added(number);
        ASSERT_TRUE(Lock(record));
        ASSERT_HRESULT(S_OK, Write(record, L"Text", text));
        ASSERT_HRESULT(S_OK, record->Save());
        ASSERT_HRESULT(S_OK, record->Unlock());
    }

    void Reopen() const {
        ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
        ASSERT_HRESULT(S_OK, control_->OpenCompanyFile(MakeBstr(sample_.Path()).Get()));
    }

    void Fail(std::wstring_view call) const {
        ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(call).Get(), static_cast<DOUBLE>(kPlanned), 1));
    }
};

TEST_F(DataFileRecords, AreThereOnceSaved) {
    EXPECT_FALSE(Exists(1));
    Store(1, L"first");
    EXPECT_TRUE(Exists(1));
    Reopen();
    EXPECT_TRUE(Exists(1));
    EXPECT_EQ(Read(Item(1), L"Text"), L"first");
}

TEST_F(DataFileRecords, StandReadablyInTheCompanysText) {
    const auto record = Added(3, L"Vexlor:Notes");
    ASSERT_TRUE(Lock(record));
    ASSERT_HRESULT(S_OK, Write(record, L"Text", L"a & b"));
    ASSERT_HRESULT(S_OK, record->PutDataVersion(1));
    ASSERT_HRESULT(S_OK, record->Save());
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    EXPECT_THAT(ExportText(*sample_.Open()), HasSubstr("<DataFileRecord>\n"
                                                       "      <Category>Vexlor:Notes</Category>\n"
                                                       "      <Number>3</Number>\n"
                                                       "      <DataVersion>1</DataVersion>\n"
                                                       "      <Property>\n"
                                                       "        <Name>Text</Name>\n"
                                                       "        <Type>string</Type>\n"
                                                       "        <Value>a &amp; b</Value>\n"
                                                       "      </Property>\n"
                                                       "    </DataFileRecord>"));
}

TEST_F(DataFileRecords, ThatWereAddedAndNotSavedGoWithTheOpenFile) {
    const std::string before = sample_.Bytes();
    static_cast<void>(Added(1));
    EXPECT_TRUE(Exists(1));
    EXPECT_EQ(Read(Item(1), L"Text"), L"(none)");
    EXPECT_TRUE(sample_.Bytes() == before);
    Reopen();
    EXPECT_FALSE(Exists(1));
}

TEST_F(DataFileRecords, ThatWereAddedAreNotSavedWithOtherChanges) {
    const auto record = Added(1);
    ASSERT_TRUE(Lock(record));
    ASSERT_HRESULT(S_OK, Write(record, L"Text", L"never saved"));
    Store(2, L"second");
    EXPECT_TRUE(sample_.Bytes().find("never saved") == std::string::npos);
    Reopen();
    EXPECT_FALSE(Exists(1));
    EXPECT_TRUE(Exists(2));
}

TEST_F(DataFileRecords, AreKeptApartByCategoryAndNumber) {
    Store(1, L"first");
    EXPECT_FALSE(Exists(1, L"notes"));
    EXPECT_FALSE(Exists(1, L"Notes "));
    EXPECT_FALSE(Exists(-1));
    EXPECT_FALSE(Exists(11));
}

TEST_F(DataFileRecords, AreNeitherAddedTwiceNorFoundWithoutBeingThere) {
    ComPtr<IHostDataFileRecord> record;
    EXPECT_HRESULT(kNoSuchRecord, Records()->Item(1, record.Receive()));
    EXPECT_FALSE(record);
    const auto added = Added(1);
    EXPECT_HRESULT(kRecordExists, Records()->Add(1, record.Receive()));
    EXPECT_FALSE(record);
}

TEST_F(DataFileRecords, KeepWhatIsWrittenToThemselvesUntilSaved) {
    Store(1, L"old");
    const auto writer = Item(1);
    ASSERT_TRUE(Lock(writer));
    ASSERT_HRESULT(S_OK, Write(writer, L"Text", L"new"));
    EXPECT_EQ(Read(writer, L"Text"), L"new");
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
    ASSERT_HRESULT(S_OK, writer->Save());
    EXPECT_EQ(Read(Item(1), L"Text"), L"new");
}

TEST_F(DataFileRecords, ShowWhatOthersSavedBeforeTheLock) {
    Store(1, L"old");
    const auto early = Item(1);
    Store(1, L"new");
    EXPECT_EQ(Read(early, L"Text"), L"old");
    ASSERT_TRUE(Lock(early));
    EXPECT_EQ(Read(early, L"Text"), L"new");
}

TEST_F(DataFileRecords, LetNobodyChangeThemWithoutTheLock) {
    Store(1, L"old");
    const auto record = Item(1);
    EXPECT_HRESULT(kNotLocked, Write(record, L"Text", L"new"));
    EXPECT_HRESULT(kNotLocked, record->PutDataVersion(1));
    EXPECT_HRESULT(kNotLocked, record->Save());
    EXPECT_HRESULT(kNotLocked, record->Delete());
    EXPECT_HRESULT(kNotLocked, record->Unlock());
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
}

TEST_F(DataFileRecords, AreLockedByOneHolderAtATime) {
    Store(1, L"old");
    const auto first = Item(1);
    const auto second = Item(1);
    EXPECT_TRUE(Lock(first));
    EXPECT_TRUE(Lock(first)) << "the holder may ask again";
    EXPECT_FALSE(Lock(second));
    EXPECT_HRESULT(kNotLocked, second->Unlock());
    EXPECT_HRESULT(S_OK, first->Unlock()) << "once, however often it was locked";
    EXPECT_TRUE(Lock(second));
    EXPECT_FALSE(Lock(first));
}

TEST_F(DataFileRecords, AreUnlockedWhenTheHolderGoes) {
    Store(1, L"old");
    {
        const auto holder = Item(1);
        EXPECT_TRUE(Lock(holder));
    }
    EXPECT_TRUE(Lock(Item(1)));
}

TEST_F(DataFileRecords, AreLockedByAnotherUser) {
    Store(1, L"old");
    const OwnedBstr category = MakeBstr(L"Notes");
    EXPECT_HRESULT(kNotLocked, control_->UnlockRecord(category.Get(), 1));
    EXPECT_HRESULT(S_OK, control_->LockRecord(category.Get(), 1));
    const auto record = Item(1);
    EXPECT_FALSE(Lock(record));
    EXPECT_HRESULT(S_OK, control_->UnlockRecord(category.Get(), 1));
    EXPECT_TRUE(Lock(record));
    EXPECT_HRESULT(kNotLocked, control_->LockRecord(category.Get(), 1));
}

TEST_F(DataFileRecords, AreGoneOnceDeleted) {
    Store(1, L"first");
    Store(2, L"second");
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    EXPECT_HRESULT(S_OK, record->Delete());
    EXPECT_HRESULT(S_OK, record->Unlock());
    EXPECT_FALSE(Exists(1));
    Reopen();
    EXPECT_FALSE(Exists(1));
    EXPECT_EQ(Read(Item(2), L"Text"), L"second");
}

TEST_F(DataFileRecords, TakeAPropertyAwayForAnEmptyValue) {
    Store(1, L"first");
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    EXPECT_HRESULT(S_OK, Bag(record)->Write(MakeBstr(L"Text").Get(), VARIANT{}));
    EXPECT_EQ(Read(record, L"Text"), L"(none)");
}

TEST_F(DataFileRecords, RefuseAValueThatTheyCannotKeep) {
    const auto record = Added(1);
    ASSERT_TRUE(Lock(record));
    VARIANT value = {};
    V_VT(&value) = VT_NULL;
    EXPECT_HRESULT(DISP_E_BADVARTYPE, Bag(record)->Write(MakeBstr(L"Text").Get(), value));
    EXPECT_EQ(Read(record, L"Text"), L"(none)");
}

TEST_F(DataFileRecords, RefuseNullAndEmptyNames) {
    const auto record = Added(1);
    ASSERT_TRUE(Lock(record));
    const auto bag = Bag(record);
    for (const OwnedBstr& name : {OwnedBstr(), MakeBstr(L"")}) {
        OwnedVariant value;
        EXPECT_HRESULT(E_INVALIDARG, bag->Read(name.Get(), value.Receive()));
        EXPECT_HRESULT(E_INVALIDARG, bag->Write(name.Get(), value.Get()));
        ComPtr<IHostDataFileRecords> records;
        EXPECT_HRESULT(E_INVALIDARG, Attached()->GetDataFileRecords(name.Get(), records.Receive()));
        EXPECT_FALSE(records);
    }
}

TEST_F(DataFileRecords, ReturnEPointerForANullOutParameter) {
    const auto record = Added(1);
    EXPECT_HRESULT(E_POINTER,
                   host_.Create<IHostApplicationLocator>(kHostApplicationLocatorClass)->GetRunningApplication(nullptr));
    EXPECT_HRESULT(E_POINTER, Application<IHostApplication>()->GetAddInGoodies(nullptr));
    EXPECT_HRESULT(E_POINTER, Application<IHostFolders>()->GetFolder(kLogFolderKind, nullptr));
    EXPECT_HRESULT(E_POINTER, Goodies()->AttachToCurrentCompany(nullptr));
    EXPECT_HRESULT(E_POINTER, Attached()->GetDataFileRecords(MakeBstr(L"Notes").Get(), nullptr));
    EXPECT_HRESULT(E_POINTER, Records()->Exists(1, nullptr));
    EXPECT_HRESULT(E_POINTER, Records()->Item(1, nullptr));
    EXPECT_HRESULT(E_POINTER, Records()->Add(2, nullptr));
    EXPECT_HRESULT(E_POINTER, record->Lock(nullptr));
    EXPECT_HRESULT(E_POINTER, record->GetPropertyBag(nullptr));
    EXPECT_HRESULT(E_POINTER, Bag(record)->Read(MakeBstr(L"Text").Get(), nullptr));
    EXPECT_FALSE(Exists(2));
}

TEST_F(DataFileRecords, FailWholeWhenTheFileCannotBeSaved) {
    Store(1, L"old");
    const std::string before = sample_.Bytes();
    for (const wchar_t* step : {L"CompanyFile.Write", L"CompanyFile.Sync", L"CompanyFile.Commit"}) {
        const auto record = Item(1);
        ASSERT_TRUE(Lock(record));
        ASSERT_HRESULT(S_OK, Write(record, L"Text", L"new"));
        Fail(step);
        EXPECT_HRESULT(kPlanned, record->Save());
        EXPECT_HRESULT(S_OK, record->Unlock());
        EXPECT_EQ(Read(Item(1), L"Text"), L"old");
        EXPECT_TRUE(sample_.Bytes() == before);
    }
    Store(1, L"new");
    Reopen();
    EXPECT_EQ(Read(Item(1), L"Text"), L"new");
}

TEST_F(DataFileRecords, KeepWhatWasWrittenWhenASaveFails) {
    Store(1, L"old");
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    ASSERT_HRESULT(S_OK, Write(record, L"Text", L"new"));
    Fail(L"CompanyFile.Commit");
    EXPECT_HRESULT(kPlanned, record->Save());
    EXPECT_EQ(Read(record, L"Text"), L"new");
    EXPECT_FALSE(Lock(Item(1))) << "it is still locked";
    EXPECT_HRESULT(S_OK, record->Save());
    Reopen();
    EXPECT_EQ(Read(Item(1), L"Text"), L"new");
}

TEST_F(DataFileRecords, AreThereWhenTheirRemovalFails) {
    Store(1, L"old");
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    Fail(L"CompanyFile.Commit");
    EXPECT_HRESULT(kPlanned, record->Delete());
    EXPECT_TRUE(Exists(1));
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
    EXPECT_HRESULT(S_OK, record->Delete());
    EXPECT_FALSE(Exists(1));
}

// The journal is opened by the first change.
TEST_F(DataFileRecords, FailWholeWhenTheJournalCannotBeOpened) {
    Store(1, L"old");
    Reopen();
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    ASSERT_HRESULT(S_OK, Write(record, L"Text", L"new"));
    Fail(L"CompanyFile.Open");
    EXPECT_HRESULT(kPlanned, record->Save());
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
    EXPECT_HRESULT(S_OK, record->Save());
    EXPECT_EQ(Read(Item(1), L"Text"), L"new");
}

TEST_F(DataFileRecords, FailWithEveryResultThatWasPlannedForAStep) {
    Store(1, L"old");
    for (const HRESULT planned : {E_FAIL, E_OUTOFMEMORY, E_UNEXPECTED, static_cast<HRESULT>(0x80070020),
                                  static_cast<HRESULT>(0x80070070), static_cast<HRESULT>(0x80070570)}) {
        for (const wchar_t* step : {L"CompanyFile.Write", L"CompanyFile.Sync", L"CompanyFile.Commit"}) {
            const auto record = Item(1);
            ASSERT_TRUE(Lock(record));
            ASSERT_HRESULT(S_OK, Write(record, L"Text", L"new"));
            ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(step).Get(), planned, 1));
            EXPECT_HRESULT(planned, record->Save());
            EXPECT_HRESULT(S_OK, record->Unlock());
            EXPECT_EQ(Read(Item(1), L"Text"), L"old");
        }
    }
}

TEST_F(DataFileRecords, AreNotReachedWhenOpeningTheFileWasPlannedToFail) {
    const TemporaryCompanyFile other;
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    Fail(L"CompanyFile.Open");
    EXPECT_HRESULT(kPlanned, control_->OpenCompanyFile(MakeBstr(other.Path()).Get()));
    EXPECT_HRESULT(S_OK, control_->OpenCompanyFile(MakeBstr(other.Path()).Get()));
}

TEST_F(DataFileRecords, AnswerThatTheirCompanyWasClosed) {
    Store(1, L"first");
    const auto company = Attached();
    const auto records = Records();
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    const auto bag = Bag(record);
    Reopen();
    ComPtr<IHostDataFileRecords> other_records;
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED,
                   company->GetDataFileRecords(MakeBstr(L"Notes").Get(), other_records.Receive()));
    VARIANT_BOOL answer = 7;
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, records->Exists(1, &answer));
    ComPtr<IHostDataFileRecord> other_record;
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, records->Item(1, other_record.Receive()));
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, records->Add(2, other_record.Receive()));
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, record->Lock(&answer));
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, record->Save());
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, record->Unlock());
    OwnedVariant value;
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, bag->Read(MakeBstr(L"Text").Get(), value.Receive()));
    EXPECT_TRUE(Lock(Item(1))) << "the lock went with the file that was closed";
}

TEST_F(DataFileRecords, NeedACompanyFile) {
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", nullptr);
    ComPtr<IHostCompany> company;
    EXPECT_HRESULT(kNoCompanyOpen, Goodies()->AttachToCurrentCompany(company.Receive()));
    EXPECT_FALSE(company);
    OwnedBstr folder;
    EXPECT_HRESULT(kNoCompanyOpen, Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()));
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", sample_.Path().c_str());
    EXPECT_HRESULT(S_OK, Goodies()->AttachToCurrentCompany(company.Receive()));
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", nullptr);
}

// What a caller's log shows leads to the cause.
TEST_F(DataFileRecords, NeedACompanyFileThatCanBeOpenedAndTellWhyItCannot) {
    const std::string bytes = sample_.Bytes();
    std::string foreign = bytes;
    foreign[68] = 'X';
    std::string newer = bytes;
    newer[63] = 9;
    std::string damaged = bytes;
    damaged.replace(4096 * 5, 3000, 3000, 'x');
    struct Case {
        const std::string& bytes;
        HRESULT result;
    };
    for (const Case& wrong : {Case{foreign, kForeignCompanyFile}, Case{newer, kNewerCompanyFile},
                              Case{damaged, static_cast<HRESULT>(0x80070570)}}) {
        const TemporaryCompanyFile file;
        file.Write(wrong.bytes);
        EXPECT_HRESULT(wrong.result, control_->OpenCompanyFile(MakeBstr(file.Path()).Get()));
    }
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), control_->OpenCompanyFile(MakeBstr(L"nowhere.lhcompany").Get()));
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070005), control_->OpenCompanyFile(MakeBstr(L".").Get()));
    const TemporaryCompanyFile in_use;
    const auto held = in_use.Open();
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070020), control_->OpenCompanyFile(MakeBstr(in_use.Path()).Get()));
    EXPECT_FALSE(Exists(1)) << "the file that was open still is";
}

TEST(ProblemResults, DifferAndStandInTheGuideOfSupport) {
    std::ifstream file(test::SourceFile("docs/host-integration.md"), std::ios::binary);
    const std::string guide{std::istreambuf_iterator<char>(file), {}};
    std::set<HRESULT> results;
    for (const ProblemResult& row : kProblemResults) {
        std::array<char, 16> number{};
        std::snprintf(number.data(), number.size(), "0x%08x", static_cast<unsigned>(row.result));
        EXPECT_THAT(guide, HasSubstr(number.data()));
        EXPECT_TRUE(results.insert(row.result).second) << number.data() << " stands for two problems";
    }
}

TEST_F(DataFileRecords, AreNotChangedInAWriteProtectedFile) {
    Store(1, L"old");
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    ASSERT_TRUE(::SetFileAttributesW(sample_.Path().c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_HRESULT(S_OK, control_->OpenCompanyFile(MakeBstr(sample_.Path()).Get()));
    const auto record = Item(1);
    EXPECT_EQ(Read(record, L"Text"), L"old");
    ASSERT_TRUE(Lock(record));
    ASSERT_HRESULT(S_OK, Write(record, L"Text", L"new"));
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070013), record->Save());
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
    ::SetFileAttributesW(sample_.Path().c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(DataFileRecords, FailInEachCallAsPlanned) {
    Store(1, L"old");
    const auto company = Attached();
    const auto records = Records();
    const auto record = Item(1);
    const auto bag = Bag(record);
    ASSERT_TRUE(Lock(record));
    Fail(L"ApplicationLocator.GetRunningApplication");
    ComPtr<IUnknown> running;
    EXPECT_HRESULT(
        kPlanned,
        host_.Create<IHostApplicationLocator>(kHostApplicationLocatorClass)->GetRunningApplication(running.Receive()));
    Fail(L"Application.GetAddInGoodies");
    ComPtr<IHostAddInGoodies> goodies;
    EXPECT_HRESULT(kPlanned, Application<IHostApplication>()->GetAddInGoodies(goodies.Receive()));
    Fail(L"Application.GetFolder");
    OwnedBstr folder;
    EXPECT_HRESULT(kPlanned, Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()));
    Fail(L"AddInGoodies.AttachToCurrentCompany");
    ComPtr<IHostCompany> other_company;
    EXPECT_HRESULT(kPlanned, Goodies()->AttachToCurrentCompany(other_company.Receive()));
    Fail(L"Company.GetDataFileRecords");
    ComPtr<IHostDataFileRecords> other_records;
    EXPECT_HRESULT(kPlanned, company->GetDataFileRecords(MakeBstr(L"Notes").Get(), other_records.Receive()));
    Fail(L"DataFileRecords.Exists");
    VARIANT_BOOL answer = VARIANT_TRUE;
    EXPECT_HRESULT(kPlanned, records->Exists(1, &answer));
    EXPECT_EQ(answer, VARIANT_FALSE);
    ComPtr<IHostDataFileRecord> other_record;
    Fail(L"DataFileRecords.Item");
    EXPECT_HRESULT(kPlanned, records->Item(1, other_record.Receive()));
    Fail(L"DataFileRecords.Add");
    EXPECT_HRESULT(kPlanned, records->Add(2, other_record.Receive()));
    EXPECT_FALSE(Exists(2));
    Fail(L"DataFileRecord.Lock");
    EXPECT_HRESULT(kPlanned, record->Lock(&answer));
    Fail(L"DataFileRecord.GetPropertyBag");
    ComPtr<IHostPropertyBag> other_bag;
    EXPECT_HRESULT(kPlanned, record->GetPropertyBag(other_bag.Receive()));
    Fail(L"PropertyBag.Write");
    EXPECT_HRESULT(kPlanned, bag->Write(MakeBstr(L"Text").Get(), VARIANT{}));
    Fail(L"PropertyBag.Read");
    OwnedVariant value;
    EXPECT_HRESULT(kPlanned, bag->Read(MakeBstr(L"Text").Get(), value.Receive()));
    Fail(L"DataFileRecord.PutDataVersion");
    EXPECT_HRESULT(kPlanned, record->PutDataVersion(1));
    Fail(L"DataFileRecord.Save");
    EXPECT_HRESULT(kPlanned, record->Save());
    Fail(L"DataFileRecord.Delete");
    EXPECT_HRESULT(kPlanned, record->Delete());
    Fail(L"DataFileRecord.Unlock");
    EXPECT_HRESULT(kPlanned, record->Unlock());
    EXPECT_HRESULT(S_OK, record->Unlock());
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
}

TEST_F(DataFileRecords, NoteTheirCalls) {
    const auto record = Added(1);
    ASSERT_TRUE(Lock(record));
    ASSERT_HRESULT(S_OK, Write(record, L"Text", L"value"));
    EXPECT_THAT(Calls(), ElementsAre("ApplicationLocator.GetRunningApplication()", "Application.GetAddInGoodies()",
                                     "AddInGoodies.AttachToCurrentCompany()", "Company.GetDataFileRecords(\"Notes\")",
                                     "DataFileRecords.Add(1)", "DataFileRecord.Lock()",
                                     "DataFileRecord.GetPropertyBag()", "PropertyBag.Write(\"Text\", \"value\")"));
}

TEST_F(DataFileRecords, KeepNothingAliveOnceReleased) {
    {
        const auto record = Added(1);
        ASSERT_TRUE(Lock(record));
        const auto bag = Bag(record);
    }
    const auto running = Running();
    running->AddRef();
    EXPECT_EQ(running->Release(), 1U);
}

TEST_F(DataFileRecords, AreReachedThroughOneApplicationObject) {
    const auto running = Running();
    ComPtr<IHostApplication> application;
    ComPtr<IHostFolders> folders;
    ComPtr<IUnknown> identity;
    ASSERT_HRESULT(S_OK, running.As(application));
    ASSERT_HRESULT(S_OK, running.As(folders));
    ASSERT_HRESULT(S_OK, folders.As(identity));
    EXPECT_EQ(identity.Get(), running.Get());
}

TEST_F(DataFileRecords, HaveTheirLogsInAFolderBesideTheCompanyFile) {
    OwnedBstr folder;
    ASSERT_HRESULT(S_OK, Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()));
    EXPECT_EQ(View(folder), sample_.Path() + L".logs");
}

TEST_F(DataFileRecords, HaveTheirLogsWhereTheEnvironmentSays) {
    ::SetEnvironmentVariableW(L"LEDGERHALL_LOG_FOLDER", L"C:\\logs here");
    OwnedBstr folder;
    EXPECT_HRESULT(S_OK, Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()));
    ::SetEnvironmentVariableW(L"LEDGERHALL_LOG_FOLDER", nullptr);
    EXPECT_EQ(View(folder), L"C:\\logs here");
    OwnedBstr other;
    EXPECT_HRESULT(E_INVALIDARG, Application<IHostFolders>()->GetFolder(3, other.Receive()));
    EXPECT_FALSE(other);
}

}  // namespace
}  // namespace paylodge::refhost
