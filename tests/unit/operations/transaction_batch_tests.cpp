#include <gtest/gtest.h>

#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

[[nodiscard]] std::string BatchDocument(const std::string& requests) {
    return "<?xml version=\"1.0\" ?>\r\n<?lhxml version=\"7.0\" ?>\r\n<LHXML>\r\n"
           "    <LHXMLMsgsRq onError=\"continueOnError\">\r\n" +
           requests + "    </LHXMLMsgsRq>\r\n</LHXML>\r\n";
}

class CreateTxns : public OperationTest {
  protected:
    template <class Requests>
    [[nodiscard]] Result Create(const Requests& requests, VARIANT_BOOL full_response = VARIANT_TRUE) {
        return Ask(object_, &CPaylodge::CreateTxns, requests, full_response);
    }

    // What is sent before a batch of these requests, which is sent last.
    [[nodiscard]] std::vector<std::string> PreparationsOf(const std::string& requests) {
        host_.requests.clear();
        EXPECT_HRESULT(S_OK, Create(std::wstring(requests.begin(), requests.end())).code);
        std::vector<std::string> sent = Sent();
        EXPECT_EQ(BatchDocument(requests), sent.back());
        sent.pop_back();
        return sent;
    }

    // The summary of a response with these elements in its message set.
    [[nodiscard]] std::wstring SummaryOf(std::wstring_view elements) {
        Respond(elements);
        const Result result = Create(L"", VARIANT_FALSE);
        EXPECT_HRESULT(S_OK, result.code);
        return result.text;
    }
};

// A request that adds one entry to a list; the lines are those of the entry.
[[nodiscard]] std::string AddEntry(const std::string& kind, const std::string& lines) {
    return RequestDocument("\n        <" + kind + "AddRq requestID=\"requestID_N\">\n            <" + kind + "Add>\n" +
                           lines + "            </" + kind + "Add>\n        </" + kind + "AddRq>\n");
}

const std::string kCustomer = AddEntry("Customer", "                <Name>Paylodge Net Refund</Name>\n");

const std::string kHoldingAccount = AddEntry("Account",
                                             "                <Name>Credit Card Holding Account</Name>\n"
                                             "                <AccountType>OtherCurrentAsset</AccountType>\n");

const std::string kGenericItem = AddEntry("ItemPayment", "                <Name>Net Refund - Credit Card</Name>\n");

[[nodiscard]] std::string Item(const std::string& label, const std::string& method) {
    return AddEntry("ItemPayment", "                <Name>Net Refund - " + label +
                                       "</Name>\n"
                                       "                <PaymentMethodRef>\n"
                                       "                    <FullName>" +
                                       method +
                                       "</FullName>\n"
                                       "                </PaymentMethodRef>\n");
}

[[nodiscard]] std::string CreditMemo(const std::string& memo) {
    return "<CreditMemoAddRq><CreditMemoAdd><Memo>" + memo + "</Memo></CreditMemoAdd></CreditMemoAddRq>";
}

[[nodiscard]] std::string Reference(const std::string& account) {
    return "<DepositToAccountRef><FullName>" + account + "</FullName></DepositToAccountRef>";
}

[[nodiscard]] std::string DepositTo(const std::string& account) {
    return "<DepositAddRq><DepositAdd>" + Reference(account) + "</DepositAdd></DepositAddRq>";
}

TEST_F(CreateTxns, SendsTheRequestsAsGivenInsideTheEnvelope) {
    EXPECT_HRESULT(S_OK, Create(L"<CheckAddRq requestID=\"7\">\n\t\u00e9&amp;\u4e2d</CheckAddRq> ").code);
    EXPECT_THAT(Sent(), ElementsAre(BatchDocument("<CheckAddRq requestID=\"7\">\n\t\xE9&amp;?</CheckAddRq> ")));
}

TEST_F(CreateTxns, SendsAnEmptyMessageSetWithoutRequests) {
    EXPECT_HRESULT(S_OK, Create(L"").code);
    EXPECT_HRESULT(S_OK, Create(nullptr).code);
    EXPECT_THAT(Sent(), ElementsAre(BatchDocument(""), BatchDocument("")));
}

