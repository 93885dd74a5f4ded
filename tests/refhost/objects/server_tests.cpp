#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <set>
#include <string>

#include "refhost/books/xml_reader.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/processor_object.hpp"
#include "refhost/objects/utf8.hpp"
#include "tests/refhost/books/sample_books.hpp"
#include "tests/refhost/objects/host_server.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class Server : public HostTest {
  protected:
    // A processor as the broker makes it, without a connection.
    [[nodiscard]] ComPtr<IRequestProcessor> Processor() const {
        const auto broker = host_.Create<IHostObjectBroker>(kHostObjectBrokerClass);
        ComPtr<IUnknown> object;
        ComPtr<IRequestProcessor> processor;
        EXPECT_HRESULT(S_OK, broker->CreateObjectFromClassId(MakeBstr(L"{45F5708E-3B43-4FA8-BE7E-A5F1849214CB}").Get(),
                                                             object.Receive()));
        EXPECT_HRESULT(S_OK, object.As(processor));
        return processor;
    }

    // The same with an open connection.
    [[nodiscard]] ComPtr<IRequestProcessor> Connected() const {
        auto processor = Processor();
        EXPECT_HRESULT(S_OK, processor->OpenConnection(MakeBstr(L"").Get(), MakeBstr(L"Ledgerhall Paylodge").Get()));
        return processor;
    }

    [[nodiscard]] static OwnedBstr Begin(IRequestProcessor& processor) {
        OwnedBstr ticket;
        EXPECT_HRESULT(S_OK, processor.BeginSession(MakeBstr(L"").Get(), 2, ticket.Receive()));
        return ticket;
    }

    // The response to a whole document in a session of its own.
    HRESULT SendOne(std::string_view document, OwnedBstr& response) const {
        const auto processor = Connected();
        const OwnedBstr ticket = Begin(*processor.Get());
        const HRESULT result =
            processor->ProcessRequest(ticket.Get(), MakeBstr(WideFromUtf8(document)).Get(), response.Receive());
        EXPECT_HRESULT(S_OK, processor->EndSession(ticket.Get()));
        EXPECT_HRESULT(S_OK, processor->CloseConnection());
        return result;
    }

    // The response elements to these requests.
    [[nodiscard]] std::vector<Element> Ask(std::string_view requests) const {
        OwnedBstr response;
        EXPECT_HRESULT(S_OK, SendOne(Envelope(requests), response));
        return Responses(response);
    }

    [[nodiscard]] static std::vector<Element> Responses(const OwnedBstr& response) {
        EXPECT_THAT(Text(response), StartsWith("<?xml version=\"1.0\" ?><LHXML><LHXMLMsgsRs"));
        return ReadXml(Text(response)).root.children.front().children;
    }
};

TEST_F(Server, AnswersAQueryFromTheCompanyFile) {
    const auto responses =
        Ask("<AccountQueryRq requestID=\"requestID_7\"><ActiveStatus>ActiveOnly</ActiveStatus>"
            "<AccountType>Bank</AccountType></AccountQueryRq>");
    ASSERT_EQ(responses.size(), 1U);
    EXPECT_EQ(responses[0].name, "AccountQueryRs");
    EXPECT_EQ(*FindAttribute(responses[0], "requestID"), "requestID_7");
    EXPECT_THAT(Texts(responses[0], "FullName"),
                ElementsAre("Riverside Checking", "Riverside Savings", "Card Settlement", "Petty Cash"));
}

TEST_F(Server, StampsWhatItAddsWithTheLocalTime) {
    const auto now = [] {
        SYSTEMTIME time = {};
        ::GetLocalTime(&time);
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%d-%02d-%02dT%02d:%02d:%02d", time.wYear, time.wMonth, time.wDay,
                      time.wHour, time.wMinute, time.wSecond);
        return std::string(text.data());
    };
    const std::string before = now();
    const auto responses = Ask(
        "<AccountAddRq><AccountAdd><Name>Holding</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>");
    const auto created = Texts(responses.at(0), "TimeCreated");
    ASSERT_EQ(created.size(), 1U);
    EXPECT_GE(created[0], before);
    EXPECT_LE(created[0], now());
}

