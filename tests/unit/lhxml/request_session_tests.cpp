#include "lhxml/request_session.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "com/ansi_text.hpp"
#include "com/bstr.hpp"
#include "com/module.hpp"
#include "com/object_root.hpp"
#include "operations/paylodge.hpp"
#include "tests/support/bstr_allocations.hpp"
#include "tests/support/fake_host.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

using namespace std::string_literals;

const auto kCreate = R"(CreateObjectFromClassId("{45F5708E-3B43-4FA8-BE7E-A5F1849214CB}"))"s;
const auto kOpen = R"(OpenConnection("", "Ledgerhall Paylodge"))"s;
const auto kBegin = R"(BeginSession("", 2))"s;
const auto kProcess = R"(ProcessRequest("ticket"))"s;
const auto kEnd = R"(EndSession("ticket"))"s;
const auto kClose = "CloseConnection()"s;
const std::vector<std::string> kWholeSession = {kCreate, kOpen, kBegin, kProcess, kEnd, kClose};

constexpr HRESULT kRefused = static_cast<HRESULT>(0x80040400);

[[nodiscard]] std::vector<std::string> Twice(const std::vector<std::string>& calls) {
    std::vector<std::string> doubled = calls;
    doubled.insert(doubled.end(), calls.begin(), calls.end());
    return doubled;
}

// Error information with this description, as a host attaches it to what it throws.
[[nodiscard]] ComPtr<IErrorInfo> ErrorInformation(std::wstring description) {
    ComPtr<ICreateErrorInfo> creation;
    EXPECT_HRESULT(S_OK, ::CreateErrorInfo(creation.Receive()));
    EXPECT_HRESULT(S_OK, creation->SetDescription(description.data()));
    ComPtr<IErrorInfo> information;
    EXPECT_HRESULT(S_OK, creation.As(information));
    return information;
}

[[noreturn]] void RaiseDescribed(std::wstring description) {
    throw _com_error(kRefused, ErrorInformation(std::move(description)).Detach());
}

[[noreturn]] void RaiseBare() { throw _com_error(kRefused); }

void RaiseAsThePlatformsCompiler() { ::RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr); }

class SomeObject : public IClassFactory {
  public:
    using Row = InterfaceRow<SomeObject>;
    static constexpr std::array kInterfaces = {Row::Of<IClassFactory>()};

    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP LockServer(BOOL) override { return E_NOTIMPL; }

  protected:
    ~SomeObject() = default;
};

// Whatever happens, the processor, the ticket and everything else are gone afterwards, save for one reference on the
// broker per request.
class SessionTest : public testing::Test {
  protected:
    void TearDown() override {
        host_.created_object.reset();
        EXPECT_EQ(0, host_.live_processors);
        EXPECT_EQ(references_, Module::References());
    }

    // Does this at the first call of the method only.
    void Once(const std::string& method, std::function<void()> action) {
        host_.on_call[method] = [this, method, action = std::move(action)] {
            const auto now = action;
            host_.on_call.erase(method);
            now();
        };
    }

    FakeHost host_;

  private:
    LONG references_ = Module::References();
};

class RequestSession : public SessionTest {
  protected:
    HRESULT Send(const std::string& request = "<LHXML/>") {
        OwnedBstr response;
        const HRESULT result = Wrap(request).SendRequest(response.Receive());
        response_ = response.Get() == nullptr ? "null" : AnsiFromBstr(response.Get());
        return result;
    }
    lhXMLRPWrapper& Wrap(const std::string& request = "<LHXML/>") {
        wrapper_.emplace("", request);
        return *wrapper_;
    }
    void ExpectUntroubled() const {
        EXPECT_FALSE(wrapper_->HasFailed());
        EXPECT_EQ("Success", wrapper_->StatusMessage());
    }
    void ExpectFailure(const std::string& message) const {
        EXPECT_TRUE(wrapper_->HasFailed());
        EXPECT_EQ(message, wrapper_->StatusMessage());
        EXPECT_EQ("null", response_);
    }

    std::optional<lhXMLRPWrapper> wrapper_;
    std::string response_;
};

TEST_F(RequestSession, BeginsWithSuccess) {
    Wrap();
    ExpectUntroubled();
    EXPECT_TRUE(host_.calls.empty());
}

TEST_F(RequestSession, CallsTheProcessorInOrder) {
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(kWholeSession, host_.calls);
    ExpectUntroubled();
}

TEST_F(RequestSession, LeavesOneReferenceOnTheBroker) {
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(1U, host_.broker_references);
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(2U, host_.broker_references);
}

