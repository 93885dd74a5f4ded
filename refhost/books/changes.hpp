// What the requests that change the books have in common.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/fields.hpp"
#include "refhost/books/request.hpp"

namespace paylodge::refhost {

inline constexpr Field kIncludeRetElement{.name = "IncludeRetElement", .occurs = Occurs::kRepeated};
inline constexpr size_t kLongestNumber = 30;

inline constexpr std::array kCardInputFields{
    Field{.name = "CreditCardNumber", .longest = kLongestNumber},
    Field{.name = "ExpirationMonth", .longest = kLongestNumber},
    Field{.name = "ExpirationYear", .longest = kLongestNumber},
    Field{.name = "NameOnCard"},
};
inline constexpr std::array kCardResultFields{
    Field{.name = "ResultCode"},           Field{.name = "ResultMessage"},
    Field{.name = "CreditCardTransID"},    Field{.name = "MerchantAccountNumber"},
    Field{.name = "AuthorizationCode"},    Field{.name = "ReconBatchID"},
    Field{.name = "PaymentGroupingCode"},  Field{.name = "PaymentStatus"},
    Field{.name = "TxnAuthorizationTime"}, Field{.name = "TxnAuthorizationStamp"},
    Field{.name = "ClientTransID"},
};
inline constexpr std::array kCardFields{Aggregate("CreditCardTxnInputInfo", kCardInputFields),
                                        Aggregate("CreditCardTxnResultInfo", kCardResultFields)};
// The card data that a transaction may carry.
inline constexpr Field kCardInfo = Aggregate("CreditCardTxnInfo", kCardFields);

// Where money stays that was received and not yet deposited.
inline constexpr std::string_view kUndepositedFunds = "Undeposited Funds";

// The record that a reference of the request names by id or by name, or null when it names none. Raises RefusedRequest
// when there is no such record.
[[nodiscard]] const Element* Resolve(const Company& company, const ListKind& kind, const Element& request,
                                     std::string_view name);
// The same for a reference that has to name a record.
[[nodiscard]] const Element& ResolveRequired(const Company& company, const ListKind& kind, const Element& request,
                                             std::string_view name);
// The account that a reference names, or the one for undeposited funds. Raises RefusedRequest.
[[nodiscard]] const Element& ResolveDepositAccount(const Company& company, const Element& request,
                                                   std::string_view name);
// Raises RefusedRequest when the company has none.
[[nodiscard]] const Element& ReceivablesAccount(const Company& company);

// Adds a reference to the target, unless that is null.
void AddReference(Element& record, std::string_view name, const Element* target);
// Adds the request's TxnDate, or today without one.
void AddTransactionDate(Element& record, const Element& request, std::string_view now);
// Adds the request's card data, of whose number only the last four digits are kept.
void AddCardInfo(Element& record, const Element& request);

// Moves the balance of a record.
void ChangeBalance(const RequestContext& context, const ListKind& kind, const Element& record, std::int64_t cents);

// The answer to a request that added or changed one record.
[[nodiscard]] Answer AnswerWith(const Element& record, const Element& request);

}  // namespace paylodge::refhost