TEST_F(Server, KeepsAnAddedAccountInTheFile) {
    const std::string add =
        "<AccountAddRq><AccountAdd><Name>Holding</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>";
    EXPECT_EQ(StatusCode(Ask(add).at(0)), "0");
    EXPECT_TRUE(sample_.Bytes().find("Holding") != std::string::npos);
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    ASSERT_HRESULT(S_OK, control_->OpenCompanyFile(MakeBstr(sample_.Path()).Get()));
    EXPECT_EQ(StatusCode(Ask(add).at(0)), "3100");
}

TEST_F(Server, LeavesFileAndBooksAsTheyWereWhenSavingFails) {
    const std::string before = sample_.Bytes();
    const std::string requests =
        "<AccountAddRq requestID=\"1\"><AccountAdd><Name>Holding</Name><AccountType>Bank</AccountType></AccountAdd>"
        "</AccountAddRq><AccountQueryRq requestID=\"2\"><FullName>Holding</FullName></AccountQueryRq>";
    ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(L"CompanyFile.Commit").Get(), 0x8007001D, 1));
    const auto responses = Ask(requests);
    ASSERT_EQ(responses.size(), 2U);
    EXPECT_EQ(StatusCode(responses[0]), "4010");
    EXPECT_EQ(StatusCode(responses[1]), "4010");
    EXPECT_THAT(StatusMessage(responses[0]), HasSubstr("CompanyFile.Commit was planned to fail with 0x8007001D"));
    EXPECT_TRUE(sample_.Bytes() == before);
    EXPECT_EQ(StatusCode(Ask(requests).at(0)), "0");
}

TEST_F(Server, KeepsCharactersOfAllLanguages) {
    const std::string name = "Caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 &amp; &lt;&#13;&#10;&gt;";
    const auto responses = Ask("<AccountAddRq><AccountAdd><Name>N</Name><AccountType>Bank</AccountType><Desc>" + name +
                               "</Desc></AccountAdd></AccountAddRq>");
    EXPECT_THAT(Texts(responses.at(0), "Desc"), ElementsAre("Caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 & <\r\n>"));
}

TEST_F(Server, AnswersHostileTextWithAnErrorResponse) {
    std::string deep;
    for (int level = 0; level < 50'000; ++level) {
        deep += "<LHXML>";
    }
    const std::string huge(4'000'000, 'x');
    for (const std::string& text :
         {std::string(), std::string(" "), std::string("<LHXML>"), deep, huge, "<?xml version=\"1.0\"?>" + huge,
          std::string("\0", 1), std::string("<!DOCTYPE A [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><A>&e;</A>")}) {
        OwnedBstr response;
        EXPECT_HRESULT(S_OK, SendOne(text, response));
        const auto responses = Responses(response);
        ASSERT_EQ(responses.size(), 1U);
        EXPECT_EQ(responses[0].name, "ErrorRs");
        EXPECT_EQ(*FindAttribute(responses[0], "statusSeverity"), "Error");
        EXPECT_EQ(StatusCode(responses[0]), "1000");
    }
}

TEST_F(Server, AnswersAHugeRequestWithAnErrorStatus) {
    const auto responses = Ask("<AccountAddRq><AccountAdd><Name>" + std::string(3'000'000, 'x') +
                               "</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>");
    EXPECT_EQ(StatusCode(responses.at(0)), "2030");
    EXPECT_LT(StatusMessage(responses.at(0)).size(), 200U);
}

TEST_F(Server, ReadsANullRequestAsAnEmptyOne) {
    const auto processor = Connected();
    OwnedBstr response;
    EXPECT_HRESULT(S_OK, processor->ProcessRequest(Begin(*processor.Get()).Get(), nullptr, response.Receive()));
    EXPECT_EQ(StatusCode(Responses(response).at(0)), "1000");
}

