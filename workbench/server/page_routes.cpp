// What a page asks for: objects, and calls of their members.
#include <utility>

#include "com/ascii_case.hpp"
#include "workbench/server/limits.hpp"
#include "workbench/server/log_entries.hpp"
#include "workbench/server/replies.hpp"
#include "workbench/server/secrets.hpp"
#include "workbench/server/workbench.hpp"

namespace paylodge::workbench {
namespace {

constexpr HRESULT kCannotCreate = static_cast<HRESULT>(0x800A01AD);
constexpr HRESULT kDisconnected = static_cast<HRESULT>(0x80010108);

}  // namespace

Reply Workbench::StartSession(const Request& request, const Target& target) {
    const auto path = target.query.find("path");
    const bool has_path = path != target.query.end() && path->second.starts_with('/');
    const Page* const page = pages_.Add(MakeSecret(), "http://" + request.host + (has_path ? path->second : "/"));
    if (page == nullptr) {
        return Failure(429, "Too many pages are open: close one of them.");
    }
    return JsonReply({{"page", page->id}, {"token", gate_.Token()}});
}

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
        return {.status = 404, .body = Text(ErrorOf(kDisconnected))};
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
        return {.status = 404, .body = Text(ErrorOf(kDisconnected))};
    }
    Log({{"kind", "release"}, {"page", wanted.page}, {"object", wanted.object}});
    return {.body = "{}"};
}

}  // namespace paylodge::workbench
