#include "workbench/server/workbench.hpp"

#include <comdef.h>

#include <algorithm>
#include <utility>

#include "workbench/server/log_entries.hpp"
#include "workbench/server/replies.hpp"
#include "workbench/server/secrets.hpp"

namespace paylodge::workbench {
namespace {

// The same target for a folder: links in its index.html start there.
[[nodiscard]] std::string WithSlash(const std::string& target) {
    const std::size_t end = std::min(target.find_first_of("?#"), target.size());
    return target.substr(0, end) + '/' + target.substr(end);
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

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): the table of routes takes members.
Reply Workbench::AnswerEmpty(const Request& /*request*/, const Target& /*target*/) { return {.body = "{}"}; }

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
                               {"company", host_.CompanyFileName()},
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
