// The script calls of pushes, in both escaping modes, against a loop over the characters.
#include "bridge/script_text.hpp"
#include "tests/fuzz/pieces.hpp"

namespace paylodge {
namespace {

using fuzz::ExpectSame;

[[nodiscard]] std::string Escaped(std::string_view text, ScriptEscaping escaping) {
    std::string escaped;
    for (const char character : text) {
        if (escaping == ScriptEscaping::kNewline && character == '\n') {
            escaped += "\\n";
        } else {
            escaped += escaping == ScriptEscaping::kQuote && character == '"' ? "\\\"" : std::string(1, character);
        }
    }
    return escaped;
}

[[nodiscard]] std::string Replaced(const std::string& text, const std::string& pattern, const std::string& with) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const bool is_here = !pattern.empty() && text.compare(i, pattern.size(), pattern) == 0;
        result += is_here ? with : text.substr(i, 1);
        i += is_here ? pattern.size() : 1;
    }
    return result;
}

void Try(std::string_view input) {
    std::vector<std::string> pieces = fuzz::Pieces(input);
    pieces.resize(3);
    const std::string& data = pieces[0];
    const std::string& function = pieces[1];
    const std::string& more = pieces[2];
    for (const ScriptEscaping escaping : {ScriptEscaping::kNewline, ScriptEscaping::kQuote}) {
        ExpectSame(Escaped(data, escaping), EscapeForScript(data, escaping), "escaped");
        ExpectSame(function + "(\"" + Escaped(data, escaping) + "\")", ScriptCall(function, data, escaping),
                   "the call");
    }
    for (const bool flag : {false, true}) {
        ExpectSame("app.lhProxy.txnEventFromLH(\"" + Escaped(data, ScriptEscaping::kNewline) + "\",\"" + more +
                       (flag ? "\",\"true\")" : "\",\"false\")"),
                   ReconPaymentScript(data, more, flag), "the payment call");
    }
    ExpectSame(Replaced(data, function, more), ReplaceAll(data, function, more), "replaced");
}

}  // namespace
}  // namespace paylodge

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::Try(paylodge::fuzz::AsText(data, size));
    return 0;
}
