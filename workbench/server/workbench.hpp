// What the program answers: here files, the pages and their sockets, and the log; in page_routes.cpp the requests of a
// page, in operator_routes.cpp those of the operator. Everything happens on the apartment's thread but for the check of
// who asks.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "workbench/server/apartment.hpp"
#include "workbench/server/document.hpp"
#include "workbench/server/host_process.hpp"
#include "workbench/server/log_book.hpp"
#include "workbench/server/page_files.hpp"
#include "workbench/server/pages.hpp"
#include "workbench/server/request_gate.hpp"
#include "workbench/server/served_path.hpp"
#include "workbench/server/web_server.hpp"

namespace paylodge::workbench {

struct Served {
    std::filesystem::path page;
    PageKind kind = PageKind::kOwn;
    // The folder with bridge.js.
    std::filesystem::path bridge;
};

class Workbench final : public WebHandler {
  public:
    // All of them have to outlive it, and the server has to have ended before.
    Workbench(Apartment& apartment, WebServer& server, HostProcess& host, RequestGate gate, const Served& served);

    // A script that the host runs in a browser instance.
    void RunScript(const std::string& browser_instance, const std::string& script);
    // To be called now and then.
    void RemoveExpiredPages();

    [[nodiscard]] std::optional<Reply> Refuse(const Request& request) override;
    void OnRequest(Request request, std::function<void(Reply)> reply) override;
    void OnSocket(SocketId socket, Request request, std::function<void(std::optional<Reply>)> decide) override;
    void OnSocketMessage(SocketId socket, std::string text) override;
    void OnSocketClosed(SocketId socket) override;

  private:
    using Handler = Reply (Workbench::*)(const Request&, const Target&);
    struct Route {
        std::string_view method;
        std::string_view path;
        Handler handler;
    };
    static const std::vector<Route>& Routes();

    [[nodiscard]] Reply Answer(const Request& request);
    [[nodiscard]] Reply AnswerRoute(const Request& request, const Target& target);
    [[nodiscard]] Reply ServeFile(const Request& request, const Target& target);
    [[nodiscard]] Reply ServeDocument(const Request& request, const std::string& html);

    [[nodiscard]] Reply ServeBridge(const Request& request, const Target& target);
    [[nodiscard]] Reply AnswerEmpty(const Request& request, const Target& target);
    void DecideSocket(SocketId socket, const Request& request, const std::function<void(std::optional<Reply>)>& decide);
    void ReadMessage(SocketId socket, const std::string& text);
    void EndPage(std::string id, const char* reason);
    void ChooseBrowserInstance();
    // Sends a script or event, numbered. Returns the number.
    std::int64_t SendToPage(Page& page, Json message);
    void Log(Json entry);

    // page_routes.cpp
    [[nodiscard]] Reply StartSession(const Request& request, const Target& target);
    [[nodiscard]] Reply CreateObject(const Request& request, const Target& target);
    [[nodiscard]] Reply Call(const Request& request, const Target& target);
    [[nodiscard]] Reply Release(const Request& request, const Target& target);

    // operator_routes.cpp
    [[nodiscard]] Reply ShowState(const Request& request, const Target& target);
    [[nodiscard]] Reply Push(const Request& request, const Target& target);
    [[nodiscard]] Reply SetChannel(const Request& request, const Target& target);
    [[nodiscard]] Reply SetBrowser(const Request& request, const Target& target);
    [[nodiscard]] Reply PlanFault(const Request& request, const Target& target);
    [[nodiscard]] Reply ClearFaults(const Request& request, const Target& target);
    [[nodiscard]] Reply SendRequest(const Request& request, const Target& target);
    [[nodiscard]] Reply ShowJournal(const Request& request, const Target& target);
    [[nodiscard]] Reply ShowLog(const Request& request, const Target& target);
    [[nodiscard]] Reply ClearLog(const Request& request, const Target& target);
    // Those that are still to come.
    [[nodiscard]] Json PlannedFaults() const;
    [[nodiscard]] Outcome CallControl(const std::string& method, const std::vector<Value>& arguments) const;

    Apartment& apartment_;
    WebServer& server_;
    HostProcess& host_;
    const RequestGate gate_;
    PageFiles page_files_;
    PageFiles bridge_files_;
    PageKind kind_;
    Pages pages_;
    LogBook log_;
    bool runs_scripts_ = true;
    std::string instance_;
    std::string channel_ = "Default";
};

}  // namespace paylodge::workbench