TEST_F(RequestSession, SendsTheRequestAsItIs) {
    const std::string request = "<?xml version=\"1.0\"?>\r\n<A>&<caf\xE9 \x80\0z"s;
    EXPECT_HRESULT(S_OK, Send(request));
    EXPECT_EQ(request, host_.OnlyRequest());
}

TEST_F(RequestSession, SendsAnEmptyRequest) {
    EXPECT_HRESULT(S_OK, Send(""));
    EXPECT_EQ(std::vector<std::wstring>{L""}, host_.requests);
}

TEST_F(RequestSession, SendsALongRequest) {
    EXPECT_HRESULT(S_OK, Send(std::string(3'000'000, 'x')));
    EXPECT_EQ(std::wstring(3'000'000, L'x'), host_.requests.at(0));
}

TEST_F(RequestSession, ReturnsTheResponseAsItIs) {
    host_.answers = {{.response = L"<A>caf\xE9 \x65E5\0z</A>"s}};
    OwnedBstr response;
    EXPECT_HRESULT(S_OK, Wrap().SendRequest(response.Receive()));
    EXPECT_EQ(L"<A>caf\xE9 \x65E5\0z</A>"s, View(response));
}

TEST_F(RequestSession, NamesTheCompanyFile) {
    lhXMLRPWrapper session("C:\\caf\xE9.lh", "<LHXML/>");
    OwnedBstr response;
    EXPECT_HRESULT(S_OK, session.SendRequest(response.Receive()));
    EXPECT_EQ("BeginSession(\"C:\\caf\xE9.lh\", 2)", host_.calls.at(2));
}

TEST_F(RequestSession, KeepsCopiesOfItsArguments) {
    auto file = "file"s;
    auto request = "request"s;
    lhXMLRPWrapper session(file, request);
    file.assign("xxxx");
    request.assign("yyyyyyy");
    OwnedBstr response;
    EXPECT_HRESULT(S_OK, session.SendRequest(response.Receive()));
    EXPECT_EQ("BeginSession(\"file\", 2)", host_.calls.at(2));
    EXPECT_EQ("request", host_.OnlyRequest());
}

TEST_F(RequestSession, IsOpenedAnewForEachRequest) {
    EXPECT_HRESULT(S_OK, Send("first"));
    EXPECT_HRESULT(S_OK, Send("second"));
    EXPECT_EQ(Twice(kWholeSession), host_.calls);
    EXPECT_EQ((std::vector<std::wstring>{L"first", L"second"}), host_.requests);
}

TEST_F(RequestSession, CanBeRunTwiceByOneObject) {
    lhXMLRPWrapper& session = Wrap();
    for (int run = 0; run < 2; ++run) {
        OwnedBstr response;
        EXPECT_HRESULT(S_OK, session.SendRequest(response.Receive()));
    }
    EXPECT_EQ(Twice(kWholeSession), host_.calls);
}

TEST_F(RequestSession, ReturnsTheProcessorsSuccessCode) {
    host_.answers = {{.result = S_FALSE, .response = L"<A/>"}};
    EXPECT_HRESULT(S_FALSE, Send());
    EXPECT_EQ("<A/>", response_);
    ExpectUntroubled();
}

TEST_F(RequestSession, FailedRequestStillEndsItsSession) {
    host_.failures = {{"ProcessRequest", kRefused}};
    EXPECT_HRESULT(kRefused, Send());
    EXPECT_EQ(kWholeSession, host_.calls);
    ExpectUntroubled();
}

TEST_F(RequestSession, ReturnsTheResponseOfAFailedRequest) {
    host_.answers = {{.result = kRefused, .response = L"<A/>"}};
    EXPECT_HRESULT(kRefused, Send());
    EXPECT_EQ("<A/>", response_);
}

TEST_F(RequestSession, ConnectionThatDoesNotOpenGoesUnnoticed) {
    host_.failures = {{"OpenConnection", kRefused}};
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(kWholeSession, host_.calls);
    ExpectUntroubled();
}

TEST_F(RequestSession, SessionThatDoesNotBeginLeavesTheTicketNull) {
    host_.failures = {{"BeginSession", kRefused}};
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ((std::vector<std::string>{kCreate, kOpen, kBegin, "ProcessRequest(null)", "EndSession(null)", kClose}),
              host_.calls);
    ExpectUntroubled();
}

TEST_F(RequestSession, EndThatFailsGoesUnnoticed) {
    host_.failures = {{"EndSession", kRefused}, {"CloseConnection", E_ACCESSDENIED}};
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(kWholeSession, host_.calls);
    ExpectUntroubled();
}

