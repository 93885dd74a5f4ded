// What page script can call on Paylodge's objects. Made from idl/paylodge.idl and docs/script-reference.md by
// tools/page_kit/declarations.py; a test compares.
//
// In a page's TypeScript, or in JavaScript that the compiler checks:
//
//     /// <reference path="paylodge.d.ts" />
//     var lh = new ActiveXObject("Paylodge.Paylodge");

/// <reference lib="scripthost" />

interface ActiveXObject {
    new (name: "Paylodge.Paylodge"): Paylodge;
}

/** Under './dev run' only: the accounting object. */
declare var paylodge: Paylodge;
/** Under './dev run' only: the control, which a page has as an element of its own. */
declare var paylodgeControl: PaylodgeControl;

/** The accounting object. */
interface Paylodge {
    /**
     * The names of the active accounts of a type, or of all types when it is empty.
     *
     * - **Result:** a run of `AccountName` elements
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    GetAccounts(accountType: string): string;
    /**
     * The names of all items; the full name where an item has one.
     *
     * - **Result:** a run of `ItemName` elements
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    GetItems(): string;
    /**
     * Records a batch: one or more complete `SalesReceiptAddRq`, `CreditMemoAddRq`, `DepositAddRq` or
     * `CheckAddRq` elements, one after the other and with nothing in between. The customer and items that net
     * refunds need, and the account `Credit Card Holding Account` when a deposit goes there, are created first.
     *
     * - **Result:** the whole response when `bFullResponse` is `true`; otherwise an `LHXMLMsgsRs` element with
     *   the status of each request and, where it succeeded, `TxnID`, `RefNumber`, `TotalAmount` (`DepositTotal`
     *   for deposits) and `Memo`
     * - **HRESULTs:** `S_OK`; the processor's HRESULT; `E_FAIL` when a request is of another kind (nothing of
     *   the batch is sent)
     */
    CreateTxns(txnRequests: string, bFullResponse: boolean): string;
    /**
     * Whether the sales tax code of an item is taxable. An item without a code, or a code that cannot be read,
     * is not.
     *
     * - **Result:** a boolean
     * - **HRESULTs:** `S_OK`; the processor's HRESULT for the item query
     */
    IsTaxableItem(itemName: string): boolean;
    /**
     * When the page last downloaded the transactions of a merchant account, as it was stored.
     *
     * - **Result:** the stored text; `"0"` when the account has no record or it cannot be read (the diagnostic
     *   log says why); an empty text when the record has no time
     * - **HRESULTs:** `S_OK`; a value in the company file that is no text and cannot be made one is raised as a
     *   COM error
     */
    GetLastTxnDownloadTime(merchantAccountNumber: string): string;
    /**
     * Stores the time in the company file. Account numbers are compared exactly.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`; `E_FAIL` when it could not be stored (the diagnostic log says why); a value in the
     *   company file that is no text and cannot be made one is raised as a COM error
     */
    SetLastTxnDownloadTime(merchantAccountNumber: string, lastTxnDownloadTime: string): void;
    /**
     * Asks Ledgerhall to show a transaction in its own form.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    OpenTxnForm(txnType: string, txnID: string): void;
    /**
     * The active payment methods whose names the host sorts from A to Z, at most 10000.
     *
     * - **Result:** a `PaymentMethods` element with a `PayMethName` for each; empty when the response holds no
     *   list
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    GetPaymentMethods(): string;
    /**
     * Read and write. The flag of that mailbox; becoming `false` empties the payment data and keeps the
     * parameters.
     *
     * - **Result:** a boolean
     * - **HRESULTs:** `S_OK`
     */
    IsReconPaymentDataReady: boolean;
    /**
     * Read and write. The flag of `ReconFeeData`; becoming `false` empties it.
     *
     * - **Result:** a boolean
     * - **HRESULTs:** `S_OK`
     */
    IsReconFeeDataReady: boolean;
    /**
     * Read and write; guarded by `IsReconFeeDataReady`.
     *
     * - **Result:** the contents
     * - **HRESULTs:** `S_OK`; `S_FALSE` when read empty; `E_FAIL` when filled full
     */
    ReconFeeData: string;
    /**
     * The payment data.
     *
     * - **Result:** a string
     * - **HRESULTs:** `S_OK`; `S_FALSE` with an empty string when the mailbox is empty
     */
    GetReconPaymentData(): string;
    /**
     * The start date, and through the argument whether the undeposited-funds account is the default. The second
     * is for callers that pass a boolean by reference (`VT_BOOL | VT_BYREF`, or the interface's slot). A page
     * has to pass a value and does not get it: JScript leaves its variable as it was. So does VBScript with a
     * constant or an expression; a variable by itself is refused as a type mismatch under Wine (elsewhere it was
     * not tried).
     *
     * - **Result:** the start date; an argument by reference becomes true when the mailbox is empty
     * - **HRESULTs:** `S_OK`; `S_FALSE` with an empty string when the mailbox is empty; without the argument
     *   0x8002000E
     */
    GetReconPaymentParams(pIsUndepFundsAccntDefault: boolean): string;
    /**
     * Fills the mailbox of reconciliation payments.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`; `E_FAIL` when it is full
     */
    SetReconPaymentDataAndParams(paymentData: string, undepFundsStartDate: string, isUndepFundsAccntDefault: boolean): void;
    /**
     * The active accounts of several types, which commas and blanks separate. Without any type, of all types.
     *
     * - **Result:** an `AccountQueryRs` element with an `AccountRet` for each account: `AccountName`,
     *   `AccountType`, `ListID`
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    GetAccountsForMultipleTypes(accountTypes: string): string;
    /**
     * The active customer whose name is the payor's, without regard to letter case and to blanks around it; the
     * first of several.
     *
     * - **Result:** the customer's list id, or an empty string
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    GetCustomerIDForName(payorName: string): string;
    /**
     * The name of a customer.
     *
     * - **Result:** the name, or an empty string
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    GetCustomerNameForID(customerListElemID: string): string;
    /**
     * The open invoice that a check pays to the cent, or, when there is none, all open invoices if the check
     * pays them together. Amounts pass through a single-precision number: beyond about seven digits cents may
     * differ.
     *
     * - **Result:** one reference number, or several joined by a comma and a blank, or an empty string
     * - **HRESULTs:** `S_OK`; the processor's HRESULT; `E_INVALIDARG` when an argument is empty
     */
    GetInvoiceInfoForCustomerID(customerListElemID: string, checkAmount: string): string;
    /**
     * Read and write. The flag of that mailbox; becoming `false` empties the transaction id and the customer
     * list element id, and keeps name, invoices and amount.
     *
     * - **Result:** a boolean
     * - **HRESULTs:** `S_OK`
     */
    IsScanTxnCreated: boolean;
    /**
     * The transaction's id.
     *
     * - **Result:** a string
     * - **HRESULTs:** `S_OK`; `S_FALSE` with an empty string when the mailbox is empty
     */
    GetScanTxnID(): string;
    /**
     * The customer's list id.
     *
     * - **Result:** a string
     * - **HRESULTs:** `S_OK`; `S_FALSE` with an empty string when the mailbox is empty
     */
    GetScanTxnCustomerListElemID(): string;
    /**
     * The customer's name.
     *
     * - **Result:** a string
     * - **HRESULTs:** `S_OK`; `S_FALSE` with an empty string when the mailbox is empty
     */
    GetScanTxnCustomerName(): string;
    /**
     * The invoices that were paid.
     *
     * - **Result:** a string
     * - **HRESULTs:** `S_OK`; `S_FALSE` with an empty string when the mailbox is empty
     */
    GetScanTxnInvoiceList(): string;
    /**
     * The amount.
     *
     * - **Result:** a string
     * - **HRESULTs:** `S_OK`; `S_FALSE` with an empty string when the mailbox is empty
     */
    GetScanTxnAmount(): string;
    /**
     * Fills the mailbox of the scanned-check transaction that was just saved.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`; `E_FAIL` when it is full
     */
    SetScanTxnInfo(txnID: string, customerListElemID: string, customerName: string, invoiceList: string, amount: string): void;
    /**
     * Read and write. The transactions to prefill a deposit of scanned checks.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    ScanTxnListForDeposit: string;
    /**
     * Read and write. The numbers of unrecorded checks for that deposit.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    ScanUnrecordedCheckNumListForDeposit: string;
    /**
     * Read and write. The amounts of unrecorded checks for that deposit.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    ScanUnrecordedAmountListForDeposit: string;
    /**
     * Read and write. The flag of `LockOrUpdateTxnsStatus`; becoming `false` empties it.
     *
     * - **Result:** a boolean
     * - **HRESULTs:** `S_OK`
     */
    IsLockOrUpdateTxnsCompleted: boolean;
    /**
     * Read and write; guarded by `IsLockOrUpdateTxnsCompleted`.
     *
     * - **Result:** the contents
     * - **HRESULTs:** `S_OK`; `S_FALSE` when read empty; `E_FAIL` when filled full
     */
    LockOrUpdateTxnsStatus: string;
    /**
     * Read and write. The check list offsets of a lock-or-update operation.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    LockOrUpdateTxnsOffsets: string;
    /**
     * Read and write. The transaction ids of that operation.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    LockOrUpdateTxnsIDs: string;
    /**
     * The active accounts of a type with their balances; for `bank`, in any letter case, with their numbers too.
     *
     * - **Result:** an `AccountQueryRs` element with an `AccountRet` for each account: `AccountName`, `Balance`,
     *   `BankNumber`, `AccountNumber`
     * - **HRESULTs:** `S_OK`; the processor's HRESULT
     */
    GetBalanceForAccountType(accountType: string): string;
    /**
     * Moves an amount between two accounts, as a deposit into the second. The amount is sent with two decimals;
     * text of 30 characters or more leaves it out. The memo may be empty.
     *
     * - **Result:** the whole response, also (for callers that are not script) with `E_FAIL`
     * - **HRESULTs:** `S_OK`; the processor's HRESULT; `E_FAIL` when the deposit was refused
     */
    TransferFunds(bstrDepositFromName: string, bstrDepositToName: string, bstrDepositAmount: string, bstrDepositMemo: string): string;
    /**
     * Adds an account; the number may be empty. A name that exists already (status 3100) counts as success.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`; `E_FAIL` for every failure
     */
    CreateAccount(bstrAccountName: string, bstrAccountType: string, bstrAccountNumber: string): void;
    /**
     * Makes an account active or inactive. Nothing is changed when it is so already.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`; the processor's HRESULT; `E_FAIL` when the account is not found or the change is
     *   refused
     */
    ActivateOrDeactivateAccount(bstrAccountName: string, bMakeActive: boolean): void;
    /**
     * Read and write. The flag of `ReconBatchData`; becoming `false` empties it.
     *
     * - **Result:** a boolean
     * - **HRESULTs:** `S_OK`
     */
    IsReconBatchDataReady: boolean;
    /**
     * Read and write; guarded by `IsReconBatchDataReady`.
     *
     * - **Result:** the contents
     * - **HRESULTs:** `S_OK`; `S_FALSE` when read empty; `E_FAIL` when filled full
     */
    ReconBatchData: string;
    /**
     * Records one received payment by card. Every value is text. The amount is sent with two decimals (text that
     * is not a number as 0.00; text of 30 characters or more as it stands). The memo is not recorded.
     *
     * - **Result:** the whole response; its status says whether the payment was recorded
     * - **HRESULTs:** `S_OK`; `E_FAIL` when no response came
     */
    CreatePaymentTxn(bstrFullName: string, bstrTxnDate: string, bstrAmount: string, bstrRefNum: string, bstrPaymentName: string, bstrMemo: string, bstrAutoApply: string, bstrCCNumber: string, bstrExpMonth: string, bstrExpYear: string, bstrNameOnCard: string, bstrCCResultCode: string, bstrCCMessage: string, bstrCCTransID: string, bstrMasAccountNumber: string, bstrAuthCode: string, bstrReconBatchID: string, bstrPaymentGroupingCode: string, bstrCCPaymentStatus: string, bstrTxnAutTime: string, bstrTxnAutTimeStamp: string, bstrClientTxnID: string): string;
    /**
     * Read and write. The exportable name id.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    LHExportableNameID: string;
    /**
     * Sends request elements of the page's own, unchanged and unchecked.
     *
     * - **Result:** the whole response
     * - **HRESULTs:** `S_OK`; `E_FAIL` when no response came
     */
    SavePaymentTxn(requestBody: string): string;
    /**
     * As `SavePaymentTxn`; afterwards the control that is subscribed under the object's channel name is notified
     * of it.
     *
     * - **Result:** the whole response
     * - **HRESULTs:** `S_OK`; the processor's HRESULT; `E_FAIL` on a page that is not approved
     */
    ProcessLHRequest(requestBody: string): string;
    /**
     * Read and write. The transaction id.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    TransactionID: string;
    /**
     * Read and write. The e-invoiced transaction.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    EInvoicedTransactionData: string;
    /**
     * Read and write. The customer list.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    CustomerData: string;
    /**
     * Read and write. The item list.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    ItemData: string;
    /**
     * Read and write. The customer to bill again.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    CustomerDataForRebill: string;
    /**
     * Read and write. The customer name to search for.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    SearchCustomerNameForRebill: string;
    /**
     * Read and write. The line items that match a search.
     *
     * - **Result:** the string that was put last
     * - **HRESULTs:** `S_OK`
     */
    SearchLineItemsListMatchingQuery: string;
}

