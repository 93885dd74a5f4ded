// HTTP and WebSocket on the loopback address. It runs on a thread of its own and knows nothing of what it serves.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "workbench/server/request_gate.hpp"

namespace paylodge::workbench {

struct Reply {
    unsigned status = 200;
    std::string content_type = "application/json";
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers = {};
};

using SocketId = std::uint64_t;

// Called on the server's thread.
class WebHandler {
  public:
    // A reply for a request that is refused, of which the body has not been read yet; otherwise nothing.
    [[nodiscard]] virtual std::optional<Reply> Refuse(const Request& request) = 0;
    // `reply` may be called on any thread, once.
    virtual void OnRequest(Request request, std::function<void(Reply)> reply) = 0;
    // `decide` is called once, on any thread: with a reply when the socket is refused. From an acceptance on,
    // OnSocketClosed comes in any case.
    virtual void OnSocket(SocketId socket, Request request, std::function<void(std::optional<Reply>)> decide) = 0;
    virtual void OnSocketMessage(SocketId socket, std::string text) = 0;
    virtual void OnSocketClosed(SocketId socket) = 0;

  protected:
    ~WebHandler() = default;
};

// The port is taken, or there is no network at all.
class CannotListen : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class WebServer {
  public:
    // Listens from now on; requests are answered once it runs. Port 0 takes any that is free. Throws CannotListen.
    explicit WebServer(std::uint16_t port);
    // Ends it; after that the handler is not called any more.
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    [[nodiscard]] std::uint16_t Port() const noexcept;

    void Start(WebHandler& handler);
    // On any thread. Texts of one socket arrive in the order in which they are sent; one that is gone takes none. A
    // socket is closed when too much waits for it.
    void Send(SocketId socket, std::string text);
    void Close(SocketId socket);

  private:
    class Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace paylodge::workbench
