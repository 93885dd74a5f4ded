#include "operations/account_types.hpp"

#include <gmock/gmock.h>

namespace paylodge {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(SplitAccountTypes, SplitsAtCommasAndBlanksInAnyMixture) {
    EXPECT_THAT(SplitAccountTypes("Bank, CreditCard"), ElementsAre("Bank", "CreditCard"));
    EXPECT_THAT(SplitAccountTypes("Bank,CreditCard Income"), ElementsAre("Bank", "CreditCard", "Income"));
    EXPECT_THAT(SplitAccountTypes(" ,, Bank , ,Income,, "), ElementsAre("Bank", "Income"));
}

TEST(SplitAccountTypes, KeepsOrderAndRepetitions) {
    EXPECT_THAT(SplitAccountTypes("B,A,B"), ElementsAre("B", "A", "B"));
}

TEST(SplitAccountTypes, FindsNothingInSeparatorsAlone) {
    EXPECT_THAT(SplitAccountTypes(""), IsEmpty());
    EXPECT_THAT(SplitAccountTypes(",,,"), IsEmpty());
    EXPECT_THAT(SplitAccountTypes(" , "), IsEmpty());
}

TEST(SplitAccountTypes, OtherCharactersBelongToTheTypes) {
    EXPECT_THAT(SplitAccountTypes("Bank\tIncome;Equity\r\n"), ElementsAre("Bank\tIncome;Equity\r\n"));
    EXPECT_THAT(SplitAccountTypes("B\xE9nk,\xFF"), ElementsAre("B\xE9nk", "\xFF"));
}

TEST(IsBankAccountType, DisregardsLetterCase) {
    for (const char* type : {"bank", "Bank", "BANK", "bAnK"}) {
        EXPECT_TRUE(IsBankAccountType(type)) << type;
    }
}

TEST(IsBankAccountType, RefusesEverythingElse) {
    for (const char* type : {"", "ban", "banks", " bank", "bank ", "CreditCard", "B\xC4nk"}) {
        EXPECT_FALSE(IsBankAccountType(type)) << type;
    }
}

}  // namespace
}  // namespace paylodge
