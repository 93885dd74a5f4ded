// The command line of workbench.exe.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace paylodge::workbench {

inline constexpr std::uint16_t kUsualPort = 8137;

// Text is UTF-8.
struct Options {
    std::string company;
    // 0: any that is free.
    std::uint16_t port = kUsualPort;
    // Empty: the workbench's own page.
    std::string page;
    // For a program that starts this one and cannot send it Ctrl-C.
    bool ends_with_input = false;
    bool wants_help = false;
};

struct WrongOption {
    std::string message;
};

// `words` without the program's name.
[[nodiscard]] std::variant<Options, WrongOption> ReadOptions(const std::vector<std::string>& words);

inline constexpr std::string_view kUsage =
    "Usage: workbench --company FILE [--port N] [--page FOLDER]\n"
    "\n"
    "Serves a page that works with the component in a browser of this machine, against the company file.\n"
    "\n"
    "  --company FILE     the company file that is opened, and kept open until the end\n"
    "  --port N           the port on 127.0.0.1; 8137 is the usual one, 0 takes any that is free\n"
    "  --page FOLDER      serves the page of this folder, without it the workbench's own\n"
    "  --ends-with-input  ends when standard input does, as well as with Ctrl-C\n";

}  // namespace paylodge::workbench