TEST_F(Server, SaysWhatToDoWithoutACompanyFile) {
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", nullptr);
    const auto responses = Ask("<AccountQueryRq requestID=\"5\"/><ItemQueryRq/>");
    ASSERT_EQ(responses.size(), 2U);
    EXPECT_EQ(responses[0].name, "AccountQueryRs");
    EXPECT_EQ(StatusCode(responses[0]), "4000");
    EXPECT_THAT(StatusMessage(responses[0]), HasSubstr("LEDGERHALL_COMPANY_FILE"));
    EXPECT_EQ(StatusCode(responses[1]), "4000");
}

TEST_F(Server, OpensTheFileThatTheEnvironmentNames) {
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", sample_.Path().c_str());
    EXPECT_EQ(StatusCode(Ask("<AccountQueryRq/>").at(0)), "0");
    OwnedBstr path;
    EXPECT_HRESULT(S_OK, control_->get_CompanyFile(path.Receive()));
    EXPECT_EQ(View(path), sample_.Path());
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", L"nowhere.lhcompany");
    const auto responses = Ask("<AccountQueryRq/>");
    EXPECT_EQ(StatusCode(responses.at(0)), "4000");
    EXPECT_THAT(StatusMessage(responses.at(0)), HasSubstr("nowhere.lhcompany"));
    ::SetEnvironmentVariableW(L"LEDGERHALL_COMPANY_FILE", nullptr);
}

TEST_F(Server, DescribesWhyAFileCannotBeOpenedAndKeepsTheOldOne) {
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), control_->OpenCompanyFile(MakeBstr(L"nowhere.lhcompany").Get()));
    EXPECT_THAT(LastDescription(), HasSubstr("nowhere.lhcompany"));
    EXPECT_EQ(StatusCode(Ask("<AccountQueryRq/>").at(0)), "0");
}

TEST_F(Server, RefusesCallsOutOfOrder) {
    const auto processor = Processor();
    OwnedBstr ticket;
    OwnedBstr response;
    EXPECT_HRESULT(kNotConnected, processor->BeginSession(nullptr, 2, ticket.Receive()));
    EXPECT_FALSE(ticket);
    EXPECT_HRESULT(kNotConnected, processor->ProcessRequest(nullptr, nullptr, response.Receive()));
    EXPECT_FALSE(response);
    EXPECT_HRESULT(kNotConnected, processor->EndSession(nullptr));
    EXPECT_HRESULT(kNotConnected, processor->CloseConnection());
    EXPECT_HRESULT(E_INVALIDARG, processor->OpenConnection(nullptr, nullptr));
    EXPECT_HRESULT(S_OK, processor->OpenConnection(nullptr, MakeBstr(L"Test").Get()));
    EXPECT_HRESULT(kAlreadyConnected, processor->OpenConnection(nullptr, MakeBstr(L"Test").Get()));
    EXPECT_HRESULT(E_INVALIDARG, processor->BeginSession(nullptr, 3, ticket.Receive()));
    EXPECT_HRESULT(E_POINTER, processor->BeginSession(nullptr, 2, nullptr));
    EXPECT_HRESULT(E_POINTER, processor->ProcessRequest(nullptr, nullptr, nullptr));
}

TEST_F(Server, RefusesTicketsThatAreNotOfAnOpenSession) {
    const auto processor = Connected();
    const auto other = Connected();
    const OwnedBstr ticket = Begin(*processor.Get());
    const OwnedBstr ended = Begin(*processor.Get());
    const OwnedBstr foreign = Begin(*other.Get());
    ASSERT_HRESULT(S_OK, processor->EndSession(ended.Get()));
    const OwnedBstr unknown = MakeBstr(L"ticket");
    for (const BSTR wrong : {BSTR(nullptr), unknown.Get(), ended.Get(), foreign.Get()}) {
        OwnedBstr response;
        EXPECT_HRESULT(kUnknownTicket, processor->ProcessRequest(wrong, nullptr, response.Receive()));
        EXPECT_FALSE(response);
        EXPECT_HRESULT(kUnknownTicket, processor->EndSession(wrong));
    }
    OwnedBstr response;
    EXPECT_HRESULT(S_OK, processor->ProcessRequest(ticket.Get(), nullptr, response.Receive()));
}

