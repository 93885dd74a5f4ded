#include "refhost/books/transactions.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/record_reader.hpp"
#include "refhost/books/references.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/transaction_entries.hpp"

namespace paylodge::refhost {
namespace {

constexpr Field kTxnDate{.name = "TxnDate", .form = Form::kDate};
constexpr Field kRefNumber{.name = "RefNumber", .form = Form::kName, .longest = kLongestNumber};
constexpr Field kMemo{.name = "Memo"};
constexpr Field kAmount{.name = "Amount", .form = Form::kAmount, .occurs = Occurs::kOnce};

constexpr std::array kCardInputFields{
    Field{.name = "CreditCardNumber", .longest = kLongestNumber},
    Field{.name = "ExpirationMonth", .longest = kLongestNumber},
    Field{.name = "ExpirationYear", .longest = kLongestNumber},
    Field{.name = "NameOnCard"},
};
constexpr std::array kCardResultFields{
    Field{.name = "ResultCode"},           Field{.name = "ResultMessage"},
    Field{.name = "CreditCardTransID"},    Field{.name = "MerchantAccountNumber"},
    Field{.name = "AuthorizationCode"},    Field{.name = "ReconBatchID"},
    Field{.name = "PaymentGroupingCode"},  Field{.name = "PaymentStatus"},
    Field{.name = "TxnAuthorizationTime"}, Field{.name = "TxnAuthorizationStamp"},
    Field{.name = "ClientTransID"},
};
constexpr std::array kCardFields{Aggregate("CreditCardTxnInputInfo", kCardInputFields),
                                 Aggregate("CreditCardTxnResultInfo", kCardResultFields)};
// The card data that a transaction may carry.
constexpr Field kCardInfo = Aggregate(kCardElement, kCardFields);

constexpr std::array kReceivePaymentFields{
    Reference("CustomerRef", Occurs::kOnce),
    kTxnDate,
    kRefNumber,
    Field{.name = "TotalAmount", .form = Form::kAmount, .occurs = Occurs::kOnce},
    Reference("PaymentMethodRef"),
    kMemo,
    Reference("DepositToAccountRef"),
    kCardInfo,
    Field{.name = "IsAutoApply", .form = Form::kBoolean},
};
constexpr std::array kReceivePaymentRequest{Aggregate("ReceivePaymentAdd", kReceivePaymentFields, Occurs::kOnce),
                                            kIncludeRetElement};

constexpr std::array kItemLineFields{Reference("ItemRef", Occurs::kOnce), Field{.name = "Desc"}, kAmount};

constexpr std::array kSalesReceiptFields{
    Reference("CustomerRef"),
    kTxnDate,
    kRefNumber,
    Reference("PaymentMethodRef"),
    kMemo,
    Reference("DepositToAccountRef"),
    kCardInfo,
    Aggregate("SalesReceiptLineAdd", kItemLineFields, Occurs::kRepeated),
};
constexpr std::array kSalesReceiptRequest{Aggregate("SalesReceiptAdd", kSalesReceiptFields, Occurs::kOnce),
                                          kIncludeRetElement};

constexpr std::array kCreditMemoFields{
    Reference("CustomerRef", Occurs::kOnce),
    kTxnDate,
    kRefNumber,
    kMemo,
    kCardInfo,
    Aggregate("CreditMemoLineAdd", kItemLineFields, Occurs::kRepeated),
};
constexpr std::array kCreditMemoRequest{Aggregate("CreditMemoAdd", kCreditMemoFields, Occurs::kOnce),
                                        kIncludeRetElement};

constexpr std::array kAccountLineFields{Reference("AccountRef", Occurs::kOnce), Reference("EntityRef"), kMemo, kAmount};

constexpr std::array kDepositFields{
    kTxnDate,
    Reference("DepositToAccountRef", Occurs::kOnce),
    kMemo,
    Aggregate("DepositLineAdd", kAccountLineFields, Occurs::kRepeated),
};
constexpr std::array kDepositRequest{Aggregate("DepositAdd", kDepositFields, Occurs::kOnce), kIncludeRetElement};

constexpr std::array kCheckFields{
    Reference("AccountRef", Occurs::kOnce),
    Reference("PayeeEntityRef"),
    kRefNumber,
    kTxnDate,
    kMemo,
    Aggregate("ExpenseLineAdd", kAccountLineFields, Occurs::kRepeated),
};
constexpr std::array kCheckRequest{Aggregate("CheckAdd", kCheckFields, Occurs::kOnce), kIncludeRetElement};

// The forms that the host can show, and the transactions that each shows.
struct FormKind {
    std::string_view type;
    const ListKind* transactions;
};
constexpr std::array kForms{
    FormKind{"Invoice", &kInvoices},           FormKind{"ReceivePayment", &kReceivedPayments},
    FormKind{"SalesReceipt", &kSalesReceipts}, FormKind{"CreditMemo", &kCreditMemos},
    FormKind{"Deposit", &kDeposits},           FormKind{"Check", &kChecks},
};
constexpr auto kFormTypes = [] {
    std::array<std::string_view, kForms.size()> types;
    std::ranges::transform(kForms, types.begin(), &FormKind::type);
    return types;
}();

constexpr std::array kDisplayRequest{
    Choice("TxnDisplayModType", kFormTypes, Occurs::kOnce),
    Field{.name = "TxnID", .occurs = Occurs::kOnce},
    kIncludeRetElement,
};

// Shows a transaction in its form: there is no window here, so that the request itself is the record of it.
[[nodiscard]] Answer DisplayTransaction(const RequestContext& context) {
    const std::string_view type = CanonicalChoice(kFormTypes, ChildText(context.request, "TxnDisplayModType"));
    const std::string_view id = ChildText(context.request, "TxnID");
    const ListKind& kind = *std::ranges::find(kForms, type, &FormKind::type)->transactions;
    if (!context.company.NumberOfId(kind, id)) {
        throw RefusedRequest(Code::kUnknownReference, "TxnID names the " + std::string(kind.noun) + ' ' + Quoted(id) +
                                                          ", which does not exist.");
    }
    Element shown = MakeElement("TxnDisplayMod");
    AddText(shown, "TxnDisplayModType", type);
    AddText(shown, "TxnID", id);
    return AnswerWith(shown, context.request);
}

constexpr std::array kTransactions{
    RequestKind{"ReceivePaymentAddRq", kReceivePaymentRequest, AddReceivedPayment, true},
    RequestKind{"SalesReceiptAddRq", kSalesReceiptRequest, AddSalesReceipt, true},
    RequestKind{"CreditMemoAddRq", kCreditMemoRequest, AddCreditMemo, true},
    RequestKind{"DepositAddRq", kDepositRequest, AddDeposit, true},
    RequestKind{"CheckAddRq", kCheckRequest, AddCheck, true},
    RequestKind{"TxnDisplayModRq", kDisplayRequest, DisplayTransaction},
};

}  // namespace

std::span<const RequestKind> Transactions() noexcept { return kTransactions; }

}  // namespace paylodge::refhost
