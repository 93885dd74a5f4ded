// The accounting object: page script creates it and works with the open company file through it.
#pragma once

#include <windows.h>

#include <msxml2.h>

#include <set>
#include <span>
#include <string>
#include <string_view>

#include "com/ansi_text.hpp"
#include "com/class_object.hpp"
#include "com/dispatch_impl.hpp"
#include "com/object_with_site.hpp"
#include "frame/browser/approved_sites.hpp"
#include "frame/browser/site_lock.hpp"
#include "paylodge_methods.hpp"

namespace paylodge {

// Every member that scripts reach begins with the site check and does nothing on a page that is refused: S_OK with the
// results untouched, and E_FAIL from ProcessLHRequest. E_POINTER for a null out parameter. Results are new
// strings that the caller owns; their text, as that of the arguments, is converted with the system's ANSI code page,
// and a null argument is the empty text. A failed allocation is thrown as a COM error (E_OUTOFMEMORY). Used on the
// apartment's thread. What each member does stands beside its implementation.
class CPaylodge : public CComCoClass<CPaylodge, &CLSID_Paylodge>,
                  public IDispatchImpl<IPaylodge8, &IID_IPaylodge8, &LIBID_PAYLODGELib, 1, 0, CCustomTypeInfoHolder>,
                  public IObjectWithSiteImpl<CPaylodge>,
                  public IObjectSafetySiteLockImpl<CPaylodge, INTERFACESAFE_FOR_UNTRUSTED_CALLER>,
                  public CSiteLock<CPaylodge> {
  public:
    using Row = InterfaceRow<CPaylodge>;
    static constexpr std::array kInterfaces = {
        Row::Of<IPaylodge8>(), Row::Of<IPaylodge7>(),      Row::Of<IPaylodge6>(),    Row::Of<IPaylodge5>(),
        Row::Of<IPaylodge4>(), Row::Of<IPaylodge3>(),      Row::Of<IPaylodge2>(),    Row::Of<IPaylodge>(),
        Row::Of<IDispatch>(),  Row::Of<IObjectWithSite>(), Row::Of<IObjectSafety>(), Row::Of<IObjectSafetySiteLock>(),
    };

    // Releases the page's site while the object is whole: that may call it.
    void FinalRelease() noexcept { SetSite(nullptr); }

    [[nodiscard]] static std::span<const SiteEntry> SiteTable() noexcept { return ApprovedSites(); }

    // Sends one complete request document in a session of its own. *response: the processor's string, which the caller
    // owns; it may be null or empty. Returns the processor's HRESULT, which is S_OK whenever a response came with
    // success, and E_FAIL when there is no processor.
    [[nodiscard]] static HRESULT SendLHRequest(std::string request, BSTR* response);

    // IPaylodge
    STDMETHODIMP GetAccounts(BSTR accountType, BSTR* pAccountNames) override;
    STDMETHODIMP GetItems(BSTR* pItemNames) override;
    STDMETHODIMP CreateTxns(BSTR txnRequests, VARIANT_BOOL bFullResponse, BSTR* pCreateTxnResults) override;
    STDMETHODIMP IsTaxableItem(BSTR itemName, VARIANT_BOOL* pIsTaxable) override;
    STDMETHODIMP GetLastTxnDownloadTime(BSTR merchantAccountNumber, BSTR* pLastTxnDownloadTime) override;
    STDMETHODIMP SetLastTxnDownloadTime(BSTR merchantAccountNumber, BSTR lastTxnDownloadTime) override;
    STDMETHODIMP OpenTxnForm(BSTR txnType, BSTR txnID) override;
    STDMETHODIMP GetPaymentMethods(BSTR* pPaymentMethodNames) override;

    // IPaylodge2
    STDMETHODIMP get_IsReconPaymentDataReady(VARIANT_BOOL* pVal) override;
    STDMETHODIMP put_IsReconPaymentDataReady(VARIANT_BOOL newVal) override;
    STDMETHODIMP get_IsReconFeeDataReady(VARIANT_BOOL* pVal) override;
    STDMETHODIMP put_IsReconFeeDataReady(VARIANT_BOOL newVal) override;
    STDMETHODIMP get_ReconFeeData(BSTR* pVal) override;
    STDMETHODIMP put_ReconFeeData(BSTR newVal) override;
    STDMETHODIMP GetReconPaymentData(BSTR* pPaymentData) override;
    STDMETHODIMP GetReconPaymentParams(VARIANT_BOOL* pIsUndepFundsAccntDefault, BSTR* pUndepFundsStartDate) override;
    STDMETHODIMP SetReconPaymentDataAndParams(BSTR paymentData, BSTR undepFundsStartDate,
                                              VARIANT_BOOL isUndepFundsAccntDefault) override;
    STDMETHODIMP GetAccountsForMultipleTypes(BSTR accountTypes, BSTR* pAccountData) override;

    // IPaylodge3
    STDMETHODIMP GetCustomerIDForName(BSTR payorName, BSTR* pCustomerListElemID) override;
    STDMETHODIMP GetCustomerNameForID(BSTR customerListElemID, BSTR* pCustomerName) override;
    STDMETHODIMP GetInvoiceInfoForCustomerID(BSTR customerListElemID, BSTR checkAmount, BSTR* pInvoiceInfo) override;
    STDMETHODIMP get_IsScanTxnCreated(VARIANT_BOOL* pVal) override;
    STDMETHODIMP put_IsScanTxnCreated(VARIANT_BOOL newVal) override;
    STDMETHODIMP GetScanTxnID(BSTR* pTxnID) override;
    STDMETHODIMP GetScanTxnCustomerListElemID(BSTR* pCustomerListElemID) override;
    STDMETHODIMP GetScanTxnCustomerName(BSTR* pCustomerName) override;
    STDMETHODIMP GetScanTxnInvoiceList(BSTR* pInvoiceList) override;
    STDMETHODIMP GetScanTxnAmount(BSTR* pAmount) override;
    STDMETHODIMP SetScanTxnInfo(BSTR txnID, BSTR customerListElemID, BSTR customerName, BSTR invoiceList,
                                BSTR amount) override;
    STDMETHODIMP get_ScanTxnListForDeposit(BSTR* pVal) override;
    STDMETHODIMP put_ScanTxnListForDeposit(BSTR newVal) override;
    STDMETHODIMP get_ScanUnrecordedCheckNumListForDeposit(BSTR* pVal) override;
    STDMETHODIMP put_ScanUnrecordedCheckNumListForDeposit(BSTR newVal) override;
    STDMETHODIMP get_ScanUnrecordedAmountListForDeposit(BSTR* pVal) override;
    STDMETHODIMP put_ScanUnrecordedAmountListForDeposit(BSTR newVal) override;
    STDMETHODIMP get_IsLockOrUpdateTxnsCompleted(VARIANT_BOOL* pVal) override;
    STDMETHODIMP put_IsLockOrUpdateTxnsCompleted(VARIANT_BOOL newVal) override;
    STDMETHODIMP get_LockOrUpdateTxnsStatus(BSTR* pVal) override;
    STDMETHODIMP put_LockOrUpdateTxnsStatus(BSTR newVal) override;
    STDMETHODIMP get_LockOrUpdateTxnsOffsets(BSTR* pVal) override;
    STDMETHODIMP put_LockOrUpdateTxnsOffsets(BSTR newVal) override;
    STDMETHODIMP get_LockOrUpdateTxnsIDs(BSTR* pVal) override;
    STDMETHODIMP put_LockOrUpdateTxnsIDs(BSTR newVal) override;

    // IPaylodge4
    STDMETHODIMP GetBalanceForAccountType(BSTR accountType, BSTR* pAccountData) override;
    STDMETHODIMP TransferFunds(BSTR bstrDepositFromName, BSTR bstrDepositToName, BSTR bstrDepositAmount,
                               BSTR bstrDepositMemo, BSTR* pTransferFundResults) override;
    STDMETHODIMP CreateAccount(BSTR bstrAccountName, BSTR bstrAccountType, BSTR bstrAccountNumber) override;
    STDMETHODIMP ActivateOrDeactivateAccount(BSTR bstrAccountName, VARIANT_BOOL bMakeActive) override;
    STDMETHODIMP get_IsReconBatchDataReady(VARIANT_BOOL* pVal) override;
    STDMETHODIMP put_IsReconBatchDataReady(VARIANT_BOOL newVal) override;
    STDMETHODIMP get_ReconBatchData(BSTR* pVal) override;
    STDMETHODIMP put_ReconBatchData(BSTR newVal) override;
    STDMETHODIMP CreatePaymentTxn(BSTR bstrFullName, BSTR bstrTxnDate, BSTR bstrAmount, BSTR bstrRefNum,
                                  BSTR bstrPaymentName, BSTR bstrMemo, BSTR bstrAutoApply, BSTR bstrCCNumber,
                                  BSTR bstrExpMonth, BSTR bstrExpYear, BSTR bstrNameOnCard, BSTR bstrCCResultCode,
                                  BSTR bstrCCMessage, BSTR bstrCCTransID, BSTR bstrMasAccountNumber, BSTR bstrAuthCode,
                                  BSTR bstrReconBatchID, BSTR bstrPaymentGroupingCode, BSTR bstrCCPaymentStatus,
                                  BSTR bstrTxnAutTime, BSTR bstrTxnAutTimeStamp, BSTR bstrClientTxnID,
                                  BSTR* pRetValue) override;
    STDMETHODIMP get_LHExportableNameID(BSTR* pVal) override;
    STDMETHODIMP put_LHExportableNameID(BSTR newVal) override;
    STDMETHODIMP SavePaymentTxn(BSTR requestBody, BSTR* pResponse) override;
    STDMETHODIMP ProcessLHRequest(BSTR requestBody, BSTR* pResponse) override;
    STDMETHODIMP get_TransactionID(BSTR* pVal) override;
    STDMETHODIMP put_TransactionID(BSTR newVal) override;

    // IPaylodge5
    STDMETHODIMP get_EInvoicedTransactionData(BSTR* pVal) override;
    STDMETHODIMP put_EInvoicedTransactionData(BSTR newVal) override;
    STDMETHODIMP get_CustomerData(BSTR* pVal) override;
    STDMETHODIMP put_CustomerData(BSTR newVal) override;

    // IPaylodge6
    STDMETHODIMP get_ItemData(BSTR* pVal) override;
    STDMETHODIMP put_ItemData(BSTR newVal) override;

    // IPaylodge7
    STDMETHODIMP get_CustomerDataForRebill(BSTR* pVal) override;
    STDMETHODIMP put_CustomerDataForRebill(BSTR newVal) override;

    // IPaylodge8
    STDMETHODIMP get_SearchCustomerNameForRebill(BSTR* pVal) override;
    STDMETHODIMP put_SearchCustomerNameForRebill(BSTR newVal) override;
    STDMETHODIMP get_SearchLineItemsListMatchingQuery(BSTR* pVal) override;
    STDMETHODIMP put_SearchLineItemsListMatchingQuery(BSTR newVal) override;

    // The one slot behind the type library's: names the channel whose control is notified of requests passed through.
    // Keeps a copy; null takes the name away.
    virtual STDMETHODIMP SetNotificationChannel(BSTR channel_name);

    CPaylodge(const CPaylodge&) = delete;
    CPaylodge& operator=(const CPaylodge&) = delete;

  protected:
    CPaylodge() = default;
    ~CPaylodge() = default;

  private:
    // Sends a document that an operation composed; the response comes as narrow text. E_FAIL for an empty document.
    [[nodiscard]] static HRESULT Send(std::string document, std::string& response);

    // What all queries share: compose() returns the document, read(response, text) makes the result's text from the
    // response. The HRESULT of the send, or that of a reading that failed: a response that was read in part is no
    // result.
    template <class Compose, class Read>
    [[nodiscard]] HRESULT AnswerQuery(BSTR* result, const Compose& compose, const Read& read) {
        return IsSiteAllowed() ? AnswerAllowedQuery(result, compose, read) : S_OK;
    }
    template <class Compose, class Read>
    [[nodiscard]] static HRESULT AnswerAllowedQuery(BSTR* result, const Compose& compose, const Read& read) {
        if (result == nullptr) {
            return E_POINTER;
        }
        std::string response;
        const HRESULT sent = Send(compose(), response);
        if (FAILED(sent)) {
            return sent;
        }
        std::string text;
        const HRESULT was_read = read(response, text);
        if (FAILED(was_read)) {
            return was_read;
        }
        *result = BstrFromAnsi(text).Detach();
        return sent;
    }

    [[nodiscard]] static bool PrepareTxnRequests(std::string_view document);
    [[nodiscard]] static HRESULT PrepareCreditMemo(IXMLDOMNode* request);
    [[nodiscard]] static HRESULT PrepareDeposit(IXMLDOMNode* request);
    [[nodiscard]] static HRESULT EnsureNetRefundCustomer();
    [[nodiscard]] static HRESULT EnsureNetRefundItem(std::string_view card_type);
    [[nodiscard]] static HRESULT EnsureHoldingAccount();
    [[nodiscard]] static HRESULT AddListEntry(std::string document, std::wstring_view response_element,
                                              std::string_view extra_code);
    [[nodiscard]] static std::string SummarizeTxnResponses(std::string response_text);
    [[nodiscard]] static bool IsTaxableCode(std::string_view tax_code_id);

    // Names of the payment methods that the object has handed out.
    std::set<std::string> lookup_map_;
    OwnedBstr channel_name_;
};

}  // namespace paylodge
