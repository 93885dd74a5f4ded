// The exchange properties: mailboxes through which pieces of page script and the host hand each other data. The values
// belong to the process: every object sees the same ones, and they last until the module is unloaded.

#include "operations/exchange_values.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

StringSlot g_recon_fee_data;
Mailbox g_recon_fee;

StringSlot g_recon_batch_data;
Mailbox g_recon_batch;

StringSlot g_lock_or_update_status;
Mailbox g_lock_or_update;

StringSlot g_recon_payment_data;
StringSlot g_undep_funds_start_date;
bool g_is_undep_funds_accnt_default = true;
Mailbox g_recon_payment;

StringSlot g_scan_txn_id;
StringSlot g_scan_customer_list_elem_id;
StringSlot g_scan_customer_name;
StringSlot g_scan_invoice_list;
StringSlot g_scan_amount;
Mailbox g_scan_txn;

StringSlot g_scan_txn_list_for_deposit;
StringSlot g_scan_unrecorded_check_num_list_for_deposit;
StringSlot g_scan_unrecorded_amount_list_for_deposit;
StringSlot g_lock_or_update_txns_offsets;
StringSlot g_lock_or_update_txns_ids;
StringSlot g_lh_exportable_name_id;
StringSlot g_transaction_id;
StringSlot g_einvoiced_transaction_data;
StringSlot g_customer_data;
StringSlot g_item_data;
StringSlot g_customer_data_for_rebill;
StringSlot g_search_customer_name_for_rebill;
StringSlot g_search_line_items_list_matching_query;

// The checks that every accessor begins with, then the access.
template <class Result, class Access>
[[nodiscard]] HRESULT GetWhenAllowed(CPaylodge& object, const Result* result, const Access& access) {
    if (!object.IsSiteAllowed()) {
        return S_OK;
    }
    return result == nullptr ? E_POINTER : access();
}
template <class Access>
[[nodiscard]] HRESULT PutWhenAllowed(CPaylodge& object, const Access& access) {
    return object.IsSiteAllowed() ? access() : S_OK;
}

[[nodiscard]] HRESULT GetString(CPaylodge& object, const StringSlot& slot, BSTR* text) {
    return GetWhenAllowed(object, text, [&] {
        *text = slot.Get();
        return S_OK;
    });
}
[[nodiscard]] HRESULT PutString(CPaylodge& object, StringSlot& slot, BSTR text) {
    return PutWhenAllowed(object, [&] {
        slot.Put(text);
        return S_OK;
    });
}

[[nodiscard]] HRESULT GetGuarded(CPaylodge& object, const Mailbox& mailbox, const StringSlot& contents, BSTR* text) {
    return GetWhenAllowed(object, text, [&] { return mailbox.Read(contents, text); });
}
[[nodiscard]] HRESULT PutGuarded(CPaylodge& object, Mailbox& mailbox, StringSlot& contents, BSTR text) {
    return PutWhenAllowed(object, [&] { return mailbox.Fill([&] { contents.Put(text); }); });
}

[[nodiscard]] HRESULT GetFlag(CPaylodge& object, const Mailbox& mailbox, VARIANT_BOOL* value) {
    return GetWhenAllowed(object, value, [&] {
        *value = ToVariantBool(mailbox.IsFull());
        return S_OK;
    });
}
// `contents` become empty strings with the mailbox.
template <class... Slots>
[[nodiscard]] HRESULT PutFlag(CPaylodge& object, Mailbox& mailbox, VARIANT_BOOL value, Slots&... contents) {
    return PutWhenAllowed(object, [&] {
        mailbox.SetFull(IsTrue(value), contents...);
        return S_OK;
    });
}

}  // namespace

// Plain strings.

STDMETHODIMP CPaylodge::get_ScanTxnListForDeposit(BSTR* pVal) {
    return GetString(*this, g_scan_txn_list_for_deposit, pVal);
}
STDMETHODIMP CPaylodge::put_ScanTxnListForDeposit(BSTR newVal) {
    return PutString(*this, g_scan_txn_list_for_deposit, newVal);
}

STDMETHODIMP CPaylodge::get_ScanUnrecordedCheckNumListForDeposit(BSTR* pVal) {
    return GetString(*this, g_scan_unrecorded_check_num_list_for_deposit, pVal);
}
STDMETHODIMP CPaylodge::put_ScanUnrecordedCheckNumListForDeposit(BSTR newVal) {
    return PutString(*this, g_scan_unrecorded_check_num_list_for_deposit, newVal);
}

STDMETHODIMP CPaylodge::get_ScanUnrecordedAmountListForDeposit(BSTR* pVal) {
    return GetString(*this, g_scan_unrecorded_amount_list_for_deposit, pVal);
}
STDMETHODIMP CPaylodge::put_ScanUnrecordedAmountListForDeposit(BSTR newVal) {
    return PutString(*this, g_scan_unrecorded_amount_list_for_deposit, newVal);
}

