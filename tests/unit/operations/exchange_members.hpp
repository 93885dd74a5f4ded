// The exchange properties as tables: those that are plain strings and those that a flag guards.
#pragma once

#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {

using GetText = HRESULT (STDMETHODCALLTYPE CPaylodge::*)(BSTR*);
using PutText = HRESULT (STDMETHODCALLTYPE CPaylodge::*)(BSTR);
using GetFlag = HRESULT (STDMETHODCALLTYPE CPaylodge::*)(VARIANT_BOOL*);
using PutFlag = HRESULT (STDMETHODCALLTYPE CPaylodge::*)(VARIANT_BOOL);

struct TextProperty {
    const char* name;
    GetText get;
    PutText put;
};

struct FlagProperty {
    const char* name;
    GetFlag get;
    PutFlag put;
};

struct GuardedProperty {
    const char* name;
    GetText get;
    PutText put;
    FlagProperty flag;
};

inline constexpr TextProperty kPlainProperties[] = {
    {"ScanTxnListForDeposit", &CPaylodge::get_ScanTxnListForDeposit, &CPaylodge::put_ScanTxnListForDeposit},
    {"ScanUnrecordedCheckNumListForDeposit", &CPaylodge::get_ScanUnrecordedCheckNumListForDeposit,
     &CPaylodge::put_ScanUnrecordedCheckNumListForDeposit},
    {"ScanUnrecordedAmountListForDeposit", &CPaylodge::get_ScanUnrecordedAmountListForDeposit,
     &CPaylodge::put_ScanUnrecordedAmountListForDeposit},
    {"LockOrUpdateTxnsOffsets", &CPaylodge::get_LockOrUpdateTxnsOffsets, &CPaylodge::put_LockOrUpdateTxnsOffsets},
    {"LockOrUpdateTxnsIDs", &CPaylodge::get_LockOrUpdateTxnsIDs, &CPaylodge::put_LockOrUpdateTxnsIDs},
    {"LHExportableNameID", &CPaylodge::get_LHExportableNameID, &CPaylodge::put_LHExportableNameID},
    {"TransactionID", &CPaylodge::get_TransactionID, &CPaylodge::put_TransactionID},
    {"EInvoicedTransactionData", &CPaylodge::get_EInvoicedTransactionData, &CPaylodge::put_EInvoicedTransactionData},
    {"CustomerData", &CPaylodge::get_CustomerData, &CPaylodge::put_CustomerData},
    {"ItemData", &CPaylodge::get_ItemData, &CPaylodge::put_ItemData},
    {"CustomerDataForRebill", &CPaylodge::get_CustomerDataForRebill, &CPaylodge::put_CustomerDataForRebill},
    {"SearchCustomerNameForRebill", &CPaylodge::get_SearchCustomerNameForRebill,
     &CPaylodge::put_SearchCustomerNameForRebill},
    {"SearchLineItemsListMatchingQuery", &CPaylodge::get_SearchLineItemsListMatchingQuery,
     &CPaylodge::put_SearchLineItemsListMatchingQuery},
};

inline constexpr FlagProperty kIsReconFeeDataReady = {"IsReconFeeDataReady", &CPaylodge::get_IsReconFeeDataReady,
                                                      &CPaylodge::put_IsReconFeeDataReady};
inline constexpr FlagProperty kIsReconBatchDataReady = {"IsReconBatchDataReady", &CPaylodge::get_IsReconBatchDataReady,
                                                        &CPaylodge::put_IsReconBatchDataReady};
inline constexpr FlagProperty kIsLockOrUpdateTxnsCompleted = {"IsLockOrUpdateTxnsCompleted",
                                                              &CPaylodge::get_IsLockOrUpdateTxnsCompleted,
                                                              &CPaylodge::put_IsLockOrUpdateTxnsCompleted};
inline constexpr FlagProperty kIsScanTxnCreated = {"IsScanTxnCreated", &CPaylodge::get_IsScanTxnCreated,
                                                   &CPaylodge::put_IsScanTxnCreated};
inline constexpr FlagProperty kIsReconPaymentDataReady = {
    "IsReconPaymentDataReady", &CPaylodge::get_IsReconPaymentDataReady, &CPaylodge::put_IsReconPaymentDataReady};

inline constexpr FlagProperty kFlags[] = {kIsReconFeeDataReady, kIsReconBatchDataReady, kIsLockOrUpdateTxnsCompleted,
                                          kIsScanTxnCreated, kIsReconPaymentDataReady};

inline constexpr GuardedProperty kGuardedProperties[] = {
    {"ReconFeeData", &CPaylodge::get_ReconFeeData, &CPaylodge::put_ReconFeeData, kIsReconFeeDataReady},
    {"ReconBatchData", &CPaylodge::get_ReconBatchData, &CPaylodge::put_ReconBatchData, kIsReconBatchDataReady},
    {"LockOrUpdateTxnsStatus", &CPaylodge::get_LockOrUpdateTxnsStatus, &CPaylodge::put_LockOrUpdateTxnsStatus,
     kIsLockOrUpdateTxnsCompleted},
};

struct TextGetter {
    const char* name;
    GetText get;
};

inline constexpr TextGetter kScanTxnGetters[] = {
    {"GetScanTxnID", &CPaylodge::GetScanTxnID},
    {"GetScanTxnCustomerListElemID", &CPaylodge::GetScanTxnCustomerListElemID},
    {"GetScanTxnCustomerName", &CPaylodge::GetScanTxnCustomerName},
    {"GetScanTxnInvoiceList", &CPaylodge::GetScanTxnInvoiceList},
    {"GetScanTxnAmount", &CPaylodge::GetScanTxnAmount},
};

// Both results of GetReconPaymentParams.
struct PaymentParams {
    HRESULT code;
    std::wstring is_default;
    std::wstring start_date;

    bool operator==(const PaymentParams&) const = default;
};
inline std::ostream& operator<<(std::ostream& stream, const PaymentParams& params) {
    return stream << Result{params.code, params.is_default + L" " + params.start_date};
}

[[nodiscard]] inline PaymentParams AskPaymentParams(CPaylodge& object) {
    BoolSink is_default;
    StringSink start_date;
    const HRESULT code = object.GetReconPaymentParams(is_default.Slot(), start_date.Slot());
    return {code, is_default.Show(), start_date.Show()};
}

}  // namespace paylodge::test
