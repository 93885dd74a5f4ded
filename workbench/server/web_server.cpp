#include "workbench/server/web_server.hpp"

// Before windows.h, which would bring the older sockets.
#include <winsock2.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <thread>

#include "workbench/server/limits.hpp"

namespace paylodge::workbench {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using tcp = asio::ip::tcp;
using beast::error_code;

[[nodiscard]] std::string Field(const http::fields& fields, beast::string_view name) {
    const auto found = fields.find(name);
    return found == fields.end() ? std::string() : std::string(found->value());
}

// Everything but the body.
template <class Body>
[[nodiscard]] Request HeadOf(const http::request<Body>& message) {
    const auto hosts = message.equal_range(http::field::host);
    return {.method = std::string(message.method_string()),
            .target = std::string(message.target()),
            .host = Field(message, "Host"),
            .origin = Field(message, "Origin"),
            .token = Field(message, "X-Workbench-Token"),
            .content_type = Field(message, "Content-Type"),
            .fetch_site = Field(message, "Sec-Fetch-Site"),
            .has_one_host = std::distance(hosts.first, hosts.second) == 1,
            .wants_socket = websocket::is_upgrade(message),
            .is_navigation = Field(message, "Accept").find("application/xhtml+xml") != std::string::npos,
            .body = {}};
}

[[nodiscard]] Reply PlainReply(unsigned status, const std::string& message) {
    return {
        .status = status, .content_type = "application/json", .body = R"({"error":{"message":")" + message + "\"}}"};
}

using Socket = websocket::stream<beast::tcp_stream>;
// One for each request.
using Parser = http::request_parser<http::string_body>;

}  // namespace

class WebServer::Parts {
  public:
    explicit Parts(std::uint16_t port);

    class Connection;
    class SocketSession;

    asio::io_context context{1};
    tcp::acceptor acceptor{context};
    WebHandler* handler = nullptr;
    std::set<std::shared_ptr<Connection>> connections;
    std::map<SocketId, std::shared_ptr<SocketSession>> sockets;
    SocketId last_socket = 0;
    std::thread thread;

    void Accept();
    [[nodiscard]] bool IsFull() const { return connections.size() + sockets.size() >= kMostConnections; }
    void EndAll();
};

// A WebSocket, from the decision that it is accepted to its end.
class WebServer::Parts::SocketSession : public std::enable_shared_from_this<SocketSession> {
  public:
    SocketSession(Parts& server, SocketId id, beast::tcp_stream stream)
        : server_(server), id_(id), socket_(std::move(stream)) {}

    void Open(const http::request<http::string_body>& upgrade) {
        beast::get_lowest_layer(socket_).expires_never();
        websocket::stream_base::timeout times = websocket::stream_base::timeout::suggested(beast::role_type::server);
        times.idle_timeout = kIdleTime;
        times.keep_alive_pings = true;
        socket_.set_option(times);
        // A message is in memory as a whole anyway.
        socket_.auto_fragment(false);
        socket_.read_message_max(kLargestPageMessage);
        socket_.async_accept(upgrade, [self = shared_from_this()](error_code error) {
            if (error) {
                self->End();
                return;
            }
            self->is_open_ = true;
            self->Write();
            self->Read();
        });
    }

    void Send(std::string text) {
        waiting_bytes_ += text.size();
        waiting_.push_back(std::move(text));
        if (waiting_bytes_ > kMostWaitingBytes) {
            Drop();
        } else if (waiting_.size() == 1) {
            Write();
        }
    }

    // Without the closing handshake, which a page that does not read would never answer.
    void Drop() {
        error_code ignored;
        static_cast<void>(beast::get_lowest_layer(socket_).socket().close(ignored));
        End();
    }

    void Close() {
        if (!is_open_) {
            Drop();
            return;
        }
        socket_.async_close(websocket::close_code::going_away,
                            [self = shared_from_this()](error_code) { self->Drop(); });
    }

  private:
    void Read() {
        socket_.async_read(buffer_, [self = shared_from_this()](error_code error, std::size_t) {
            if (error || !self->socket_.got_text()) {
                self->Drop();
                return;
            }
            self->server_.handler->OnSocketMessage(self->id_, beast::buffers_to_string(self->buffer_.data()));
            self->buffer_.clear();
            self->Read();
        });
    }

    void Write() {
        if (!is_open_ || is_ended_ || waiting_.empty()) {
            return;
        }
        socket_.text(true);
        socket_.async_write(asio::buffer(waiting_.front()), [self = shared_from_this()](error_code error, std::size_t) {
            if (error) {
                self->Drop();
                return;
            }
            self->waiting_bytes_ -= self->waiting_.front().size();
            self->waiting_.pop_front();
            self->Write();
        });
    }