TEST_F(RequestSession, ReturnsTheRequestsHResultWhenEverythingFails) {
    host_.failures = {{"OpenConnection", E_ABORT},
                      {"BeginSession", E_ABORT},
                      {"ProcessRequest", kRefused},
                      {"EndSession", E_ABORT},
                      {"CloseConnection", E_ABORT}};
    EXPECT_HRESULT(kRefused, Send());
    ExpectUntroubled();
}

TEST_F(RequestSession, NeedsABroker) {
    host_.failures = {{"CreateInstance", E_ACCESSDENIED}};
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_TRUE(host_.calls.empty());
    ExpectFailure("");
}

TEST_F(RequestSession, AsksForABrokerOfItsOwn) {
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(std::vector<IUnknown*>{nullptr}, host_.outer_objects);
}

TEST_F(RequestSession, TakesNothingForABrokerThatCouldNotBeMade) {
    host_.has_broker = false;
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_TRUE(host_.calls.empty());
    ExpectFailure("");
}

TEST(RequestSessionBeside, ABrokerOfAnotherProcessDoesWithoutIt) {
    FakeHost elsewhere(CLSCTX_LOCAL_SERVER);
    // Whatever is registered on this machine.
    FakeHost in_process;
    in_process.failures = {{"CreateInstance", E_ACCESSDENIED}};
    ComPtr<IClassFactory> class_object;
    ASSERT_HRESULT(S_OK, ::CoGetClassObject(kHostObjectBrokerClass, CLSCTX_LOCAL_SERVER, nullptr, IID_IClassFactory,
                                            class_object.ReceiveVoid()));
    lhXMLRPWrapper session("", "<LHXML/>");
    OwnedBstr response;
    EXPECT_HRESULT(E_FAIL, session.SendRequest(response.Receive()));
    EXPECT_EQ(1U, in_process.outer_objects.size());
    EXPECT_TRUE(elsewhere.outer_objects.empty());
}

TEST_F(RequestSession, NeedsAProcessor) {
    host_.failures = {{"CreateObjectFromClassId", E_ACCESSDENIED}};
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(std::vector{kCreate}, host_.calls);
    EXPECT_EQ(1U, host_.broker_references);
    ExpectFailure("");
}

TEST_F(RequestSession, TakesNoOtherObjectForAProcessor) {
    for (const auto& object : {ComPtr<IUnknown>(ComObject<SomeObject>::Create().Get()), ComPtr<IUnknown>()}) {
        host_.calls.clear();
        host_.created_object = object;
        EXPECT_HRESULT(E_FAIL, Send());
        EXPECT_EQ(std::vector{kCreate}, host_.calls);
        ExpectFailure("");
    }
}

TEST_F(RequestSession, DescribesNoErrorOfAnotherCall) {
    host_.failures = {{"CreateObjectFromClassId", E_ACCESSDENIED}};
    EXPECT_HRESULT(S_OK, ::SetErrorInfo(0, ErrorInformation(L"left by another call").Get()));
    EXPECT_HRESULT(E_FAIL, Send());
    ExpectFailure("");
    EXPECT_HRESULT(S_OK, ::SetErrorInfo(0, nullptr));
}

TEST_F(RequestSession, CanSucceedAfterAFailure) {
    Once("ProcessRequest", RaiseBare);
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_HRESULT(S_OK, Send());
    ExpectUntroubled();
}

// A COM error thrown at the first call of a method, and the calls that follow from it.
struct Throwing {
    std::string method;
    std::vector<std::string> calls;
};
class ThrownError : public RequestSession, public testing::WithParamInterface<Throwing> {};

INSTANTIATE_TEST_SUITE_P(At, ThrownError,
                         testing::Values(
                             // Outside the session: nothing is open.
                             Throwing{"CreateObjectFromClassId", {kCreate}},
                             // What is marked open is closed again, the session before the connection.
                             Throwing{"OpenConnection", {kCreate, kOpen}},
                             Throwing{"BeginSession", {kCreate, kOpen, kBegin, kClose}},
                             Throwing{"ProcessRequest", {kCreate, kOpen, kBegin, kProcess, kEnd, kClose}},
                             Throwing{"EndSession", {kCreate, kOpen, kBegin, kProcess, kEnd, kEnd, kClose}},
                             Throwing{"CloseConnection", {kCreate, kOpen, kBegin, kProcess, kEnd, kClose, kClose}}),
                         [](const auto& throwing) { return throwing.param.method; });

