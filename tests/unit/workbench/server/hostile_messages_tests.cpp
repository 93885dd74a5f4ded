// Messages that no page of good will sends: each is refused as a bad message, whatever is in it.
#include <gtest/gtest.h>

#include <string>

#include "workbench/server/messages.hpp"

namespace paylodge::workbench {
namespace {

[[nodiscard]] std::string Push(const std::string& argument) {
    return R"({"method":"SetReconFeeData","arguments":[)" + argument + "]}";
}

TEST(HostileMessage, WithAnArgumentOfAnyOtherFormIsRefused) {
    for (const char* argument :
         {R"({})", R"([])", R"({"type":1})", R"({"type":null})", R"({"type":"empty","value":1})", R"({"type":"other"})",
          R"({"type":"reference"})", R"({"type":"reference","value":{}})", R"({"type":"reference","value":[]})",
          R"({"type":"reference","value":{"type":1}})", R"({"type":"reference","value":{"type":null}})",
          R"({"type":"reference","value":{"type":{}}})", R"({"type":"reference","value":{"other":"empty"}})",
          R"({"type":"reference","value":{"type":"empty","more":1}})",
          R"({"type":"reference","value":{"type":"reference","value":1}})", R"({"value":1,"other":2})"}) {
        EXPECT_THROW(static_cast<void>(ReadPushRequest(Push(argument))), BadMessage) << argument;
    }
    EXPECT_TRUE(ReadPushRequest(Push(R"({"type":"empty"})")).arguments.at(0).value.is_discarded());
    EXPECT_TRUE(ReadPushRequest(Push(R"({"type":"reference","value":{"type":"empty"}})")).arguments.at(0).is_reference);
}

TEST(HostileMessage, OfAnyDepthOrSizeIsRefused) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    EXPECT_THROW(static_cast<void>(ReadPushRequest(Push(deep))), BadMessage);
    EXPECT_THROW(static_cast<void>(ReadPushRequest(deep)), BadMessage);
    EXPECT_THROW(static_cast<void>(ReadPushRequest(std::string(100'000, '{'))), BadMessage);
    std::string many = "1";
    for (int count = 1; count < 65; ++count) {
        many += ",1";
    }
    EXPECT_THROW(static_cast<void>(ReadPushRequest(Push(many))), BadMessage);
    EXPECT_EQ(64U, ReadPushRequest(Push(many.substr(2))).arguments.size());
}

TEST(HostileMessage, ThatIsNoUtf8IsRefused) {
    for (const std::string& text : {std::string("\xFF"), std::string("\xC0\xAF"), std::string("\xED\xA0\x80")}) {
        EXPECT_THROW(static_cast<void>(ReadPushRequest(Push('"' + text + '"'))), BadMessage);
    }
    EXPECT_THROW(static_cast<void>(ReadPushRequest(Push(R"("\ud83d")"))), BadMessage);
    EXPECT_EQ(std::string("a\0b", 3), ReadPushRequest(Push(R"("a\u0000b")")).arguments.at(0).value.get<std::string>());
}

TEST(HostileMessage, WithANumberBeyondItsLimitsIsRefused) {
    for (const char* number : {"-1", "1.5", "1e400", "9223372036854775808", "18446744073709551616", "\"1\"", "true"}) {
        EXPECT_THROW(static_cast<void>(ReadReleaseRequest(std::string(R"({"page":"p","object":)") + number + "}")),
                     BadMessage)
            << number;
    }
    EXPECT_EQ(INT64_MAX, ReadReleaseRequest(R"({"page":"p","object":9223372036854775807})").object);
    for (const char* number : {"4294967296", "-2147483649", "0.5", "1e400", "null"}) {
        EXPECT_THROW(
            static_cast<void>(ReadFaultRequest(std::string(R"({"call":"c","nth":1,"hresult":)") + number + "}")),
            BadMessage)
            << number;
    }
    EXPECT_EQ(4294967295.0, ReadFaultRequest(R"({"call":"c","nth":1,"hresult":4294967295})").hresult);
    EXPECT_EQ(-2147483648.0, ReadFaultRequest(R"({"call":"c","nth":1,"hresult":-2147483648})").hresult);
}

}  // namespace
}  // namespace paylodge::workbench
