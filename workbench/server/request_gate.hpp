// Who is answered at all: requests under the workbench's own names, from its own pages, with the token of this start.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace paylodge::workbench {

// A request as it came, before anything of it is believed.
struct Request {
    std::string method;
    std::string target;
    // Empty when the header is missing.
    std::string host;
    std::string origin;
    std::string token;
    std::string content_type;
    // "same-origin", "cross-site" and so on, from browsers.
    std::string fetch_site;
    // More than one Host header, or none.
    bool has_one_host = true;
    bool wants_socket = false;
    // A browser opens a document, unlike a page that fetches a part of one.
    bool is_navigation = false;
    std::string body;
};

struct Refusal {
    unsigned status;
    std::string message;
};

// The name under which pages are approved by the site lock; the two others are served and refused by it.
inline constexpr std::string_view kApprovedName = "dev.ledgerhall.example";

class RequestGate {
  public:
    RequestGate(std::uint16_t port, std::string token);

    // Nothing when the request may be answered.
    [[nodiscard]] std::optional<Refusal> Check(const Request& request) const;

    [[nodiscard]] const std::string& Token() const noexcept { return token_; }
    // "http://dev.ledgerhall.example:8137"
    [[nodiscard]] std::string Site() const;

  private:
    [[nodiscard]] bool IsOwnHost(std::string_view host) const;
    [[nodiscard]] bool HasToken(const Request& request) const;

    std::string port_;
    std::string token_;
};

}  // namespace paylodge::workbench
