// Writes indented XML text.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

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

    [[nodiscard]] std::string GetText() const& { return text_.substr(0, size_); }
    // Of a builder that is not needed any more.
    [[nodiscard]] std::string GetText() &&;

  private:
    // write() writes at most `room` characters behind those that are there.
    template <class Write>
    void Append(size_t room, const Write& write);

    std::int32_t depth_ = 0;
    // What has been written and, behind it, room for more.
    std::string text_;
    size_t size_ = 0;
};

}  // namespace paylodge
