#include "refhost/control/transcript.hpp"

#include <windows.h>

#include <algorithm>

#include "refhost/books/status.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/books/xml_writer.hpp"
#include "refhost/objects/host.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] bool IsWanted() { return EnvironmentValue(L"LEDGERHALL_TRANSCRIPT") == L"1"; }

// Text that is no document is shown as it is.
[[nodiscard]] std::string Readable(std::wstring_view text) {
    try {
        const Document document = ReadXml(Utf8FromWide(text));
        std::string lines;
        for (const Instruction& instruction : document.instructions) {
            lines += "<?" + instruction.target + ' ' + instruction.data + "?>\n";
        }
        return lines + IndentedXml(document.root);
    } catch (const RefusedRequest&) {
        return Utf8FromWide(text) + '\n';
    }
}

[[nodiscard]] std::string WithMargin(std::string_view lines, std::string_view margin) {
    std::string text;
    while (!lines.empty()) {
        const size_t end = std::min(lines.find('\n'), lines.size() - 1) + 1;
        text += margin;
        text += lines.substr(0, end);
        lines.remove_prefix(end);
    }
    return text;
}

// Straight to the system, so that the order with the script's own lines is kept.
void Write(const std::string& text) {
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD written = 0;
    DWORD mode = 0;
    if (::GetConsoleMode(output, &mode)) {
        const std::wstring wide = WideFromUtf8(text);
        ::WriteConsoleW(output, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
    } else {
        ::WriteFile(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }
}

void Print(std::string_view title, std::wstring_view text, std::string_view margin) {
    if (IsWanted()) {
        Write("    " + std::string(title) + '\n' + WithMargin(Readable(text), margin));
    }
}

}  // namespace

void PrintRequest(std::wstring_view request) { Print("request to Ledgerhall", request, "      > "); }

void PrintResponse(std::wstring_view response) { Print("response from Ledgerhall", response, "      < "); }

}  // namespace paylodge::refhost
