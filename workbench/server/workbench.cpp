#include "workbench/server/workbench.hpp"

#include <comdef.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <sstream>
#include <utility>

#include "com/ascii_case.hpp"
#include "com/hresult_names.hpp"
#include "paylodge.h"
#include "refhost/books/xml_reader.hpp"
#include "refhost/commands/result_names.hpp"
#include "workbench/server/limits.hpp"
#include "workbench/server/secrets.hpp"

namespace paylodge::workbench {
namespace {

constexpr HRESULT kCannotCreate = static_cast<HRESULT>(0x800A01AD);
constexpr HRESULT kDisconnected = static_cast<HRESULT>(0x80010108);

constexpr std::array<std::string_view, 12> kPushes{
    "NotifyTransactionChanged", "SetReconFeeData",         "SetReconBatchData",
    "SetReconPaymentData",      "SetTransactionID",        "setEInvoicedTransactionData",
    "ProcessLHRequestData",     "SetCustomerListData",     "SetItemListData",
    "SetCustomerData",          "SetCustomerSearchResult", "SetLineItemsSearchResult"};

[[nodiscard]] Reply JsonReply(const Json& body) { return {.body = Text(body)}; }

[[nodiscard]] Reply Failure(unsigned status, std::string_view message) {
    return {.status = status, .body = Text({{"error", {{"message", message}}}})};
}

// "E_FAIL", or the number where it has no name.
[[nodiscard]] std::string NameOf(HRESULT result) {
    const std::string_view name = HResultName(result);
    return name.empty() ? ResultText(result) : std::string(name);
}

[[nodiscard]] Json ErrorOf(HRESULT result, std::string message) {
    if (message.empty()) {
        message = refhost::SystemText(result);
    }
    return {{"error",
             {{"message", message.empty() ? NameOf(result) : message},
              {"number", result},
              {"hresult", ResultText(result)},
              {"hresultName", NameOf(result)}}}};
}

[[nodiscard]] Reply FailedCall(HRESULT result, std::string message = {}) {
    return JsonReply(ErrorOf(result, std::move(message)));
}

[[nodiscard]] std::string LocalTime() {
    SYSTEMTIME time = {};
    ::GetLocalTime(&time);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02u.%03u", time.wYear, time.wMonth, time.wDay,
                  time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text.data();
}

[[nodiscard]] Json ValuesOf(const std::vector<Value>& arguments) {
    Json values = Json::array();
    for (const Value& argument : arguments) {
        values.push_back(argument.value.is_discarded() ? Json({{"type", "empty"}}) : argument.value);
    }
    return values;
}

[[nodiscard]] Json OutOf(const Outcome& outcome) {
    Json out = Json::object();
    for (const auto& [argument, value] : outcome.out) {
        out[std::to_string(argument)] = value;
    }
    return out;
}

[[nodiscard]] Json TrafficOf(std::vector<ProcessedRequest> processed) {
    Json traffic = Json::array();
    for (ProcessedRequest& one : processed) {
        traffic.push_back({{"request", std::move(one.request)}, {"response", std::move(one.response)}});
    }
    return traffic;
}

class Stopwatch {
  public:
    [[nodiscard]] std::int64_t Microseconds() const {
        return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin_).count();
    }

