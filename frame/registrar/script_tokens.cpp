#include "frame/registrar/script_tokens.hpp"

#include <algorithm>

namespace paylodge {
namespace {

constexpr char16_t kQuote = u'\'';
constexpr char16_t kPercent = u'%';
constexpr std::u16string_view kBlanks = u" \t\r\n\v\f";

[[nodiscard]] constexpr char16_t Lower(char16_t character) noexcept {
    return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character - u'A' + u'a') : character;
}

[[nodiscard]] std::u16string SingleQuotes(std::u16string_view text) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        if (text[i] == kQuote) {
            ++i;
        }
    }
    return result;
}

[[nodiscard]] const std::u16string& ValueOf(std::u16string_view name, const ScriptVariables& variables,
                                            std::size_t line) {
    const auto found = std::ranges::find_if(
        variables, [name](const ScriptVariable& variable) { return EqualIgnoringCase(variable.name, name); });
    if (found == variables.end()) {
        throw RegistryScriptError(line, "a variable has no value");
    }
    return found->value;
}

[[nodiscard]] std::u16string ReplaceVariables(std::u16string_view text, const ScriptVariables& variables,
                                              std::size_t line) {
    std::u16string result;
    while (!text.empty()) {
        const std::size_t begin = text.find(kPercent);
        result += text.substr(0, begin);
        if (begin == text.npos) {
            break;
        }
        const std::size_t end = text.find(kPercent, begin + 1);
        if (end == text.npos) {
            throw RegistryScriptError(line, "a percent sign is missing");
        }
        const std::u16string_view name = text.substr(begin + 1, end - begin - 1);
        if (name.empty()) {
            result += kPercent;
        } else {
            result += ValueOf(name, variables, line);
        }
        text.remove_prefix(end + 1);
    }
    return result;
}

}  // namespace

RegistryScriptError::RegistryScriptError(std::size_t line, const std::string& what)
    : std::runtime_error("line " + std::to_string(line) + ": " + what), line_(line) {}

bool EqualIgnoringCase(std::u16string_view left, std::u16string_view right) noexcept {
    return std::ranges::equal(left, right, {}, Lower, Lower);
}

bool ScriptToken::IsWord(std::u16string_view word) const noexcept { return !quoted && EqualIgnoringCase(text, word); }

std::u16string ScriptToken::Meaning(const ScriptVariables& variables) const {
    std::u16string meaning = ReplaceVariables(quoted ? SingleQuotes(text) : std::u16string(text), variables, line);
    if (meaning.find(u'\0') != meaning.npos) {
        throw RegistryScriptError(line, "a null character stands in the text");
    }
    return meaning;
}

std::optional<ScriptToken> ScriptTokenizer::Next() {
    SkipBlanks();
    if (position_ == script_.size()) {
        return std::nullopt;
    }
    return script_[position_] == kQuote ? QuotedText() : Word();
}

void ScriptTokenizer::SkipBlanks() noexcept {
    while (position_ < script_.size() && kBlanks.find(script_[position_]) != kBlanks.npos) {
        if (script_[position_] == u'\n') {
            ++line_;
        }
        ++position_;
    }
}

ScriptToken ScriptTokenizer::Word() noexcept {
    const std::size_t begin = position_;
    position_ = std::min(script_.find_first_of(kBlanks, begin), script_.size());
    return {script_.substr(begin, position_ - begin), begin, position_, line_, false};
}

ScriptToken ScriptTokenizer::QuotedText() {
    const std::size_t begin = position_;
    const std::size_t first_line = line_;
    for (std::size_t end = begin + 1; end < script_.size(); ++end) {
        if (script_[end] == u'\n') {
            ++line_;
        }
        if (script_[end] != kQuote) {
            continue;
        }
        if (end + 1 < script_.size() && script_[end + 1] == kQuote) {
            ++end;
            continue;
        }
        position_ = end + 1;
        return {script_.substr(begin + 1, end - begin - 1), begin, position_, first_line, true};
    }
    throw RegistryScriptError(first_line, "a closing quote is missing");
}

}  // namespace paylodge
