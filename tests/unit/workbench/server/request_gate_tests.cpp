#include "workbench/server/request_gate.hpp"

#include <gtest/gtest.h>

#include <string>

namespace paylodge::workbench {
namespace {

constexpr const char* kToken = "0123456789abcdef";

[[nodiscard]] Request OwnRequest(std::string target) {
    Request request;
    request.method = "GET";
    request.target = std::move(target);
    request.host = "dev.ledgerhall.example:8137";
    request.token = kToken;
    return request;
}

// The status of the refusal; 200 for a request that may be answered.
[[nodiscard]] unsigned Check(const Request& request) {
    const RequestGate gate(8137, kToken);
    const auto refusal = gate.Check(request);
    EXPECT_TRUE(!refusal || !refusal->message.empty());
    return refusal ? refusal->status : 200;
}

[[nodiscard]] unsigned CheckHost(std::string host) {
    Request request = OwnRequest("/");
    request.host = std::move(host);
    return Check(request);
}

TEST(RequestGate, AnswersItsOwnNamesOnly) {
    EXPECT_EQ(200U, CheckHost("dev.ledgerhall.example:8137"));
    EXPECT_EQ(200U, CheckHost("DEV.Ledgerhall.Example:8137"));
    EXPECT_EQ(200U, CheckHost("localhost:8137"));
    EXPECT_EQ(200U, CheckHost("127.0.0.1:8137"));
    for (const char* const host :
         {"", "elsewhere.example:8137", "dev.ledgerhall.example", "dev.ledgerhall.example:80", "localhost:8138",
          "localhost", "127.0.0.1", "127.0.0.2:8137", "[::1]:8137", "dev.ledgerhall.example.elsewhere.example:8137",
          "xdev.ledgerhall.example:8137", "dev.ledgerhall.example:8137:8137", "dev.ledgerhall.example.:8137",
          "user@localhost:8137", " localhost:8137", "localhost:08137"}) {
        EXPECT_EQ(421U, CheckHost(host)) << host;
    }
}

TEST(RequestGate, TakesTheUsualPortAsGiven) {
    const RequestGate gate(80, kToken);
    Request request = OwnRequest("/");
    request.host = "localhost";
    EXPECT_FALSE(gate.Check(request));
}

TEST(RequestGate, RefusesTwoHosts) {
    Request request = OwnRequest("/");
    request.has_one_host = false;
    EXPECT_EQ(421U, Check(request));
}

TEST(RequestGate, RefusesForeignOrigins) {
    Request request = OwnRequest("/workbench/state");
    request.origin = "http://dev.ledgerhall.example:8137";
    EXPECT_EQ(200U, Check(request));
    for (const char* const origin : {"http://elsewhere.example", "null", "https://dev.ledgerhall.example:8137",
                                     "http://dev.ledgerhall.example", "http://localhost:8137"}) {
        request.origin = origin;
        EXPECT_EQ(403U, Check(request)) << origin;
    }
}

TEST(RequestGate, RefusesWhatABrowserCallsCrossSite) {
    Request request = OwnRequest("/workbench/session");
    for (const char* const site : {"cross-site", "same-site", "none"}) {
        request.fetch_site = site;
        EXPECT_EQ(403U, Check(request)) << site;
    }
    request.fetch_site = "same-origin";
    EXPECT_EQ(200U, Check(request));
}

TEST(RequestGate, WantsTheTokenOfThisStart) {
    Request request = OwnRequest("/workbench/state");
    EXPECT_EQ(200U, Check(request));
    for (const char* const token : {"", "0123456789abcde", "0123456789abcdef0", "0123456789abcdeF", "x"}) {
        request.token = token;
        EXPECT_EQ(403U, Check(request)) << token;
    }
    // In the address it would end up in histories.
    request.target = std::string("/workbench/state?token=") + kToken;
    EXPECT_EQ(403U, Check(request));
}

TEST(RequestGate, WantsNoTokenForFilesAndForWhatADocumentBeginsWith) {
    for (const char* const target : {"/", "/a.js", "/workbench/bridge.js", "/workbench/session?path=/"}) {
        Request request = OwnRequest(target);
        request.token.clear();
        EXPECT_EQ(200U, Check(request)) << target;
    }
}

TEST(RequestGate, IsNotPassedByOtherSpellingsOfAPath) {
    for (const char* const target : {"/%77orkbench/state", "/workbench%2fstate", "/workbench/bridge.js/../state"}) {
        Request request = OwnRequest(target);
        request.token.clear();
        EXPECT_EQ(403U, Check(request)) << target;
    }
}

TEST(RequestGate, WantsOriginAndTokenInTheAddressOfASocket) {
    Request request = OwnRequest(std::string("/workbench/socket?page=1&token=") + kToken);
    request.token.clear();
    request.wants_socket = true;
    EXPECT_EQ(403U, Check(request));
    request.origin = "http://dev.ledgerhall.example:8137";
    EXPECT_EQ(200U, Check(request));
    request.target = "/workbench/socket?page=1&token=0";
    EXPECT_EQ(403U, Check(request));
    request.target = "/workbench/socket?page=1";
    request.token = kToken;
    EXPECT_EQ(403U, Check(request));
}

}  // namespace
}  // namespace paylodge::workbench
