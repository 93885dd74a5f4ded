// What transactions do to all accounts that they concern, and which ones are refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "refhost/books/company_text.hpp"
#include "refhost/books/values.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::HasSubstr;

// The sample books with an item that has no account, a card to owe on, an expense and an account that is never posted
// to.
class DoubleEntry : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* request :
             {"<ItemPaymentAddRq><ItemPaymentAdd><Name>Goods</Name></ItemPaymentAdd></ItemPaymentAddRq>",
              "<AccountAddRq><AccountAdd><Name>Card</Name><AccountType>CreditCard</AccountType></AccountAdd></"
              "AccountAddRq>",
              "<AccountAddRq><AccountAdd><Name>Fees</Name><AccountType>Expense</AccountType></AccountAdd></"
              "AccountAddRq>",
              "<AccountAddRq><AccountAdd><Name>Orders</Name><AccountType>NonPosting</AccountType></AccountAdd>"
              "</AccountAddRq>",
              "<CustomerAddRq><CustomerAdd><Name>Gone</Name><IsActive>false</IsActive></CustomerAdd></"
              "CustomerAddRq>"}) {
            ASSERT_EQ(StatusCode(SendOne(*books_, request)), "0");
        }
    }

    [[nodiscard]] std::string Balance(std::string_view account) { return BalanceOf(*books_, kAccounts, account); }

    [[nodiscard]] static std::string Line(const std::string& name, const std::string& account,
                                          const std::string& amount, const std::string& entity = {}) {
        const std::string entity_ref =
            entity.empty() ? "" : "<EntityRef><FullName>" + entity + "</FullName></EntityRef>";
        return "<" + name + "><AccountRef><FullName>" + account + "</FullName></AccountRef>" + entity_ref + "<Amount>" +
               amount + "</Amount></" + name + ">";
    }
    [[nodiscard]] static std::string Deposit(const std::string& to, const std::string& lines) {
        return "<DepositAddRq><DepositAdd><DepositToAccountRef><FullName>" + to + "</FullName></DepositToAccountRef>" +
               lines + "</DepositAdd></DepositAddRq>";
    }
    [[nodiscard]] static std::string Check(const std::string& from, const std::string& lines) {
        return "<CheckAddRq><CheckAdd><AccountRef><FullName>" + from + "</FullName></AccountRef>" + lines +
               "</CheckAdd></CheckAddRq>";
    }
    [[nodiscard]] static std::string Sale(const std::string& fields, const std::string& amount) {
        return "<SalesReceiptAddRq><SalesReceiptAdd>" + fields +
               "<SalesReceiptLineAdd><ItemRef><FullName>Goods</FullName></ItemRef><Desc>A pot</Desc><Amount>" + amount +
               "</Amount></SalesReceiptLineAdd></SalesReceiptAdd></SalesReceiptAddRq>";
    }
    [[nodiscard]] static std::string Payment(const std::string& fields, const std::string& amount) {
        return "<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>Smith</FullName></CustomerRef>"
               "<TotalAmount>" +
               amount + "</TotalAmount>" + fields + "</ReceivePaymentAdd></ReceivePaymentAddRq>";
    }

    void ExpectDone(const std::string& request) {
        const Element response = SendOne(*books_, request);
        EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    }
    void ExpectRefused(const std::string& request, std::string_view code, const std::string& words) {
        const std::string before = ExportText(*books_);
        const Element response = SendOne(*books_, request);
        EXPECT_EQ(StatusCode(response), code) << request;
        EXPECT_THAT(StatusMessage(response), HasSubstr(words));
        EXPECT_TRUE(ExportText(*books_) == before) << "something was changed by " << request;
    }

    std::unique_ptr<Company> books_ = SampleBooks();
};

TEST_F(DoubleEntry, OfASaleRaisesIncomeAndUndepositedFunds) {
    EXPECT_EQ(Balance("Sales"), "130.00");
    ExpectDone(Sale("", "12.50"));
    EXPECT_EQ(Balance("Sales"), "142.50");
    EXPECT_EQ(Balance("Undeposited Funds"), "17.50");
}

