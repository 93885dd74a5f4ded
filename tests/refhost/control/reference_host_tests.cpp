#include "refhost/control/reference_host.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "com/variant.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/objects/company_object.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "tests/refhost/objects/host_server.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

// Stands in an out parameter that a refused call has to leave alone.
const BSTR kUntouched = reinterpret_cast<BSTR>(0x10);

class ControlObject : public HostTest {
  protected:
    [[nodiscard]] std::string TextOf(HRESULT (STDMETHODCALLTYPE IReferenceHost::*get)(BSTR*)) const {
        OwnedBstr text;
        EXPECT_HRESULT(S_OK, (control_.Get()->*get)(text.Receive()));
        return Text(text);
    }

    [[nodiscard]] std::vector<Element> Journal(LONG count) const {
        OwnedBstr text;
        EXPECT_HRESULT(S_OK, control_->Journal(count, text.Receive()));
        const Document document = ReadXml(Text(text));
        EXPECT_EQ("Journal", document.root.name);
        return document.root.children;
    }

    [[nodiscard]] ComPtr<IHostCompany> Attached() const {
        ComPtr<IUnknown> running;
        ComPtr<IHostApplication> application;
        ComPtr<IHostAddInGoodies> goodies;
        ComPtr<IHostCompany> company;
        EXPECT_HRESULT(S_OK, host_.Create<IHostApplicationLocator>(kHostApplicationLocatorClass)
                                 ->GetRunningApplication(running.Receive()));
        EXPECT_HRESULT(S_OK, running.As(application));
        EXPECT_HRESULT(S_OK, application->GetAddInGoodies(goodies.Receive()));
        EXPECT_HRESULT(S_OK, goodies->AttachToCurrentCompany(company.Receive()));
        return company;
    }

    // Whether a new object of a record can have its lock.
    [[nodiscard]] bool CanBeLocked(std::wstring_view category, LONG number) const {
        ComPtr<IHostDataFileRecords> records;
        ComPtr<IHostDataFileRecord> record;
        VARIANT_BOOL exists = VARIANT_FALSE;
        VARIANT_BOOL is_locked = VARIANT_FALSE;
        EXPECT_HRESULT(S_OK, Attached()->GetDataFileRecords(MakeBstr(category).Get(), records.Receive()));
        EXPECT_HRESULT(S_OK, records->Exists(number, &exists));
        EXPECT_HRESULT(S_OK, exists == VARIANT_TRUE ? records->Item(number, record.Receive())
                                                    : records->Add(number, record.Receive()));
        EXPECT_HRESULT(S_OK, record->Lock(&is_locked));
        return is_locked == VARIANT_TRUE;
    }
};

TEST_F(ControlObject, HasTheFullPathOfTheOpenFileAndNothingWithoutOne) {
    OwnedBstr path;
    EXPECT_HRESULT(S_OK, control_->get_CompanyFile(path.Receive()));
    EXPECT_EQ(View(path), sample_.Path());
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    EXPECT_EQ("", TextOf(&IReferenceHost::get_CompanyFile));
    EXPECT_HRESULT(S_OK, control_->CloseCompanyFile()) << "there is none to close";
}

TEST_F(ControlObject, OpensTheFileThatIsOpenAnewByAnotherSpellingOfItsName) {
    std::wstring other = sample_.Path();
    const size_t name = other.find_last_of(L'\\') + 1;
    ::CharUpperBuffW(other.data() + name, static_cast<DWORD>(other.size() - name));
    other.insert(name, L".\\");
    ASSERT_NE(other, sample_.Path());
    const auto company = Attached();
    EXPECT_HRESULT(S_OK, control_->OpenCompanyFile(MakeBstr(other).Get()));
    // It was closed in between.
    ComPtr<IHostDataFileRecords> records;
    EXPECT_HRESULT(CO_E_OBJNOTCONNECTED, company->GetDataFileRecords(MakeBstr(L"Notes").Get(), records.Receive()));
    EXPECT_TRUE(CanBeLocked(L"Notes", 1));
}

TEST_F(ControlObject, RefusesAFileWithoutAName) {
    for (const OwnedBstr& name : {OwnedBstr(), MakeBstr(L"")}) {
        EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), control_->OpenCompanyFile(name.Get()));
        EXPECT_EQ("The path \"\" of the company file cannot be used.", LastDescription());
    }
    EXPECT_EQ(Text(MakeBstr(sample_.Path())), TextOf(&IReferenceHost::get_CompanyFile));
}

