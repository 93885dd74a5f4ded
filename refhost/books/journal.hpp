// The journal as an accountant reads it: each transaction with its postings, all in one form.
#pragma once

#include <cstdint>

#include "refhost/books/company.hpp"

namespace paylodge::refhost {

// The newest transactions, at most `count` of them, newest first: a Journal element with a Transaction element for each
// that has Type, TxnID, TxnDate, RefNumber, Name (of the customer or payee), Memo, Total and its Posting elements with
// Account, Name and Amount, credits below 0. What a transaction does not have is left out.
[[nodiscard]] Element ReadJournal(Company& company, std::int64_t count);

}  // namespace paylodge::refhost
