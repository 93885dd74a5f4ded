#include "refhost/objects/company_object.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "com/variant.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/objects/application_locator.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/utf8.hpp"
#include "tests/refhost/objects/host_server.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr HRESULT kPlanned = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x1234);

class DataFileRecords : public HostTest {
  protected:
    [[nodiscard]] ComPtr<IUnknown> Running() const {
        ComPtr<IUnknown> running;
        EXPECT_EQ(host_.Create<IHostApplicationLocator>(kHostApplicationLocatorClass)
                      ->GetRunningApplication(running.Receive()),
                  S_OK);
        return running;
    }

    template <class Interface>
    [[nodiscard]] ComPtr<Interface> Application() const {
        ComPtr<Interface> application;
        EXPECT_EQ(Running().As(application), S_OK);
        return application;
    }

    [[nodiscard]] ComPtr<IHostAddInGoodies> Goodies() const {
        ComPtr<IHostAddInGoodies> goodies;
        EXPECT_EQ(Application<IHostApplication>()->GetAddInGoodies(goodies.Receive()), S_OK);
        return goodies;
    }

    [[nodiscard]] ComPtr<IHostCompany> Attached() const {
        ComPtr<IHostCompany> company;
        EXPECT_EQ(Goodies()->AttachToCurrentCompany(company.Receive()), S_OK);
        return company;
    }

    [[nodiscard]] ComPtr<IHostDataFileRecords> Records(std::wstring_view category = L"Notes") const {
        ComPtr<IHostDataFileRecords> records;
        EXPECT_EQ(Attached()->GetDataFileRecords(MakeBstr(category).Get(), records.Receive()), S_OK);
        return records;
    }

    [[nodiscard]] bool Exists(LONG number, std::wstring_view category = L"Notes") const {
        VARIANT_BOOL exists = 7;
        EXPECT_EQ(Records(category)->Exists(number, &exists), S_OK);
        EXPECT_TRUE(exists == VARIANT_TRUE || exists == VARIANT_FALSE);
        return exists == VARIANT_TRUE;
    }

    [[nodiscard]] ComPtr<IHostDataFileRecord> Added(LONG number, std::wstring_view category = L"Notes") const {
        ComPtr<IHostDataFileRecord> record;
        EXPECT_EQ(Records(category)->Add(number, record.Receive()), S_OK);
        return record;
    }

    [[nodiscard]] ComPtr<IHostDataFileRecord> Item(LONG number, std::wstring_view category = L"Notes") const {
        ComPtr<IHostDataFileRecord> record;
        EXPECT_EQ(Records(category)->Item(number, record.Receive()), S_OK);
        return record;
    }

    [[nodiscard]] static ComPtr<IHostPropertyBag> Bag(const ComPtr<IHostDataFileRecord>& record) {
        ComPtr<IHostPropertyBag> bag;
        EXPECT_EQ(record->GetPropertyBag(bag.Receive()), S_OK);
        return bag;
    }

    [[nodiscard]] static bool Lock(const ComPtr<IHostDataFileRecord>& record) {
        VARIANT_BOOL is_locked = 7;
        EXPECT_EQ(record->Lock(&is_locked), S_OK);
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
        EXPECT_EQ(Bag(record)->Read(MakeBstr(name).Get(), value.Receive()), S_OK);
        return value.Type() == VT_EMPTY ? L"(none)" : std::wstring(View(value.Bstr()));
    }

    // A record that is saved with one property.
    void Store(LONG number, std::wstring_view text) const {
        const auto record = Exists(number) ? Item(number) : Added(number);
        ASSERT_TRUE(Lock(record));
        ASSERT_EQ(Write(record, L"Text", text), S_OK);
        ASSERT_EQ(record->Save(), S_OK);
        ASSERT_EQ(record->Unlock(), S_OK);
    }

    void Reopen() const {
        ASSERT_EQ(control_->CloseCompanyFile(), S_OK);
        ASSERT_EQ(control_->OpenCompanyFile(MakeBstr(sample_.Path()).Get()), S_OK);
    }

