#include "workbench/server/log_book.hpp"

#include <gtest/gtest.h>

#include <string>

#include "workbench/server/limits.hpp"

namespace paylodge::workbench {
namespace {

constexpr const char* kCardNumber = "4111111111111111";

TEST(LogBook, NumbersItsEntries) {
    LogBook log;
    EXPECT_EQ(R"({"kind":"call","n":1})", log.Add({{"kind", "call"}}));
    EXPECT_EQ(R"({"kind":"push","n":2})", log.Add({{"kind", "push"}}));
    ASSERT_EQ(2U, log.Entries().size());
    log.Clear();
    EXPECT_TRUE(log.Entries().empty());
    EXPECT_EQ(R"({"n":3})", log.Add(Json::object()));
}

TEST(LogBook, MasksCardNumbersWhereverTheyStand) {
    LogBook log;
    const Json exchange = {{"request", std::string("<CreditCardNumber>") + kCardNumber + "</CreditCardNumber>"}};
    const std::string text = log.Add({{"arguments", {kCardNumber, 4111111111111111, 4111111111111111.0}},
                                      {"result", kCardNumber},
                                      {"out", {{"0", kCardNumber}}},
                                      {"error", std::string("no ") + kCardNumber},
                                      {"traffic", Json::array({exchange})}});
    EXPECT_EQ(std::string::npos, text.find("411111111111")) << text;
    EXPECT_EQ(
        R"({"arguments":["************1111","************1111","************1111"],"error":"no ************1111","n":1,)"
        R"("out":{"0":"************1111"},"result":"************1111",)"
        R"("traffic":[{"request":"<CreditCardNumber>************1111</CreditCardNumber>"}]})",
        text);
}

TEST(LogBook, KeepsOtherValuesAsTheyAre) {
    LogBook log;
    EXPECT_EQ(R"({"a":12.5,"b":-3,"c":null,"d":true,"n":1})",
              log.Add({{"a", 12.5}, {"b", -3}, {"c", nullptr}, {"d", true}}));
}

TEST(LogBook, CutsLongTextsAtACharacter) {
    const std::string text = std::string(kLongestLogText - 1, 'x') + "\xC3\xA9y";
    EXPECT_EQ(std::string(kLongestLogText - 1, 'x') + "... (" + std::to_string(text.size()) + " bytes)",
              Masked(text).get<std::string>());
}

TEST(LogBook, LeavesNoHalfOfACardNumberAtACut) {
    const std::string text = std::string(kLongestLogText - 8, 'x') + kCardNumber;
    EXPECT_EQ(std::string::npos, Masked(text).get<std::string>().find("4111"));
    // The cut is in front of the last digits.
    const std::string longer = std::string(kLongestLogText - 8, 'x') + "4111 1111 1111 1111 and more";
    EXPECT_EQ(std::string::npos, Masked(longer).get<std::string>().find("4111"));
}

TEST(LogBook, KeepsTheNewestEntriesOnly) {
    LogBook log;
    for (std::size_t i = 0; i < kMostLogEntries + 10; ++i) {
        log.Add({{"i", i}});
    }
    EXPECT_EQ(kMostLogEntries, log.Entries().size());
    EXPECT_EQ(R"({"i":10,"n":11})", log.Entries().front());
}

TEST(LogBook, KeepsNoMoreThanItsShareOfMemory) {
    LogBook log;
    std::size_t bytes = 0;
    for (int i = 0; i < 140; ++i) {
        log.Add({{"text", std::string(kLongestLogText, 'x')}});
    }
    for (const std::string& entry : log.Entries()) {
        bytes += entry.size();
    }
    EXPECT_LE(bytes, kMostLogBytes);
    EXPECT_GT(bytes, kMostLogBytes - 2 * kLongestLogText);
}

}  // namespace
}  // namespace paylodge::workbench
