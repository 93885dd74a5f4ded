#include "tests/unit/operations/operation_table.hpp"

namespace paylodge::test {

const wchar_t* const kAnswerToAll =
    LR"(
    <AccountQueryRs statusCode="0"><A><ListID>1</ListID><EditSequence>2</EditSequence><IsActive>false</IsActive>
        <FullName>a</FullName></A></AccountQueryRs>
    <AccountAddRs statusCode="0"/><AccountModRs statusCode="0"/><CustomerAddRs statusCode="0"/>
    <ItemPaymentAddRs statusCode="0"/><DepositAddRs statusCode="0"><D><TxnID>1</TxnID></D></DepositAddRs>
    <CustomerQueryRs><C><Name>c</Name><ListID>1</ListID></C></CustomerQueryRs>
    <InvoiceQueryRs><I><BalanceRemaining>5</BalanceRemaining><RefNumber>1</RefNumber></I></InvoiceQueryRs>
    <ItemQueryRs><I><Name>i</Name><SalesTaxCodeRef><ListID>t</ListID></SalesTaxCodeRef></I></ItemQueryRs>
    <SalesTaxCodeQueryRs><S><IsTaxable>true</IsTaxable></S></SalesTaxCodeQueryRs>
    <PaymentMethodQueryRs><P><Name>p</Name></P></PaymentMethodQueryRs>)";

namespace {

const Operation kOperations[] = {
    {"GetAccounts", 1, [](CPaylodge& object) { return Ask(object, &CPaylodge::GetAccounts, L"Bank"); }},
    {"GetAccountsForMultipleTypes", 1,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetAccountsForMultipleTypes, L"Bank, Income"); }},
    {"GetBalanceForAccountType", 1,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetBalanceForAccountType, L"Bank"); }},
    {"CreateAccount",
     1,
     [](CPaylodge& object) { return Do(object, &CPaylodge::CreateAccount, L"n", L"t", L"1"); },
     E_FAIL,
     {E_FAIL},
     false},
    {"ActivateOrDeactivateAccount",
     2,
     [](CPaylodge& object) { return Do(object, &CPaylodge::ActivateOrDeactivateAccount, L"n", VARIANT_TRUE); },
     std::nullopt,
     {E_FAIL},
     false},
    {"CreateTxnsWithFullResponse",
     1,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::CreateTxns, L"<CheckAddRq/>", VARIANT_TRUE); },
     std::nullopt,
     {S_OK, L""},
     false},
    {"CreateTxnsWithSummary",
     1,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::CreateTxns, L"<CheckAddRq/>", VARIANT_FALSE); },
     std::nullopt,
     {S_OK, L""},
     false},
    {"CreateTxnsWithPreparations",
     5,
     [](CPaylodge& object) {
         return Ask(object, &CPaylodge::CreateTxns,
                    L"<CreditMemoAddRq><CreditMemoAdd><Memo>Visa</Memo></CreditMemoAdd></CreditMemoAddRq><DepositAddRq>"
                    L"<DepositAdd><DepositToAccountRef><FullName>Credit Card Holding Account</FullName>"
                    L"</DepositToAccountRef></DepositAdd></DepositAddRq>",
                    VARIANT_FALSE);
     },
     std::nullopt,
     {S_OK, L""},
     false,
     true,
     5},
    {"CreatePaymentTxn",
     1,
     [](CPaylodge& object) {
         return Ask(object, &CPaylodge::CreatePaymentTxn, L"1", L"2", L"3", L"4", L"5", L"6", L"7", L"8", L"9", L"10",
                    L"11", L"12", L"13", L"14", L"15", L"16", L"17", L"18", L"19", L"20", L"21", L"22");
     },
     E_FAIL,
     {E_FAIL},
     false,
     false},
    {"TransferFunds",
     1,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::TransferFunds, L"a", L"b", L"1", L"m"); },
     std::nullopt,
     {E_FAIL, L""},
     false},
    {"GetCustomerIDForName", 1, [](CPaylodge& object) { return Ask(object, &CPaylodge::GetCustomerIDForName, L"c"); }},
    {"GetCustomerNameForID", 1, [](CPaylodge& object) { return Ask(object, &CPaylodge::GetCustomerNameForID, L"1"); }},
    {"GetInvoiceInfoForCustomerID", 1,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetInvoiceInfoForCustomerID, L"1", L"5"); }},
    {"GetItems", 1, [](CPaylodge& object) { return Ask(object, &CPaylodge::GetItems); }},
    {"GetPaymentMethods", 1, [](CPaylodge& object) { return Ask(object, &CPaylodge::GetPaymentMethods); }},
    {"IsTaxableItem",
     2,
     [](CPaylodge& object) { return AskWhether(object, &CPaylodge::IsTaxableItem, L"i"); },
     std::nullopt,
     {S_OK, kFalse},
     true,
     true,
     1,
     Result{S_OK, kFalse}},
    {"OpenTxnForm",
     1,
     [](CPaylodge& object) { return Do(object, &CPaylodge::OpenTxnForm, L"Check", L"1"); },
     std::nullopt,
     {S_OK},
     true,
     false},
};

}  // namespace

std::span<const Operation> Operations() noexcept { return kOperations; }

}  // namespace paylodge::test
