// JSON text for the page.
#pragma once

#include <string>
#include <string_view>

namespace paylodge::refhost {

// An object with members whose values are strings, in the order in which they are added. Text is UTF-8.
class JsonObject {
  public:
    JsonObject& Add(std::string_view name, std::string_view value) {
        text_ += text_.empty() ? "" : ",";
        AppendString(name);
        text_ += ':';
        AppendString(value);
        return *this;
    }

    [[nodiscard]] std::string Text() const { return "{" + text_ + "}"; }

  private:
    void AppendString(std::string_view value) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        text_ += '"';
        for (const char character : value) {
            const auto byte = static_cast<unsigned char>(character);
            if (character == '"' || character == '\\') {
                text_ += '\\';
                text_ += character;
            } else if (byte < 0x20) {
                text_.append("\\u00").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xFU]);
            } else {
                text_ += character;
            }
        }
        text_ += '"';
    }

    std::string text_;
};

}  // namespace paylodge::refhost
