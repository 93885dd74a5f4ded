#include "frame/registrar/registry_script.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace paylodge {
namespace {

// The registry itself has no deeper keys.
constexpr int kDeepestKey = 512;

constexpr std::u16string_view kOpen = u"{";
constexpr std::u16string_view kClose = u"}";
constexpr std::u16string_view kEquals = u"=";
constexpr std::u16string_view kDelete = u"Delete";
constexpr std::u16string_view kForceRemove = u"ForceRemove";
constexpr std::u16string_view kNoRemove = u"NoRemove";
constexpr std::u16string_view kVal = u"Val";
constexpr std::array kReservedWords = {kOpen, kClose, kEquals, kDelete, kForceRemove, kNoRemove, kVal};

constexpr std::u16string_view kClassesRoot = u"HKCR";
constexpr std::u16string_view kUserClassesOpening = u"HKCU\r\n{\tSoftware\r\n\t{\r\n\t\tClasses";
constexpr std::u16string_view kUserClassesClosing = u"\r\n\t}\r\n}\r\n";

struct RootName {
    std::u16string_view short_name;
    std::u16string_view long_name;
    RegistryRoot root;
};
constexpr std::array kRootNames = {
    RootName{kClassesRoot, u"HKEY_CLASSES_ROOT", RegistryRoot::kClassesRoot},
    RootName{u"HKCU", u"HKEY_CURRENT_USER", RegistryRoot::kCurrentUser},
    RootName{u"HKLM", u"HKEY_LOCAL_MACHINE", RegistryRoot::kLocalMachine},
    RootName{u"HKU", u"HKEY_USERS", RegistryRoot::kUsers},
    RootName{u"HKPD", u"HKEY_PERFORMANCE_DATA", RegistryRoot::kPerformanceData},
    RootName{u"HKDD", u"HKEY_DYN_DATA", RegistryRoot::kDynamicData},
    RootName{u"HKCC", u"HKEY_CURRENT_CONFIG", RegistryRoot::kCurrentConfig},
};

// 16 for what is no digit in any base that is used here.
[[nodiscard]] constexpr std::uint32_t Digit(char16_t character) noexcept {
    if (character >= u'0' && character <= u'9') {
        return static_cast<std::uint32_t>(character - u'0');
    }
    const auto lower = static_cast<char16_t>(character | 0x20);
    return lower >= u'a' && lower <= u'f' ? static_cast<std::uint32_t>(lower - u'a' + 10) : 16;
}

// Decimal, or hexadecimal after "&H" or "0x"; nothing for other text or more than 32 bits.
[[nodiscard]] std::optional<std::uint32_t> Number(std::u16string_view text) noexcept {
    const std::u16string_view prefix = text.substr(0, 2);
    const std::uint32_t base = EqualIgnoringCase(prefix, u"&H") || EqualIgnoringCase(prefix, u"0x") ? 16 : 10;
    const std::u16string_view digits = base == 16 ? text.substr(2) : text;
    if (digits.empty()) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    for (const char16_t character : digits) {
        const std::uint32_t digit = Digit(character);
        number = number * base + digit;
        if (digit >= base || number > std::numeric_limits<std::uint32_t>::max()) {
            return std::nullopt;
        }
    }
    return static_cast<std::uint32_t>(number);
}

// Two hexadecimal digits for each byte; nothing for other text.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> Bytes(std::u16string_view text) {
    if (text.size() % 2 != 0) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const std::uint32_t high = Digit(text[i]);
        const std::uint32_t low = Digit(text[i + 1]);
        if (high >= 16 || low >= 16) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
    }
    return bytes;
}

// The texts before, between and after the separators "\0". An empty one would end the stored list and is left out.
[[nodiscard]] std::vector<std::u16string> Texts(std::u16string_view text) {
    constexpr std::u16string_view separator = u"\\0";
    std::vector<std::u16string> texts;
    for (;;) {
        const std::size_t end = text.find(separator);
        if (const std::u16string_view item = text.substr(0, end); !item.empty()) {
            texts.emplace_back(item);
        }
        if (end == text.npos) {
            return texts;
        }
        text.remove_prefix(end + separator.size());
    }
}

class ScriptParser {
  public:
    ScriptParser(std::u16string_view script, const ScriptVariables& variables)
        : tokens_(script), variables_(variables), token_(tokens_.Next()) {}

    [[nodiscard]] RegistryScript Script() {
        RegistryScript script;
        do {
            script.push_back(Tree());
        } while (token_);
        return script;
    }

  private:
    [[nodiscard]] RegistryTree Tree() {
        const RegistryRoot root = Root();
        Expect(kOpen, "the root key needs an opening brace");
        return {root, Entries(1)};
    }

    [[nodiscard]] RegistryRoot Root() {
        const ScriptToken token = Take("a root key is missing");
        const auto found = std::ranges::find_if(kRootNames, [&token](const RootName& name) {
            return token.IsWord(name.short_name) || token.IsWord(name.long_name);
        });
        if (found == kRootNames.end()) {
            throw RegistryScriptError(token.line, "the root key is unknown");
        }
        return found->root;
    }

