// Registry scripts as a sequence of tokens, and the variables that stand in them. Knows nothing of the platform.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge {

// What is wrong with a registry script. The text starts with the line, for example "line 3: a name is missing".
class RegistryScriptError : public std::runtime_error {
  public:
    // Lines count from 1; `what` is a phrase without a full stop.
    RegistryScriptError(std::size_t line, const std::string& what);
    [[nodiscard]] std::size_t Line() const noexcept { return line_; }

  private:
    std::size_t line_;
};

// %name% in a script stands for the value. Names do not depend on letter case.
struct ScriptVariable {
    std::u16string name;
    std::u16string value;
};
using ScriptVariables = std::vector<ScriptVariable>;

// Equal but for the case of ASCII letters.
[[nodiscard]] bool EqualIgnoringCase(std::u16string_view left, std::u16string_view right) noexcept;

// A word that ends at a blank, or text between single quotes in which two quotes stand for one.
struct ScriptToken {
    std::u16string_view text;  // as written, without the quotes around it
    std::size_t begin = 0;     // place in the script, quotes included
    std::size_t end = 0;
    std::size_t line = 0;
    bool quoted = false;

    // Quoted text is never one of the language's own words.
    [[nodiscard]] bool IsWord(std::u16string_view word) const noexcept;
    // What the token means: quotes single again, variables replaced, "%%" made "%". Throws RegistryScriptError for a
    // variable that is unknown or not closed, and for a null character.
    [[nodiscard]] std::u16string Meaning(const ScriptVariables& variables) const;
};

class ScriptTokenizer {
  public:
    // The script has to outlive the tokenizer and its tokens.
    explicit ScriptTokenizer(std::u16string_view script) noexcept : script_(script) {}

    // The next token, or nothing at the end. Throws RegistryScriptError for quoted text that is not closed.
    [[nodiscard]] std::optional<ScriptToken> Next();
    // The line that is read at present.
    [[nodiscard]] std::size_t Line() const noexcept { return line_; }

  private:
    void SkipBlanks() noexcept;
    [[nodiscard]] ScriptToken Word() noexcept;
    [[nodiscard]] ScriptToken QuotedText();

    std::u16string_view script_;
    std::size_t position_ = 0;
    std::size_t line_ = 1;
};

}  // namespace paylodge
