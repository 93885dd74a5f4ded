// What the tests of the accounting object share: an object, a host that records, calls with plain texts.
#pragma once

#include <windows.h>

#include <gmock/gmock.h>

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "com/bstr.hpp"
#include "com/object_root.hpp"
#include "operations/paylodge.hpp"
#include "tests/support/fake_host.hpp"

namespace paylodge::test {

// The processor's own failure: no HRESULT of the component's.
inline constexpr HRESULT kHostFailure = static_cast<HRESULT>(0x80040400);

// The texts of results that are no string.
inline constexpr const wchar_t* kUntouched = L"(untouched)";
inline constexpr const wchar_t* kNull = L"(null)";
inline constexpr const wchar_t* kTrue = L"(VARIANT_TRUE)";
inline constexpr const wchar_t* kFalse = L"(VARIANT_FALSE)";

// What a member returned: its HRESULT, and its out parameter.
struct Result {
    HRESULT code;
    std::wstring text = kUntouched;

    bool operator==(const Result&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Result& result);

// A result slot for a member's string, filled with a mark beforehand. Frees the string.
class StringSink {
  public:
    StringSink() = default;
    ~StringSink();
    StringSink(const StringSink&) = delete;
    StringSink& operator=(const StringSink&) = delete;

    [[nodiscard]] BSTR* Slot() noexcept { return &text_; }
    [[nodiscard]] BSTR Get() const noexcept { return text_; }
    [[nodiscard]] std::wstring Show() const;

  private:
    [[nodiscard]] static BSTR Mark() noexcept;

    BSTR text_ = Mark();
};

// The same for a boolean. Other values than the two that are allowed are shown as numbers.
class BoolSink {
  public:
    [[nodiscard]] VARIANT_BOOL* Slot() noexcept { return &value_; }
    [[nodiscard]] std::wstring Show() const;

  private:
    static constexpr VARIANT_BOOL kMark = 0x5A5A;

    VARIANT_BOOL value_ = kMark;
};

// An argument of a member: texts become COM strings, a null pointer the null string.
class Argument {
  public:
    explicit Argument(const wchar_t* text) : text_(text == nullptr ? OwnedBstr() : MakeBstr(text)) {}
    explicit Argument(std::wstring_view text) : text_(MakeBstr(text)) {}
    explicit Argument(const std::wstring& text) : text_(MakeBstr(text)) {}
    explicit Argument(std::nullptr_t) {}
    operator BSTR() const noexcept { return text_.Get(); }  // NOLINT(google-explicit-constructor)

  private:
    OwnedBstr text_;
};
[[nodiscard]] inline VARIANT_BOOL ToArgument(VARIANT_BOOL value) { return value; }
template <class Text>
[[nodiscard]] Argument ToArgument(const Text& text) {
    return Argument(text);
}

// Calls a member that has no result, one whose last parameter is a string result, and one with a boolean result.
template <class Member, class... Arguments>
[[nodiscard]] Result Do(CPaylodge& object, Member member, const Arguments&... arguments) {
    return {(object.*member)(ToArgument(arguments)...)};
}
template <class Sink, class Member, class... Arguments>
[[nodiscard]] Result RunWithSink(CPaylodge& object, Member member, const Arguments&... arguments) {
    Sink sink;
    const HRESULT code = (object.*member)(ToArgument(arguments)..., sink.Slot());
    return {code, sink.Show()};
}
template <class Member, class... Arguments>
[[nodiscard]] Result Ask(CPaylodge& object, Member member, const Arguments&... arguments) {
    return RunWithSink<StringSink>(object, member, arguments...);
}
template <class Member, class... Arguments>
[[nodiscard]] Result AskWhether(CPaylodge& object, Member member, const Arguments&... arguments) {
    return RunWithSink<BoolSink>(object, member, arguments...);
}

// The lines of a raw string literal, without the first, empty one and with the line ends that documents have.
[[nodiscard]] std::string Lines(std::string_view literal);
[[nodiscard]] std::wstring Lines(std::wstring_view literal);

// The document around these lines of request elements, and a response around these elements.
[[nodiscard]] std::string RequestDocument(std::string_view literal);
[[nodiscard]] std::wstring ResponseDocument(std::wstring_view elements);

// An accounting object beside a host; at the end neither holds anything any more.
class OperationTest : public ::testing::Test {
  protected:
    OperationTest();
    ~OperationTest() override;

    // What the host returns next.
    void Respond(std::wstring_view elements) { RespondExactly(ResponseDocument(elements)); }
    void RespondExactly(std::wstring_view response);

    // The documents that were sent, the digits of their identifiers replaced by "N".
    [[nodiscard]] std::vector<std::string> Sent() const;
    // The one that was sent.
    [[nodiscard]] std::string OnlySent() const { return WithoutRequestIDs(host_.OnlyRequest()); }

    FakeHost host_;

  private:
    LONG references_before_ = Module::References();
    ComPtr<ComObject<CPaylodge>> owner_ = ComObject<CPaylodge>::Create();

  protected:
    CPaylodge& object_ = *owner_.Get();
};

}  // namespace paylodge::test