TEST_F(Server, EndsTheSessionsOfAClosedConnection) {
    const auto processor = Connected();
    const OwnedBstr ticket = Begin(*processor.Get());
    ASSERT_HRESULT(S_OK, processor->CloseConnection());
    ASSERT_HRESULT(S_OK, processor->OpenConnection(nullptr, MakeBstr(L"Test").Get()));
    EXPECT_HRESULT(kUnknownTicket, processor->EndSession(ticket.Get()));
}

TEST_F(Server, BeginsASessionWithTheOpenFileOnly) {
    const auto processor = Connected();
    OwnedBstr same;
    EXPECT_HRESULT(S_OK, processor->BeginSession(MakeBstr(sample_.Path()).Get(), 2, same.Receive()));
    OwnedBstr another;
    EXPECT_HRESULT(kOtherCompanyOpen,
                   processor->BeginSession(MakeBstr(L"another.lhcompany").Get(), 2, another.Receive()));
    EXPECT_FALSE(another);
}

TEST_F(Server, BeginsASessionInEachFileModeAndNoOther) {
    const auto processor = Connected();
    for (const LONG mode : {0L, 1L, 2L}) {
        OwnedBstr ticket;
        EXPECT_HRESULT(S_OK, processor->BeginSession(nullptr, mode, ticket.Receive())) << mode;
        EXPECT_NE("", Text(ticket)) << mode;
    }
    for (const LONG mode : {-1L, 3L}) {
        OwnedBstr ticket;
        EXPECT_HRESULT(E_INVALIDARG, processor->BeginSession(nullptr, mode, ticket.Receive())) << mode;
        EXPECT_FALSE(ticket) << mode;
    }
}

TEST_F(Server, GivesEachSessionATicketOfItsOwn) {
    const auto processor = Connected();
    const auto other = Connected();
    const std::set<std::string> tickets = {Text(Begin(*processor.Get())), Text(Begin(*other.Get())),
                                           Text(Begin(*processor.Get()))};
    EXPECT_EQ(tickets.size(), 3U);
}

TEST_F(Server, OpensTheFileThatASessionNames) {
    ASSERT_HRESULT(S_OK, control_->CloseCompanyFile());
    const auto processor = Connected();
    OwnedBstr missing;
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070002),
                   processor->BeginSession(MakeBstr(L"nowhere.lhcompany").Get(), 2, missing.Receive()));
    EXPECT_FALSE(missing);
    EXPECT_THAT(LastDescription(), HasSubstr("nowhere.lhcompany"));
    OwnedBstr ticket;
    EXPECT_HRESULT(S_OK, processor->BeginSession(MakeBstr(sample_.Path()).Get(), 2, ticket.Receive()));
    OwnedBstr path;
    EXPECT_HRESULT(S_OK, control_->get_CompanyFile(path.Receive()));
    EXPECT_EQ(View(path), sample_.Path());
    // Names of files do not depend on letter case.
    std::wstring upper = sample_.Path();
    ::CharUpperBuffW(upper.data(), static_cast<DWORD>(upper.size()));
    OwnedBstr again;
    EXPECT_HRESULT(S_OK, processor->BeginSession(MakeBstr(upper).Get(), 2, again.Receive()));
}

