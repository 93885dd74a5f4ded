#include "workbench/server/document.hpp"

#include <algorithm>
#include <cstddef>

namespace paylodge::workbench {
namespace {

[[nodiscard]] bool StartsWithTag(std::string_view html, std::string_view name) {
    if (html.size() < name.size() + 2 || html[0] != '<') {
        return false;
    }
    const bool is_name = std::ranges::equal(html.substr(1, name.size()), name, [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
    });
    const char after = html[name.size() + 1];
    return is_name && std::string_view(" \t\r\n\f/>").find(after) != std::string_view::npos;
}

// Behind the tag that begins at `position`; quoted values may have a '>'.
[[nodiscard]] std::size_t EndOfTag(std::string_view html, std::size_t position) {
    char quote = '\0';
    for (; position < html.size(); ++position) {
        const char character = html[position];
        if (quote != '\0') {
            quote = character == quote ? '\0' : quote;
        } else if (character == '"' || character == '\'') {
            quote = character;
        } else if (character == '>') {
            return position + 1;
        }
    }
    return html.size();
}

// Before the first script can run: behind <head>, or where a head begins that has no tag. What may stand before that
// is a byte order mark, blanks, comments, the document type and <html>.
[[nodiscard]] std::size_t PlaceOfScript(std::string_view html) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::size_t position = html.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    std::size_t place = position;
    while (position < html.size()) {
        position = html.find_first_not_of(" \t\r\n\f", position);
        if (position == std::string_view::npos) {
            break;
        }
        const std::string_view rest = html.substr(position);
        if (rest.starts_with("<!--")) {
            const std::size_t end = html.find("-->", position + 4);
            if (end == std::string_view::npos) {
                break;
            }
            position = end + 3;
            continue;
        }
        const bool is_type = rest.starts_with("<!") || rest.starts_with("<?");
        if (!is_type && !StartsWithTag(rest, "html") && !StartsWithTag(rest, "head")) {
            break;
        }
        position = EndOfTag(html, position);
        place = position;
        if (StartsWithTag(rest, "head")) {
            break;
        }
    }
    return place;
}

}  // namespace

std::string WithBridge(std::string_view html, const DocumentKeys& keys) {
    const std::size_t place = PlaceOfScript(html);
    return std::string(html.substr(0, place))
        .append(R"(<script src="/workbench/bridge.js" nonce=")")
        .append(keys.nonce)
        .append("\" data-page=\"")
        .append(keys.page)
        .append("\" data-token=\"")
        .append(keys.token)
        .append("\"></script>")
        .append(html.substr(place));
}

std::string ContentPolicy(PageKind kind, std::string_view host, std::string_view nonce) {
    std::string policy =
        "default-src 'self' data: blob:; object-src 'none'; base-uri 'self'; form-action 'self'; "
        "frame-ancestors 'self'; connect-src 'self' ws://";
    policy.append(host);
    if (kind == PageKind::kOwn) {
        // The nonce is for what the host pushes.
        policy.append("; script-src 'self'").append(nonce.empty() ? "" : " 'nonce-").append(nonce);
        policy.append(nonce.empty() ? "" : "'");
    } else {
        policy.append("; script-src 'self' 'unsafe-inline' 'unsafe-eval' blob:; style-src 'self' 'unsafe-inline'");
    }
    return policy;
}

}  // namespace paylodge::workbench
