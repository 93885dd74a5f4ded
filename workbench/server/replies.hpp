// What the workbench replies to a request, in JSON.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "workbench/server/messages.hpp"
#include "workbench/server/scripted_object.hpp"
#include "workbench/server/web_server.hpp"

namespace paylodge::workbench {

// "E_FAIL", or the number where it has no name.
[[nodiscard]] std::string NameOf(HRESULT result);

[[nodiscard]] Reply JsonReply(const Json& body);
// For a request that makes no sense or cannot be served, with the HTTP status.
[[nodiscard]] Reply Failure(unsigned status, std::string_view message);

// The error that the page's script gets; without a message of its own the system's words for the HRESULT.
[[nodiscard]] Json ErrorOf(HRESULT result, std::string message = {});
// A call that failed is a request that succeeded.
[[nodiscard]] Reply FailedCall(HRESULT result, std::string message = {});

// By the number of the argument, what a call passed back by reference.
[[nodiscard]] Json OutOf(const Outcome& outcome);
// The result of a call with what it passed back, or its error.
[[nodiscard]] Reply ReplyOf(const Outcome& outcome);

}  // namespace paylodge::workbench
