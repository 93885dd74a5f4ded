#include "workbench/server/replies.hpp"

#include <utility>

#include "com/hresult_names.hpp"
#include "refhost/commands/result_names.hpp"

namespace paylodge::workbench {

std::string NameOf(HRESULT result) {
    const std::string_view name = HResultName(result);
    return name.empty() ? ResultText(result) : std::string(name);
}

Reply JsonReply(const Json& body) { return {.body = Text(body)}; }

Reply Failure(unsigned status, std::string_view message) {
    return {.status = status, .body = Text({{"error", {{"message", message}}}})};
}

Json ErrorOf(HRESULT result, std::string message) {
    if (message.empty()) {
        message = refhost::SystemText(result);
    }
    return {{"error",
             {{"message", message.empty() ? NameOf(result) : message},
              {"number", result},
              {"hresult", ResultText(result)},
              {"hresultName", NameOf(result)}}}};
}

Reply FailedCall(HRESULT result, std::string message) { return JsonReply(ErrorOf(result, std::move(message))); }

Json OutOf(const Outcome& outcome) {
    Json out = Json::object();
    for (const auto& [argument, value] : outcome.out) {
        out[std::to_string(argument)] = value;
    }
    return out;
}

Reply ReplyOf(const Outcome& outcome) {
    if (FAILED(outcome.result)) {
        return FailedCall(outcome.result, outcome.description);
    }
    Json reply = {{"result", outcome.value}};
    if (!outcome.out.empty()) {
        reply["out"] = OutOf(outcome);
    }
    return JsonReply(reply);
}

}  // namespace paylodge::workbench
