#include "workbench/server/card_masking.hpp"

#include <gtest/gtest.h>

#include <string>

namespace paylodge::workbench {
namespace {

struct Masking {
    const char* text;
    const char* masked;
};

class MaskedText : public testing::TestWithParam<Masking> {};

TEST_P(MaskedText, ShowsTheLastFourDigitsOnly) { EXPECT_EQ(GetParam().masked, MaskCardNumbers(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(
    CardNumbers, MaskedText,
    testing::Values(Masking{"4111111111111111", "************1111"},
                    // 13, 14, 15 and 19 digits
                    Masking{"4222222222222", "*********2222"}, Masking{"30569309025904", "**********5904"},
                    Masking{"378282246310005", "***********0005"},
                    Masking{"6304000000000000000", "***************0000"},
                    Masking{"4111 1111 1111 1111", "**** **** **** 1111"},
                    Masking{"4111-1111-1111-1111", "****-****-****-1111"},
                    Masking{"4111 - 1111 - 1111 - 1111", "**** - **** - **** - 1111"},
                    Masking{"411111 1111111111", "****** ******1111"},
                    Masking{"<CreditCardNumber>4111111111111111</CreditCardNumber>",
                            "<CreditCardNumber>************1111</CreditCardNumber>"},
                    Masking{"x4111111111111111y", "x************1111y"},
                    Masking{"a 4111111111111111, b 5500000000000004.", "a ************1111, b ************0004."},
                    // with other numbers around it
                    Masking{"17 4111 1111 1111 1111 12.50", "17 **** **** **** 1111 12.50"},
                    Masking{"4111111111111111 12", "************1111 12"}));

INSTANTIATE_TEST_SUITE_P(CardData, MaskedText,
                         testing::Values(Masking{"%B4111111111111111^DOE/JANE^30121010000000000?",
                                                 "%B************1111^********^*****************?"},
                                         Masking{";4111111111111111=30121010000000000?",
                                                 ";************1111=*****************?"},
                                         // A number in a track is masked whatever its check digit says.
                                         Masking{";4111111111111112=3012101?", ";************1112=*******?"},
                                         Masking{"4F07F00000000100015A0841111111111111115F2403301231",
                                                 "4F07F00000000100015A08************11115F2403301231"},
                                         // Padded to whole bytes
                                         Masking{"5A08378282246310005F", "5A08***********0005F"},
                                         Masking{"5a08378282246310005f", "5a08***********0005f"},
                                         Masking{"5A080000000000001119", "5A08************1119"},
                                         Masking{"57114111111111111111D301220100000000009A03260115",
                                                 "5711************1111D*****************9A03260115"}));

INSTANTIATE_TEST_SUITE_P(NoCardNumber, MaskedText,
                         testing::Values(Masking{"", ""}, Masking{"12.50", "12.50"},
                                         // wrong check digit, too short, too long a gap
                                         Masking{"4111111111111112", "4111111111111112"},
                                         Masking{"411111111111", "411111111111"},
                                         Masking{"4111    1111    1111    1111", "4111    1111    1111    1111"},
                                         Masking{"2026-01-15T12:00:00", "2026-01-15T12:00:00"},
                                         Masking{"4111\n1111\n1111\n1111", "4111\n1111\n1111\n1111"},
                                         Masking{"5A08", "5A08"}, Masking{"5A", "5A"}, Masking{"%B", "%B"},
                                         Masking{";=?", ";=?"}));

TEST(MaskCardNumbers, FindsOneInALongerNumber) {
    const std::string masked = MaskCardNumbers("99994111111111111111999999");
    EXPECT_EQ(std::string::npos, masked.find("411111111111"));
}

TEST(MaskCardNumbers, KeepsTheLengthOfEveryText) {
    std::string text;
    for (int i = 0; i < 2000; ++i) {
        text += static_cast<char>('0' + i * 7 % 10);
        text += i % 13 == 0 ? " " : (i % 17 == 0 ? "-" : "");
        EXPECT_EQ(text.size(), MaskCardNumbers(text).size());
    }
}

TEST(MaskCardNumbers, LeavesBytesThatAreNoTextAsTheyAre) {
    const std::string bytes(
        "\x00\xFF\x80"
        "4111111111111111\xC3",
        20);
    EXPECT_EQ(std::string("\x00\xFF\x80"
                          "************1111\xC3",
                          20),
              MaskCardNumbers(bytes));
}

TEST(MaskCardNumbers, TakesTimeInProportionToTheText) {
    EXPECT_EQ(400'000U, MaskCardNumbers(std::string(400'000, '4')).size());
}

}  // namespace
}  // namespace paylodge::workbench
