// A document of a page, with the script in it that gives it its objects.
#pragma once

#include <string>
#include <string_view>

namespace paylodge::workbench {

// What is new for each document that is served.
struct DocumentKeys {
    std::string page;
    std::string token;
    std::string nonce;
};

// The document with the bridge's script first in its head.
[[nodiscard]] std::string WithBridge(std::string_view html, const DocumentKeys& keys);

enum class PageKind {
    // The workbench's own: all script is in files.
    kOwn,
    // Somebody's own: scripts in the document's text are usual.
    kForeign
};

// The content security policy of a document or file. `host` is that of the request, as checked.
[[nodiscard]] std::string ContentPolicy(PageKind kind, std::string_view host, std::string_view nonce);

}  // namespace paylodge::workbench