TEST_F(CreateTxns, SendsMalformedTextUncheckedAndWithoutPreparations) {
    for (const std::string text : {"<", "</LHXMLMsgsRq>", "<ReceivePaymentAddRq>", "a & b", "<CreditMemoAddRq/><"}) {
        EXPECT_THAT(PreparationsOf(text), IsEmpty()) << text;
    }
}

TEST_F(CreateTxns, LetsTheFourKindsAndPartsOfTheirNamesPass) {
    for (const std::string name : {"SalesReceiptAddRq", "CreditMemoAddRq", "DepositAddRq", "CheckAddRq", "CheckAdd",
                                   "Add", "Rq", "R", "MemoAdd"}) {
        host_.requests.clear();
        EXPECT_HRESULT(S_OK, Create(std::wstring(L"<") + std::wstring(name.begin(), name.end()) + L"/>").code) << name;
        EXPECT_EQ(BatchDocument("<" + name + "/>"), Sent().back());
    }
}

TEST_F(CreateTxns, RefusesABatchWithAnotherKind) {
    for (const wchar_t* requests :
         {L"<ReceivePaymentAddRq/>", L"<checkaddrq/>", L"<CheckAddRqs/>", L"<x:CheckAddRq xmlns:x='u'/>",
          L"<CheckAddRq/>stray<CheckAddRq/>", L"stray", L"<CheckAddRq/><!-- note -->", L"<CheckAddRq/><InvoiceAddRq/>",
          L"<![CDATA[CheckAddRq]]>"}) {
        EXPECT_EQ(Result{E_FAIL}, Create(requests)) << requests;
    }
    EXPECT_THAT(host_.calls, IsEmpty());
}

TEST_F(CreateTxns, AllowsWhiteSpaceBetweenRequests) {
    EXPECT_THAT(PreparationsOf("\r\n  <CheckAddRq/>\r\n\t<SalesReceiptAddRq/>\r\n"), IsEmpty());
}

TEST_F(CreateTxns, ChecksTheFirstMessageSetOnly) {
    EXPECT_THAT(PreparationsOf("<CheckAddRq/></LHXMLMsgsRq><LHXMLMsgsRq><InvoiceAddRq/>"), IsEmpty());
}

TEST_F(CreateTxns, PreparesEarlierRequestsBeforeItRefusesALaterOne) {
    const std::wstring batch = L"<CreditMemoAddRq/><InvoiceAddRq/><CreditMemoAddRq/>";
    EXPECT_EQ(Result{E_FAIL}, Create(batch));
    EXPECT_THAT(Sent(), ElementsAre(kCustomer));
}

TEST_F(CreateTxns, CreatesCustomerAndItemsForACreditMemo) {
    EXPECT_THAT(PreparationsOf(CreditMemo("Refund to Visa 1111")),
                ElementsAre(kCustomer, Item("Visa/MasterCard", "Visa"), kGenericItem));
    EXPECT_THAT(PreparationsOf(CreditMemo("AmEx")),
                ElementsAre(kCustomer, Item("American Express", "American Express"), kGenericItem));
    EXPECT_THAT(PreparationsOf(CreditMemo("Discover")),
                ElementsAre(kCustomer, Item("Discover", "Discover"), kGenericItem));
    EXPECT_THAT(PreparationsOf(CreditMemo("Diners")),
                ElementsAre(kCustomer, Item("Diners Club", "Diners Club"), kGenericItem));
}

TEST_F(CreateTxns, CreatesTheGenericItemAloneForOtherMemos) {
    for (const std::string memo : {"", "MasterCard", "visa"}) {
        EXPECT_THAT(PreparationsOf(CreditMemo(memo)), ElementsAre(kCustomer, kGenericItem)) << memo;
    }
}

TEST_F(CreateTxns, CreatesTheCustomerAloneForACreditMemoWithoutAMemo) {
    for (const std::string request :
         {"<CreditMemoAddRq/>", "<CreditMemoAddRq><CreditMemoAdd/></CreditMemoAddRq>",
          "<CreditMemoAddRq><Memo>Visa</Memo></CreditMemoAddRq>",
          "<CreditMemoAddRq><CreditMemoAdd><Line><Memo>Visa</Memo></Line></CreditMemoAdd></CreditMemoAddRq>"}) {
        EXPECT_THAT(PreparationsOf(request), ElementsAre(kCustomer)) << request;
    }
}

