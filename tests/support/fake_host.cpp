#include "tests/support/fake_host.hpp"

#include <gtest/gtest.h>

#include <regex>

#include "com/ansi_text.hpp"
#include "com/object_root.hpp"
#include "refhost/objects/undispatched.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

[[nodiscard]] std::string Show(BSTR text) { return text == nullptr ? "null" : "\"" + AnsiFromBstr(text) + "\""; }

[[nodiscard]] HRESULT PlannedResult(const FakeHost& host, const std::string& method) {
    const auto failure = host.failures.find(method);
    return failure == host.failures.end() ? S_OK : failure->second;
}

// Records the call, runs the test's hook, and returns the HRESULT that the test chose.
HRESULT Record(FakeHost& host, const std::string& method, const std::string& arguments) {
    host.calls.push_back(method + "(" + arguments + ")");
    if (const auto hook = host.on_call.find(method); hook != host.on_call.end()) {
        hook->second();
    }
    return PlannedResult(host, method);
}

class Processor : public refhost::Undispatched<IRequestProcessor> {
  public:
    using Row = InterfaceRow<Processor>;
    static constexpr std::array kInterfaces = {Row::Of<IRequestProcessor>(), Row::Of<IDispatch>()};

    explicit Processor(FakeHost& host) : host_(host) { ++host_.live_processors; }

    STDMETHODIMP ProcessRequest(BSTR ticket, BSTR request, BSTR* response) override {
        host_.requests.emplace_back(View(request));
        const HRESULT result = Record(host_, "ProcessRequest", Show(ticket));
        if (FAILED(result)) {
            return result;
        }
        Answer answer{.response = L"<LHXML></LHXML>"};
        if (!host_.answers.empty()) {
            answer = std::move(host_.answers.front());
            host_.answers.pop_front();
        }
        if (!answer.is_null) {
            *response = MakeBstr(answer.response).Detach();
        }
        return answer.result;
    }
    STDMETHODIMP OpenConnection(BSTR application_id, BSTR application_name) override {
        return Record(host_, "OpenConnection", Show(application_id) + ", " + Show(application_name));
    }
    STDMETHODIMP CloseConnection() override { return Record(host_, "CloseConnection", ""); }
    STDMETHODIMP BeginSession(BSTR company_file_name, LONG file_mode, BSTR* ticket) override {
        const HRESULT result =
            Record(host_, "BeginSession", Show(company_file_name) + ", " + std::to_string(file_mode));
        if (SUCCEEDED(result)) {
            *ticket = MakeBstr(L"ticket").Detach();
        }
        return result;
    }
    STDMETHODIMP EndSession(BSTR ticket) override { return Record(host_, "EndSession", Show(ticket)); }

  protected:
    ~Processor() { --host_.live_processors; }

  private:
    FakeHost& host_;
};

// Lives as long as the fake, whatever references are left on it; it only counts them.
class Broker final : public refhost::Undispatched<IHostObjectBroker> {
  public:
    explicit Broker(FakeHost& host) : host_(host) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, __uuidof(IHostObjectBroker)) ? this : nullptr;
        return *object == nullptr ? E_NOINTERFACE : (AddRef(), S_OK);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++host_.broker_references; }
    STDMETHODIMP_(ULONG) Release() override { return --host_.broker_references; }

    STDMETHODIMP CreateObjectFromClassId(BSTR class_id, IUnknown** object) override {
        const HRESULT result = Record(host_, "CreateObjectFromClassId", Show(class_id));
        if (SUCCEEDED(result)) {
            *object = host_.created_object ? ComPtr<IUnknown>(*host_.created_object).Detach()
                                           : ComObject<Processor>::Create(host_).Detach();
        }
        return result;
    }

  private:
    FakeHost& host_;
};

class BrokerClassObject : public IClassFactory {
  public:
    using Row = InterfaceRow<BrokerClassObject>;
    static constexpr std::array kInterfaces = {Row::Of<IClassFactory>()};

    explicit BrokerClassObject(FakeHost& host) : host_(host), broker_(host) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        host_.outer_objects.push_back(outer);
        *object = nullptr;
        if (const auto hook = host_.on_call.find("CreateInstance"); hook != host_.on_call.end()) {
            hook->second();
        }
        const HRESULT result = PlannedResult(host_, "CreateInstance");
        return FAILED(result) || !host_.has_broker ? result : broker_.QueryInterface(id, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  protected:
    ~BrokerClassObject() = default;

  private:
    FakeHost& host_;
    Broker broker_;
};

}  // namespace

FakeHost::FakeHost(DWORD context) {
    class_object_ = ComPtr<IClassFactory>(ComObject<BrokerClassObject>::Create(*this).Get());
    // For this context and no other.
    const HRESULT result = ::CoRegisterClassObject(kHostObjectBrokerClass, class_object_.Get(), context,
                                                   REGCLS_MULTI_SEPARATE, &registration_);
    EXPECT_HRESULT(S_OK, result);
}

FakeHost::~FakeHost() {
    EXPECT_HRESULT(S_OK, ::CoRevokeClassObject(registration_));
    EXPECT_EQ(0, live_processors);
}

std::string FakeHost::OnlyRequest() const {
    EXPECT_EQ(1U, requests.size());
    return requests.size() == 1 ? AnsiFromWide(requests.front()) : std::string();
}

std::string WithoutRequestIDs(std::string text) {
    static const std::regex kRequestID(R"(requestID="requestID_[0-9]{1,5}")");
    return std::regex_replace(text, kRequestID, R"(requestID="requestID_N")");
}

}  // namespace paylodge::test
