#include "workbench/server/request_gate.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "workbench/server/served_path.hpp"

namespace paylodge::workbench {
namespace {

constexpr std::array<std::string_view, 3> kOwnNames{kApprovedName, "localhost", "127.0.0.1"};
// What a document needs before it knows a token, and what gives it a new one.
constexpr std::array<std::string_view, 2> kWithoutToken{"/workbench/bridge.js", "/workbench/session"};

[[nodiscard]] bool IsSame(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, [](char a, char b) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
        return lower(a) == lower(b);
    });
}

// Takes as long for a wrong token as for a right one.
[[nodiscard]] bool IsSameSecret(std::string_view given, std::string_view secret) noexcept {
    unsigned difference = given.size() == secret.size() ? 0U : 1U;
    for (std::size_t i = 0; i < secret.size(); ++i) {
        const char character = i < given.size() ? given[i] : '\0';
        difference |= static_cast<unsigned>(static_cast<unsigned char>(character ^ secret[i]));
    }
    return difference == 0;
}

}  // namespace

RequestGate::RequestGate(std::uint16_t port, std::string token)
    : port_(std::to_string(port)), token_(std::move(token)) {}

std::string RequestGate::Site() const { return std::string("http://").append(kApprovedName).append(":").append(port_); }

bool RequestGate::IsOwnHost(std::string_view host) const {
    const std::size_t colon = host.rfind(':');
    // A browser leaves out the port that the scheme has anyway.
    const std::string_view port = colon == std::string_view::npos ? "80" : host.substr(colon + 1);
    return port == port_ &&
           std::ranges::any_of(kOwnNames, [&](std::string_view name) { return IsSame(host.substr(0, colon), name); });
}

bool RequestGate::HasToken(const Request& request) const {
    if (!request.wants_socket) {
        return IsSameSecret(request.token, token_);
    }
    // A page cannot give its socket a header.
    const auto target = ReadTarget(request.target);
    const auto found = target ? target->query.find("token") : decltype(target->query.end()){};
    return target && found != target->query.end() && IsSameSecret(found->second, token_);
}

std::optional<Refusal> RequestGate::Check(const Request& request) const {
    if (!request.has_one_host || !IsOwnHost(request.host)) {
        return Refusal{421, "The workbench answers under its own names only: open " + Site() + "/."};
    }
    const bool has_own_origin = IsSame(request.origin, "http://" + request.host);
    if ((!request.origin.empty() && !has_own_origin) || (request.wants_socket && !has_own_origin)) {
        return Refusal{403, "Pages of other sites are not answered."};
    }
    const auto target = ReadTarget(request.target);
    if (!target) {
        return Refusal{400, "The path is not well encoded."};
    }
    if (!target->path.starts_with("/workbench/")) {
        return std::nullopt;
    }
    // A new token is only for a document of the same origin, whatever else a browser would keep it from.
    if (!request.fetch_site.empty() && request.fetch_site != "same-origin") {
        return Refusal{403, "Pages of other sites are not answered."};
    }
    if (std::ranges::find(kWithoutToken, target->path) == kWithoutToken.end() && !HasToken(request)) {
        return Refusal{403, "The token is missing or that of an earlier start: reload the page."};
    }
    return std::nullopt;
}

}  // namespace paylodge::workbench
