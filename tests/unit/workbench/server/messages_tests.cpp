#include "workbench/server/messages.hpp"

#include <gtest/gtest.h>

#include <string>

namespace paylodge::workbench {
namespace {

// A call with these arguments.
[[nodiscard]] std::string CallWith(const std::string& arguments) {
    return R"({"page":"p","object":7,"member":"GetAccounts","kind":"call","arguments":)" + arguments + "}";
}

TEST(Messages, ReadACall) {
    const CallRequest call = ReadCallRequest(CallWith(R"(["Bank", true, 1.5, null, {"type":"empty"}])"));
    EXPECT_EQ("p", call.page);
    EXPECT_EQ(7, call.object);
    EXPECT_EQ("GetAccounts", call.member);
    EXPECT_EQ(CallKind::kCall, call.kind);
    ASSERT_EQ(5U, call.arguments.size());
    EXPECT_EQ("Bank", call.arguments[0].value);
    EXPECT_EQ(true, call.arguments[1].value);
    EXPECT_EQ(1.5, call.arguments[2].value);
    EXPECT_TRUE(call.arguments[3].value.is_null());
    EXPECT_TRUE(call.arguments[4].value.is_discarded());
    EXPECT_FALSE(call.arguments[0].is_reference);
}

TEST(Messages, ReadArgumentsByReference) {
    const CallRequest call = ReadCallRequest(
        CallWith(R"([{"type":"reference","value":false},{"type":"reference","value":{"type":"empty"}}])"));
    ASSERT_EQ(2U, call.arguments.size());
    EXPECT_TRUE(call.arguments[0].is_reference);
    EXPECT_EQ(false, call.arguments[0].value);
    EXPECT_TRUE(call.arguments[1].is_reference);
    EXPECT_TRUE(call.arguments[1].value.is_discarded());
}

class WrongArguments : public testing::TestWithParam<const char*> {};

TEST_P(WrongArguments, AreRefused) { EXPECT_THROW((void)ReadCallRequest(CallWith(GetParam())), BadMessage); }

INSTANTIATE_TEST_SUITE_P(Calls, WrongArguments,
                         testing::Values("{}", "null", "\"Bank\"", "[[]]", "[{}]", R"([{"type":"other"}])",
                                         R"([{"type":"empty","value":1}])", R"([{"type":"reference"}])",
                                         R"([{"type":"reference","value":[]}])", R"([{"type":1}])",
                                         R"([{"type":"reference","value":{"type":"reference","value":1}}])",
                                         R"([{"type":"reference","value":1,"more":2}])"));

TEST(Messages, RefuseTooManyArguments) {
    std::string arguments = "[1";
    for (int i = 1; i < 64; ++i) {
        arguments += ",1";
    }
    EXPECT_EQ(64U, ReadCallRequest(CallWith(arguments + "]")).arguments.size());
    EXPECT_THROW((void)ReadCallRequest(CallWith(arguments + ",1]")), BadMessage);
}

class NoMessage : public testing::TestWithParam<const char*> {};

TEST_P(NoMessage, IsRefusedByEveryReader) {
    EXPECT_THROW((void)ReadCallRequest(GetParam()), BadMessage);
    EXPECT_THROW((void)ReadCreateRequest(GetParam()), BadMessage);
    EXPECT_THROW((void)ReadReleaseRequest(GetParam()), BadMessage);
    EXPECT_THROW((void)ReadPushRequest(GetParam()), BadMessage);
    EXPECT_THROW((void)ReadFaultRequest(GetParam()), BadMessage);
    EXPECT_THROW((void)ReadTextMember(GetParam(), "name"), BadMessage);
    EXPECT_THROW((void)ReadPageMessage(GetParam()), BadMessage);
}

INSTANTIATE_TEST_SUITE_P(Texts, NoMessage,
                         testing::Values("", "{", "[]", "null", "1", "\"text\"", "{}", "{\"page\":1}", "{'page':'p'}",
                                         "{\"page\":\"\xFF\"}", "{\"page\":\"p\",}", "{\"page\":\"\\ud800\"}"));

TEST(Messages, OfAnyDepthAreRefusedWithoutHarm) {
    EXPECT_THROW((void)ReadCallRequest(std::string(100'000, '[')), BadMessage);
    EXPECT_THROW((void)ReadCallRequest(CallWith(std::string(50'000, '[') + std::string(50'000, ']'))), BadMessage);
}

TEST(Messages, RefuseNumbersThatAreNoObject) {
    for (const char* const number : {"-1", "1.5", "\"7\"", "18446744073709551615", "1e3", "null", "true"}) {
        const std::string text = std::string(R"({"page":"p","object":)") + number + "}";
        EXPECT_THROW((void)ReadReleaseRequest(text), BadMessage) << number;
    }
    EXPECT_EQ(9223372036854775807, ReadReleaseRequest(R"({"page":"p","object":9223372036854775807})").object);
}

TEST(Messages, SayWhichMemberIsWrong) {
    try {
        (void)ReadReleaseRequest(R"({"page":"p"})");
        FAIL();
    } catch (const BadMessage& error) {
        EXPECT_NE(std::string::npos, std::string(error.what()).find("\"object\""));
    }
}

TEST(Messages, ReadAFault) {
    const FaultRequest fault =
        ReadFaultRequest(R"({"call":"RequestProcessor.ProcessRequest","hresult":-2147467259,"nth":0})");
    EXPECT_EQ("RequestProcessor.ProcessRequest", fault.call);
    EXPECT_EQ(-2147467259.0, fault.hresult);
    EXPECT_EQ(0, fault.nth);
    EXPECT_EQ(2147500037.0, ReadFaultRequest(R"({"call":"x","hresult":2147500037,"nth":1})").hresult);
    for (const char* const wrong :
         {R"({"call":"x","hresult":1.5,"nth":1})", R"({"call":"x","hresult":4294967296,"nth":1})",
          R"({"call":"x","hresult":"E_FAIL","nth":1})", R"({"call":"x","hresult":1,"nth":-1})",
          R"({"call":"x","hresult":1,"nth":2147483648})"}) {
        EXPECT_THROW((void)ReadFaultRequest(wrong), BadMessage) << wrong;
    }
}

TEST(Messages, ReadWhatAPageSays) {
    EXPECT_TRUE(ReadPageMessage(R"({"type":"watch","on":true})").is_on);
    EXPECT_FALSE(ReadPageMessage(R"({"type":"watch","on":false})").is_on);
    EXPECT_EQ(5, ReadPageMessage(R"({"type":"delivered","n":5})").n);
    EXPECT_EQ("why", ReadPageMessage(R"({"type":"failed","n":5,"message":"why"})").message);
    EXPECT_THROW((void)ReadPageMessage(R"({"type":"watch"})"), BadMessage);
    EXPECT_THROW((void)ReadPageMessage(R"({"type":"other"})"), BadMessage);
    EXPECT_THROW((void)ReadPageMessage(R"({"type":"failed","n":5})"), BadMessage);
}

TEST(Messages, AreWrittenAsUtf8WhateverTheTextHolds) {
    EXPECT_EQ("{\"a\":\"caf\xC3\xA9\\u0000\"}", Text({{"a", std::string("caf\xC3\xA9\0", 6)}}));
    EXPECT_EQ("{\"a\":\"caf\xEF\xBF\xBD\"}", Text({{"a", "caf\xE9"}}));
}

TEST(Messages, NameAResult) {
    EXPECT_EQ("0x80004005", ResultText(-2147467259));
    EXPECT_EQ("0x00000001", ResultText(1));
}

}  // namespace
}  // namespace paylodge::workbench