TEST_F(CreateTxns, CreatesNoItemsWhenTheCustomerIsRefused) {
    Respond(LR"(<CustomerAddRs statusCode="3180"/>)");
    EXPECT_THAT(PreparationsOf(CreditMemo("Visa")), ElementsAre(kCustomer));
    host_.answers.push_back({.result = kHostFailure});
    EXPECT_THAT(PreparationsOf(CreditMemo("Visa")), ElementsAre(kCustomer));
    RespondExactly(L"no document");
    EXPECT_THAT(PreparationsOf(CreditMemo("Visa")), ElementsAre(kCustomer));
}

TEST_F(CreateTxns, ToleratesACustomerThatExists) {
    Respond(LR"(<CustomerAddRs statusCode="3100"/>)");
    EXPECT_THAT(PreparationsOf(CreditMemo("")), ElementsAre(kCustomer, kGenericItem));
}

TEST_F(CreateTxns, IgnoresWhetherItemsAndAccountCanBeCreated) {
    Respond(LR"(<CustomerAddRs statusCode="0"/>)");
    Respond(LR"(<ItemPaymentAddRs statusCode="500"/>)");
    host_.answers.push_back({.result = kHostFailure});
    Respond(LR"(<AccountAddRs statusCode="500"/>)");
    EXPECT_THAT(PreparationsOf(CreditMemo("Visa") + DepositTo("Credit Card Holding Account")),
                ElementsAre(kCustomer, Item("Visa/MasterCard", "Visa"), kGenericItem, kHoldingAccount));
}

TEST_F(CreateTxns, CreatesTheHoldingAccountForADepositToIt) {
    EXPECT_THAT(PreparationsOf(DepositTo("Credit Card Holding Account")), ElementsAre(kHoldingAccount));
}

TEST_F(CreateTxns, CreatesTheHoldingAccountThatTheFirstFullNameOnTheWayNames) {
    const std::string holding = Reference("Credit Card Holding Account");
    for (const std::string& deposits :
         {"<DepositAdd><DepositToAccountRef/>" + holding + "</DepositAdd>",
          "<DepositAdd><DepositToAccountRef><ListID>1</ListID></DepositToAccountRef>" + holding + "</DepositAdd>",
          "<DepositAdd/><DepositAdd>" + holding + "</DepositAdd>",
          "<DepositAdd><DepositToAccountRef/></DepositAdd><DepositAdd>" + holding + "</DepositAdd>",
          "<DepositAdd>" + holding + Reference("Checking") + "</DepositAdd>"}) {
        EXPECT_THAT(PreparationsOf("<DepositAddRq>" + deposits + "</DepositAddRq>"), ElementsAre(kHoldingAccount))
            << deposits;
    }
    for (const std::string& deposits :
         {"<DepositAdd>" + Reference("Checking") + holding + "</DepositAdd>",
          "<DepositAdd>" + Reference("") + holding + "</DepositAdd>",
          "<DepositAdd>" + Reference("Checking") + "</DepositAdd><DepositAdd>" + holding + "</DepositAdd>"}) {
        EXPECT_THAT(PreparationsOf("<DepositAddRq>" + deposits + "</DepositAddRq>"), IsEmpty()) << deposits;
    }
}

TEST_F(CreateTxns, CreatesNoAccountForOtherDeposits) {
    for (const std::string& request :
         {DepositTo("Credit card holding account"), DepositTo("Credit Card Holding Account 2"), DepositTo(""),
          std::string("<DepositAddRq/>"), std::string("<DepositAddRq><DepositAdd/></DepositAddRq>"),
          std::string("<DepositAddRq><DepositToAccountRef><FullName>Credit Card Holding Account</FullName>"
                      "</DepositToAccountRef></DepositAddRq>"),
          std::string(
              "<DepositAddRq><DepositAdd><L><DepositToAccountRef><FullName>Credit Card Holding Account</FullName>"
              "</DepositToAccountRef></L></DepositAdd></DepositAddRq>"),
          "<DepositAdd>" + DepositTo("Credit Card Holding Account") + "</DepositAdd>"}) {
        EXPECT_THAT(PreparationsOf(request), IsEmpty()) << request;
    }
}

