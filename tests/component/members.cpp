#include "tests/component/members.hpp"

#include <algorithm>
#include <stdexcept>

namespace paylodge::test {
namespace {

constexpr Member kMembers[] = {
    {1, 0x1, 7, Kind::kMethod, "GetAccounts", "[in] BSTR accountType, [out,retval] BSTR* pAccountNames", nullptr, S_OK,
     "\"\"", "AccountQueryRq"},
    {1, 0x2, 8, Kind::kMethod, "GetItems", "[out,retval] BSTR* pItemNames", "Get items", S_OK, "\"\"", "ItemQueryRq"},
    {1, 0x3, 9, Kind::kMethod, "CreateTxns",
     "[in] BSTR txnRequests, [in] VARIANT_BOOL bFullResponse, [out,retval] BSTR* pCreateTxnResults", "Create txns",
     S_OK, "\"<LHXML></LHXML>\"", "LHXMLMsgsRq"},
    {1, 0x4, 10, Kind::kMethod, "IsTaxableItem", "[in] BSTR itemName, [out,retval] VARIANT_BOOL* pIsTaxable",
     "Is taxable item", S_OK, "0", "ItemQueryRq"},
    {1, 0x5, 11, Kind::kMethod, "GetLastTxnDownloadTime",
     "[in] BSTR merchantAccountNumber, [out,retval] BSTR* pLastTxnDownloadTime", "Get last download time", S_OK,
     "\"0\"", nullptr},
    {1, 0x6, 12, Kind::kMethod, "SetLastTxnDownloadTime",
     "[in] BSTR merchantAccountNumber, [in] BSTR lastTxnDownloadTime", "Set last download time", E_FAIL, "", nullptr},
    {1, 0x7, 13, Kind::kMethod, "OpenTxnForm", "[in] BSTR txnType, [in] BSTR txnID", "Open txn form", S_OK, "",
     "TxnDisplayModRq"},
    {1, 0x8, 14, Kind::kMethod, "GetPaymentMethods", "[out,retval] BSTR* pPaymentMethodNames",
     "Get payment method names", S_OK, "\"\"", "PaymentMethodQueryRq"},
    {2, 0x9, 15, Kind::kGet, "IsReconPaymentDataReady", "[out,retval] VARIANT_BOOL*", nullptr, S_OK, "0", nullptr},
    {2, 0x9, 16, Kind::kPut, "IsReconPaymentDataReady", "[in] VARIANT_BOOL", nullptr, S_OK, "", nullptr},
    {2, 0xa, 17, Kind::kGet, "IsReconFeeDataReady", "[out,retval] VARIANT_BOOL*", nullptr, S_OK, "0", nullptr},
    {2, 0xa, 18, Kind::kPut, "IsReconFeeDataReady", "[in] VARIANT_BOOL", nullptr, S_OK, "", nullptr},
    {2, 0xb, 19, Kind::kGet, "ReconFeeData", "[out,retval] BSTR*", nullptr, S_FALSE, "\"\"", nullptr},
    {2, 0xb, 20, Kind::kPut, "ReconFeeData", "[in] BSTR", nullptr, S_OK, "", nullptr},
    {2, 0xc, 21, Kind::kMethod, "GetReconPaymentData", "[out,retval] BSTR* pPaymentData", "Get recon payment data",
     S_FALSE, "\"\"", nullptr},
    {2, 0xd, 22, Kind::kMethod, "GetReconPaymentParams",
     "[out] VARIANT_BOOL* pIsUndepFundsAccntDefault, [out,retval] BSTR* pUndepFundsStartDate",
     "Get recon payment parameters", S_FALSE, "-1, \"\"", nullptr},
    {2, 0xe, 23, Kind::kMethod, "SetReconPaymentDataAndParams",
     "[in] BSTR paymentData, [in] BSTR undepFundsStartDate, [in] VARIANT_BOOL isUndepFundsAccntDefault",
     "Set recon payment data and parameters", S_OK, "", nullptr},
    {2, 0xf, 24, Kind::kMethod, "GetAccountsForMultipleTypes",
     "[in] BSTR accountTypes, [out,retval] BSTR* pAccountData", nullptr, S_OK, "\"\"", "AccountQueryRq"},
    {3, 0x10, 25, Kind::kMethod, "GetCustomerIDForName", "[in] BSTR payorName, [out,retval] BSTR* pCustomerListElemID",
     "Find customer list element ID for payor name from scanned check", S_OK, "\"\"", "CustomerQueryRq"},
    {3, 0x11, 26, Kind::kMethod, "GetCustomerNameForID",
     "[in] BSTR customerListElemID, [out,retval] BSTR* pCustomerName",
     "Find customer name for customer list element ID", S_OK, "\"\"", "CustomerQueryRq"},
    {3, 0x12, 27, Kind::kMethod, "GetInvoiceInfoForCustomerID",
     "[in] BSTR customerListElemID, [in] BSTR checkAmount, [out,retval] BSTR* pInvoiceInfo",
     "Find invoice info for specified LH customer and amount", S_OK, "\"\"", "InvoiceQueryRq"},
    {3, 0x13, 28, Kind::kGet, "IsScanTxnCreated", "[out,retval] VARIANT_BOOL*", "get ScanTxnCreated flag", S_OK, "0",
     nullptr},
    {3, 0x13, 29, Kind::kPut, "IsScanTxnCreated", "[in] VARIANT_BOOL", "put ScanTxnCreated flag", S_OK, "", nullptr},
    {3, 0x14, 30, Kind::kMethod, "GetScanTxnID", "[out,retval] BSTR* pTxnID", "get LH txn ID for txn just saved",
     S_FALSE, "\"\"", nullptr},
    {3, 0x15, 31, Kind::kMethod, "GetScanTxnCustomerListElemID", "[out,retval] BSTR* pCustomerListElemID",
     "get customer list element ID for txn just saved", S_FALSE, "\"\"", nullptr},
    {3, 0x16, 32, Kind::kMethod, "GetScanTxnCustomerName", "[out,retval] BSTR* pCustomerName",
     "get displayable customer name for txn just saved", S_FALSE, "\"\"", nullptr},
    {3, 0x17, 33, Kind::kMethod, "GetScanTxnInvoiceList", "[out,retval] BSTR* pInvoiceList",
     "get list of invoices paid for txn just saved", S_FALSE, "\"\"", nullptr},
    {3, 0x18, 34, Kind::kMethod, "GetScanTxnAmount", "[out,retval] BSTR* pAmount", "get amount for txn just saved",
     S_FALSE, "\"\"", nullptr},
    {3, 0x19, 35, Kind::kMethod, "SetScanTxnInfo",
     "[in] BSTR txnID, [in] BSTR customerListElemID, [in] BSTR customerName, [in] BSTR invoiceList, [in] BSTR amount",
     "set info for txn just saved", S_OK, "", nullptr},
    {3, 0x1a, 36, Kind::kGet, "ScanTxnListForDeposit", "[out,retval] BSTR*",
     "get list of LH txn recnums to prefill deposit for scanned checks", S_OK, "null", nullptr},
    {3, 0x1a, 37, Kind::kPut, "ScanTxnListForDeposit", "[in] BSTR",
     "get list of LH txn recnums to prefill deposit for scanned checks", S_OK, "", nullptr},
    {3, 0x1b, 38, Kind::kGet, "ScanUnrecordedCheckNumListForDeposit", "[out,retval] BSTR*",
     "get list of check nums for unrecorded checks to prefill deposit for scanned checks", S_OK, "null", nullptr},
    {3, 0x1b, 39, Kind::kPut, "ScanUnrecordedCheckNumListForDeposit", "[in] BSTR",
     "get list of check nums for unrecorded checks to prefill deposit for scanned checks", S_OK, "", nullptr},
    {3, 0x1c, 40, Kind::kGet, "ScanUnrecordedAmountListForDeposit", "[out,retval] BSTR*",
     "get list of amounts for unrecorded checks to prefill deposit for scanned checks", S_OK, "null", nullptr},
    {3, 0x1c, 41, Kind::kPut, "ScanUnrecordedAmountListForDeposit", "[in] BSTR",
     "get list of amounts for unrecorded checks to prefill deposit for scanned checks", S_OK, "", nullptr},
    {3, 0x1d, 42, Kind::kGet, "IsLockOrUpdateTxnsCompleted", "[out,retval] VARIANT_BOOL*", nullptr, S_OK, "0", nullptr},
    {3, 0x1d, 43, Kind::kPut, "IsLockOrUpdateTxnsCompleted", "[in] VARIANT_BOOL", nullptr, S_OK, "", nullptr},
    {3, 0x1e, 44, Kind::kGet, "LockOrUpdateTxnsStatus", "[out,retval] BSTR*", nullptr, S_FALSE, "\"\"", nullptr},
    {3, 0x1e, 45, Kind::kPut, "LockOrUpdateTxnsStatus", "[in] BSTR", nullptr, S_OK, "", nullptr},
    {3, 0x1f, 46, Kind::kGet, "LockOrUpdateTxnsOffsets", "[out,retval] BSTR*",
     "get check list offsets for lock or update txns operation", S_OK, "null", nullptr},
    {3, 0x1f, 47, Kind::kPut, "LockOrUpdateTxnsOffsets", "[in] BSTR",
     "get check list offsets for lock or update txns operation", S_OK, "", nullptr},
    {3, 0x20, 48, Kind::kGet, "LockOrUpdateTxnsIDs", "[out,retval] BSTR*",
     "get txn IDs for lock or update txns operation", S_OK, "null", nullptr},
    {3, 0x20, 49, Kind::kPut, "LockOrUpdateTxnsIDs", "[in] BSTR", "get txn IDs for lock or update txns operation", S_OK,
     "", nullptr},
    {4, 0x21, 50, Kind::kMethod, "GetBalanceForAccountType", "[in] BSTR accountType, [out,retval] BSTR* pAccountData",
     nullptr, S_OK, "\"\"", "AccountQueryRq"},
    {4, 0x22, 51, Kind::kMethod, "TransferFunds",
     "[in] BSTR bstrDepositFromName, [in] BSTR bstrDepositToName, [in] BSTR bstrDepositAmount, [in] BSTR "
     "bstrDepositMemo, [out,retval] BSTR* pTransferFundResults",
     "Transfer Funds", S_OK, "\"<LHXML></LHXML>\"", "DepositAddRq"},
    {4, 0x23, 52, Kind::kMethod, "CreateAccount",
     "[in] BSTR bstrAccountName, [in] BSTR bstrAccountType, [in] BSTR bstrAccountNumber", nullptr, S_OK, "",
     "AccountAddRq"},
    {4, 0x24, 53, Kind::kMethod, "ActivateOrDeactivateAccount",
     "[in] BSTR bstrAccountName, [in] VARIANT_BOOL bMakeActive", nullptr, E_FAIL, "", "AccountQueryRq"},
    {4, 0x25, 54, Kind::kGet, "IsReconBatchDataReady", "[out,retval] VARIANT_BOOL*", nullptr, S_OK, "0", nullptr},
    {4, 0x25, 55, Kind::kPut, "IsReconBatchDataReady", "[in] VARIANT_BOOL", nullptr, S_OK, "", nullptr},
    {4, 0x26, 56, Kind::kGet, "ReconBatchData", "[out,retval] BSTR*", nullptr, S_FALSE, "\"\"", nullptr},
    {4, 0x26, 57, Kind::kPut, "ReconBatchData", "[in] BSTR", nullptr, S_OK, "", nullptr},
    {4, 0x27, 58, Kind::kMethod, "CreatePaymentTxn",
     "[in] BSTR bstrFullName, [in] BSTR bstrTxnDate, [in] BSTR bstrAmount, [in] BSTR bstrRefNum, [in] BSTR "
     "bstrPaymentName, [in] BSTR bstrMemo, [in] BSTR bstrAutoApply, [in] BSTR bstrCCNumber, [in] BSTR bstrExpMonth, "
     "[in] BSTR bstrExpYear, [in] BSTR bstrNameOnCard, [in] BSTR bstrCCResultCode, [in] BSTR bstrCCMessage, [in] BSTR "
     "bstrCCTransID, [in] BSTR bstrMasAccountNumber, [in] BSTR bstrAuthCode, [in] BSTR bstrReconBatchID, [in] BSTR "
     "bstrPaymentGroupingCode, [in] BSTR bstrCCPaymentStatus, [in] BSTR bstrTxnAutTime, [in] BSTR bstrTxnAutTimeStamp, "
     "[in] BSTR bstrClientTxnID, [out,retval] BSTR* pRetValue",
     "Create Payment Transaction", S_OK, "\"<LHXML></LHXML>\"", "ReceivePaymentAddRq"},
    {4, 0x28, 59, Kind::kGet, "LHExportableNameID", "[out,retval] BSTR*", "get exportable name id", S_OK, "null",
     nullptr},
    {4, 0x28, 60, Kind::kPut, "LHExportableNameID", "[in] BSTR", "put exportable name id", S_OK, "", nullptr},
    {4, 0x29, 61, Kind::kMethod, "SavePaymentTxn", "[in] BSTR requestBody, [out,retval] BSTR* pResponse", nullptr, S_OK,
     "\"<LHXML></LHXML>\"", "LHXMLMsgsRq"},
    {4, 0x2a, 62, Kind::kMethod, "ProcessLHRequest", "[in] BSTR requestBody, [out,retval] BSTR* pResponse", nullptr,
     S_OK, "\"<LHXML></LHXML>\"", "LHXMLMsgsRq"},
    {4, 0x2b, 63, Kind::kGet, "TransactionID", "[out,retval] BSTR*", "get transaction ID", S_OK, "null", nullptr},
    {4, 0x2b, 64, Kind::kPut, "TransactionID", "[in] BSTR", "put transaction ID", S_OK, "", nullptr},
    {5, 0x2c, 65, Kind::kGet, "EInvoicedTransactionData", "[out,retval] BSTR*", "get einvoice transaction Data", S_OK,
     "null", nullptr},
    {5, 0x2c, 66, Kind::kPut, "EInvoicedTransactionData", "[in] BSTR", "put einvoice transaction Data", S_OK, "",
     nullptr},
    {5, 0x2d, 67, Kind::kGet, "CustomerData", "[out,retval] BSTR*", "get Customer list data", S_OK, "null", nullptr},
    {5, 0x2d, 68, Kind::kPut, "CustomerData", "[in] BSTR", "put Customer list data", S_OK, "", nullptr},
    {6, 0x2e, 69, Kind::kGet, "ItemData", "[out,retval] BSTR*", "get item list data", S_OK, "null", nullptr},
    {6, 0x2e, 70, Kind::kPut, "ItemData", "[in] BSTR", "put item list data", S_OK, "", nullptr},
    {7, 0x2f, 71, Kind::kGet, "CustomerDataForRebill", "[out,retval] BSTR*", "get customer  data", S_OK, "null",
     nullptr},
    {7, 0x2f, 72, Kind::kPut, "CustomerDataForRebill", "[in] BSTR", "put customer data", S_OK, "", nullptr},
    {8, 0x30, 73, Kind::kGet, "SearchCustomerNameForRebill", "[out,retval] BSTR*", "get search customer  name", S_OK,
     "null", nullptr},
    {8, 0x30, 74, Kind::kPut, "SearchCustomerNameForRebill", "[in] BSTR", "put search customer name", S_OK, "",
     nullptr},
    {8, 0x31, 75, Kind::kGet, "SearchLineItemsListMatchingQuery", "[out,retval] BSTR*", "get lineitems list", S_OK,
     "null", nullptr},
    {8, 0x31, 76, Kind::kPut, "SearchLineItemsListMatchingQuery", "[in] BSTR", "put lineitems list", S_OK, "", nullptr},
};

constexpr IID kInterfaceIds[] = {
    {0x39ACDAC8, 0x64A5, 0x4846, {0x83, 0x5A, 0xDB, 0x0B, 0x27, 0xDB, 0xA7, 0xAC}},
    {0x0225ACB2, 0x7D2C, 0x42F9, {0xB5, 0xE6, 0x72, 0x79, 0xB9, 0x9D, 0x13, 0x1A}},
    {0xCB794A43, 0xCD61, 0x4B0E, {0xB5, 0x4A, 0xE2, 0x84, 0x47, 0xB3, 0x34, 0x36}},
    {0x1F23C895, 0x1C68, 0x435C, {0xB4, 0x5E, 0x88, 0x76, 0x55, 0x63, 0xA7, 0x9C}},
    {0x29979547, 0x1737, 0x47C9, {0x99, 0x0D, 0xA2, 0x8E, 0x85, 0x80, 0xAE, 0xE1}},
    {0x31B014B6, 0xCE44, 0x4501, {0x9A, 0x66, 0xB3, 0x0E, 0xFB, 0x75, 0x2A, 0xD1}},
    {0x76EA92D6, 0xD223, 0x481E, {0xAB, 0xED, 0x96, 0x67, 0x82, 0x22, 0x7C, 0x04}},
    {0x11615BE4, 0xAC81, 0x438D, {0x97, 0x99, 0xE1, 0xE1, 0x13, 0x3A, 0xA4, 0x63}},
};

}  // namespace

std::span<const Member> Members() { return kMembers; }

std::string NameOf(const Member& member) {
    constexpr const char* kPrefixes[] = {"", "get_", "put_"};
    return std::string(kPrefixes[static_cast<int>(member.kind)]) + member.name;
}

const Member& FindMember(std::string_view name, Kind kind) {
    const auto found = std::ranges::find_if(
        kMembers, [&](const Member& member) { return member.name == name && member.kind == kind; });
    if (found == std::end(kMembers)) {
        throw std::invalid_argument("no such member");
    }
    return *found;
}

std::span<const IID> InterfaceIds() { return kInterfaceIds; }

}  // namespace paylodge::test
