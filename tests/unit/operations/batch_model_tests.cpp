// Random batches against a model of what is checked, prepared and sent. A failure names the seed and the batch.

#include <gtest/gtest.h>

#include <random>

#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

constexpr int kBatches = 250;

// One request of a batch, and what the component makes of it.
struct Request {
    std::string text;
    bool is_permitted = true;
    std::vector<std::string> preparations = {};
};

// The preparations by what tells them apart in their documents.
[[nodiscard]] std::string Summary(const std::string& document) {
    std::string summary;
    if (const size_t place = document.find("AddRq requestID"); place != std::string::npos) {
        const size_t start = document.rfind('<', place) + 1;
        summary = document.substr(start, document.find(' ', start) - start);
    }
    for (const char* name : {"<Name>", "<AccountType>", "<FullName>"}) {
        if (const size_t start = document.find(name); start != std::string::npos) {
            const size_t text = document.find('>', start) + 1;
            summary += '|' + document.substr(text, document.find('<', text) - text);
        }
    }
    return summary;
}

class BatchModel : public OperationTest, public ::testing::WithParamInterface<unsigned> {
  protected:
    [[nodiscard]] size_t Below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random_); }
    template <size_t count>
    [[nodiscard]] std::string AnyOf(const char* const (&texts)[count]) {
        return texts[Below(count)];
    }

    // The first row of the table whose text the memo holds.
    [[nodiscard]] static std::vector<std::string> ItemsFor(const std::string& memo) {
        static constexpr const char* kRows[][3] = {{"Visa", "Visa/MasterCard", "Visa"},
                                                   {"AmEx", "American Express", "American Express"},
                                                   {"Discover", "Discover", "Discover"},
                                                   {"Diners", "Diners Club", "Diners Club"}};
        std::vector<std::string> items;
        for (const auto& [search, label, method] : kRows) {
            if (memo.find(search) != std::string::npos) {
                items.push_back(std::string("ItemPaymentAddRq|Net Refund - ") + label + '|' + method);
                break;
            }
        }
        items.emplace_back("ItemPaymentAddRq|Net Refund - Credit Card");
        return items;
    }

    [[nodiscard]] Request AnyCreditMemo() {
        Request request{.text = {}, .preparations = {"CustomerAddRq|Paylodge Net Refund"}};
        const std::string memo = AnyOf({"", "Visa", "visa", "MasterCard", "MasterCard, then Visa", "AmEx Visa",
                                        "Discover by Diners", "Diners", "xAmExx", "Amex"});
        switch (Below(4)) {
            case 0:
                request.text = "<CreditMemoAddRq/>";
                break;
            case 1:
                request.text =
                    "<CreditMemoAddRq><CreditMemoAdd><A><Memo>Visa</Memo></A></CreditMemoAdd></"
                    "CreditMemoAddRq>";
                break;
            default:
                request.text = "<CreditMemoAddRq><CreditMemoAdd><A/><Memo>" + memo +
                               "</Memo><Memo>Visa</Memo></CreditMemoAdd></CreditMemoAddRq>";
                for (const std::string& item : ItemsFor(memo)) {
                    request.preparations.push_back(item);
                }
                break;
        }
        return request;
    }

    [[nodiscard]] Request AnyDeposit() {
        const std::string account = AnyOf({"Credit Card Holding Account", "credit card holding account",
                                           "Credit Card Holding Account ", "Checking", ""});
        // The DOM's text of a node has no white space at its ends.
        const bool is_prepared = account == "Credit Card Holding Account" || account == "Credit Card Holding Account ";
        return {.text = "<DepositAddRq><DepositAdd><Memo>m</Memo><DepositToAccountRef><FullName>" + account +
                        "</FullName></DepositToAccountRef></DepositAdd></DepositAddRq>",
                .preparations = is_prepared ? std::vector<std::string>{"AccountAddRq|Credit Card Holding Account|"
                                                                       "OtherCurrentAsset"}
                                            : std::vector<std::string>{}};
    }

    [[nodiscard]] Request AnyRequest() {
        switch (Below(8)) {
            case 0:
            case 1:
                return AnyCreditMemo();
            case 2:
            case 3:
                return AnyDeposit();
            case 4: {
                // Whatever is a part of the text with the permitted names passes.
                const std::string name =
                    AnyOf({"SalesReceiptAddRq", "CheckAddRq", "CheckAdd", "Rq", "R", "Add", "MemoAddRq",
                           "ReceivePaymentAddRq", "InvoiceAddRq", "checkaddrq", "CheckAddRqs", "X"});
                static constexpr std::string_view kPermitted =
                    "SalesReceiptAddRq CreditMemoAddRq DepositAddRq CheckAddRq";
                return {.text = '<' + name + "/>", .is_permitted = kPermitted.find(name) != std::string_view::npos};
            }
            case 5:
                return {.text = AnyOf({"stray", "<!-- note -->", "<?pi?>", "<![CDATA[x]]>"}), .is_permitted = false};
            default:
                return {.text = "<SalesReceiptAddRq requestID=\"" + std::to_string(Below(9)) + "\"/>"};
        }
    }

    std::mt19937 random_{GetParam()};
};

TEST_P(BatchModel, AgreesOnEveryBatch) {
    for (int batch = 0; batch < kBatches && !HasFailure(); ++batch) {
        host_.requests.clear();
        std::string text;
        std::vector<std::string> expected;
        bool is_permitted = true;
        for (size_t left = Below(6); left > 0; --left) {
            const Request request = AnyRequest();
            text += request.text;
            if (is_permitted && request.is_permitted) {
                expected.insert(expected.end(), request.preparations.begin(), request.preparations.end());
            }
            is_permitted = is_permitted && request.is_permitted;
        }
        const bool is_full = Below(2) == 0;
        const Result result = Ask(object_, &CPaylodge::CreateTxns, std::wstring(text.begin(), text.end()),
                                  is_full ? VARIANT_BOOL{VARIANT_TRUE} : VARIANT_BOOL{1});
        std::vector<std::string> sent = Sent();
        if (is_permitted) {
            ASSERT_FALSE(sent.empty());
            EXPECT_NE(std::string::npos, sent.back().find("\r\n" + text + "    </LHXMLMsgsRq>")) << sent.back();
            sent.pop_back();
        }
        EXPECT_HRESULT(is_permitted ? S_OK : E_FAIL, result.code);
        EXPECT_EQ(is_permitted, result.text != kUntouched);
        std::vector<std::string> prepared;
        for (const std::string& document : sent) {
            prepared.push_back(Summary(document));
        }
        EXPECT_EQ(expected, prepared);
        EXPECT_FALSE(HasFailure()) << "seed " << GetParam() << ", batch " << batch << ": " << text;
    }
}

INSTANTIATE_TEST_SUITE_P(, BatchModel, ::testing::Values(1U, 2U, 3U));

}  // namespace
}  // namespace paylodge::test