TEST_F(CreateTxns, RepeatsThePreparationsForEveryRequestInOrder) {
    const std::string deposit = DepositTo("Credit Card Holding Account");
    EXPECT_THAT(PreparationsOf(CreditMemo("") + "<CheckAddRq/>" + deposit + CreditMemo("") + deposit),
                ElementsAre(kCustomer, kGenericItem, kHoldingAccount, kCustomer, kGenericItem, kHoldingAccount));
}

TEST_F(CreateTxns, ReturnsTheFullResponseForMinusOneAlone) {
    const std::wstring response = ResponseDocument(L"<!-- \u00e9 -->\n<CheckAddRs statusCode='1'/>");
    RespondExactly(response);
    EXPECT_EQ((Result{S_OK, response}), Create(L"", VARIANT_TRUE));
    for (const VARIANT_BOOL value : {VARIANT_BOOL{0}, VARIANT_BOOL{1}, VARIANT_BOOL{-2}, VARIANT_BOOL{0xFF}}) {
        Respond(L"");
        EXPECT_EQ((Result{S_OK, L"<LHXMLMsgsRs>\r\n</LHXMLMsgsRs>\r\n"}), Create(L"", value)) << value;
    }
}

TEST_F(CreateTxns, ReturnsTheFullResponseUnread) {
    for (const wchar_t* response : {L"no document", L""}) {
        RespondExactly(response);
        EXPECT_EQ((Result{S_OK, response}), Create(L"", VARIANT_TRUE));
    }
}

TEST_F(CreateTxns, ReturnsTheFullResponseInTheCodePage) {
    RespondExactly(L"<R>\u00e9\u20ac\u4e2d</R>");
    EXPECT_EQ((Result{S_OK, L"<R>\u00e9\u20ac?</R>"}), Create(L"", VARIANT_TRUE));
}

TEST_F(CreateTxns, SummarizesWithoutAMessageSetAsNothing) {
    for (const wchar_t* response : {L"no document", L"", L"<LHXML/>", L"<LHXMLMsgsRq/>"}) {
        RespondExactly(response);
        EXPECT_EQ((Result{S_OK, L""}), Create(L"", VARIANT_FALSE)) << response;
    }
}