TEST_F(ControlObject, AnswersAPointerErrorWithoutAPlaceForTheResult) {
    EXPECT_TRUE(CanBeLocked(L"Notes", 1));
    LONG count = 0;
    ASSERT_HRESULT(S_OK, control_->get_CallCount(&count));
    EXPECT_GT(count, 0);
    EXPECT_HRESULT(E_POINTER, control_->get_CompanyFile(nullptr));
    EXPECT_HRESULT(E_POINTER, control_->get_CallCount(nullptr));
    EXPECT_HRESULT(E_POINTER, control_->get_RequestCount(nullptr));
    EXPECT_HRESULT(E_POINTER, control_->Call(0, nullptr));
    EXPECT_HRESULT(E_POINTER, control_->Journal(1, nullptr));
    EXPECT_HRESULT(E_POINTER, control_->get_PlannableCalls(nullptr));
    EXPECT_HRESULT(E_POINTER, control_->get_PlannedFailures(nullptr));
}

TEST_F(ControlObject, HasNoCallsAndRequestsBeforeTheFirstAndAfterTheLast) {
    const auto broker = host_.Create<IHostObjectBroker>(kHostObjectBrokerClass);
    ComPtr<IUnknown> object;
    EXPECT_HRESULT(CO_E_CLASSSTRING, broker->CreateObjectFromClassId(nullptr, object.Receive()));
    EXPECT_HRESULT(CO_E_CLASSSTRING, broker->CreateObjectFromClassId(MakeBstr(L"").Get(), object.Receive()));
    const auto processor = host_.Create<IRequestProcessor>(kRequestProcessorClass);
    OwnedBstr response;
    static_cast<void>(processor->ProcessRequest(nullptr, MakeBstr(L"one").Get(), response.Receive()));
    static_cast<void>(processor->ProcessRequest(nullptr, MakeBstr(L"two").Get(), response.Receive()));
    EXPECT_THAT(Calls(),
                ElementsAre("ObjectBroker.CreateObjectFromClassId(null)", "ObjectBroker.CreateObjectFromClassId(\"\")",
                            "RequestProcessor.ProcessRequest(null, \"one\")",
                            "RequestProcessor.ProcessRequest(null, \"two\")"));
    LONG count = 0;
    EXPECT_HRESULT(S_OK, control_->get_RequestCount(&count));
    EXPECT_EQ(2, count);
    for (const LONG index : {-1L, 2L, 0x7FFFFFFFL, -0x7FFFFFFFL - 1}) {
        BSTR text = kUntouched;
        EXPECT_HRESULT(DISP_E_BADINDEX, control_->Request(index, &text)) << index;
        EXPECT_HRESULT(DISP_E_BADINDEX, control_->Response(index, &text)) << index;
        EXPECT_EQ(kUntouched, text);
    }
    BSTR call = kUntouched;
    EXPECT_HRESULT(DISP_E_BADINDEX, control_->Call(4, &call));
    EXPECT_EQ(kUntouched, call);
    for (LONG index = 0; index < 2; ++index) {
        OwnedBstr request;
        EXPECT_HRESULT(S_OK, control_->Request(index, request.Receive()));
        EXPECT_EQ(index == 0 ? "one" : "two", Text(request));
    }
}

TEST_F(ControlObject, RecordsAValueThatIsNoStringByItsType) {
    ComPtr<IHostDataFileRecords> records;
    ComPtr<IHostDataFileRecord> record;
    ComPtr<IHostPropertyBag> bag;
    ASSERT_HRESULT(S_OK, Attached()->GetDataFileRecords(MakeBstr(L"Notes").Get(), records.Receive()));
    ASSERT_HRESULT(S_OK, records->Add(-7, record.Receive()));
    ASSERT_HRESULT(S_OK, record->GetPropertyBag(bag.Receive()));
    ASSERT_HRESULT(S_OK, control_->ClearCalls());
    VARIANT number = {};
    V_VT(&number) = VT_I4;
    V_I4(&number) = 42;
    EXPECT_HRESULT(kNotLocked, bag->Write(MakeBstr(L"Count").Get(), number));
    EXPECT_HRESULT(kNotLocked, bag->Write(MakeBstr(L"Text").Get(), OwnedVariant(OwnedBstr()).Get()));
    EXPECT_HRESULT(kNotLocked, record->PutDataVersion(-2147483647 - 1));
    EXPECT_THAT(Calls(), ElementsAre("PropertyBag.Write(\"Count\", type 3)", "PropertyBag.Write(\"Text\", null)",
                                     "DataFileRecord.PutDataVersion(-2147483648)"));
}