TEST_F(Server, RecordsTheCallsInTheirOrder) {
    OwnedBstr response;
    ASSERT_HRESULT(S_OK, SendOne("<x/>", response));
    const auto calls = Calls();
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[0], "ObjectBroker.CreateObjectFromClassId(\"{45F5708E-3B43-4FA8-BE7E-A5F1849214CB}\")");
    EXPECT_EQ(calls[1], "RequestProcessor.OpenConnection(\"\", \"Ledgerhall Paylodge\")");
    EXPECT_EQ(calls[2], "RequestProcessor.BeginSession(\"\", 2)");
    EXPECT_THAT(calls[3], StartsWith("RequestProcessor.ProcessRequest(\"ticket-"));
    EXPECT_THAT(calls[3], EndsWith("\", \"<x/>\")"));
    EXPECT_THAT(calls[4], StartsWith("RequestProcessor.EndSession(\"ticket-"));
    EXPECT_EQ(calls[5], "RequestProcessor.CloseConnection()");
}

TEST_F(Server, RecordsRequestsAndResponses) {
    OwnedBstr response;
    ASSERT_HRESULT(S_OK, SendOne("<x/>", response));
    LONG count = 0;
    ASSERT_HRESULT(S_OK, control_->get_RequestCount(&count));
    ASSERT_EQ(count, 1);
    OwnedBstr recorded_request;
    OwnedBstr recorded_response;
    ASSERT_HRESULT(S_OK, control_->Request(0, recorded_request.Receive()));
    ASSERT_HRESULT(S_OK, control_->Response(0, recorded_response.Receive()));
    EXPECT_EQ(Text(recorded_request), "<x/>");
    EXPECT_EQ(View(recorded_response), View(response));
    OwnedBstr beyond;
    EXPECT_HRESULT(DISP_E_BADINDEX, control_->Request(1, beyond.Receive()));
    EXPECT_HRESULT(DISP_E_BADINDEX, control_->Call(-1, beyond.Receive()));
    ASSERT_HRESULT(S_OK, control_->ClearCalls());
    EXPECT_HRESULT(DISP_E_BADINDEX, control_->Request(0, beyond.Receive()));
    EXPECT_TRUE(Calls().empty());
}

TEST_F(Server, FailsEachCallAsPlanned) {
    ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(L"RequestProcessor.ProcessRequest").Get(), 0x80070005, 2));
    OwnedBstr first;
    EXPECT_HRESULT(S_OK, SendOne(Envelope(""), first));
    OwnedBstr second;
    EXPECT_HRESULT(E_ACCESSDENIED, SendOne(Envelope(""), second));
    EXPECT_FALSE(second);
    OwnedBstr third;
    EXPECT_HRESULT(S_OK, SendOne(Envelope(""), third));
}

TEST_F(Server, FailsEveryCallOfANameUntilThePlanIsCleared) {
    const auto broker = host_.Create<IHostObjectBroker>(kHostObjectBrokerClass);
    const OwnedBstr id = MakeBstr(L"{45F5708E-3B43-4FA8-BE7E-A5F1849214CB}");
    ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(L"ObjectBroker.CreateObjectFromClassId").Get(), E_OUTOFMEMORY, 0));
    for (int time = 0; time < 3; ++time) {
        ComPtr<IUnknown> object;
        EXPECT_HRESULT(E_OUTOFMEMORY, broker->CreateObjectFromClassId(id.Get(), object.Receive()));
        EXPECT_FALSE(object);
    }
    ASSERT_HRESULT(S_OK, control_->ClearFaults());
    ComPtr<IUnknown> object;
    EXPECT_HRESULT(S_OK, broker->CreateObjectFromClassId(id.Get(), object.Receive()));
}

