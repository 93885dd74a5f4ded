// Every operation on the company file as a call with one text, which stands for each of its text arguments.
#pragma once

#include <string>

#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {

struct OperationCall {
    const char* name;
    Result (*call)(CPaylodge& object, const std::wstring& text);
    // Whether the text reaches the processor as it stands, not as the value of an element.
    bool passes_through = false;
    // Whether the result is XML of the component's own.
    bool writes_xml = false;
};

inline const OperationCall kOperationCalls[] = {
    {"ProcessLHRequest",
     [](CPaylodge& object, const std::wstring& text) { return Ask(object, &CPaylodge::ProcessLHRequest, text); }, true},
    {"SavePaymentTxn",
     [](CPaylodge& object, const std::wstring& text) { return Ask(object, &CPaylodge::SavePaymentTxn, text); }, true},
    {"CreateTxnsWithFullResponse",
     [](CPaylodge& object, const std::wstring& text) {
         return Ask(object, &CPaylodge::CreateTxns, text, VARIANT_BOOL{VARIANT_TRUE});
     },
     true},
    {"CreateTxnsWithSummary",
     [](CPaylodge& object, const std::wstring& text) {
         return Ask(object, &CPaylodge::CreateTxns, text, VARIANT_BOOL{VARIANT_FALSE});
     },
     true, true},
    {"GetAccounts",
     [](CPaylodge& object, const std::wstring& text) { return Ask(object, &CPaylodge::GetAccounts, text); }, false,
     true},
    {"GetAccountsForMultipleTypes",
     [](CPaylodge& object, const std::wstring& text) {
         return Ask(object, &CPaylodge::GetAccountsForMultipleTypes, text);
     },
     false, true},
    {"GetBalanceForAccountType",
     [](CPaylodge& object, const std::wstring& text) {
         return Ask(object, &CPaylodge::GetBalanceForAccountType, text);
     },
     false, true},
    {"CreateAccount", [](CPaylodge& object,
                         const std::wstring& text) { return Do(object, &CPaylodge::CreateAccount, text, text, text); }},
    {"ActivateOrDeactivateAccount",
     [](CPaylodge& object, const std::wstring& text) {
         return Do(object, &CPaylodge::ActivateOrDeactivateAccount, text, VARIANT_BOOL{VARIANT_TRUE});
     }},
    {"CreatePaymentTxn",
     [](CPaylodge& object, const std::wstring& text) {
         return Ask(object, &CPaylodge::CreatePaymentTxn, text, text, text, text, text, text, text, text, text, text,
                    text, text, text, text, text, text, text, text, text, text, text, text);
     }},
    {"TransferFunds",
     [](CPaylodge& object, const std::wstring& text) {
         return Ask(object, &CPaylodge::TransferFunds, text, text, text, text);
     }},
    {"GetCustomerIDForName",
     [](CPaylodge& object, const std::wstring& text) { return Ask(object, &CPaylodge::GetCustomerIDForName, text); }},
    {"GetCustomerNameForID",
     [](CPaylodge& object, const std::wstring& text) { return Ask(object, &CPaylodge::GetCustomerNameForID, text); }},
    {"GetInvoiceInfoForCustomerID",
     [](CPaylodge& object, const std::wstring& text) {
         return Ask(object, &CPaylodge::GetInvoiceInfoForCustomerID, text, L"1.00");
     }},
    {"GetItems", [](CPaylodge& object, const std::wstring&) { return Ask(object, &CPaylodge::GetItems); }, false, true},
    {"GetPaymentMethods",
     [](CPaylodge& object, const std::wstring&) { return Ask(object, &CPaylodge::GetPaymentMethods); }, false, true},
    {"IsTaxableItem",
     [](CPaylodge& object, const std::wstring& text) { return AskWhether(object, &CPaylodge::IsTaxableItem, text); }},
    {"OpenTxnForm",
     [](CPaylodge& object, const std::wstring& text) { return Do(object, &CPaylodge::OpenTxnForm, text, text); }},
};

inline std::ostream& operator<<(std::ostream& stream, const OperationCall& operation) {
    return stream << operation.name;
}

[[nodiscard]] inline std::string NameOf(const ::testing::TestParamInfo<OperationCall>& information) {
    return information.param.name;
}

}  // namespace paylodge::test