TEST_F(ControlObject, LocksOneRecordAndNoOther) {
    const OwnedBstr notes = MakeBstr(L"Notes");
    ASSERT_HRESULT(S_OK, control_->LockRecord(notes.Get(), 1));
    EXPECT_FALSE(CanBeLocked(L"Notes", 1));
    EXPECT_TRUE(CanBeLocked(L"Notes", 2));
    EXPECT_TRUE(CanBeLocked(L"Other", 1));
    EXPECT_HRESULT(kNotLocked, control_->UnlockRecord(notes.Get(), 2));
    EXPECT_HRESULT(kNotLocked, control_->UnlockRecord(MakeBstr(L"Other").Get(), 1));
    EXPECT_HRESULT(S_OK, control_->LockRecord(notes.Get(), 1)) << "the other user may ask again";
    EXPECT_HRESULT(S_OK, control_->UnlockRecord(notes.Get(), 1));
    EXPECT_TRUE(CanBeLocked(L"Notes", 1));
}

TEST_F(ControlObject, NeedsACompanyFileForLocksAndTheJournal) {
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", nullptr);
    const OwnedBstr category = MakeBstr(L"Notes");
    BSTR text = kUntouched;
    EXPECT_HRESULT(kNoCompanyOpen, control_->LockRecord(category.Get(), 1));
    EXPECT_HRESULT(kNoCompanyOpen, control_->UnlockRecord(category.Get(), 1));
    EXPECT_HRESULT(kNoCompanyOpen, control_->Journal(1, &text));
    EXPECT_EQ(kUntouched, text);
    EXPECT_THAT(LastDescription(), StartsWith("No company file is open"));
}

TEST_F(ControlObject, HasTheJournalOfTheBooksNewestFirst) {
    const auto all = Journal(1'000'000);
    ASSERT_GT(all.size(), 2U);
    EXPECT_EQ(0U, Journal(0).size());
    const auto newest = Journal(2);
    ASSERT_EQ(2U, newest.size());
    for (size_t place = 0; place < newest.size(); ++place) {
        EXPECT_EQ("Transaction", newest[place].name);
        EXPECT_EQ(ChildText(all[place], "TxnID"), ChildText(newest[place], "TxnID"));
    }
    EXPECT_NE(ChildText(newest[0], "TxnID"), ChildText(newest[1], "TxnID"));
    BSTR text = kUntouched;
    EXPECT_HRESULT(E_INVALIDARG, control_->Journal(-1, &text));
    EXPECT_EQ(kUntouched, text);
}

TEST_F(ControlObject, TellsScriptsThatItDescribesItsErrors) {
    ComPtr<ISupportErrorInfo> support;
    ASSERT_HRESULT(S_OK, control_.As(support));
    EXPECT_HRESULT(S_OK, support->InterfaceSupportsErrorInfo(IID_IReferenceHost));
    EXPECT_HRESULT(S_FALSE, support->InterfaceSupportsErrorInfo(IID_IDispatch));
    EXPECT_HRESULT(S_FALSE, support->InterfaceSupportsErrorInfo(IID_IUnknown));
}

constexpr const char* kPlannable =
    "AddInGoodies.AttachToCurrentCompany Application.GetAddInGoodies Application.GetFolder "
    "ApplicationLocator.GetRunningApplication Company.GetDataFileRecords CompanyFile.Commit CompanyFile.Open "
    "CompanyFile.Sync CompanyFile.Write DataFileRecord.Delete DataFileRecord.GetPropertyBag DataFileRecord.Lock "
    "DataFileRecord.PutDataVersion DataFileRecord.Save DataFileRecord.Unlock DataFileRecords.Add "
    "DataFileRecords.Exists DataFileRecords.Item ObjectBroker.CreateObjectFromClassId PropertyBag.Read "
    "PropertyBag.Write RequestProcessor.BeginSession RequestProcessor.CloseConnection RequestProcessor.EndSession "
    "RequestProcessor.OpenConnection RequestProcessor.ProcessRequest";

TEST_F(ControlObject, NamesTheCallsThatCanBePlannedToFail) {
    EXPECT_EQ(kPlannable, TextOf(&IReferenceHost::get_PlannableCalls));
}

TEST_F(ControlObject, NamesThemToWhoeverPlansAnother) {
    std::string listed = kPlannable;
    for (size_t blank = listed.find(' '); blank != std::string::npos; blank = listed.find(' ', blank + 2)) {
        listed.replace(blank, 1, ", ");
    }
    for (const OwnedBstr& name : {OwnedBstr(), MakeBstr(L"PropertyBag.read"), MakeBstr(L"PropertyBag.Read ")}) {
        EXPECT_HRESULT(E_INVALIDARG, control_->FailCall(name.Get(), E_FAIL, 1));
        EXPECT_EQ("FailCall knows no call \"" + Text(name) + "\". It knows: " + listed + ".", LastDescription());
    }
}

}  // namespace
}  // namespace paylodge::refhost