TEST_F(DoubleEntry, OfASaleKeepsItsLineAndGoesWhereItIsTold) {
    ExpectDone(Sale("<DepositToAccountRef><FullName>Checking:Till</FullName></DepositToAccountRef>", "1"));
    EXPECT_EQ(Balance("Checking:Till"), "21.00");
    EXPECT_THAT(ExportText(*books_), HasSubstr("<Desc>A pot</Desc>"));
}

TEST_F(DoubleEntry, OfACreditMemoLowersIncomeAndWhatTheCustomerOwes) {
    ExpectDone(
        "<CreditMemoAddRq><CreditMemoAdd><CustomerRef><FullName>Smith</FullName></"
        "CustomerRef><CreditMemoLineAdd><ItemRef>"
        "<FullName>Goods</FullName></ItemRef><Amount>30</Amount></CreditMemoLineAdd></CreditMemoAdd></"
        "CreditMemoAddRq>");
    EXPECT_EQ(Balance("Sales"), "100.00");
    EXPECT_EQ(Balance("Receivables"), "100.00");
    EXPECT_EQ(BalanceOf(*books_, kCustomers, "Smith"), "100.00");
}

TEST_F(DoubleEntry, MovesDebtsTheOtherWayThanMoney) {
    ExpectDone(Check("Card", Line("ExpenseLineAdd", "Fees", "40.00")));
    EXPECT_EQ(Balance("Card"), "40.00") << "what is owed on the card";
    EXPECT_EQ(Balance("Fees"), "40.00");
    ExpectDone(Deposit("Card", Line("DepositLineAdd", "Checking", "15.00")));
    EXPECT_EQ(Balance("Card"), "25.00");
    EXPECT_EQ(Balance("Checking"), "85.00");
}

TEST_F(DoubleEntry, OfADepositTakesAFeeFromWhatArrives) {
    ExpectDone(Deposit("Checking",
                       Line("DepositLineAdd", "Undeposited Funds", "5.00") + Line("DepositLineAdd", "Fees", "-0.15")));
    EXPECT_EQ(Balance("Checking"), "104.85");
    EXPECT_EQ(Balance("Undeposited Funds"), "0.00");
    EXPECT_EQ(Balance("Fees"), "0.15");
}

TEST_F(DoubleEntry, OfALineOnReceivablesIsInTheCustomersName) {
    ExpectDone(Deposit("Checking", Line("DepositLineAdd", "Receivables", "30", "Smith")));
    EXPECT_EQ(BalanceOf(*books_, kCustomers, "Smith"), "100.00");
    ExpectRefused(Deposit("Checking", Line("DepositLineAdd", "Receivables", "30")), "2045", "EntityRef is missing");
}

TEST_F(DoubleEntry, RefusesAccountsThatDoNotFit) {
    const std::string to_receivables = "<DepositToAccountRef><FullName>Receivables</FullName></DepositToAccountRef>";
    ExpectRefused(
        Payment(to_receivables, "1"), "2045",
        "DepositToAccountRef names the account \"Receivables\" of the type AccountsReceivable; its type has to be "
        "one of Bank, OtherCurrentAsset.");
    ExpectRefused(Sale(to_receivables, "1"), "2045", "DepositToAccountRef");
    ExpectRefused(Deposit("Receivables", Line("DepositLineAdd", "Checking", "1")), "2045", "DepositToAccountRef");
    ExpectRefused(Deposit("Checking", Line("DepositLineAdd", "Orders", "1")), "2045",
                  "AccountRef names the account \"Orders\" of the type NonPosting, which is never posted to.");
    ExpectRefused(Check("Sales", Line("ExpenseLineAdd", "Fees", "1")), "2045",
                  "AccountRef names the account \"Sales\"");
}

TEST_F(DoubleEntry, RefusesWhatIsInactive) {
    ExpectRefused(Deposit("Checking", Line("DepositLineAdd", "Old Bank", "1")), "3210",
                  "AccountRef names the account \"Old Bank\", which is inactive.");
    ExpectRefused(Sale("<CustomerRef><FullName>Gone</FullName></CustomerRef>", "1"), "3210",
                  "\"Gone\", which is inactive");
}

