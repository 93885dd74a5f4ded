// Writes indented XML text.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace paylodge {

// Appends XML to a narrow string: four spaces a level, lines ending in carriage return and line feed. Values are
// escaped (double quote, ampersand, apostrophe, less-than, greater-than; every other byte is copied as it is), names
// are not.
class XMLBuilder {
  public:
    XMLBuilder() = default;
    XMLBuilder(const XMLBuilder&) = default;
    XMLBuilder& operator=(const XMLBuilder&) = default;
    virtual ~XMLBuilder() = default;

    // The text between angle brackets on a line of its own, without indentation.
    void AddProcessingInstruction(std::string_view text);

    // The opening tag with its attributes in order; what follows stands one level deeper. There are as many values as
    // names.
    void OpenElement(std::string_view name, std::span<const std::string_view> attribute_names = {},
                     std::span<const std::string_view> attribute_values = {});

    // An element on one line; nothing at all when the value is empty.
    void AddElement(std::string_view name, std::string_view value);

    void CloseElement(std::string_view name);

    // Text that is XML already, copied without any change.
    void AddVerbatim(std::string_view text);

    [[nodiscard]] const std::string& GetText() const& noexcept { return text_; }
    // Of a builder that is not needed any more.
    [[nodiscard]] std::string GetText() && noexcept { return std::move(text_); }

  private:
    // How many blanks a line begins with.
    [[nodiscard]] size_t Indentation() const noexcept;

    std::int32_t depth_ = 0;
    std::string text_;
};

// Appends the value with its five special characters replaced by their entities.
void AppendEscaped(std::string& text, std::string_view value);

}  // namespace paylodge