  private:
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

void AddOutcome(Json& entry, const Outcome& outcome, const Stopwatch& watch) {
    entry["hresult"] = ResultText(outcome.result);
    entry["hresultName"] = NameOf(outcome.result);
    entry["microseconds"] = watch.Microseconds();
    if (SUCCEEDED(outcome.result)) {
        entry["result"] = outcome.value;
    } else if (!outcome.description.empty()) {
        entry["error"] = outcome.description;
    }
    if (!outcome.out.empty()) {
        entry["out"] = OutOf(outcome);
    }
}

[[nodiscard]] Reply ReplyOf(const Outcome& outcome) {
    if (FAILED(outcome.result)) {
        return FailedCall(outcome.result, outcome.description);
    }
    Json reply = {{"result", outcome.value}};
    if (!outcome.out.empty()) {
        reply["out"] = OutOf(outcome);
    }
    return JsonReply(reply);
}

// The file's own name.
[[nodiscard]] std::string NameOfFile(const std::string& path) { return path.substr(path.find_last_of('\\') + 1); }

// The same target for a folder: links in its index.html start there.
[[nodiscard]] std::string WithSlash(const std::string& target) {
    const std::size_t end = std::min(target.find_first_of("?#"), target.size());
    return target.substr(0, end) + '/' + target.substr(end);
}

[[nodiscard]] Json JournalOf(const std::string& text) {
    const refhost::Document document = refhost::ReadXml(text);
    Json transactions = Json::array();
    for (const refhost::Element& record : document.root.children) {
        Json postings = Json::array();
        for (const refhost::Element& part : record.children) {
            if (part.name == "Posting") {
                postings.push_back({{"account", ChildText(part, "Account")},
                                    {"name", ChildText(part, "Name")},
                                    {"amount", ChildText(part, "Amount")}});
            }
        }
        transactions.push_back({{"type", ChildText(record, "Type")},
                                {"id", ChildText(record, "TxnID")},
                                {"date", ChildText(record, "TxnDate")},
                                {"number", ChildText(record, "RefNumber")},
                                {"name", ChildText(record, "Name")},
                                {"memo", ChildText(record, "Memo")},
                                {"total", ChildText(record, "Total")},
                                {"postings", std::move(postings)}});
    }
    return {{"transactions", std::move(transactions)}};
}

}  // namespace

Workbench::Workbench(Apartment& apartment, WebServer& server, HostProcess& host, RequestGate gate, const Served& served)
    : apartment_(apartment),
      server_(server),
      host_(host),
      gate_(std::move(gate)),
      page_files_(served.page),
      bridge_files_(served.bridge),
      kind_(served.kind),
      pages_(host) {}

const std::vector<Workbench::Route>& Workbench::Routes() {
    static const std::vector<Route> routes{
        {"GET", "/workbench/bridge.js", &Workbench::ServeBridge},
        {"GET", "/workbench/session", &Workbench::StartSession},
        {"GET", "/workbench/empty", &Workbench::AnswerEmpty},
        {"POST", "/workbench/objects", &Workbench::CreateObject},
        {"POST", "/workbench/call", &Workbench::Call},
        {"POST", "/workbench/release", &Workbench::Release},
        {"GET", "/workbench/state", &Workbench::ShowState},
        {"POST", "/workbench/push", &Workbench::Push},
        {"POST", "/workbench/channel", &Workbench::SetChannel},
        {"POST", "/workbench/browser", &Workbench::SetBrowser},
        {"POST", "/workbench/faults", &Workbench::PlanFault},
        {"DELETE", "/workbench/faults", &Workbench::ClearFaults},
        {"POST", "/workbench/request", &Workbench::SendRequest},
        {"GET", "/workbench/journal", &Workbench::ShowJournal},
        {"GET", "/workbench/log", &Workbench::ShowLog},
        {"DELETE", "/workbench/log", &Workbench::ClearLog},
    };
    return routes;
}

std::optional<Reply> Workbench::Refuse(const Request& request) {
    const auto refusal = gate_.Check(request);
    return refusal ? std::optional(Failure(refusal->status, refusal->message)) : std::nullopt;
}

void Workbench::OnRequest(Request request, std::function<void(Reply)> reply) {
    apartment_.Post([this, request = std::move(request), reply = std::move(reply)] { reply(Answer(request)); });
}

void Workbench::OnSocket(SocketId socket, Request request, std::function<void(std::optional<Reply>)> decide) {
    apartment_.Post([this, socket, request = std::move(request), decide = std::move(decide)] {
        DecideSocket(socket, request, decide);
    });
}

void Workbench::OnSocketMessage(SocketId socket, std::string text) {
    apartment_.Post([this, socket, text = std::move(text)] { ReadMessage(socket, text); });
}

void Workbench::OnSocketClosed(SocketId socket) {
    apartment_.Post([this, socket] {
        if (const Page* const page = pages_.FindBySocket(socket)) {
            EndPage(page->id, "gone");
        }
    });
}

Reply Workbench::Answer(const Request& request) {
    try {
        const auto target = ReadTarget(request.target);
        if (!target) {
            return Failure(400, "The path is not well encoded.");
        }
        return target->path.starts_with("/workbench/") ? AnswerRoute(request, *target) : ServeFile(request, *target);
    } catch (const BadMessage& error) {
        return Failure(400, error.what());
    } catch (const _com_error& error) {
        return FailedCall(error.Error());
    } catch (const std::exception& error) {
        return Failure(500, std::string("The workbench failed: ") + error.what());
    }
}

Reply Workbench::AnswerRoute(const Request& request, const Target& target) {
    bool is_known = false;
    for (const Route& route : Routes()) {
        if (route.path != target.path) {
            continue;
        }
        is_known = true;
        if (route.method == request.method) {
            if (request.method == "POST" && !request.content_type.starts_with("application/json")) {
                return Failure(415, "The body has to be JSON: Content-Type: application/json.");
            }
            return (this->*route.handler)(request, target);
        }
    }
    return is_known ? Failure(405, "This path takes another method: workbench/README.md lists them.")
                    : Failure(404, "There is nothing under this path: workbench/README.md lists what there is.");
}

Reply Workbench::ServeFile(const Request& request, const Target& target) {
    if (request.method != "GET" && request.method != "HEAD") {
        return Failure(405, "Files are only read: GET.");
    }
    const auto file = RelativeFile(target.path);
    auto bytes = file ? page_files_.Read(*file) : std::nullopt;
    if (!bytes) {
        if (file && !target.path.ends_with('/') && page_files_.IsFolder(*file)) {
            return {.status = 301,
                    .content_type = "text/plain",
                    .body = {},
                    .headers = {{"Location", WithSlash(request.target)}}};
        }
        return Failure(404, "The page folder has no such file.");
    }
    const std::string_view type = MediaType(*file);
    if (type == "text/html" && request.is_navigation) {
        return ServeDocument(request, *bytes);
    }
    Reply reply{.content_type = std::string(type),
                .body = {},
                .headers = {{"Content-Security-Policy", ContentPolicy(kind_, request.host, {})}}};
    if (IsText(type) && IsUtf8(*bytes)) {
        reply.content_type += "; charset=utf-8";
    }
    reply.body = std::move(*bytes);
    return reply;
}

Reply Workbench::ServeDocument(const Request& request, const std::string& html) {
    const Page* const page = pages_.Add(MakeSecret(), "http://" + request.host + request.target);
    if (page == nullptr) {
        return Failure(429, "Too many pages are open: close one of them.");
    }
    const DocumentKeys keys{.page = page->id, .token = gate_.Token(), .nonce = MakeSecret()};
    return {.content_type = IsUtf8(html) ? "text/html; charset=utf-8" : "text/html",
            .body = WithBridge(html, keys),
            .headers = {{"Content-Security-Policy", ContentPolicy(kind_, request.host, keys.nonce)}}};
}

Reply Workbench::ServeBridge(const Request& /*request*/, const Target& /*target*/) {
    auto script = bridge_files_.Read("bridge.js");
    if (!script) {
        return Failure(404, "bridge.js is missing: it belongs into the folder bridge beside the program.");
    }
    return {.content_type = "text/javascript; charset=utf-8", .body = std::move(*script)};
}

Reply Workbench::StartSession(const Request& request, const Target& target) {
    const auto path = target.query.find("path");
    const bool has_path = path != target.query.end() && path->second.starts_with('/');
    const Page* const page = pages_.Add(MakeSecret(), "http://" + request.host + (has_path ? path->second : "/"));
    if (page == nullptr) {
        return Failure(429, "Too many pages are open: close one of them.");
    }
    return JsonReply({{"page", page->id}, {"token", gate_.Token()}});
}

Reply Workbench::AnswerEmpty(const Request& /*request*/, const Target& /*target*/) { return {.body = "{}"}; }

Reply Workbench::CreateObject(const Request& request, const Target& /*target*/) {
    const CreateRequest wanted = ReadCreateRequest(request.body);
    Page* const page = pages_.Find(wanted.page);
    if (page == nullptr) {
        return {.status = 404, .body = Text(ErrorOf(kDisconnected, "The page has ended: reload it."))};
    }
    if (page->objects.size() >= kMostObjectsOfPage) {
        return Failure(429, "The page has 64 objects and cannot have more: release some.");
    }
    const std::string id = page->id;
    const auto number = pages_.Create(
        *page, wanted.class_name, [this, id](std::int64_t object, const std::string& name, Json arguments) {
            Page* const listener = pages_.Find(id);
            if (listener != nullptr) {
                Json event = {
                    {"type", "event"}, {"object", object}, {"name", name}, {"arguments", std::move(arguments)}};
                Json entry = {{"kind", "event"},
                              {"page", id},
                              {"object", object},
                              {"member", name},
                              {"arguments", event["arguments"]}};
                entry["message"] = SendToPage(*listener, std::move(event));
                Log(std::move(entry));
            }
        });
    Log({{"kind", "create"},
         {"page", id},
         {"class", wanted.class_name},
         {"object", number ? Json(*number) : Json()},
         {"hresult", ResultText(number ? S_OK : kCannotCreate)},
         {"hresultName", number ? "S_OK" : ResultText(kCannotCreate)}});
    if (!number) {
        return FailedCall(kCannotCreate, "Automation server can't create object");
    }
    const PageObject& object = *page->objects.at(*number);
    const ComPtr<ITypeInfo> events = EventsOf(*object.dispatch.Get());
    return JsonReply({{"object", *number},
                      {"class", object.class_name},
                      {"approved", !object.is_locked_out},
                      {"members", DescribeMembers(*object.dispatch.Get())},
                      {"events", events ? DescribeEvents(*events.Get()) : Json::array()}});
}

Reply Workbench::Call(const Request& request, const Target& /*target*/) {
    const CallRequest wanted = ReadCallRequest(request.body);
    Page* const page = pages_.Find(wanted.page);
    const auto found = page == nullptr ? decltype(page->objects.end()){} : page->objects.find(wanted.object);
    if (page == nullptr || found == page->objects.end()) {
        return {.status = 404, .body = Text(ErrorOf(kDisconnected, {}))};
    }
    const ComPtr<IDispatch> dispatch = found->second->dispatch;
    Json entry = {{"kind", found->second->is_locked_out ? "refused" : "call"},
                  {"page", wanted.page},
                  {"object", wanted.object},
                  {"class", found->second->class_name},
                  {"member", wanted.member},
                  {"arguments", ValuesOf(wanted.arguments)}};
    const Stopwatch watch;
    const Outcome outcome = CallMember(*dispatch.Get(), wanted.member, wanted.kind, wanted.arguments);
    AddOutcome(entry, outcome, watch);
    if (auto traffic = host_.TakeTraffic(); !traffic.empty()) {
        entry["traffic"] = TrafficOf(std::move(traffic));
    }
    if (SUCCEEDED(outcome.result) && EqualsIgnoringAsciiCase(std::string_view(wanted.member), "SetChannelName") &&
        !wanted.arguments.empty() && wanted.arguments[0].value.is_string()) {
        channel_ = wanted.arguments[0].value.get<std::string>();
    }
    Log(std::move(entry));
    return ReplyOf(outcome);
}

Reply Workbench::Release(const Request& request, const Target& /*target*/) {
    const ReleaseRequest wanted = ReadReleaseRequest(request.body);
    Page* const page = pages_.Find(wanted.page);
    if (page == nullptr || page->objects.erase(wanted.object) == 0) {
        return {.status = 404, .body = Text(ErrorOf(kDisconnected, {}))};
    }
    Log({{"kind", "release"}, {"page", wanted.page}, {"object", wanted.object}});
    return {.body = "{}"};
}

Reply Workbench::ShowState(const Request& /*request*/, const Target& /*target*/) {
    Json pages = Json::array();
    std::size_t objects = 0;
    for (const auto& [id, page] : pages_.All()) {
        objects += page.objects.size();
        pages.push_back({{"page", id},
                         {"address", page.address},
                         {"approved", page.is_approved},
                         {"objects", page.objects.size()},
                         {"connected", page.socket.has_value()}});
    }
    const std::string file = host_.CompanyFile();
    const Outcome calls = host_.CallReferenceHost("PlannableCalls", CallKind::kGet, {});
    Json names = Json::array();
    const std::string text = calls.value.is_string() ? calls.value.get<std::string>() : std::string();
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        names.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return JsonReply({{"company", {{"file", file}, {"name", NameOfFile(file)}}},
                      {"version", host_.ComponentVersion()},
                      {"architecture", sizeof(void*) == 8 ? "x64" : "x86"},
                      {"site", gate_.Site()},
                      {"browser", {{"mode", runs_scripts_ ? "page" : "none"}, {"instance", instance_}}},
                      {"channel", channel_},
                      {"pages", std::move(pages)},
                      {"objects", objects},
                      {"componentUnused", host_.IsComponentUnused()},
                      {"faults", PlannedFaults()},
                      {"calls", std::move(names)}});
}

Outcome Workbench::CallControl(const std::string& method, const std::vector<Value>& arguments) const {
    const ComPtr<IDispatch> control = host_.CreateObject(CLSID_PaylodgeCtrl);
    return CallMember(*control.Get(), method, CallKind::kCall, arguments);
}

Reply Workbench::Push(const Request& request, const Target& /*target*/) {
    const PushRequest wanted = ReadPushRequest(request.body);
    const auto* const method = std::ranges::find_if(
        kPushes, [&](std::string_view name) { return EqualsIgnoringAsciiCase(name, wanted.method); });
    if (method == kPushes.end()) {
        return Failure(400, "There is no push of this name: workbench/README.md lists them.");
    }
    const Stopwatch watch;
    Json entry = {{"kind", "push"}, {"member", *method}, {"arguments", ValuesOf(wanted.arguments)}};
    const Outcome outcome = CallControl(std::string(*method), wanted.arguments);
    AddOutcome(entry, outcome, watch);
    Log(std::move(entry));
    return ReplyOf(outcome);
}

Reply Workbench::SetChannel(const Request& request, const Target& /*target*/) {
    const std::string name = ReadTextMember(request.body, "name");
    const Outcome outcome = CallControl("SetChannelName", {{name, false}});
    if (FAILED(outcome.result)) {
        return ReplyOf(outcome);
    }
    channel_ = name;
    return {.body = "{}"};
}

Reply Workbench::SetBrowser(const Request& request, const Target& /*target*/) {
    const std::string instance = ReadTextMember(request.body, "instance");
    if (instance != "page" && instance != "none") {
        return Failure(400, R"(The message needs the member "instance", "page" or "none".)");
    }
    runs_scripts_ = instance == "page";
    ChooseBrowserInstance();
    return {.body = "{}"};
}

Json Workbench::PlannedFaults() const {
    const Outcome planned = host_.CallReferenceHost("PlannedFailures", CallKind::kGet, {});
    std::istringstream lines(planned.value.is_string() ? planned.value.get<std::string>() : std::string());
    Json faults = Json::array();
    std::string call;
    HRESULT result = S_OK;
    long nth = 0;
    while (lines >> call >> result >> nth) {
        faults.push_back({{"call", call}, {"hresult", result}, {"hresultName", NameOf(result)}, {"nth", nth}});
    }
    return faults;
}

Reply Workbench::PlanFault(const Request& request, const Target& /*target*/) {
    const FaultRequest wanted = ReadFaultRequest(request.body);
    const Outcome outcome = host_.CallReferenceHost(
        "FailCall", CallKind::kCall, {{wanted.call, false}, {wanted.hresult, false}, {wanted.nth, false}});
    if (FAILED(outcome.result)) {
        return ReplyOf(outcome);
    }
    const auto result = static_cast<HRESULT>(static_cast<std::uint32_t>(static_cast<std::int64_t>(wanted.hresult)));
    Log({{"kind", "fault"},
         {"member", wanted.call},
         {"call", wanted.call},
         {"hresult", ResultText(result)},
         {"hresultName", NameOf(result)},
         {"nth", wanted.nth}});
    return JsonReply({{"faults", PlannedFaults()}});
}

Reply Workbench::ClearFaults(const Request& /*request*/, const Target& /*target*/) {
    const Outcome outcome = host_.CallReferenceHost("ClearFaults", CallKind::kCall, {});
    if (FAILED(outcome.result)) {
        return ReplyOf(outcome);
    }
    Log({{"kind", "fault"}, {"text", "none is planned any more"}});
    return JsonReply({{"faults", PlannedFaults()}});
}

Reply Workbench::SendRequest(const Request& request, const Target& /*target*/) {
    const std::string body = ReadTextMember(request.body, "body");
    const ComPtr<IDispatch> accounting = host_.CreateObject(CLSID_Paylodge);
    const Stopwatch watch;
    const Outcome outcome = CallMember(*accounting.Get(), "ProcessLHRequest", CallKind::kCall, {{body, false}});
    Json entry = {{"kind", "request"}, {"member", "ProcessLHRequest"}, {"traffic", TrafficOf(host_.TakeTraffic())}};
    AddOutcome(entry, outcome, watch);
    // The traffic has it.
    entry.erase("result");
    Log(std::move(entry));
    return FAILED(outcome.result) ? ReplyOf(outcome) : JsonReply({{"response", outcome.value}});
}

Reply Workbench::ShowJournal(const Request& /*request*/, const Target& target) {
    int count = 50;
    if (const auto found = target.query.find("count"); found != target.query.end()) {
        const std::string& text = found->second;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
        if (error != std::errc() || end != text.data() + text.size() || count < 0 || count > 1000) {
            return Failure(400, "count is a number from 0 to 1000.");
        }
    }
    const Outcome outcome = host_.CallReferenceHost("Journal", CallKind::kCall, {{count, false}});
    return FAILED(outcome.result) ? ReplyOf(outcome) : JsonReply(JournalOf(outcome.value.get<std::string>()));
}

Reply Workbench::ShowLog(const Request& /*request*/, const Target& /*target*/) {
    std::string text = "{\"entries\":[";
    for (const std::string& entry : log_.Entries()) {
        text.append(text.ends_with('[') ? "\n" : ",\n").append(entry);
    }
    return {.body = text + "\n]}\n",
            .headers = {{"Content-Disposition", "attachment; filename=\"workbench-log.json\""}}};
}

Reply Workbench::ClearLog(const Request& /*request*/, const Target& /*target*/) {
    log_.Clear();
    return {.body = "{}"};
}

void Workbench::DecideSocket(SocketId socket, const Request& request,
                             const std::function<void(std::optional<Reply>)>& decide) {
    const auto target = ReadTarget(request.target);
    if (!target || target->path != "/workbench/socket") {
        decide(Failure(404, "There is no socket under this path."));
        return;
    }
    const auto id = target->query.find("page");
    Page* const page = id == target->query.end() ? nullptr : pages_.Find(id->second);
    if (page == nullptr || page->socket) {
        decide(Failure(404, "The page has ended or has a socket already: reload it."));
        return;
    }
    pages_.Connect(*page, socket);
    decide(std::nullopt);
    server_.Send(socket, Text({{"type", "hello"},
                               {"page", page->id},
                               {"approved", page->is_approved},
                               {"company", NameOfFile(host_.CompanyFile())},
                               {"version", host_.ComponentVersion()}}));
    for (std::string& text : page->waiting) {
        server_.Send(socket, std::move(text));
    }
    page->waiting.clear();
    ChooseBrowserInstance();
    Log({{"kind", "page"}, {"page", page->id}, {"text", "connected: " + page->address}});
}

void Workbench::ReadMessage(SocketId socket, const std::string& text) {
    Page* const page = pages_.FindBySocket(socket);
    if (page == nullptr) {
        return;
    }
    try {
        const PageMessage message = ReadPageMessage(text);
        if (message.type == PageMessage::Type::kWatch) {
            page->is_watching = message.is_on;
            for (const std::string& entry : log_.Entries()) {
                if (message.is_on) {
                    server_.Send(socket, R"({"type":"log","entry":)" + entry + "}");
                }
            }
            return;
        }
        Json entry = {{"kind", "delivered"}, {"page", page->id}, {"message", message.n}};
        if (message.type == PageMessage::Type::kFailed) {
            entry["error"] = message.message;
        }
        Log(std::move(entry));
    } catch (const BadMessage&) {
        server_.Close(socket);
    }
}

void Workbench::EndPage(std::string id, const char* reason) {
    pages_.Remove(id);
    ChooseBrowserInstance();
    Log({{"kind", "page"}, {"page", std::move(id)}, {"text", reason}});
}

void Workbench::RemoveExpiredPages() {
    for (const std::string& id : pages_.Expired(std::chrono::steady_clock::now())) {
        EndPage(id, "never connected");
    }
}

void Workbench::ChooseBrowserInstance() {
    const Page* const newest = runs_scripts_ ? pages_.Newest() : nullptr;
    instance_ = newest == nullptr ? std::string() : newest->id;
    host_.SetBrowserInstance(runs_scripts_ ? instance_ : "UNDEFINED");
}

void Workbench::RunScript(const std::string& browser_instance, const std::string& script) {
    Page* const page = pages_.Find(browser_instance);
    Json entry = {{"kind", "script"}, {"page", browser_instance}, {"text", script}};
    if (page == nullptr) {
        entry["error"] = "the page has gone";
    } else {
        entry["message"] = SendToPage(*page, {{"type", "script"}, {"text", script}});
    }
    Log(std::move(entry));
}

std::int64_t Workbench::SendToPage(Page& page, Json message) {
    const std::int64_t number = ++page.last_message;
    message["n"] = number;
    if (page.socket) {
        server_.Send(*page.socket, Text(message));
    } else if (page.waiting.size() < 1000) {
        page.waiting.push_back(Text(message));
    }
    return number;
}

void Workbench::Log(Json entry) {
    entry["time"] = LocalTime();
    const std::string& text = log_.Add(std::move(entry));
    for (const auto& [id, page] : pages_.All()) {
        if (page.is_watching && page.socket) {
            server_.Send(*page.socket, R"({"type":"log","entry":)" + text + "}");
        }
    }
}

}  // namespace paylodge::workbench