TEST_F(Server, CanFailEveryCallOfTheProcessor) {
    for (const wchar_t* call :
         {L"RequestProcessor.OpenConnection", L"RequestProcessor.CloseConnection", L"RequestProcessor.BeginSession",
          L"RequestProcessor.EndSession", L"RequestProcessor.ProcessRequest"}) {
        ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(call).Get(), E_ABORT, 1));
    }
    const auto processor = Processor();
    OwnedBstr text;
    EXPECT_HRESULT(E_ABORT, processor->OpenConnection(nullptr, MakeBstr(L"Test").Get()));
    EXPECT_HRESULT(E_ABORT, processor->BeginSession(nullptr, 2, text.Receive()));
    EXPECT_HRESULT(E_ABORT, processor->ProcessRequest(nullptr, nullptr, text.Receive()));
    EXPECT_HRESULT(E_ABORT, processor->EndSession(nullptr));
    EXPECT_HRESULT(E_ABORT, processor->CloseConnection());
}

TEST_F(Server, ReturnsTheFailuresThatAreStillToCome) {
    ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(L"RequestProcessor.ProcessRequest").Get(), 0x80070005, 2));
    ASSERT_HRESULT(S_OK, control_->FailCall(MakeBstr(L"PropertyBag.Read").Get(), E_FAIL, 0));
    OwnedBstr planned;
    ASSERT_HRESULT(S_OK, control_->get_PlannedFailures(planned.Receive()));
    EXPECT_EQ(View(planned), L"RequestProcessor.ProcessRequest -2147024891 2\nPropertyBag.Read -2147467259 0\n");
    OwnedBstr response;
    EXPECT_HRESULT(S_OK, SendOne(Envelope(""), response));
    OwnedBstr counted;
    ASSERT_HRESULT(S_OK, control_->get_PlannedFailures(counted.Receive()));
    EXPECT_EQ(View(counted), L"RequestProcessor.ProcessRequest -2147024891 1\nPropertyBag.Read -2147467259 0\n");
    OwnedBstr none;
    EXPECT_HRESULT(E_ACCESSDENIED, SendOne(Envelope(""), none));
    OwnedBstr left;
    ASSERT_HRESULT(S_OK, control_->get_PlannedFailures(left.Receive()));
    EXPECT_EQ(View(left), L"PropertyBag.Read -2147467259 0\n");
    ASSERT_HRESULT(S_OK, control_->ClearFaults());
    OwnedBstr cleared;
    ASSERT_HRESULT(S_OK, control_->get_PlannedFailures(cleared.Receive()));
    EXPECT_EQ(View(cleared), L"");
}

TEST_F(Server, RefusesPlansThatCannotBe) {
    EXPECT_HRESULT(E_INVALIDARG, control_->FailCall(MakeBstr(L"RequestProcessor.Dance").Get(), E_FAIL, 1));
    EXPECT_THAT(LastDescription(), StartsWith("FailCall knows no call \"RequestProcessor.Dance\". It knows: "
                                              "AddInGoodies.AttachToCurrentCompany, "));
    EXPECT_HRESULT(E_INVALIDARG, control_->FailCall(MakeBstr(L"RequestProcessor.EndSession").Get(), 1e300, 1));
    EXPECT_HRESULT(E_INVALIDARG, control_->FailCall(MakeBstr(L"RequestProcessor.EndSession").Get(), 0.5, 1));
    EXPECT_HRESULT(E_INVALIDARG, control_->FailCall(MakeBstr(L"RequestProcessor.EndSession").Get(), E_FAIL, -1));
    EXPECT_HRESULT(E_INVALIDARG, control_->AnswerEmpty(-1));
}

TEST_F(Server, AnswersAsPlanned) {
    ASSERT_HRESULT(S_OK, control_->AnswerEmpty(1));
    ASSERT_HRESULT(S_OK, control_->AnswerNull(2));
    ASSERT_HRESULT(S_OK, control_->AnswerNext(MakeBstr(L"<first/>").Get(), S_FALSE));
    ASSERT_HRESULT(S_OK, control_->AnswerNext(MakeBstr(L"second").Get(), S_OK));
    const std::string add = Envelope(
        "<AccountAddRq><AccountAdd><Name>Holding</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>");
    OwnedBstr empty;
    EXPECT_HRESULT(S_OK, SendOne(add, empty));
    EXPECT_TRUE(empty);
    EXPECT_EQ(Text(empty), "");
    OwnedBstr null;
    EXPECT_HRESULT(S_OK, SendOne(add, null));
    EXPECT_FALSE(null);
    OwnedBstr first;
    EXPECT_HRESULT(S_FALSE, SendOne(add, first));
    EXPECT_EQ(Text(first), "<first/>");
    OwnedBstr second;
    EXPECT_HRESULT(S_OK, SendOne(add, second));
    EXPECT_EQ(Text(second), "second");
    // None of these were processed.
    EXPECT_EQ(StatusCode(Ask("<AccountQueryRq><FullName>Holding</FullName></AccountQueryRq>").at(0)), "2050");
}

