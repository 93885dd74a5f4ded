// How each kind of transaction is entered. The requests were checked against their fields; all throw RefusedRequest.
#pragma once

#include "refhost/books/request.hpp"

namespace paylodge::refhost {

[[nodiscard]] Answer AddReceivedPayment(const RequestContext& context);
[[nodiscard]] Answer AddSalesReceipt(const RequestContext& context);
[[nodiscard]] Answer AddCreditMemo(const RequestContext& context);
[[nodiscard]] Answer AddDeposit(const RequestContext& context);
[[nodiscard]] Answer AddCheck(const RequestContext& context);

}  // namespace paylodge::refhost
