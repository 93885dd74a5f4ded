// The pages that are open, each with its objects, which end with it.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "workbench/server/event_sink.hpp"
#include "workbench/server/host_process.hpp"
#include "workbench/server/web_server.hpp"

namespace paylodge::workbench {

// An object that a page has created. It lets go of its events and its site before it is released.
struct PageObject {
    PageObject(ComPtr<IDispatch> created, std::string name)
        : dispatch(std::move(created)), class_name(std::move(name)) {}
    ~PageObject();
    PageObject(const PageObject&) = delete;
    PageObject& operator=(const PageObject&) = delete;

    ComPtr<IDispatch> dispatch;
    std::string class_name;
    // The control knows no site lock.
    bool is_locked_out = false;
    std::unique_ptr<EventConnection> events;
};

struct Page {
    std::string id;
    // The document's URL.
    std::string address;
    // Whether the site lock of the accounting object accepts the page.
    bool is_approved = false;
    std::chrono::steady_clock::time_point served;
    std::optional<SocketId> socket;
    // Counts connections, so that the newest one can be found.
    std::uint64_t connection = 0;
    bool is_watching = false;
    std::int64_t last_message = 0;
    // What came for the page before it had a socket.
    std::vector<std::string> waiting;
    std::map<std::int64_t, std::unique_ptr<PageObject>> objects;
};

class Pages {
  public:
    explicit Pages(HostProcess& host) noexcept : host_(&host) {}

    // A page for a document that is about to be served; null when there are too many. The oldest one that never
    // connected goes before that.
    [[nodiscard]] Page* Add(std::string id, std::string address);
    [[nodiscard]] Page* Find(const std::string& id);
    [[nodiscard]] Page* FindBySocket(SocketId socket);
    // The page that connected last, or null.
    [[nodiscard]] Page* Newest();
    void Connect(Page& page, SocketId socket);
    void Remove(const std::string& id);
    // Ids of the pages that never connected and have had their time.
    [[nodiscard]] std::vector<std::string> Expired(std::chrono::steady_clock::time_point now) const;

    // The number of a new object of the page; nothing for an unknown class. Throws COM errors.
    [[nodiscard]] std::optional<std::int64_t> Create(
        Page& page, const std::string& class_name,
        std::function<void(std::int64_t, const std::string&, Json)> on_event);

    [[nodiscard]] std::map<std::string, Page>& All() noexcept { return pages_; }

  private:
    HostProcess* host_;
    std::map<std::string, Page> pages_;
    std::int64_t last_object_ = 0;
    std::uint64_t last_connection_ = 0;
};

}  // namespace paylodge::workbench