/** The control: the card reader, the account services, and what the host pushes. */
interface PaylodgeControl {
    /** Notify Transaction Changed */
    NotifyTransactionChanged(bstrTransInfo: string): void;
    /** Subscribe To Notifications */
    SubscribeToNotifications(): void;
    /** UnSubscribe From Notifications */
    UnSubscribeFromNotifications(): void;
    /** Set Recon Fee Data */
    SetReconFeeData(bstrFeeData: string): void;
    /** Set Recon Batch Data */
    SetReconBatchData(bstrBatchData: string): void;
    /** Set Recon Payment Data */
    SetReconPaymentData(paymentData: string, undepFundsStartDate: string, isUndepFundsAccntDefault: boolean): void;
    /** get Transaction Notification Data */
    LHTransactionNotificationData: string;
    /** Set Transaction ID */
    SetTransactionID(bstrTransactionID: string): void;
    /** Set EInvoiced Transaction Data */
    setEInvoicedTransactionData(bstrEInvoicedTransactionData: string): void;
    /** Process LH Request Data */
    ProcessLHRequestData(bstrRequestStr: string): string;
    /** Set Customer List Data */
    SetCustomerListData(bstrCustomerData: string): void;
    /** Set Item List Data */
    SetItemListData(bstrItemData: string): void;
    /** Set Customer Data */
    SetCustomerData(bstrCustomerData: string): void;
    /** Subscribe To Notifications */
    SubscribeToNotifications2(bstrFeature: string): void;
    /** UnSubscribe From Notifications */
    UnSubscribeFromNotifications2(bstrFeature: string): void;
    /** Set Channel */
    SetChannelName(bstrFeature: string): void;
    /** Set Customer Search Result */
    SetCustomerSearchResult(bstrCustomerSearchResult: string): void;
    /** Set Line Items Search Result */
    SetLineItemsSearchResult(bstrLineItemsSearchResult: string): void;
    /**
     * Connects the reader.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    ConnectDevice(): void;
    /**
     * Asks for a card for this amount.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    StartEMV(bstrTransactionAmt: string): void;
    /**
     * What the reader last answered.
     *
     * - **Result:** text, as far as the ANSI code page holds it
     * - **HRESULTs:** `S_OK`; an empty text without the library
     */
    EMVProcessorResult(): string;
    /**
     * The card's data for the authorization: tags, lengths and values.
     *
     * - **Result:** text, as far as the ANSI code page holds it
     * - **HRESULTs:** `S_OK`; an empty text without the library
     */
    EMVGetCardParameters(): string;
    /**
     * Tells the reader what the authorization gave. The simulated reader takes `"APPROVED"` or `"00"`;
     * everything else declines.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    SendOnlineProcessResult(bstrProcessingRes: string): void;
    /**
     * The data of a completed payment for the settlement; empty before.
     *
     * - **Result:** text, as far as the ANSI code page holds it
     * - **HRESULTs:** `S_OK`; an empty text without the library
     */
    EMVGetBatchData(): string;
    /**
     * Disconnects the reader.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    DisconnectDevice(): void;
    /**
     * Begins a session with the reader; the first call of a payment.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    InitializeSession(): void;
    /**
     * Ends the session and forgets the card.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    ResetSession(): void;
    /**
     * Whether the reader is connected.
     *
     * - **Result:** a boolean
     * - **HRESULTs:** `S_OK`; `false` without the library
     */
    EMVIsDeviceConnected(): boolean;
    /**
     * Looks for a reader.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    isDeviceHere(): void;
    /**
     * How the reader is connected.
     *
     * - **Result:** text, as far as the ANSI code page holds it
     * - **HRESULTs:** `S_OK`; an empty text without the library
     */
    GetConnectionMode(): string;
    /**
     * Completes an approved payment.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    ShowFinalConfirmationWindow(): void;
    /**
     * Goes on when the reader asks which application of the card to use. The name is spelled like that.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    HandleAidSelecttion(): void;
    /**
     * Gives up the payment at hand and forgets the card.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    CancelCheckCard(): void;
    /**
     * The values of the tags, separated by commas, in data that the reader gave.
     *
     * - **Result:** text
     * - **HRESULTs:** `S_OK`; `E_FAIL` without the library
     */
    DecodeTlvData(bstrData: string, bstrTags: string): string;
    /**
     * Asks the reader what it is; the answer is read with `EMVProcessorResult`.
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`, also without the library
     */
    GetEmvDeviceInfo(): void;
    /**
     * What Ledgerhall knows of its user under this name.
     *
     * - **Result:** text
     * - **HRESULTs:** `S_OK`; `E_FAIL` for an empty name; an empty text without the library
     */
    GetLHUserData(bstrData: string): string;
    /**
     * How far the identity of the user is verified for payments.
     *
     * - **Result:** text
     * - **HRESULTs:** `S_OK`; an empty text without the library
     */
    GetPaymentIdentityStatus(): string;
    /**
     * The address with a ticket, so that the page which it leads to knows the user.
     *
     * - **Result:** text
     * - **HRESULTs:** `S_OK`; an empty text without the library
     */
    AuthenticateURL(url: string): string;
    /**
     * Whether accounts of two realms may be linked.
     *
     * - **Result:** text
     * - **HRESULTs:** `S_OK`; an empty text without the library
     */
    isRealmMergeLinkingEnabled(): string;
    /**
     * A token for the card, from the token service.
     *
     * - **Result:** text
     * - **HRESULTs:** `S_OK`; `E_FAIL` without the library
     */
    GetCardBasedToken(header: string, body: string): string;
    /**
     * The same; 0 asks for it without the authorization of the user.
     *
     * - **Result:** text
     * - **HRESULTs:** `S_OK`; `E_FAIL` without the library
     */
    GetCardBasedToken2(useAuthorization: number, header: string, body: string): string;
    /**
     * Calls a function of the page with a text, through the bridge library. With 0, line feeds in the text are
     * escaped; with any other number, double quotes. Nothing else is: see how pushes are escaped in [Host
     * integration](host-integration.md#script-mode-and-event-mode).
     *
     * - **Result:** none
     * - **HRESULTs:** `S_OK`; `E_FAIL` without the library
     */
    ExecuteJavaScript(bstrInfo: string, isRebill: number, script: string): void;
}

/** The events of the control, for pages whose host does not push by script. */
interface PaylodgeControlEvents {
    TransactionChanged(bstrTransInfo: string): void;
    ReconBatchData(bstrBatchData: string): void;
    ReconFeeData(bstrFeeData: string): void;
    ReconPaymentData(paymentData: string, undepFundsStartDate: string, isUndepFundsAccntDefault: boolean): void;
    TransactionID(bstrTransactionID: string): void;
    EInvoicedTransactionData(bstrEInvoicedTransactionData: string): void;
    OnProcessLHRequest(bstrRequestStr: string): string;
    CustomerListData(bstrCustomerData: string): void;
    ItemListData(bstrItemData: string): void;
    CustomerData(bstrCustomerData: string): void;
    CustomerSearchResult(bstrCustomerSearchResult: string): void;
    LineItemsSearchResult(bstrLineItemsSearchResult: string): void;
}