STDMETHODIMP CPaylodge::get_LockOrUpdateTxnsOffsets(BSTR* pVal) {
    return GetString(*this, g_lock_or_update_txns_offsets, pVal);
}
STDMETHODIMP CPaylodge::put_LockOrUpdateTxnsOffsets(BSTR newVal) {
    return PutString(*this, g_lock_or_update_txns_offsets, newVal);
}

STDMETHODIMP CPaylodge::get_LockOrUpdateTxnsIDs(BSTR* pVal) {
    return GetString(*this, g_lock_or_update_txns_ids, pVal);
}
STDMETHODIMP CPaylodge::put_LockOrUpdateTxnsIDs(BSTR newVal) {
    return PutString(*this, g_lock_or_update_txns_ids, newVal);
}

STDMETHODIMP CPaylodge::get_LHExportableNameID(BSTR* pVal) { return GetString(*this, g_lh_exportable_name_id, pVal); }
STDMETHODIMP CPaylodge::put_LHExportableNameID(BSTR newVal) {
    return PutString(*this, g_lh_exportable_name_id, newVal);
}

STDMETHODIMP CPaylodge::get_TransactionID(BSTR* pVal) { return GetString(*this, g_transaction_id, pVal); }
STDMETHODIMP CPaylodge::put_TransactionID(BSTR newVal) { return PutString(*this, g_transaction_id, newVal); }

STDMETHODIMP CPaylodge::get_EInvoicedTransactionData(BSTR* pVal) {
    return GetString(*this, g_einvoiced_transaction_data, pVal);
}
STDMETHODIMP CPaylodge::put_EInvoicedTransactionData(BSTR newVal) {
    return PutString(*this, g_einvoiced_transaction_data, newVal);
}

STDMETHODIMP CPaylodge::get_CustomerData(BSTR* pVal) { return GetString(*this, g_customer_data, pVal); }
STDMETHODIMP CPaylodge::put_CustomerData(BSTR newVal) { return PutString(*this, g_customer_data, newVal); }

STDMETHODIMP CPaylodge::get_ItemData(BSTR* pVal) { return GetString(*this, g_item_data, pVal); }
STDMETHODIMP CPaylodge::put_ItemData(BSTR newVal) { return PutString(*this, g_item_data, newVal); }

STDMETHODIMP CPaylodge::get_CustomerDataForRebill(BSTR* pVal) {
    return GetString(*this, g_customer_data_for_rebill, pVal);
}
STDMETHODIMP CPaylodge::put_CustomerDataForRebill(BSTR newVal) {
    return PutString(*this, g_customer_data_for_rebill, newVal);
}

STDMETHODIMP CPaylodge::get_SearchCustomerNameForRebill(BSTR* pVal) {
    return GetString(*this, g_search_customer_name_for_rebill, pVal);
}
STDMETHODIMP CPaylodge::put_SearchCustomerNameForRebill(BSTR newVal) {
    return PutString(*this, g_search_customer_name_for_rebill, newVal);
}

STDMETHODIMP CPaylodge::get_SearchLineItemsListMatchingQuery(BSTR* pVal) {
    return GetString(*this, g_search_line_items_list_matching_query, pVal);
}
STDMETHODIMP CPaylodge::put_SearchLineItemsListMatchingQuery(BSTR newVal) {
    return PutString(*this, g_search_line_items_list_matching_query, newVal);
}

// Guarded strings, each with its flag.

STDMETHODIMP CPaylodge::get_ReconFeeData(BSTR* pVal) { return GetGuarded(*this, g_recon_fee, g_recon_fee_data, pVal); }
STDMETHODIMP CPaylodge::put_ReconFeeData(BSTR newVal) {
    return PutGuarded(*this, g_recon_fee, g_recon_fee_data, newVal);
}
STDMETHODIMP CPaylodge::get_IsReconFeeDataReady(VARIANT_BOOL* pVal) { return GetFlag(*this, g_recon_fee, pVal); }
STDMETHODIMP CPaylodge::put_IsReconFeeDataReady(VARIANT_BOOL newVal) {
    return PutFlag(*this, g_recon_fee, newVal, g_recon_fee_data);
}

STDMETHODIMP CPaylodge::get_ReconBatchData(BSTR* pVal) {
    return GetGuarded(*this, g_recon_batch, g_recon_batch_data, pVal);
}
STDMETHODIMP CPaylodge::put_ReconBatchData(BSTR newVal) {
    return PutGuarded(*this, g_recon_batch, g_recon_batch_data, newVal);
}
STDMETHODIMP CPaylodge::get_IsReconBatchDataReady(VARIANT_BOOL* pVal) { return GetFlag(*this, g_recon_batch, pVal); }
STDMETHODIMP CPaylodge::put_IsReconBatchDataReady(VARIANT_BOOL newVal) {
    return PutFlag(*this, g_recon_batch, newVal, g_recon_batch_data);
}