TEST_P(ThrownError, FailsWithItsDescriptionAndClosesWhatIsOpen) {
    Once(GetParam().method, [] { RaiseDescribed(L"The company file is in use: caf\xE9 \x65E5"); });
    host_.answers = {{.is_null = true}};
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(GetParam().calls, host_.calls);
    ExpectFailure("The company file is in use: caf\xE9 ?");
}

TEST_P(ThrownError, HasAnEmptyDescriptionWithoutErrorInformation) {
    Once(GetParam().method, RaiseBare);
    host_.answers = {{.is_null = true}};
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(GetParam().calls, host_.calls);
    ExpectFailure("");
}

// A host that the platform's own compiler built raises its COM errors as structured exceptions.
TEST_P(ThrownError, OfThePlatformsCompilerEndsTheSessionAlike) {
    Once(GetParam().method, RaiseAsThePlatformsCompiler);
    host_.answers = {{.is_null = true}};
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(GetParam().calls, host_.calls);
    ExpectFailure("");
    EXPECT_HRESULT(S_OK, Send()) << "the next request finds everything closed";
}

TEST_P(ThrownError, LeavesOneReferenceOnTheBroker) {
    Once(GetParam().method, RaiseBare);
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(1U, host_.broker_references);
}

TEST_P(ThrownError, OfAnotherTypeIsNotCaught) {
    Once(GetParam().method, [] { throw std::runtime_error("not a COM error"); });
    EXPECT_THROW(static_cast<void>(Send()), std::runtime_error);
    EXPECT_FALSE(wrapper_->HasFailed());
    EXPECT_EQ("Success", wrapper_->StatusMessage());
}

// An error while closing after an error ends in the outer region, which closes nothing more.
class ThrownTwice : public ThrownError {};

INSTANTIATE_TEST_SUITE_P(At, ThrownTwice,
                         testing::Values(Throwing{"EndSession", {kCreate, kOpen, kBegin, kProcess, kEnd, kEnd}},
                                         Throwing{"CloseConnection",
                                                  {kCreate, kOpen, kBegin, kProcess, kEnd, kClose, kClose}}),
                         [](const auto& throwing) { return throwing.param.method; });

TEST_P(ThrownTwice, OfThePlatformsCompilerFailsAlike) {
    host_.on_call[GetParam().method] = RaiseAsThePlatformsCompiler;
    host_.answers = {{.is_null = true}};
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(GetParam().calls, host_.calls);
    ExpectFailure("");
}

TEST_P(ThrownTwice, FailsWithTheDescriptionOfTheLater) {
    int count = 0;
    host_.on_call[GetParam().method] = [&count] { RaiseDescribed(L"error " + std::to_wstring(++count)); };
    host_.answers = {{.is_null = true}};
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(GetParam().calls, host_.calls);
    ExpectFailure("error 2");
}

TEST_F(RequestSession, ReturnsTheResponseAlsoWhenAnErrorFollowsIt) {
    Once("EndSession", RaiseBare);
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ("<LHXML></LHXML>", response_);
}

// The four strings of a session: none of them can be done without, and nothing has been sent before.
TEST_F(RequestSession, ThrowsOutOfMemoryBeforeAnythingIsSent) {
    for (int number = 1; number <= 4; ++number) {
        const BstrAllocations allocations(number);
        try {
            static_cast<void>(Send());
            ADD_FAILURE() << "allocation " << number << " was not needed";
        } catch (const _com_error& error) {
            EXPECT_HRESULT(E_OUTOFMEMORY, error.Error());
        }
        EXPECT_TRUE(host_.calls.empty());
        EXPECT_FALSE(wrapper_->HasFailed());
        EXPECT_EQ("Success", wrapper_->StatusMessage());
    }
}

TEST_F(RequestSession, FailsWithoutMemoryForTheClassId) {
    const BstrAllocations allocations(5);
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_TRUE(host_.calls.empty());
    ExpectFailure("");
}

class RequestProcessor : public SessionTest {};

TEST_F(RequestProcessor, IsMadeByTheBrokerFromAnyClassId) {
    ComPtr<IRequestProcessor> processor;
    EXPECT_HRESULT(S_OK, CreateRequestProcessor(kHostObjectBrokerClass, processor));
    EXPECT_TRUE(processor);
    EXPECT_EQ(std::vector{R"(CreateObjectFromClassId("{E53C85D6-E6D9-4BCF-A623-72062A99AA7F}"))"s}, host_.calls);
    EXPECT_EQ(1, host_.live_processors);
    EXPECT_EQ(1U, host_.broker_references);
}

