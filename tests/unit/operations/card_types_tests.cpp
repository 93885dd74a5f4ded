#include "operations/card_types.hpp"

#include <gtest/gtest.h>

namespace paylodge {
namespace {

struct Case {
    const char* given;
    const char* expected;
};

TEST(CardTypeFromMemo, ReturnsTheTypeThatTheMemoNames) {
    for (const auto& [memo, type] : {Case{"Visa", "Visa"}, Case{"Refund to AmEx card", "American Express"},
                                     Case{"xDiscoverx", "Discover"}, Case{"paid by Diners", "Diners Club"}}) {
        EXPECT_EQ(type, CardTypeFromMemo(memo)) << memo;
    }
}

TEST(CardTypeFromMemo, TakesTheFirstRowOfTheTableNotOfTheMemo) {
    for (const auto& [memo, type] : {Case{"AmEx or Visa", "Visa"}, Case{"Diners, Discover", "Discover"},
                                     Case{"Diners, Discover, AmEx", "American Express"}}) {
        EXPECT_EQ(type, CardTypeFromMemo(memo)) << memo;
    }
}

TEST(CardTypeFromMemo, IsEmptyForOtherMemos) {
    for (const char* memo : {"", "MasterCard", "visa", "VISA", "Amex", "American Express", "discover", "diners Club"}) {
        EXPECT_EQ("", CardTypeFromMemo(memo)) << memo;
    }
}

TEST(NetRefundItemName, JoinsPrefixAndLabel) {
    for (const auto& [type, name] :
         {Case{"Visa", "Net Refund - Visa/MasterCard"}, Case{"MasterCard", "Net Refund - Visa/MasterCard"},
          Case{"", "Net Refund - Credit Card"}, Case{"American Express", "Net Refund - American Express"},
          Case{"Discover", "Net Refund - Discover"}, Case{"Diners Club", "Net Refund - Diners Club"},
          Case{"visa", "Net Refund - visa"}}) {
        EXPECT_EQ(name, NetRefundItemName(type)) << type;
    }
}

}  // namespace
}  // namespace paylodge