TEST_F(Server, BrokerKnowsNoOtherClasses) {
    const auto broker = host_.Create<IHostObjectBroker>(kHostObjectBrokerClass);
    ComPtr<IUnknown> object;
    EXPECT_HRESULT(
        REGDB_E_CLASSNOTREG,
        broker->CreateObjectFromClassId(MakeBstr(L"{00000000-0000-0000-C000-000000000046}").Get(), object.Receive()));
    EXPECT_HRESULT(CO_E_CLASSSTRING,
                   broker->CreateObjectFromClassId(MakeBstr(L"RequestProcessor").Get(), object.Receive()));
    EXPECT_HRESULT(CO_E_CLASSSTRING, broker->CreateObjectFromClassId(nullptr, object.Receive()));
    EXPECT_HRESULT(E_POINTER, broker->CreateObjectFromClassId(nullptr, nullptr));
    EXPECT_FALSE(object);
}

TEST_F(Server, ObjectsOfTheProcessorAreCalledThroughSlotsOnly) {
    const auto processor = Processor();
    ComPtr<IDispatch> dispatch;
    ASSERT_HRESULT(S_OK, processor.As(dispatch));
    UINT count = 9;
    EXPECT_HRESULT(S_OK, dispatch->GetTypeInfoCount(&count));
    EXPECT_EQ(count, 0U);
    ComPtr<ITypeInfo> info;
    EXPECT_HRESULT(E_NOTIMPL, dispatch->GetTypeInfo(0, 0, info.Receive()));
    EXPECT_HRESULT(E_POINTER, dispatch->GetTypeInfoCount(nullptr));
    std::wstring name = L"ProcessRequest";
    LPOLESTR names = name.data();
    DISPID id = 7;
    EXPECT_HRESULT(E_NOTIMPL, dispatch->GetIDsOfNames(IID_NULL, &names, 1, 0, &id));
    DISPPARAMS none = {};
    EXPECT_HRESULT(E_NOTIMPL, dispatch->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr));
}

TEST_F(Server, ControlIsReachedByName) {
    ComPtr<IDispatch> dispatch;
    ASSERT_HRESULT(S_OK, control_.As(dispatch));
    std::wstring name = L"companyfile";
    LPOLESTR names = name.data();
    DISPID id = 0;
    ASSERT_HRESULT(S_OK, dispatch->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id));
    EXPECT_EQ(id, 3);
    DISPPARAMS none = {};
    VARIANT result;
    ::VariantInit(&result);
    ASSERT_HRESULT(S_OK, dispatch->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &result,
                                          nullptr, nullptr));
    ASSERT_EQ(V_VT(&result), VT_BSTR);
    EXPECT_EQ(View(V_BSTR(&result)), sample_.Path());
    ::VariantClear(&result);
}

TEST_F(Server, HasNoOtherClasses) {
    ComPtr<IClassFactory> factory;
    EXPECT_HRESULT(CLASS_E_CLASSNOTAVAILABLE, host_.GetClassObject(IID_IUnknown, factory));
}

TEST_F(Server, StaysLoadedWhileItHasSomethingToRemember) { EXPECT_HRESULT(S_FALSE, host_.CanUnloadNow()); }

}  // namespace
}  // namespace paylodge::refhost