TEST_F(CreateTxns, SummarizesStatusAndChosenFields) {
    EXPECT_EQ(Lines(std::wstring_view(LR"(
<LHXMLMsgsRs>
    <SalesReceiptAddRs requestID="1" statusCode="0" statusSeverity="Info" statusMessage="Status &quot;OK&quot;">
        <TxnID>A-1</TxnID>
        <RefNumber>7</RefNumber>
        <TotalAmount>12.50</TotalAmount>
        <Memo>a &amp; b</Memo>
    </SalesReceiptAddRs>
    <DepositAddRs requestID="" statusCode="0" statusSeverity="" statusMessage="">
        <TxnID>B-2</TxnID>
        <DepositTotal>5.00</DepositTotal>
        <Memo>m</Memo>
    </DepositAddRs>
    <CheckAddRs requestID="3" statusCode="3140" statusSeverity="Error" statusMessage="">
    </CheckAddRs>
</LHXMLMsgsRs>
)")),
              SummaryOf(LR"(
<SalesReceiptAddRs requestID="1" statusCode="0" statusSeverity="Info" statusMessage="Status &quot;OK&quot;">
    <SalesReceiptRet><Memo>a &amp; b</Memo><TotalAmount>12.50</TotalAmount><RefNumber>7</RefNumber><TxnID>A-1</TxnID>
        <DepositTotal>9</DepositTotal><Other>x</Other></SalesReceiptRet>
</SalesReceiptAddRs>
<DepositAddRs statusCode="0">
    <DepositRet><TxnID>B-2</TxnID><RefNumber>8</RefNumber><TotalAmount>9</TotalAmount><DepositTotal>5.00</DepositTotal>
        <Memo>m</Memo></DepositRet>
</DepositAddRs>
<CheckAddRs statusSeverity="Error" statusCode="3140" requestID="3" other="x"><CheckRet><TxnID>C</TxnID></CheckRet></CheckAddRs>)"));
}

TEST_F(CreateTxns, SummarizesOnlyTheFieldsThatTheFirstChildHas) {
    EXPECT_EQ(
        Lines(std::wstring_view(LR"(
<LHXMLMsgsRs>
    <CheckAddRs requestID="" statusCode="0" statusSeverity="" statusMessage="">
        <Memo>m</Memo>
    </CheckAddRs>
    <CheckAddRs requestID="" statusCode="0" statusSeverity="" statusMessage="">
    </CheckAddRs>
</LHXMLMsgsRs>
)")),
        SummaryOf(L"<CheckAddRs statusCode='0'><CheckRet><TxnID/><L><TxnID>deep</TxnID></L><Memo>m</Memo></CheckRet>"
                  L"<CheckRet><TxnID>2</TxnID></CheckRet></CheckAddRs><CheckAddRs statusCode='0'/>"));
}

TEST_F(CreateTxns, SummarizesTheFirstNodeOfAResponseOnly) {
    EXPECT_EQ(Lines(std::wstring_view(LR"(
<LHXMLMsgsRs>
    <CheckAddRs requestID="" statusCode="0" statusSeverity="" statusMessage="">
    </CheckAddRs>
</LHXMLMsgsRs>
)")),
              SummaryOf(L"<CheckAddRs statusCode='0'><!-- c --><CheckRet><TxnID>1</TxnID></CheckRet></CheckAddRs>"));
}

// A comment is a node like any other, whose status is empty.
TEST_F(CreateTxns, SummarizesEveryNode) {
    EXPECT_EQ(Lines(std::wstring_view(LR"(
<LHXMLMsgsRs>
    <#comment requestID="" statusCode="" statusSeverity="" statusMessage="">
    </#comment>
    <CheckAddRs requestID="" statusCode="1" statusSeverity="" statusMessage="">
    </CheckAddRs>
</LHXMLMsgsRs>
)")),
              SummaryOf(L"<!-- statusCode='0' --><CheckAddRs statusCode='1'/>"));
}

TEST_F(CreateTxns, SummarizesFieldsForStatusZeroAlone) {
    for (const wchar_t* status : {L"00", L" 0", L"", L"1"}) {
        EXPECT_EQ(std::wstring(L"<LHXMLMsgsRs>\r\n    <CheckAddRs requestID=\"\" statusCode=\"") + status +
                      L"\" statusSeverity=\"\" statusMessage=\"\">\r\n    </CheckAddRs>\r\n</LHXMLMsgsRs>\r\n",
                  SummaryOf(std::wstring(L"<CheckAddRs statusCode=\"") + status +
                            L"\"><R><TxnID>1</TxnID></R></CheckAddRs>"));
    }
}

TEST_F(CreateTxns, SummarizesInTheCodePage) {
    EXPECT_EQ(
        Lines(std::wstring_view(L"\n"
                                L"<LHXMLMsgsRs>\n"
                                L"    <CheckAddRs requestID=\"\u20ac\" statusCode=\"0\" statusSeverity=\"\" "
                                L"statusMessage=\"?\">\n"
                                L"        <Memo>\u00e9?</Memo>\n"
                                L"    </CheckAddRs>\n"
                                L"</LHXMLMsgsRs>\n")),
        SummaryOf(
            L"<CheckAddRs requestID='\u20ac' statusCode='0' statusMessage='\u4e2d'><R><Memo>\u00e9\u4e2d</Memo></R>"
            L"</CheckAddRs>"));
}

TEST_F(CreateTxns, ReturnsTheCodeOfABatchThatCannotBeSent) {
    host_.answers.push_back({.result = kHostFailure, .response = L"<LHXML/>"});
    EXPECT_EQ(Result{kHostFailure}, Create(L"<CheckAddRq/>"));
    host_.answers.push_back({.result = kHostFailure});
    EXPECT_EQ(Result{kHostFailure}, Create(L"<CheckAddRq/>", VARIANT_FALSE));
}

}  // namespace
}  // namespace paylodge::test