    void Fail(std::wstring_view call) const {
        ASSERT_EQ(control_->FailCall(MakeBstr(call).Get(), static_cast<DOUBLE>(kPlanned), 1), S_OK);
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
    ASSERT_EQ(Write(record, L"Text", L"a & b"), S_OK);
    ASSERT_EQ(record->PutDataVersion(1), S_OK);
    ASSERT_EQ(record->Save(), S_OK);
    ASSERT_EQ(control_->CloseCompanyFile(), S_OK);
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
    ASSERT_EQ(Write(record, L"Text", L"never saved"), S_OK);
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
    EXPECT_EQ(Records()->Item(1, record.Receive()), kNoSuchRecord);
    EXPECT_FALSE(record);
    const auto added = Added(1);
    EXPECT_EQ(Records()->Add(1, record.Receive()), kRecordExists);
    EXPECT_FALSE(record);
}

TEST_F(DataFileRecords, KeepWhatIsWrittenToThemselvesUntilSaved) {
    Store(1, L"old");
    const auto writer = Item(1);
    ASSERT_TRUE(Lock(writer));
    ASSERT_EQ(Write(writer, L"Text", L"new"), S_OK);
    EXPECT_EQ(Read(writer, L"Text"), L"new");
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
    ASSERT_EQ(writer->Save(), S_OK);
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
    EXPECT_EQ(Write(record, L"Text", L"new"), kNotLocked);
    EXPECT_EQ(record->PutDataVersion(1), kNotLocked);
    EXPECT_EQ(record->Save(), kNotLocked);
    EXPECT_EQ(record->Delete(), kNotLocked);
    EXPECT_EQ(record->Unlock(), kNotLocked);
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
}

TEST_F(DataFileRecords, AreLockedByOneHolderAtATime) {
    Store(1, L"old");
    const auto first = Item(1);
    const auto second = Item(1);
    EXPECT_TRUE(Lock(first));
    EXPECT_TRUE(Lock(first)) << "the holder may ask again";
    EXPECT_FALSE(Lock(second));
    EXPECT_EQ(second->Unlock(), kNotLocked);
    EXPECT_EQ(first->Unlock(), S_OK) << "once, however often it was locked";
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
    EXPECT_EQ(control_->UnlockRecord(category.Get(), 1), kNotLocked);
    EXPECT_EQ(control_->LockRecord(category.Get(), 1), S_OK);
    const auto record = Item(1);
    EXPECT_FALSE(Lock(record));
    EXPECT_EQ(control_->UnlockRecord(category.Get(), 1), S_OK);
    EXPECT_TRUE(Lock(record));
    EXPECT_EQ(control_->LockRecord(category.Get(), 1), kNotLocked);
}

TEST_F(DataFileRecords, AreGoneOnceDeleted) {
    Store(1, L"first");
    Store(2, L"second");
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    EXPECT_EQ(record->Delete(), S_OK);
    EXPECT_EQ(record->Unlock(), S_OK);
    EXPECT_FALSE(Exists(1));
    Reopen();
    EXPECT_FALSE(Exists(1));
    EXPECT_EQ(Read(Item(2), L"Text"), L"second");
}

TEST_F(DataFileRecords, TakeAPropertyAwayForAnEmptyValue) {
    Store(1, L"first");
    const auto record = Item(1);
    ASSERT_TRUE(Lock(record));
    EXPECT_EQ(Bag(record)->Write(MakeBstr(L"Text").Get(), VARIANT{}), S_OK);
    EXPECT_EQ(Read(record, L"Text"), L"(none)");
}

TEST_F(DataFileRecords, RefuseAValueThatTheyCannotKeep) {
    const auto record = Added(1);
    ASSERT_TRUE(Lock(record));
    VARIANT value = {};
    V_VT(&value) = VT_NULL;
    EXPECT_EQ(Bag(record)->Write(MakeBstr(L"Text").Get(), value), DISP_E_BADVARTYPE);
    EXPECT_EQ(Read(record, L"Text"), L"(none)");
}

TEST_F(DataFileRecords, RefuseNullAndEmptyNames) {
    const auto record = Added(1);
    ASSERT_TRUE(Lock(record));
    const auto bag = Bag(record);
    for (const OwnedBstr& name : {OwnedBstr(), MakeBstr(L"")}) {
        OwnedVariant value;
        EXPECT_EQ(bag->Read(name.Get(), value.Receive()), E_INVALIDARG);
        EXPECT_EQ(bag->Write(name.Get(), value.Get()), E_INVALIDARG);
        ComPtr<IHostDataFileRecords> records;
        EXPECT_EQ(Attached()->GetDataFileRecords(name.Get(), records.Receive()), E_INVALIDARG);
        EXPECT_FALSE(records);
    }
}

TEST_F(DataFileRecords, AnswerAPointerErrorWithoutAPlaceForTheResult) {
    const auto record = Added(1);
    EXPECT_EQ(host_.Create<IHostApplicationLocator>(kHostApplicationLocatorClass)->GetRunningApplication(nullptr),
              E_POINTER);
    EXPECT_EQ(Application<IHostApplication>()->GetAddInGoodies(nullptr), E_POINTER);
    EXPECT_EQ(Application<IHostFolders>()->GetFolder(kLogFolderKind, nullptr), E_POINTER);
    EXPECT_EQ(Goodies()->AttachToCurrentCompany(nullptr), E_POINTER);
    EXPECT_EQ(Attached()->GetDataFileRecords(MakeBstr(L"Notes").Get(), nullptr), E_POINTER);
    EXPECT_EQ(Records()->Exists(1, nullptr), E_POINTER);
    EXPECT_EQ(Records()->Item(1, nullptr), E_POINTER);
    EXPECT_EQ(Records()->Add(2, nullptr), E_POINTER);
    EXPECT_EQ(record->Lock(nullptr), E_POINTER);
    EXPECT_EQ(record->GetPropertyBag(nullptr), E_POINTER);
    EXPECT_EQ(Bag(record)->Read(MakeBstr(L"Text").Get(), nullptr), E_POINTER);
    EXPECT_FALSE(Exists(2));
}

TEST_F(DataFileRecords, FailWholeWhenTheFileCannotBeSaved) {
    Store(1, L"old");
    const std::string before = sample_.Bytes();
    for (const wchar_t* step : {L"CompanyFile.Write", L"CompanyFile.Sync", L"CompanyFile.Commit"}) {
        const auto record = Item(1);
        ASSERT_TRUE(Lock(record));
        ASSERT_EQ(Write(record, L"Text", L"new"), S_OK);
        Fail(step);
        EXPECT_EQ(record->Save(), kPlanned);
        EXPECT_EQ(record->Unlock(), S_OK);
        EXPECT_EQ(Read(Item(1), L"Text"), L"old");
        EXPECT_TRUE(sample_.Bytes() == before);
    }
    Store(1, L"new");
    Reopen();
    EXPECT_EQ(Read(Item(1), L"Text"), L"new");
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
    EXPECT_EQ(company->GetDataFileRecords(MakeBstr(L"Notes").Get(), other_records.Receive()), CO_E_OBJNOTCONNECTED);
    VARIANT_BOOL answer = 7;
    EXPECT_EQ(records->Exists(1, &answer), CO_E_OBJNOTCONNECTED);
    ComPtr<IHostDataFileRecord> other_record;
    EXPECT_EQ(records->Item(1, other_record.Receive()), CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(records->Add(2, other_record.Receive()), CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(record->Lock(&answer), CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(record->Save(), CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(record->Unlock(), CO_E_OBJNOTCONNECTED);
    OwnedVariant value;
    EXPECT_EQ(bag->Read(MakeBstr(L"Text").Get(), value.Receive()), CO_E_OBJNOTCONNECTED);
    EXPECT_TRUE(Lock(Item(1))) << "the lock went with the file that was closed";
}

TEST_F(DataFileRecords, NeedACompanyFile) {
    ASSERT_EQ(control_->CloseCompanyFile(), S_OK);
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", nullptr);
    ComPtr<IHostCompany> company;
    EXPECT_EQ(Goodies()->AttachToCurrentCompany(company.Receive()), kNoCompanyOpen);
    EXPECT_FALSE(company);
    OwnedBstr folder;
    EXPECT_EQ(Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()), kNoCompanyOpen);
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", sample_.Path().c_str());
    EXPECT_EQ(Goodies()->AttachToCurrentCompany(company.Receive()), S_OK);
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
        EXPECT_EQ(control_->OpenCompanyFile(MakeBstr(file.Path()).Get()), wrong.result);
    }
    EXPECT_EQ(control_->OpenCompanyFile(MakeBstr(L"nowhere.lhcompany").Get()), static_cast<HRESULT>(0x80070002));
    const TemporaryCompanyFile in_use;
    const auto held = in_use.Open();
    EXPECT_EQ(control_->OpenCompanyFile(MakeBstr(in_use.Path()).Get()), static_cast<HRESULT>(0x80070020));
    EXPECT_FALSE(Exists(1)) << "the file that was open still is";
}

TEST_F(DataFileRecords, AreNotChangedInAWriteProtectedFile) {
    Store(1, L"old");
    ASSERT_EQ(control_->CloseCompanyFile(), S_OK);
    ASSERT_TRUE(::SetFileAttributesW(sample_.Path().c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_EQ(control_->OpenCompanyFile(MakeBstr(sample_.Path()).Get()), S_OK);
    const auto record = Item(1);
    EXPECT_EQ(Read(record, L"Text"), L"old");
    ASSERT_TRUE(Lock(record));
    ASSERT_EQ(Write(record, L"Text", L"new"), S_OK);
    EXPECT_EQ(record->Save(), static_cast<HRESULT>(0x80070013));
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
    EXPECT_EQ(
        host_.Create<IHostApplicationLocator>(kHostApplicationLocatorClass)->GetRunningApplication(running.Receive()),
        kPlanned);
    Fail(L"Application.GetAddInGoodies");
    ComPtr<IHostAddInGoodies> goodies;
    EXPECT_EQ(Application<IHostApplication>()->GetAddInGoodies(goodies.Receive()), kPlanned);
    Fail(L"Application.GetFolder");
    OwnedBstr folder;
    EXPECT_EQ(Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()), kPlanned);
    Fail(L"AddInGoodies.AttachToCurrentCompany");
    ComPtr<IHostCompany> other_company;
    EXPECT_EQ(Goodies()->AttachToCurrentCompany(other_company.Receive()), kPlanned);
    Fail(L"Company.GetDataFileRecords");
    ComPtr<IHostDataFileRecords> other_records;
    EXPECT_EQ(company->GetDataFileRecords(MakeBstr(L"Notes").Get(), other_records.Receive()), kPlanned);
    Fail(L"DataFileRecords.Exists");
    VARIANT_BOOL answer = VARIANT_TRUE;
    EXPECT_EQ(records->Exists(1, &answer), kPlanned);
    EXPECT_EQ(answer, VARIANT_FALSE);
    ComPtr<IHostDataFileRecord> other_record;
    Fail(L"DataFileRecords.Item");
    EXPECT_EQ(records->Item(1, other_record.Receive()), kPlanned);
    Fail(L"DataFileRecords.Add");
    EXPECT_EQ(records->Add(2, other_record.Receive()), kPlanned);
    EXPECT_FALSE(Exists(2));
    Fail(L"DataFileRecord.Lock");
    EXPECT_EQ(record->Lock(&answer), kPlanned);
    Fail(L"DataFileRecord.GetPropertyBag");
    ComPtr<IHostPropertyBag> other_bag;
    EXPECT_EQ(record->GetPropertyBag(other_bag.Receive()), kPlanned);
    Fail(L"PropertyBag.Write");
    EXPECT_EQ(bag->Write(MakeBstr(L"Text").Get(), VARIANT{}), kPlanned);
    Fail(L"PropertyBag.Read");
    OwnedVariant value;
    EXPECT_EQ(bag->Read(MakeBstr(L"Text").Get(), value.Receive()), kPlanned);
    Fail(L"DataFileRecord.PutDataVersion");
    EXPECT_EQ(record->PutDataVersion(1), kPlanned);
    Fail(L"DataFileRecord.Save");
    EXPECT_EQ(record->Save(), kPlanned);
    Fail(L"DataFileRecord.Delete");
    EXPECT_EQ(record->Delete(), kPlanned);
    Fail(L"DataFileRecord.Unlock");
    EXPECT_EQ(record->Unlock(), kPlanned);
    EXPECT_EQ(record->Unlock(), S_OK);
    EXPECT_EQ(Read(Item(1), L"Text"), L"old");
}

TEST_F(DataFileRecords, NoteTheirCalls) {
    const auto record = Added(1);
    ASSERT_TRUE(Lock(record));
    ASSERT_EQ(Write(record, L"Text", L"value"), S_OK);
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
    ASSERT_EQ(running.As(application), S_OK);
    ASSERT_EQ(running.As(folders), S_OK);
    ASSERT_EQ(folders.As(identity), S_OK);
    EXPECT_EQ(identity.Get(), running.Get());
}

TEST_F(DataFileRecords, HaveTheirLogsInAFolderBesideTheCompanyFile) {
    OwnedBstr folder;
    ASSERT_EQ(Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()), S_OK);
    EXPECT_EQ(View(folder), sample_.Path() + L".logs");
}

TEST_F(DataFileRecords, HaveTheirLogsWhereTheEnvironmentSays) {
    ::SetEnvironmentVariableW(L"LEDGERHALL_LOG_FOLDER", L"C:\\logs here");
    OwnedBstr folder;
    EXPECT_EQ(Application<IHostFolders>()->GetFolder(kLogFolderKind, folder.Receive()), S_OK);
    ::SetEnvironmentVariableW(L"LEDGERHALL_LOG_FOLDER", nullptr);
    EXPECT_EQ(View(folder), L"C:\\logs here");
    OwnedBstr other;
    EXPECT_EQ(Application<IHostFolders>()->GetFolder(3, other.Receive()), E_INVALIDARG);
    EXPECT_FALSE(other);
}

}  // namespace
}  // namespace paylodge::refhost
