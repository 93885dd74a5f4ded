#include <gtest/gtest.h>

#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

class TransferFunds : public OperationTest {
  protected:
    template <class Amount>
    [[nodiscard]] Result Transfer(const Amount& amount) {
        return Ask(object_, &CPaylodge::TransferFunds, L"Savings", L"Checking", amount, L"Rent");
    }
};

[[nodiscard]] std::string DepositOf(const std::string& amount_line) {
    return RequestDocument(R"(
        <DepositAddRq requestID="requestID_N">
            <DepositAdd>
                <DepositToAccountRef>
                    <FullName>Checking</FullName>
                </DepositToAccountRef>
                <Memo>Rent</Memo>
                <DepositLineAdd>
                    <AccountRef>
                        <FullName>Savings</FullName>
                    </AccountRef>
)" + amount_line + R"(                </DepositLineAdd>
            </DepositAdd>
        </DepositAddRq>
)");
}

TEST_F(TransferFunds, RecordsADepositThatDrawsFromTheSource) {
    EXPECT_TRUE(SUCCEEDED(Transfer(L"100").code));
    EXPECT_EQ(DepositOf("                    <Amount>100.00</Amount>\n"), OnlySent());
}

TEST_F(TransferFunds, SendsTheAmountWithTwoDecimals) {
    struct Case {
        const wchar_t* given;
        const char* sent;
    };
    for (const auto& [given, sent] :
         {Case{L"12.5", "12.50"}, Case{L"abc", "0.00"}, Case{L"", "0.00"}, Case{nullptr, "0.00"}, Case{L"7x", "7.00"},
          Case{L" 3", "3.00"}, Case{L"-4.005", "-4.00"}, Case{L"1e3", "1000.00"}, Case{L"1,234.56", "1.00"},
          Case{L"0.126", "0.13"}, Case{L"00000000000000000000000012.50", "12.50"}}) {
        host_.requests.clear();
        EXPECT_TRUE(SUCCEEDED(Transfer(given).code));
        EXPECT_EQ(DepositOf("                    <Amount>" + std::string(sent) + "</Amount>\n"), OnlySent());
    }
}

TEST_F(TransferFunds, SendsNoAmountForThirtyCharactersAndMore) {
    for (const size_t length : {30U, 31U, 1000U}) {
        host_.requests.clear();
        EXPECT_TRUE(SUCCEEDED(Transfer(std::wstring(length - 1, L'0') + L"1").code));
        EXPECT_EQ(DepositOf(""), OnlySent());
    }
}

TEST_F(TransferFunds, KeepsEmptyAggregatesAndLeavesOutAnEmptyMemo) {
    EXPECT_TRUE(SUCCEEDED(Ask(object_, &CPaylodge::TransferFunds, L"", nullptr, L"5", L"").code));
    EXPECT_EQ(RequestDocument(R"(
        <DepositAddRq requestID="requestID_N">
            <DepositAdd>
                <DepositToAccountRef>
                </DepositToAccountRef>
                <DepositLineAdd>
                    <AccountRef>
                    </AccountRef>
                    <Amount>5.00</Amount>
                </DepositLineAdd>
            </DepositAdd>
        </DepositAddRq>
)"),
              OnlySent());
}

TEST_F(TransferFunds, EscapesNamesAndMemo) {
    EXPECT_TRUE(SUCCEEDED(Ask(object_, &CPaylodge::TransferFunds, L"<a>", L"b&\u00e9", L"5", L"\"'\u4e2d").code));
    EXPECT_EQ(RequestDocument("\n"
                              "        <DepositAddRq requestID=\"requestID_N\">\n"
                              "            <DepositAdd>\n"
                              "                <DepositToAccountRef>\n"
                              "                    <FullName>b&amp;\xE9</FullName>\n"
                              "                </DepositToAccountRef>\n"
                              "                <Memo>&quot;&apos;?</Memo>\n"
                              "                <DepositLineAdd>\n"
                              "                    <AccountRef>\n"
                              "                        <FullName>&lt;a&gt;</FullName>\n"
                              "                    </AccountRef>\n"
                              "                    <Amount>5.00</Amount>\n"
                              "                </DepositLineAdd>\n"
                              "            </DepositAdd>\n"
                              "        </DepositAddRq>\n"),
              OnlySent());
}

TEST_F(TransferFunds, IsJudgedByTheStatusAndAlwaysHandsTheResponseOver) {
    struct Case {
        const wchar_t* response;
        HRESULT code;
    };
    for (const auto& [response, code] : {
             Case{LR"(<LHXML><DepositAddRs statusCode="0"/></LHXML>)", S_OK},
             Case{LR"(<LHXML><DepositAddRs statusCode="3100" statusMessage="no"/></LHXML>)", E_FAIL},
             Case{LR"(<LHXML><DepositAddRs statusCode="0 "/></LHXML>)", E_FAIL},
             Case{LR"(<LHXML><DepositAddRs/></LHXML>)", E_FAIL},
             Case{LR"(<LHXML><DepositAddRs statusCode="5"/><DepositAddRs statusCode="0"/></LHXML>)", E_FAIL},
             Case{L"no document", E_FAIL},
             Case{L"", E_FAIL},
         }) {
        RespondExactly(response);
        EXPECT_EQ((Result{code, response}), Transfer(L"1"));
    }
}

TEST_F(TransferFunds, SucceedsWithoutADepositResponse) {
    RespondExactly(L"<LHXML><CheckAddRs statusCode=\"1\"/></LHXML>");
    const Result result = Transfer(L"1");
    EXPECT_TRUE(SUCCEEDED(result.code));
    EXPECT_EQ(L"<LHXML><CheckAddRs statusCode=\"1\"/></LHXML>", result.text);
}

TEST_F(TransferFunds, HandsTheResponseOverInTheCodePage) {
    RespondExactly(L"<LHXML>\u00e9\u20ac\u4e2d<DepositAddRs statusCode=\"0\"/>\n</LHXML>");
    EXPECT_EQ((Result{S_OK, L"<LHXML>\u00e9\u20ac?<DepositAddRs statusCode=\"0\"/>\n</LHXML>"}), Transfer(L"1"));
}

}  // namespace
}  // namespace paylodge::test