TEST_F(DoubleEntry, RefusesASaleOfAnItemWhoseAccountIsInactive) {
    books_->Data().Run("UPDATE items SET account = (SELECT number FROM accounts WHERE name = 'Sales')");
    ExpectDone(Sale("", "1"));
    books_->Data().Run("UPDATE accounts SET is_active = 0 WHERE name = 'Sales'");
    ExpectRefused(Sale("", "1"), "3210", "ItemRef names the item \"Goods\", whose account \"Sales\" is inactive.");
}

TEST_F(DoubleEntry, RefusesLinesThatPostToOneAccountBeyondTheLimits) {
    const std::string much = Line("DepositLineAdd", "Checking:Till", "99999999999.99");
    ExpectRefused(Deposit("Checking", much + Line("DepositLineAdd", "Fees", "-99999999999.99") + much), "2035",
                  "The lines post to one account, in sum, beyond the limit of 99999999999.99.");
}

TEST_F(DoubleEntry, RefusesAmountsBeyondTheLimits) {
    for (const char* amount : {"100000000000", "-100000000000.00", "99999999999999999999999999"}) {
        ExpectRefused(Deposit("Checking", Line("DepositLineAdd", "Checking:Till", amount)), "2035",
                      "The amount of DepositAdd/DepositLineAdd/Amount is beyond the limit of 99999999999.99.");
    }
    ExpectRefused(Deposit("Checking", Line("DepositLineAdd", "Checking:Till", "99999999999.99") +
                                          Line("DepositLineAdd", "Checking:Till", "0.01")),
                  "2035", "The total of DepositAdd is beyond the limit");
}

TEST_F(DoubleEntry, RefusesABalanceBeyondTheLimitsAndErasesNone) {
    const std::string sale = Sale("", "99999999999.99");
    std::string status = "0";
    int sales = 0;
    while (status == "0" && sales < 200) {
        status = StatusCode(SendOne(*books_, sale));
        ++sales;
    }
    EXPECT_EQ(status, "2035");
    EXPECT_EQ(sales, 100) << "the hundredth is the first that does not fit";
    ExpectRefused(sale, "2035", "would go beyond 9999999999999.99");
    EXPECT_EQ(Balance("Undeposited Funds"), FormatCents(99 * kLargestAmount + 500));
}

TEST_F(DoubleEntry, RefusesTotalsThatMoveNothingOrTheOtherWay) {
    ExpectRefused(Deposit("Checking", Line("DepositLineAdd", "Checking:Till", "0")), "2030",
                  "The total of DepositAdd is 0.00; it has to be above 0.");
    ExpectRefused(Check("Checking", Line("ExpenseLineAdd", "Fees", "-1")), "2030", "The total of CheckAdd is -1.00");
    ExpectRefused(Sale("", "-1"), "2030", "The total of SalesReceiptAdd is -1.00, which is below 0.");
}

TEST_F(DoubleEntry, RefusesDaysThatAreNotInTheCalendar) {
    ExpectRefused(
        "<SalesReceiptAddRq><SalesReceiptAdd><TxnDate>2025-02-30</TxnDate><SalesReceiptLineAdd><ItemRef><FullName>"
        "Goods</FullName></ItemRef><Amount>1</Amount></SalesReceiptLineAdd></SalesReceiptAdd></SalesReceiptAddRq>",
        "2030", "SalesReceiptAdd/TxnDate");
}

TEST_F(DoubleEntry, RefusesFieldsOutOfOrder) {
    ExpectRefused(
        "<DepositAddRq><DepositAdd><Memo>m</Memo><DepositToAccountRef><FullName>Checking</FullName>"
        "</DepositToAccountRef>" +
            Line("DepositLineAdd", "Checking:Till", "1") + "</DepositAdd></DepositAddRq>",
        "2015",
        "DepositAdd/DepositToAccountRef stands behind Memo; the order is: TxnDate, DepositToAccountRef, Memo, "
        "DepositLineAdd.");
}

TEST_F(DoubleEntry, TakesNamesThatDifferInCaseForTheSame) {
    ExpectDone("<CustomerAddRq><CustomerAdd><Name>Caf\xC3\xA9</Name></CustomerAdd></CustomerAddRq>");
    ExpectRefused("<CustomerAddRq><CustomerAdd><Name>CAF\xC3\x89</Name></CustomerAdd></CustomerAddRq>", "3100",
                  "exists already");
}

}  // namespace
}  // namespace paylodge::refhost
