#include "refhost/oskerin/account_services.hpp"

#include <gtest/gtest.h>

#include <set>

namespace paylodge::refhost {
namespace {

TEST(AccountServices, KnowTheUser) {
    EXPECT_EQ(UserData("UserName"), "Robin Vale");
    EXPECT_EQ(UserData("CompanyName"), "Caf\xC3\xA9 Riverside \xE2\x98\x86");
    EXPECT_EQ(UserData("Email"), "robin@riverside.example");
    EXPECT_EQ(UserData("Locale"), "en-US");
}

TEST(AccountServices, RefuseAnUnknownNameAndListTheKnownOnes) {
    const std::string error =
        R"({"error":"there is no user data of this name; UserName, CompanyName, Email and Locale are known"})";
    EXPECT_EQ(UserData(""), error);
    EXPECT_EQ(UserData("username"), error);
    EXPECT_EQ(UserData("UserName "), error);
}

TEST(AccountServices, VerifyTheUser) {
    EXPECT_EQ(PaymentIdentityStatus(), R"({"status":"VERIFIED","realm":"simulated"})");
    EXPECT_EQ(RealmMergeLinking(), "true");
}

TEST(AccountServices, PutATicketOnAnAddress) {
    const std::string plain = AuthenticatedUrl("https://terminal.paylodge.example/pay");
    EXPECT_TRUE(plain.starts_with("https://terminal.paylodge.example/pay?ticket=")) << plain;
    EXPECT_EQ(plain.size(), std::string("https://terminal.paylodge.example/pay?ticket=").size() + 16);
    const std::string query = AuthenticatedUrl("http://terminal.paylodge.example/?a=b");
    EXPECT_TRUE(query.starts_with("http://terminal.paylodge.example/?a=b&ticket=")) << query;
    EXPECT_EQ(AuthenticatedUrl("https://terminal.paylodge.example/pay"), plain);
}

TEST(AccountServices, RefuseOtherAddresses) {
    for (const char* const url : {"", "javascript:alert(1)", "file:///c:/", "https:/"}) {
        EXPECT_EQ(AuthenticatedUrl(url), R"({"error":"only http and https addresses can be authenticated"})") << url;
    }
}

TEST(AccountServices, GiveTheSameTokenForTheSameCard) {
    const std::string token = CardBasedToken(true, "header", "body");
    EXPECT_TRUE(token.starts_with(R"({"token":"tok_)")) << token;
    EXPECT_TRUE(token.ends_with(R"(","type":"simulated"})")) << token;
    EXPECT_EQ(CardBasedToken(true, "header", "body"), token);
}

TEST(AccountServices, GiveDifferentTokensForDifferentCards) {
    const std::set<std::string> tokens = {CardBasedToken(true, "h", "b"), CardBasedToken(false, "h", "b"),
                                          CardBasedToken(true, "h2", "b"), CardBasedToken(true, "h", "b2"),
                                          CardBasedToken(true, "", "hb")};
    EXPECT_EQ(tokens.size(), 5U);
}

TEST(AccountServices, GiveNoTokenWithoutACard) {
    EXPECT_EQ(CardBasedToken(true, "header", ""), R"({"error":"a token needs a body that describes the card"})");
}

}  // namespace
}  // namespace paylodge::refhost