    void End() {
        if (!is_ended_) {
            is_ended_ = true;
            const auto self = shared_from_this();
            server_.sockets.erase(id_);
            server_.handler->OnSocketClosed(id_);
        }
    }

    Parts& server_;
    SocketId id_;
    Socket socket_;
    beast::flat_buffer buffer_;
    // The first one is being written.
    std::deque<std::string> waiting_;
    std::size_t waiting_bytes_ = 0;
    bool is_open_ = false;
    bool is_ended_ = false;
};

// One connection: request by request, until it becomes a socket or ends.
class WebServer::Parts::Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(Parts& server, tcp::socket socket) : server_(server), stream_(std::move(socket)) {}

    void Begin() {
        stream_.socket().set_option(tcp::no_delay(true));
        WaitForRequest(kRequestTime);
    }

    void RefuseConnection() {
        keeps_alive_ = false;
        Answer(PlainReply(503, "Too many connections are open: close some pages of the workbench."));
    }

    void Drop() {
        error_code ignored;
        static_cast<void>(stream_.socket().close(ignored));
        End();
    }

  private:
    // The time of a request counts from its first byte.
    void WaitForRequest(std::chrono::seconds time) {
        parser_ = std::make_unique<Parser>();
        parser_->header_limit(kLargestHeader);
        parser_->body_limit(kLargestBody);
        if (buffer_.size() > 0) {
            ReadHead();
            return;
        }
        stream_.expires_after(time);
        stream_.async_read_some(buffer_.prepare(kLargestHeader),
                                [self = shared_from_this()](error_code error, std::size_t size) {
                                    if (error) {
                                        self->Drop();
                                        return;
                                    }
                                    self->buffer_.commit(size);
                                    self->ReadHead();
                                });
    }

    void ReadHead() {
        stream_.expires_after(kRequestTime);
        http::async_read_header(stream_, buffer_, *parser_, [self = shared_from_this()](error_code error, std::size_t) {
            if (error) {
                self->AnswerError(error);
                return;
            }
            const auto refusal = self->server_.handler->Refuse(HeadOf(self->parser_->get()));
            if (refusal) {
                self->keeps_alive_ = false;
                self->Answer(*refusal);
                return;
            }
            self->ReadBody();
        });
    }

    void ReadBody() {
        http::async_read(stream_, buffer_, *parser_, [self = shared_from_this()](error_code error, std::size_t) {
            if (error) {
                self->AnswerError(error);
                return;
            }
            self->Handle();
        });
    }

    void Handle() {
        auto message = parser_->release();
        Request request = HeadOf(message);
        keeps_alive_ = message.keep_alive();
        is_head_ = message.method() == http::verb::head;
        stream_.expires_never();
        if (request.wants_socket) {
            HandleSocket(std::move(request), std::move(message));
            return;
        }
        request.body = std::move(message.body());
        server_.handler->OnRequest(std::move(request), [self = shared_from_this()](Reply reply) {
            asio::post(self->server_.context,
                       [self, reply = std::move(reply)]() mutable { self->Answer(std::move(reply)); });
        });
    }

    // The connection waits for the decision, and hands its stream over when that is good.
    void HandleSocket(Request request, http::request<http::string_body> upgrade) {
        const SocketId id = ++server_.last_socket;
        keeps_alive_ = false;
        server_.handler->OnSocket(
            id, std::move(request),
            [self = shared_from_this(), id, upgrade = std::move(upgrade)](const std::optional<Reply>& refusal) {
                asio::post(self->server_.context, [self, id, upgrade, refusal] {
                    if (refusal) {
                        self->Answer(*refusal);
                        return;
                    }
                    const auto session = std::make_shared<SocketSession>(self->server_, id, std::move(self->stream_));
                    self->server_.sockets.emplace(id, session);
                    self->End();
                    session->Open(upgrade);
                });
            });
    }

    void AnswerError(error_code error) {
        keeps_alive_ = false;
        if (error == http::error::header_limit) {
            Answer(PlainReply(431, "The header is larger than 16 KB."));
        } else if (error == http::error::body_limit) {
            Answer(PlainReply(413, "The body is larger than 4 MB."));
        } else if (error.category() == http::make_error_code(http::error::bad_version).category() &&
                   error != http::error::end_of_stream && error != http::error::partial_message) {
            Answer(PlainReply(400, "This is no request of HTTP/1.1."));
        } else {
            Drop();
        }
    }

    void Answer(Reply reply) {
        response_ = {};
        response_.result(reply.status);
        response_.version(11);
        response_.keep_alive(keeps_alive_);
        response_.set(http::field::content_type, reply.content_type);
        response_.set("X-Content-Type-Options", "nosniff");
        response_.set(http::field::cache_control, "no-store");
        response_.set("Referrer-Policy", "no-referrer");
        response_.set("Cross-Origin-Resource-Policy", "same-origin");
        for (const auto& [name, value] : reply.headers) {
            response_.set(name, value);
        }
        response_.body() = std::move(reply.body);
        response_.prepare_payload();
        if (is_head_) {
            response_.body().clear();
        }
        stream_.expires_after(kReplyTime);
        http::async_write(stream_, response_, [self = shared_from_this()](error_code error, std::size_t) {
            if (error || !self->keeps_alive_) {
                self->Finish();
                return;
            }
            self->WaitForRequest(kIdleTime);
        });
    }

    // What is still on its way is read for a moment, since closing at once could take the reply away from its reader.
    void Finish() {
        error_code ignored;
        static_cast<void>(stream_.socket().shutdown(tcp::socket::shutdown_send, ignored));
        stream_.expires_after(std::chrono::seconds(1));
        Drain(64);
    }

    void Drain(int rounds) {
        buffer_.clear();
        stream_.async_read_some(buffer_.prepare(kLargestHeader),
                                [self = shared_from_this(), rounds](error_code error, std::size_t) {
                                    if (error || rounds == 0) {
                                        self->Drop();
                                    } else {
                                        self->Drain(rounds - 1);
                                    }
                                });
    }

    void End() {
        const auto self = shared_from_this();
        server_.connections.erase(self);
    }

    Parts& server_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
    std::unique_ptr<Parser> parser_;
    http::response<http::string_body> response_;
    bool keeps_alive_ = false;
    bool is_head_ = false;
};

