// A page in which the texts of script calls are run for real.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace paylodge::test {

// Why there is no script engine; nothing where there is one.
[[nodiscard]] std::optional<std::string> WhyNoScriptEngine();

// Runs a script in a new page that defines the functions for pushes, and returns what they got: the function's name
// with the type and text of each argument, such as `$.fn.customerDataFromLH[string a|string b]`. Texts are in Latin-1.
// Empty when no function was called; "(error)" when the script cannot be compiled or run.
[[nodiscard]] std::string RunInPage(std::string_view script);

inline constexpr const char* kScriptError = "(error)";

// What comes of a script with a raw line end within a string, which no engine but Wine's takes: the error, or what
// arrives there.
[[nodiscard]] std::string RawLineEnd(const std::string& under_wine);

// What the page defines. The results of the calls are gathered in `arrived`.
inline constexpr const char* kPageScript = R"(
var arrived = "";
function listener(name) {
    return function () {
        var texts = [];
        for (var i = 0; i < arguments.length; ++i) {
            texts.push(typeof arguments[i] + " " + arguments[i]);
        }
        arrived += name + "[" + texts.join("|") + "]";
    };
}
var app = {lhProxy: {}}, $ = {fn: {}};
(function () {
    var names = ["txnChangeEventFromLH", "feeEventFromLH", "batchEventFromLH", "txnEventFromLH", "invoiceIdFromLH",
        "eInvoicesEvent", "customerDataFromLH"];
    for (var i = 0; i < names.length; ++i) {
        app.lhProxy[names[i]] = listener("app.lhProxy." + names[i]);
    }
    names = ["customerDataFromLH", "CustomerSearchResultFromLH", "LineItemSearchResultFromLH"];
    for (i = 0; i < names.length; ++i) {
        $.fn[names[i]] = listener("$.fn." + names[i]);
    }
})();
)";

}  // namespace paylodge::test
