#include "refhost/objects/processor_object.hpp"

#include "refhost/control/call_record.hpp"
#include "refhost/control/transcript.hpp"
#include "refhost/objects/host.hpp"

namespace paylodge::refhost {
namespace {

// 0: one user, 1: several users, 2: as the host has it open.
constexpr LONG kLastFileMode = 2;

[[nodiscard]] HRESULT Answer(const PlannedAnswer& answer, BSTR* response) {
    if (answer.text) {
        *response = MakeBstr(*answer.text).Detach();
    }
    return answer.code;
}

[[nodiscard]] HRESULT AnswerAsPlannedOrProcess(std::wstring_view request, BSTR* response) {
    if (const auto planned = Host::Get().Plan().TakeAnswer()) {
        return Answer(*planned, response);
    }
    return Return(Host::Get().Process(request), response);
}

}  // namespace

HRESULT CRequestProcessor::ProcessRequest(BSTR ticket, BSTR request, BSTR* response) {
    return Guarded([&]() -> HRESULT {
        if (response == nullptr) {
            return E_POINTER;
        }
        *response = nullptr;
        Host::Get().RecordedRequests().push_back({std::wstring(View(request)), {}});
        if (const auto failure = Record(kProcessRequestCall, {Argument(ticket), Argument(request)})) {
            return *failure;
        }
        if (!is_connected_) {
            return kNotConnected;
        }
        if (!tickets_.contains(View(ticket))) {
            return kUnknownTicket;
        }
        PrintRequest(View(request));
        const HRESULT result = AnswerAsPlannedOrProcess(View(request), response);
        PrintResponse(View(*response));
        Host::Get().RecordedRequests().back().response = View(*response);
        return result;
    });
}

HRESULT CRequestProcessor::OpenConnection(BSTR application_id, BSTR application_name) {
    const auto open = [&]() -> HRESULT {
        if (is_connected_) {
            return kAlreadyConnected;
        }
        // The id may be empty; the name is what the user would be asked about.
        if (View(application_name).empty()) {
            return E_INVALIDARG;
        }
        is_connected_ = true;
        return S_OK;
    };
    return Serve(kOpenConnectionCall, open, application_id, application_name);
}

HRESULT CRequestProcessor::CloseConnection() {
    return Serve(kCloseConnectionCall, [&]() -> HRESULT {
        if (!is_connected_) {
            return kNotConnected;
        }
        tickets_.clear();
        is_connected_ = false;
        return S_OK;
    });
}

HRESULT CRequestProcessor::BeginSession(BSTR company_file_name, LONG file_mode, BSTR* ticket) {
    const auto begin = [&]() -> HRESULT {
        if (!is_connected_) {
            return kNotConnected;
        }
        if (file_mode < 0 || file_mode > kLastFileMode) {
            return E_INVALIDARG;
        }
        if (const auto name = View(company_file_name); !name.empty()) {
            Host::Get().RequireCompanyFile(std::wstring(name));
        }
        const auto added = tickets_.insert(Host::Get().NewTicket()).first;
        return Return(*added, ticket);
    };
    return ServeResult(kBeginSessionCall, ticket, begin, company_file_name, file_mode);
}

HRESULT CRequestProcessor::EndSession(BSTR ticket) {
    const auto end = [&]() -> HRESULT {
        if (!is_connected_) {
            return kNotConnected;
        }
        const auto found = tickets_.find(View(ticket));
        if (found == tickets_.end()) {
            return kUnknownTicket;
        }
        tickets_.erase(found);
        return S_OK;
    };
    return Serve(kEndSessionCall, end, ticket);
}

}  // namespace paylodge::refhost
