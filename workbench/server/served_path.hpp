// Which file a path of a request means, and which it must never mean.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace paylodge::workbench {

// A request target, taken apart: "/a%20b?c=d" is the path "/a b" with c = d. Text is UTF-8.
struct Target {
    std::string path;
    std::map<std::string, std::string, std::less<>> query;
};

// Nothing for a target that does not begin with a slash, or is not well encoded.
[[nodiscard]] std::optional<Target> ReadTarget(std::string_view target);

// The path of a file below the served folder, with slashes and without one in front; a folder means its index.html.
// Nothing for a path that could lead anywhere else on any Windows: dots, drives, streams, devices, short names.
[[nodiscard]] std::optional<std::string> RelativeFile(std::string_view path);

// The media type by the file's extension.
[[nodiscard]] std::string_view MediaType(std::string_view file);
[[nodiscard]] bool IsText(std::string_view media_type) noexcept;

[[nodiscard]] bool IsUtf8(std::string_view text) noexcept;

}  // namespace paylodge::workbench
