// The script calls through which pushes reach the page. All text is narrow, in the system's ANSI code page.
#pragma once

#include <string>
#include <string_view>

namespace paylodge {

// What is escaped in an argument: one thing or the other, never both; everything else stays raw.
enum class ScriptEscaping { kNewline, kQuote };

// The text with every occurrence of the pattern replaced, scanning from the start; what was put in is not scanned
// again.
[[nodiscard]] std::string ReplaceAll(std::string_view text, std::string_view pattern, std::string_view replacement);

// In newline mode a line feed becomes a backslash and an n, in quote mode a double quote gets a backslash in front.
[[nodiscard]] std::string EscapeForScript(std::string_view text, ScriptEscaping escaping);

// A call of `function` with one string argument, which is escaped.
[[nodiscard]] std::string ScriptCall(std::string_view function, std::string_view argument, ScriptEscaping escaping);

// The call that pushes reconciliation payments. The flag reaches the page as a word, not as a boolean.
[[nodiscard]] std::string ReconPaymentScript(std::string_view payment_data, std::string_view start_date,
                                             bool is_undep_funds_accnt_default);

// Whether a browser instance identifier names an instance: it is neither empty nor "undefined" in any letter case. As
// wide text, which decides it without an allocation: none of its letters comes from another character of a code page.
[[nodiscard]] bool NamesBrowserInstance(std::wstring_view identifier) noexcept;

}  // namespace paylodge