TEST_F(RequestProcessor, BelongsToTheCallerAlone) {
    ComPtr<IRequestProcessor> processor;
    ASSERT_HRESULT(S_OK, CreateRequestProcessor(kRequestProcessorClass, processor));
    EXPECT_EQ(0U, processor.Detach()->Release());
}

TEST_F(RequestProcessor, CreationReturnsTheHResultOfTheStepThatFails) {
    const std::vector<std::string> steps = {"CreateInstance", "CreateObjectFromClassId"};
    for (const std::string& step : steps) {
        host_.failures = {{step, kRefused}};
        ComPtr<IRequestProcessor> processor;
        EXPECT_HRESULT(kRefused, CreateRequestProcessor(kRequestProcessorClass, processor)) << step;
        EXPECT_FALSE(processor);
    }
}

TEST_F(RequestProcessor, CreationReturnsTheHResultOfAskingForTheInterface) {
    const auto object = ComObject<SomeObject>::Create();
    host_.created_object = ComPtr<IUnknown>(object.Get());
    ComPtr<IRequestProcessor> processor;
    EXPECT_HRESULT(E_NOINTERFACE, CreateRequestProcessor(kRequestProcessorClass, processor));
    EXPECT_FALSE(processor);
    host_.created_object.reset();
    object->AddRef();
    EXPECT_EQ(1U, object->Release());
}

class SendLHRequest : public SessionTest {
  protected:
    [[nodiscard]] static HRESULT Send(OwnedBstr& response) {
        return CPaylodge::SendLHRequest("<LHXML/>", response.Receive());
    }
    OwnedBstr response_;
};

TEST_F(SendLHRequest, RunsAWholeSession) {
    host_.answers = {{.response = L"<A/>"}};
    EXPECT_HRESULT(S_OK, Send(response_));
    EXPECT_EQ(L"<A/>", View(response_));
    EXPECT_EQ(kWholeSession, host_.calls);
    EXPECT_EQ("<LHXML/>", host_.OnlyRequest());
}

TEST_F(SendLHRequest, OpensASessionForEachRequest) {
    EXPECT_HRESULT(S_OK, Send(response_));
    response_.Reset();
    EXPECT_HRESULT(S_OK, Send(response_));
    EXPECT_EQ(Twice(kWholeSession), host_.calls);
    EXPECT_EQ(2U, host_.broker_references);
}

TEST_F(SendLHRequest, TurnsAnySuccessWithAResponseIntoOK) {
    host_.answers = {{.result = S_FALSE, .response = L"x"}};
    EXPECT_HRESULT(S_OK, Send(response_));
    EXPECT_EQ(L"x", View(response_));
}

TEST_F(SendLHRequest, PassesOnASuccessWithoutAResponse) {
    for (const HRESULT success : {S_OK, S_FALSE, static_cast<HRESULT>(0x00040400)}) {
        for (const bool is_null : {false, true}) {
            host_.answers = {{.result = success, .is_null = is_null}};
            OwnedBstr response;
            EXPECT_HRESULT(success, Send(response));
            EXPECT_EQ(is_null, response.Get() == nullptr);
            EXPECT_EQ(L"", View(response));
        }
    }
}

TEST_F(SendLHRequest, PassesOnAFailure) {
    host_.failures = {{"ProcessRequest", kRefused}};
    EXPECT_HRESULT(kRefused, Send(response_));
    EXPECT_EQ(nullptr, response_.Get());
    EXPECT_EQ(kWholeSession, host_.calls);
}

TEST_F(SendLHRequest, PassesOnAFailureWithAResponse) {
    host_.answers = {{.result = kRefused, .response = L"<A/>"}};
    EXPECT_HRESULT(kRefused, Send(response_));
    EXPECT_EQ(L"<A/>", View(response_));
}

TEST_F(SendLHRequest, FailsWithoutAProcessor) {
    host_.failures = {{"CreateObjectFromClassId", E_ACCESSDENIED}};
    EXPECT_HRESULT(E_FAIL, Send(response_));
    EXPECT_EQ(nullptr, response_.Get());
}

TEST_F(SendLHRequest, FailsOnAThrownError) {
    Once("BeginSession", RaiseBare);
    EXPECT_HRESULT(E_FAIL, Send(response_));
    EXPECT_EQ(nullptr, response_.Get());
}

TEST_F(SendLHRequest, ThrowsOutOfMemory) {
    const BstrAllocations allocations(1);
    EXPECT_THROW(static_cast<void>(Send(response_)), _com_error);
    EXPECT_TRUE(host_.calls.empty());
}

}  // namespace
}  // namespace paylodge::test