STDMETHODIMP CPaylodge::get_LockOrUpdateTxnsStatus(BSTR* pVal) {
    return GetGuarded(*this, g_lock_or_update, g_lock_or_update_status, pVal);
}
STDMETHODIMP CPaylodge::put_LockOrUpdateTxnsStatus(BSTR newVal) {
    return PutGuarded(*this, g_lock_or_update, g_lock_or_update_status, newVal);
}
STDMETHODIMP CPaylodge::get_IsLockOrUpdateTxnsCompleted(VARIANT_BOOL* pVal) {
    return GetFlag(*this, g_lock_or_update, pVal);
}
STDMETHODIMP CPaylodge::put_IsLockOrUpdateTxnsCompleted(VARIANT_BOOL newVal) {
    return PutFlag(*this, g_lock_or_update, newVal, g_lock_or_update_status);
}

// The scanned-check transaction that was saved last.

STDMETHODIMP CPaylodge::SetScanTxnInfo(BSTR txnID, BSTR customerListElemID, BSTR customerName, BSTR invoiceList,
                                       BSTR amount) {
    return PutWhenAllowed(*this, [&] {
        return g_scan_txn.Fill([&] {
            // All copies first: a failed one leaves the old values as they were.
            OwnedBstr copies[] = {CopyBstr(txnID), CopyBstr(customerListElemID), CopyBstr(customerName),
                                  CopyBstr(invoiceList), CopyBstr(amount)};
            g_scan_txn_id.Put(std::move(copies[0]));
            g_scan_customer_list_elem_id.Put(std::move(copies[1]));
            g_scan_customer_name.Put(std::move(copies[2]));
            g_scan_invoice_list.Put(std::move(copies[3]));
            g_scan_amount.Put(std::move(copies[4]));
        });
    });
}

STDMETHODIMP CPaylodge::GetScanTxnID(BSTR* pTxnID) { return GetGuarded(*this, g_scan_txn, g_scan_txn_id, pTxnID); }
STDMETHODIMP CPaylodge::GetScanTxnCustomerListElemID(BSTR* pCustomerListElemID) {
    return GetGuarded(*this, g_scan_txn, g_scan_customer_list_elem_id, pCustomerListElemID);
}
STDMETHODIMP CPaylodge::GetScanTxnCustomerName(BSTR* pCustomerName) {
    return GetGuarded(*this, g_scan_txn, g_scan_customer_name, pCustomerName);
}
STDMETHODIMP CPaylodge::GetScanTxnInvoiceList(BSTR* pInvoiceList) {
    return GetGuarded(*this, g_scan_txn, g_scan_invoice_list, pInvoiceList);
}
STDMETHODIMP CPaylodge::GetScanTxnAmount(BSTR* pAmount) {
    return GetGuarded(*this, g_scan_txn, g_scan_amount, pAmount);
}

STDMETHODIMP CPaylodge::get_IsScanTxnCreated(VARIANT_BOOL* pVal) { return GetFlag(*this, g_scan_txn, pVal); }
// Name, invoices and amount stay: a page that marks the transaction created once more reads them again.
STDMETHODIMP CPaylodge::put_IsScanTxnCreated(VARIANT_BOOL newVal) {
    return PutFlag(*this, g_scan_txn, newVal, g_scan_txn_id, g_scan_customer_list_elem_id);
}

// Reconciliation payments.

STDMETHODIMP CPaylodge::SetReconPaymentDataAndParams(BSTR paymentData, BSTR undepFundsStartDate,
                                                     VARIANT_BOOL isUndepFundsAccntDefault) {
    return PutWhenAllowed(*this, [&] {
        return g_recon_payment.Fill([&] {
            OwnedBstr data = CopyBstr(paymentData);
            g_undep_funds_start_date.Put(CopyBstr(undepFundsStartDate));
            g_recon_payment_data.Put(std::move(data));
            g_is_undep_funds_accnt_default = IsTrue(isUndepFundsAccntDefault);
        });
    });
}

STDMETHODIMP CPaylodge::GetReconPaymentData(BSTR* pPaymentData) {
    return GetGuarded(*this, g_recon_payment, g_recon_payment_data, pPaymentData);
}

STDMETHODIMP CPaylodge::GetReconPaymentParams(VARIANT_BOOL* pIsUndepFundsAccntDefault, BSTR* pUndepFundsStartDate) {
    const bool has_slots = pIsUndepFundsAccntDefault != nullptr && pUndepFundsStartDate != nullptr;
    return GetWhenAllowed(*this, has_slots ? pUndepFundsStartDate : nullptr, [&] {
        const HRESULT result = g_recon_payment.Read(g_undep_funds_start_date, pUndepFundsStartDate);
        // An empty mailbox returns the default, whatever was stored last.
        *pIsUndepFundsAccntDefault = ToVariantBool(result != S_OK || g_is_undep_funds_accnt_default);
        return result;
    });
}

STDMETHODIMP CPaylodge::get_IsReconPaymentDataReady(VARIANT_BOOL* pVal) {
    return GetFlag(*this, g_recon_payment, pVal);
}
// The start date and the default-account value stay: they describe the account, not the data that was consumed.
STDMETHODIMP CPaylodge::put_IsReconPaymentDataReady(VARIANT_BOOL newVal) {
    return PutFlag(*this, g_recon_payment, newVal, g_recon_payment_data);
}

}  // namespace paylodge