WebServer::Parts::Parts(std::uint16_t port) {
    const tcp::endpoint address(asio::ip::address_v4::loopback(), port);
    try {
        acceptor.open(address.protocol());
        // Nobody else may listen on the same port beside this program.
        const BOOL is_exclusive = TRUE;
        ::setsockopt(acceptor.native_handle(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE,
                     reinterpret_cast<const char*>(&is_exclusive), sizeof is_exclusive);
        acceptor.bind(address);
        acceptor.listen(asio::socket_base::max_listen_connections);
    } catch (const boost::system::system_error& error) {
        throw CannotListen("port " + std::to_string(port) +
                           (error.code() == asio::error::address_in_use || error.code() == asio::error::access_denied
                                ? " is taken: end the program that has it, or choose another with --port"
                                : " cannot be used: " + error.code().message()));
    }
}

void WebServer::Parts::Accept() {
    acceptor.async_accept([this](error_code error, tcp::socket socket) {
        if (error == asio::error::operation_aborted || !acceptor.is_open()) {
            return;
        }
        if (!error) {
            const bool is_full = IsFull();
            const auto connection = std::make_shared<Connection>(*this, std::move(socket));
            connections.insert(connection);
            if (is_full) {
                connection->RefuseConnection();
            } else {
                connection->Begin();
            }
        }
        Accept();
    });
}

void WebServer::Parts::EndAll() {
    error_code ignored;
    static_cast<void>(acceptor.close(ignored));
    for (const auto& connection : std::set(connections)) {
        connection->Drop();
    }
    for (const auto& [id, session] : std::map(sockets)) {
        session->Drop();
    }
}

WebServer::WebServer(std::uint16_t port) : parts_(std::make_unique<Parts>(port)) {}

// NOLINTNEXTLINE(bugprone-exception-escape): a program that cannot end its server has to end itself.
WebServer::~WebServer() {
    if (parts_->thread.joinable()) {
        asio::post(parts_->context, [this] {
            parts_->EndAll();
            parts_->context.stop();
        });
        parts_->thread.join();
    }
}

std::uint16_t WebServer::Port() const noexcept {
    error_code ignored;
    return parts_->acceptor.local_endpoint(ignored).port();
}

void WebServer::Start(WebHandler& handler) {
    parts_->handler = &handler;
    parts_->Accept();
    parts_->thread = std::thread([this] { parts_->context.run(); });
}

void WebServer::Send(SocketId socket, std::string text) {
    asio::post(parts_->context, [this, socket, text = std::move(text)]() mutable {
        const auto found = parts_->sockets.find(socket);
        if (found != parts_->sockets.end()) {
            const auto session = found->second;
            session->Send(std::move(text));
        }
    });
}

void WebServer::Close(SocketId socket) {
    asio::post(parts_->context, [this, socket] {
        const auto found = parts_->sockets.find(socket);
        if (found != parts_->sockets.end()) {
            const auto session = found->second;
            session->Close();
        }
    });
}

}  // namespace paylodge::workbench