    // What stands in a key, and its closing brace.
    [[nodiscard]] std::vector<RegistryEntry> Entries(int depth) {
        if (depth > kDeepestKey) {
            Fail("the keys are nested too deeply");
        }
        std::vector<RegistryEntry> entries;
        while (!Accept(kClose)) {
            entries.push_back(Entry(depth));
        }
        return entries;
    }

    [[nodiscard]] RegistryEntry Entry(int depth) {
        RegistryEntry entry;
        if (Accept(kDelete)) {
            entry.kind = RegistryEntryKind::kDelete;
            entry.name = KeyName();
            return entry;
        }
        entry.force_remove = Accept(kForceRemove);
        entry.no_remove = Accept(kNoRemove);
        if (Accept(kVal)) {
            ReadValue(entry);
        } else {
            ReadKey(entry, depth);
        }
        return entry;
    }

    void ReadValue(RegistryEntry& entry) {
        entry.kind = RegistryEntryKind::kValue;
        entry.name = Name();
        Expect(kEquals, "a value needs an equals sign");
        entry.data = Data();
    }

    void ReadKey(RegistryEntry& entry, int depth) {
        entry.name = KeyName();
        if (Accept(kEquals)) {
            entry.data = Data();
        }
        if (Accept(kOpen)) {
            entry.entries = Entries(depth + 1);
        }
    }

    [[nodiscard]] std::u16string Name() {
        const ScriptToken token = Take("a name is missing");
        if (std::ranges::any_of(kReservedWords, [&token](std::u16string_view word) { return token.IsWord(word); })) {
            throw RegistryScriptError(token.line, "a name is missing");
        }
        return token.Meaning(variables_);
    }

    [[nodiscard]] std::u16string KeyName() {
        const std::size_t line = Line();
        std::u16string name = Name();
        if (name.empty() || name.find(u'\\') != name.npos) {
            throw RegistryScriptError(line, "a key's name is empty or has a backslash");
        }
        return name;
    }

    [[nodiscard]] RegistryData Data() {
        const ScriptToken type = Take("the type of the data is missing");
        const ScriptToken token = Take("the data is missing");
        if (token.IsWord(kOpen) || token.IsWord(kClose)) {
            throw RegistryScriptError(token.line, "the data is missing");
        }
        std::u16string text = token.Meaning(variables_);
        if (type.IsWord(u"s")) {
            return text;
        }
        if (type.IsWord(u"m")) {
            return Texts(text);
        }
        if (type.IsWord(u"d")) {
            return Checked(Number(text), token.line, "the data is not a number of 32 bits");
        }
        if (type.IsWord(u"b")) {
            return Checked(Bytes(text), token.line, "the data is not a row of hexadecimal bytes");
        }
        throw RegistryScriptError(type.line, "the type of the data is unknown");
    }

    template <class Content>
    [[nodiscard]] static Content Checked(std::optional<Content> content, std::size_t line, const char* what) {
        if (!content) {
            throw RegistryScriptError(line, what);
        }
        return *std::move(content);
    }

    // The present token, if it is this word of the language.
    [[nodiscard]] bool Accept(std::u16string_view word) {
        if (!token_ || !token_->IsWord(word)) {
            return false;
        }
        token_ = tokens_.Next();
        return true;
    }

    void Expect(std::u16string_view word, const char* what) {
        if (!Accept(word)) {
            Fail(what);
        }
    }

    [[nodiscard]] ScriptToken Take(const char* what) {
        if (!token_) {
            Fail(what);
        }
        ScriptToken token = *std::move(token_);
        token_ = tokens_.Next();
        return token;
    }

    [[nodiscard]] std::size_t Line() const noexcept { return token_ ? token_->line : tokens_.Line(); }
    [[noreturn]] void Fail(const char* what) const { throw RegistryScriptError(Line(), what); }

    ScriptTokenizer tokens_;
    const ScriptVariables& variables_;
    std::optional<ScriptToken> token_;
};

}  // namespace

RegistryScript ParseRegistryScript(std::u16string_view script, const ScriptVariables& variables) {
    return ScriptParser(script, variables).Script();
}

std::u16string RewriteForCurrentUser(std::u16string_view script) {
    std::u16string result;
    std::size_t copied = 0;
    int depth = 0;
    bool in_classes = false;
    ScriptToken previous;
    ScriptTokenizer tokens(script);
    while (const std::optional<ScriptToken> token = tokens.Next()) {
        if (token->IsWord(kOpen) && ++depth == 1 && previous.IsWord(kClassesRoot)) {
            result += script.substr(copied, previous.begin - copied);
            result += kUserClassesOpening;
            copied = previous.end;
            in_classes = true;
        } else if (token->IsWord(kClose) && --depth == 0 && in_classes) {
            result += script.substr(copied, token->end - copied);
            result += kUserClassesClosing;
            copied = token->end;
            in_classes = false;
        }
        previous = *token;
    }
    result += script.substr(copied);
    return result;
}

}  // namespace paylodge
