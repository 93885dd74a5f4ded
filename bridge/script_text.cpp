#include "bridge/script_text.hpp"

#include "com/ascii_case.hpp"

namespace paylodge {

std::string ReplaceAll(std::string_view text, std::string_view pattern, std::string_view replacement) {
    std::string result;
    size_t start = 0;
    if (!pattern.empty()) {
        for (size_t found = text.find(pattern); found != std::string_view::npos; found = text.find(pattern, start)) {
            result.append(text, start, found - start).append(replacement);
            start = found + pattern.size();
        }
    }
    return result.append(text, start);
}

std::string EscapeForScript(std::string_view text, ScriptEscaping escaping) {
    return escaping == ScriptEscaping::kQuote ? ReplaceAll(text, "\"", "\\\"") : ReplaceAll(text, "\n", "\\n");
}

std::string ScriptCall(std::string_view function, std::string_view argument, ScriptEscaping escaping) {
    return std::string(function).append("(\"").append(EscapeForScript(argument, escaping)).append("\")");
}

std::string ReconPaymentScript(std::string_view payment_data, std::string_view start_date,
                               bool is_undep_funds_accnt_default) {
    return std::string("app.lhProxy.txnEventFromLH(\"")
        .append(EscapeForScript(payment_data, ScriptEscaping::kNewline))
        .append("\",\"")
        .append(start_date)
        .append("\",\"")
        .append(is_undep_funds_accnt_default ? "true" : "false")
        .append("\")");
}

bool NamesBrowserInstance(std::wstring_view identifier) noexcept {
    return !identifier.empty() && !EqualsIgnoringAsciiCase(identifier, L"undefined");
}

}  // namespace paylodge
