// What the operator asks for: the state, pushes of the host, faults, requests, the journal and the log.
#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>
#include <utility>

#include "com/ascii_case.hpp"
#include "paylodge.h"
#include "refhost/books/xml_reader.hpp"
#include "workbench/server/log_entries.hpp"
#include "workbench/server/replies.hpp"
#include "workbench/server/workbench.hpp"

namespace paylodge::workbench {
namespace {

constexpr std::array<std::string_view, 12> kPushes{
    "NotifyTransactionChanged", "SetReconFeeData",         "SetReconBatchData",
    "SetReconPaymentData",      "SetTransactionID",        "setEInvoicedTransactionData",
    "ProcessLHRequestData",     "SetCustomerListData",     "SetItemListData",
    "SetCustomerData",          "SetCustomerSearchResult", "SetLineItemsSearchResult"};

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
    const Outcome calls = host_.CallReferenceHost("PlannableCalls", CallKind::kGet, {});
    Json names = Json::array();
    const std::string text = calls.value.is_string() ? calls.value.get<std::string>() : std::string();
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        names.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return JsonReply({{"company", {{"file", host_.CompanyFile()}, {"name", host_.CompanyFileName()}}},
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

}  // namespace paylodge::workbench
