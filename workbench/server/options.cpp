#include "workbench/server/options.hpp"

#include <charconv>
#include <cstddef>
#include <optional>

namespace paylodge::workbench {
namespace {

[[nodiscard]] std::optional<std::uint16_t> ReadPort(const std::string& text) {
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, port);
    return error == std::errc() && stopped == end ? std::optional(port) : std::nullopt;
}

}  // namespace

std::variant<Options, WrongOption> ReadOptions(const std::vector<std::string>& words) {
    Options options;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--help") {
            options.wants_help = true;
            return options;
        }
        if (word == "--ends-with-input") {
            options.ends_with_input = true;
            continue;
        }
        if (word != "--company" && word != "--port" && word != "--page") {
            return WrongOption{"there is no option '" + word + "'; --help lists them"};
        }
        ++i;
        if (i == words.size() || words[i].empty()) {
            return WrongOption{word + " needs a value; --help says which"};
        }
        if (word == "--company") {
            options.company = words[i];
        } else if (word == "--page") {
            options.page = words[i];
        } else if (const auto port = ReadPort(words[i])) {
            options.port = *port;
        } else {
            return WrongOption{"--port takes a number from 0 to 65535, not '" + words[i] + "'"};
        }
    }
    if (options.company.empty()) {
        return WrongOption{"a company file is needed: --company FILE"};
    }
    return options;
}

}  // namespace paylodge::workbench
