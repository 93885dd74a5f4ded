#include "lhxml/request_session.hpp"

#include <array>
#include <utility>

#include "com/ansi_text.hpp"
#include "com/guarded_call.hpp"

namespace paylodge {
namespace {

constexpr std::wstring_view kApplicationId;
constexpr std::wstring_view kApplicationName = L"Ledgerhall Paylodge";
constexpr LONG kFileMode = 2;

// The description from the error's information object; empty without one.
[[nodiscard]] std::string DescriptionOf(const _com_error& error) {
    const auto information = ComPtr<IErrorInfo>::Attach(error.ErrorInfo());
    OwnedBstr description;
    if (information) {
        static_cast<void>(information->GetDescription(description.Receive()));
    }
    return AnsiFromBstr(description.Get());
}

// Releases an object whose release may throw an error, which a destructor could not let through.
template <class Interface>
void Release(ComPtr<Interface>& object) {
    if (object) {
        CallHost([released = object.Detach()] { return released->Release(); });
    }
}

}  // namespace

HRESULT CreateRequestProcessor(REFCLSID class_id, ComPtr<IRequestProcessor>& processor) {
    std::array<wchar_t, 200> buffer{};
    ::StringFromGUID2(class_id, buffer.data(), static_cast<int>(buffer.size()));
    const OwnedBstr class_id_text = MakeBstr(buffer.data());

    ComPtr<IHostObjectBroker> broker;
    HRESULT result = CallHost([slot = broker.ReceiveVoid()] {
        return ::CoCreateInstance(kHostObjectBrokerClass, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IHostObjectBroker),
                                  slot);
    });
    if (FAILED(result) || !broker) {
        return FAILED(result) ? result : E_POINTER;
    }
    // Deliberately never released: each request leaves one reference on the broker.
    IHostObjectBroker* const kept_broker = broker.Detach();
    ComPtr<IUnknown> object;
    result = CallHost([kept_broker, id = class_id_text.Get(), slot = object.Receive()] {
        return kept_broker->CreateObjectFromClassId(id, slot);
    });
    if (SUCCEEDED(result)) {
        result = CallHost([&] { return object.As(processor); });
    }
    Release(object);
    return result;
}

struct lhXMLRPWrapper::Strings {
    OwnedBstr application_id = MakeBstr(kApplicationId);
    OwnedBstr application_name = MakeBstr(kApplicationName);
    OwnedBstr request;
    OwnedBstr company_file_name;
};

lhXMLRPWrapper::lhXMLRPWrapper(std::string company_file_name, std::string request)
    : request_(std::move(request)), company_file_name_(std::move(company_file_name)) {}

HRESULT lhXMLRPWrapper::SendRequest(BSTR* response) {
    const Strings strings{.request = BstrFromAnsi(request_), .company_file_name = BstrFromAnsi(company_file_name_)};
    OwnedBstr ticket;
    try {
        ComPtr<IRequestProcessor> processor;
        // Only the pointer says whether there is a processor.
        static_cast<void>(CreateRequestProcessor(kRequestProcessorClass, processor));
        if (!processor) {
            _com_issue_error(E_POINTER);
        }
        const HRESULT result = RunSession(*processor.Get(), strings, ticket.Receive(), response);
        Release(processor);
        return result;
    } catch (const _com_error& error) {
        RecordFailure(error);
        return E_FAIL;
    }
}

// The HRESULTs of opening and closing are not looked at: what failed there shows in that of the request.
HRESULT lhXMLRPWrapper::RunSession(IRequestProcessor& processor, const Strings& strings, BSTR* ticket, BSTR* response) {
    const auto end_session = [&] { return CallHost([&] { return processor.EndSession(*ticket); }); };
    const auto close_connection = [&] { return CallHost([&] { return processor.CloseConnection(); }); };
    bool is_connection_open = false;
    bool is_session_open = false;
    try {
        CallHost(
            [&] { return processor.OpenConnection(strings.application_id.Get(), strings.application_name.Get()); });
        is_connection_open = true;
        CallHost([&] { return processor.BeginSession(strings.company_file_name.Get(), kFileMode, ticket); });
        is_session_open = true;
        const HRESULT result =
            CallHost([&] { return processor.ProcessRequest(*ticket, strings.request.Get(), response); });
        end_session();
        is_session_open = false;
        close_connection();
        is_connection_open = false;
        return result;
    } catch (const _com_error& error) {
        RecordFailure(error);
        if (is_session_open) {
            end_session();
        }
        if (is_connection_open) {
            close_connection();
        }
        return E_FAIL;
    }
}

void lhXMLRPWrapper::RecordFailure(const _com_error& error) {
    has_failed_ = true;
    status_message_ = DescriptionOf(error);
}

}  // namespace paylodge
