#include "lhxml/envelope.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>
#include <string_view>

namespace paylodge {
namespace {

using namespace std::string_literals;

constexpr std::string_view kPrefix =
    R"(<?xml version="1.0"?><?lhxml version="7.0" ?><LHXML><LHXMLMsgsRq onError="continueOnError">)";
constexpr std::string_view kSuffix = "</LHXMLMsgsRq></LHXML>";

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" ?>\r\n"
    "<?lhxml version=\"7.0\" ?>\r\n"
    "<LHXML>\r\n"
    "    <LHXMLMsgsRq onError=\"continueOnError\">\r\n";
constexpr std::string_view kFoot =
    "    </LHXMLMsgsRq>\r\n"
    "</LHXML>\r\n";

[[nodiscard]] std::string Joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text += part;
    }
    return text;
}

[[nodiscard]] std::string IdentifierOf(int number) { return "requestID_" + std::to_string(number); }

// The program's first identifier, drawn before any test gets at the generator.
struct FirstIdentifier {
    std::time_t before = std::time(nullptr);
    std::string identifier = MakeRequestID();
    std::time_t after = std::time(nullptr);
};
const FirstIdentifier g_first;

TEST(PassThroughEnvelope, WrapsTheBodyInOneLine) {
    EXPECT_EQ(Joined({kPrefix, "<AccountQueryRq requestID=\"1\"/>", kSuffix}),
              PassThroughEnvelope("<AccountQueryRq requestID=\"1\"/>"));
}

TEST(PassThroughEnvelope, OfAnEmptyBodyIsPrefixAndSuffix) {
    EXPECT_EQ(Joined({kPrefix, kSuffix}), PassThroughEnvelope(""));
}

TEST(PassThroughEnvelope, LeavesTheBodyUnchangedWhateverItHolds) {
    const std::string body = "&<>'\"\r\n\t\0\xE9</LHXML><?"s;
    EXPECT_EQ(Joined({kPrefix, body, kSuffix}), PassThroughEnvelope(body));
}

TEST(PassThroughEnvelope, TakesALongBody) {
    const std::string body(5'000'000, 'x');
    EXPECT_EQ(Joined({kPrefix, body, kSuffix}), PassThroughEnvelope(body));
}

TEST(BuiltEnvelope, BeginsWithItsFourLines) {
    XMLBuilder builder;
    BeginEnvelope(builder);
    EXPECT_EQ(kHead, builder.GetText());
}

TEST(BuiltEnvelope, LeavesTheBuilderTwoLevelsDeep) {
    XMLBuilder builder;
    BeginEnvelope(builder);
    builder.AddElement("A", "x");
    EXPECT_EQ(Joined({kHead, "        <A>x</A>\r\n"}), builder.GetText());
}

TEST(BuiltEnvelope, EndsWithItsTwoLines) {
    XMLBuilder builder;
    BeginEnvelope(builder);
    EndEnvelope(builder);
    EXPECT_EQ(Joined({kHead, kFoot}), builder.GetText());
}

TEST(BuiltEnvelope, EndsAtTheMargin) {
    XMLBuilder builder;
    BeginEnvelope(builder);
    EndEnvelope(builder);
    builder.OpenElement("A");
    EXPECT_EQ(Joined({kHead, kFoot, "<A>\r\n"}), builder.GetText());
}

TEST(BuiltEnvelope, HoldsRequestsWithIdentifiersDrawnOneAfterTheOther) {
    std::srand(20);
    const std::string first = IdentifierOf(std::rand());
    const std::string second = IdentifierOf(std::rand());

    std::srand(20);
    XMLBuilder builder;
    BeginEnvelope(builder);
    for (const std::string_view name : {"AccountAddRq", "CustomerAddRq"}) {
        OpenRequestElement(builder, name);
        builder.AddElement("Name", "x");
        builder.CloseElement(name);
    }
    EndEnvelope(builder);
    EXPECT_EQ(Joined({kHead, "        <AccountAddRq requestID=\"", first,
                      "\">\r\n"
                      "            <Name>x</Name>\r\n"
                      "        </AccountAddRq>\r\n"
                      "        <CustomerAddRq requestID=\"",
                      second,
                      "\">\r\n"
                      "            <Name>x</Name>\r\n"
                      "        </CustomerAddRq>\r\n",
                      kFoot}),
              builder.GetText());
}

TEST(BuiltEnvelope, IsComposedWholeAroundOneRequest) {
    std::srand(21);
    const std::string identifier = IdentifierOf(std::rand());

    std::srand(21);
    const std::string document =
        ComposeRequest("ItemQueryRq", [](XMLBuilder& builder) { builder.AddElement("FullName", "a&b"); });
    EXPECT_EQ(Joined({kHead, "        <ItemQueryRq requestID=\"", identifier,
                      "\">\r\n"
                      "            <FullName>a&amp;b</FullName>\r\n"
                      "        </ItemQueryRq>\r\n",
                      kFoot}),
              document);
}

TEST(OpenRequestElement, LeavesTheRequestOpenAtTheBuildersDepth) {
    std::srand(22);
    const std::string identifier = IdentifierOf(std::rand());

    std::srand(22);
    XMLBuilder builder;
    OpenRequestElement(builder, "AccountAddRq");
    builder.AddElement("Name", "x");
    EXPECT_EQ(Joined({"<AccountAddRq requestID=\"", identifier, "\">\r\n    <Name>x</Name>\r\n"}), builder.GetText());
}

TEST(MakeRequestID, SeedsTheGeneratorWithTheTimeOnFirstUse) {
    bool is_seeded_with_time = false;
    for (std::time_t seed = g_first.before; seed <= g_first.after; ++seed) {
        std::srand(static_cast<unsigned>(seed));
        is_seeded_with_time |= g_first.identifier == IdentifierOf(std::rand());
    }
    EXPECT_TRUE(is_seeded_with_time) << g_first.identifier;
}

TEST(MakeRequestID, IsTheWordAnUnderscoreAndADecimalNumber) {
    const std::regex pattern("requestID_(0|[1-9][0-9]*)");
    for (int i = 0; i < 1000; ++i) {
        const std::string identifier = MakeRequestID();
        ASSERT_TRUE(std::regex_match(identifier, pattern)) << identifier;
    }
}

TEST(MakeRequestID, ReturnsTheNextNumbersOfTheGeneratorAndNeverSeedsItAgain) {
    std::srand(23);
    const std::string expected[] = {IdentifierOf(std::rand()), IdentifierOf(std::rand()), IdentifierOf(std::rand())};

    std::srand(23);
    for (const std::string& identifier : expected) {
        EXPECT_EQ(identifier, MakeRequestID());
    }
}

}  // namespace
}  // namespace paylodge
