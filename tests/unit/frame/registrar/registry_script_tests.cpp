#include "frame/registrar/registry_script.hpp"

#include <gtest/gtest.h>

#include <initializer_list>

namespace paylodge {
namespace {

[[nodiscard]] std::u16string Join(std::initializer_list<std::u16string_view> parts) {
    std::u16string text;
    for (const std::u16string_view part : parts) {
        text += part;
    }
    return text;
}

[[nodiscard]] RegistryScript Parse(std::u16string_view script) { return ParseRegistryScript(script, {{u"SIX", u"6"}}); }

// The only entry of the only root key.
[[nodiscard]] RegistryEntry OnlyEntry(std::u16string_view entry) {
    const RegistryScript script = Parse(Join({u"HKCR { ", entry, u" }"}));
    EXPECT_EQ(script.size(), 1u);
    EXPECT_EQ(script.at(0).entries.size(), 1u);
    return script.at(0).entries.at(0);
}

[[nodiscard]] RegistryData DataOf(std::u16string_view data) {
    return OnlyEntry(Join({u"'key' = ", data})).data.value();
}

struct Mistake {
    std::size_t line;
    std::string text;
    bool operator==(const Mistake&) const = default;
};

void PrintTo(const Mistake& mistake, std::ostream* out) { *out << mistake.text; }

[[nodiscard]] Mistake MistakeIn(std::u16string_view script) {
    try {
        static_cast<void>(Parse(script));
    } catch (const RegistryScriptError& error) {
        return {error.Line(), error.what()};
    }
    return {0, "no mistake"};
}

[[nodiscard]] std::string MistakeInData(std::u16string_view data) {
    return MistakeIn(Join({u"HKCR { 'key' = ", data, u" }"})).text;
}

[[nodiscard]] std::u16string Nested(int depth) {
    std::u16string script = u"HKCR { ";
    for (int i = 0; i < depth; ++i) {
        script += u"a { ";
    }
    for (int i = 0; i <= depth; ++i) {
        script += u"} ";
    }
    return script;
}

TEST(RegistryScript, KnowsTheShortAndLongNamesOfTheRootKeys) {
    const std::pair<std::u16string, RegistryRoot> names[] = {
        {u"HKCR", RegistryRoot::kClassesRoot},
        {u"HKEY_CLASSES_ROOT", RegistryRoot::kClassesRoot},
        {u"HKCU", RegistryRoot::kCurrentUser},
        {u"HKEY_CURRENT_USER", RegistryRoot::kCurrentUser},
        {u"HKLM", RegistryRoot::kLocalMachine},
        {u"HKEY_LOCAL_MACHINE", RegistryRoot::kLocalMachine},
        {u"HKU", RegistryRoot::kUsers},
        {u"HKEY_USERS", RegistryRoot::kUsers},
        {u"HKPD", RegistryRoot::kPerformanceData},
        {u"HKEY_PERFORMANCE_DATA", RegistryRoot::kPerformanceData},
        {u"HKDD", RegistryRoot::kDynamicData},
        {u"HKEY_DYN_DATA", RegistryRoot::kDynamicData},
        {u"HKCC", RegistryRoot::kCurrentConfig},
        {u"HKEY_CURRENT_CONFIG", RegistryRoot::kCurrentConfig},
        {u"hkcr", RegistryRoot::kClassesRoot},
    };
    for (const auto& [name, root] : names) {
        const RegistryScript script = Parse(Join({name, u" { }"}));
        ASSERT_EQ(script.size(), 1u);
        EXPECT_EQ(script[0].root, root);
        EXPECT_TRUE(script[0].entries.empty());
    }
}

TEST(RegistryScript, HoldsSeveralRootKeysInTheirOrder) {
    const RegistryScript script = Parse(u"HKLM { a } HKCU { b } HKLM { c }");
    ASSERT_EQ(script.size(), 3u);
    EXPECT_EQ(script[0].root, RegistryRoot::kLocalMachine);
    EXPECT_EQ(script[1].root, RegistryRoot::kCurrentUser);
    EXPECT_EQ(script[2].entries.at(0).name, u"c");
}

TEST(RegistryScript, ReadsAKeyWithoutData) {
    const RegistryEntry key = OnlyEntry(u"Programmable");
    EXPECT_EQ(key.kind, RegistryEntryKind::kKey);
    EXPECT_EQ(key.name, u"Programmable");
    EXPECT_FALSE(key.force_remove);
    EXPECT_FALSE(key.no_remove);
    EXPECT_FALSE(key.data.has_value());
    EXPECT_TRUE(key.entries.empty());
}

TEST(RegistryScript, ReadsAKeysDefaultValue) {
    EXPECT_EQ(OnlyEntry(u"'CLSID' = s 'x y'").data, RegistryData(std::u16string(u"x y")));
    EXPECT_EQ(OnlyEntry(u"'CLSID'= s 'x y'").data, RegistryData(std::u16string(u"x y")));
}

TEST(RegistryScript, KeepsWhatStandsInAKeyInItsOrder) {
    const RegistryEntry key = OnlyEntry(u"a { b = s '1' Val c = s '2' Delete d b { e } }");
    ASSERT_EQ(key.entries.size(), 4u);
    EXPECT_EQ(key.entries[0].kind, RegistryEntryKind::kKey);
    EXPECT_EQ(key.entries[1].kind, RegistryEntryKind::kValue);
    EXPECT_EQ(key.entries[1].name, u"c");
    EXPECT_EQ(key.entries[1].data, RegistryData(std::u16string(u"2")));
    EXPECT_EQ(key.entries[2].kind, RegistryEntryKind::kDelete);
    EXPECT_EQ(key.entries[2].name, u"d");
    EXPECT_EQ(key.entries[3].name, u"b");
    EXPECT_EQ(key.entries[3].entries.at(0).name, u"e");
}

TEST(RegistryScript, ReadsTheModes) {
    const RegistryEntry forced = OnlyEntry(u"ForceRemove a");
    EXPECT_TRUE(forced.force_remove);
    EXPECT_FALSE(forced.no_remove);
    const RegistryEntry kept = OnlyEntry(u"NOREMOVE a");
    EXPECT_FALSE(kept.force_remove);
    EXPECT_TRUE(kept.no_remove);
    const RegistryEntry both = OnlyEntry(u"ForceRemove NoRemove a");
    EXPECT_TRUE(both.force_remove);
    EXPECT_TRUE(both.no_remove);
    const RegistryEntry value = OnlyEntry(u"NoRemove val a = d 1");
    EXPECT_EQ(value.kind, RegistryEntryKind::kValue);
    EXPECT_TRUE(value.no_remove);
}

TEST(RegistryScript, TakesQuotedWordsForNames) {
    for (const char16_t* name : {u"Delete", u"ForceRemove", u"NoRemove", u"Val", u"{", u"}", u"="}) {
        const RegistryEntry key = OnlyEntry(Join({u"'", name, u"' = s '}'"}));
        EXPECT_EQ(key.kind, RegistryEntryKind::kKey);
        EXPECT_EQ(key.name, name);
        EXPECT_EQ(key.data, RegistryData(std::u16string(u"}")));
    }
}

TEST(RegistryScript, TakesAnIdentifierInBracesForAName) {
    EXPECT_EQ(OnlyEntry(u"ForceRemove {F8A9E1FD-7DCD-4be8-B510-7CBB849364AB} { }").name,
              u"{F8A9E1FD-7DCD-4be8-B510-7CBB849364AB}");
}

TEST(RegistryScript, ReplacesVariablesInNamesAndData) {
    const RegistryEntry key = OnlyEntry(u"'no. %SIX%' = d '%SIX%%SIX%'");
    EXPECT_EQ(key.name, u"no. 6");
    EXPECT_EQ(key.data, RegistryData(std::uint32_t{66}));
}

TEST(RegistryScript, ReadsTexts) {
    EXPECT_EQ(DataOf(u"s ''"), RegistryData(std::u16string()));
    EXPECT_EQ(DataOf(u"S word"), RegistryData(std::u16string(u"word")));
    EXPECT_EQ(DataOf(u"s '\u65e5\u672c\\0'"), RegistryData(std::u16string(u"\u65e5\u672c\\0")));
}

TEST(RegistryScript, ReadsNumbers) {
    EXPECT_EQ(DataOf(u"d '0'"), RegistryData(std::uint32_t{0}));
    EXPECT_EQ(DataOf(u"D 131473"), RegistryData(std::uint32_t{131473}));
    EXPECT_EQ(DataOf(u"d '4294967295'"), RegistryData(std::uint32_t{0xFFFFFFFF}));
    EXPECT_EQ(DataOf(u"d '&H20191'"), RegistryData(std::uint32_t{0x20191}));
    EXPECT_EQ(DataOf(u"d '0xfFfFfFfF'"), RegistryData(std::uint32_t{0xFFFFFFFF}));
}

TEST(RegistryScript, RefusesOtherNumbers) {
    for (const char16_t* number : {u"''", u"'-1'", u"'4294967296'", u"'0x100000000'", u"'1F'", u"'&H'", u"'&HG'",
                                   u"' 1'", u"'1.0'", u"'99999999999999999999999999'", u"'\uff11'"}) {
        EXPECT_EQ(MistakeInData(Join({u"d ", number})), "line 1: the data is not a number of 32 bits");
    }
}

TEST(RegistryScript, ReadsBytes) {
    EXPECT_EQ(DataOf(u"b ''"), RegistryData(std::vector<std::uint8_t>{}));
    EXPECT_EQ(DataOf(u"b '00fFA5'"), RegistryData(std::vector<std::uint8_t>{0x00, 0xFF, 0xA5}));
    EXPECT_EQ(MistakeInData(u"b '123'"), "line 1: the data is not a row of hexadecimal bytes");
    EXPECT_EQ(MistakeInData(u"b '1G'"), "line 1: the data is not a row of hexadecimal bytes");
    EXPECT_EQ(MistakeInData(u"b 'G1'"), "line 1: the data is not a row of hexadecimal bytes");
    // The characters before and after the digits and the letters.
    for (const std::u16string_view other :
         {u"/0", u":0", u"@0", u"G0", u"`0", u"g0", u"0/", u"0:", u"0@", u"0`", u"0g"}) {
        EXPECT_EQ(MistakeInData(Join({u"b '", other, u"'"})), "line 1: the data is not a row of hexadecimal bytes");
        EXPECT_EQ(MistakeInData(Join({u"d '0x", other, u"'"})), "line 1: the data is not a number of 32 bits");
    }
}

TEST(RegistryScript, ReadsListsOfTexts) {
    using Texts = std::vector<std::u16string>;
    EXPECT_EQ(DataOf(u"m ''"), RegistryData(Texts{}));
    EXPECT_EQ(DataOf(u"m 'one'"), RegistryData(Texts{u"one"}));
    EXPECT_EQ(DataOf(u"m 'one\\0two'"), RegistryData(Texts{u"one", u"two"}));
    EXPECT_EQ(DataOf(u"m 'C:\\dir\\0\\0two\\0'"), RegistryData(Texts{u"C:\\dir", u"two"}));
}

TEST(RegistryScript, NamesMistakesAndTheirLines) {
    EXPECT_EQ(MistakeIn(u""), (Mistake{1, "line 1: a root key is missing"}));
    EXPECT_EQ(MistakeIn(u"HKXX { }"), (Mistake{1, "line 1: the root key is unknown"}));
    EXPECT_EQ(MistakeIn(u"'HKCR' { }"), (Mistake{1, "line 1: the root key is unknown"}));
    EXPECT_EQ(MistakeIn(u"HKCR{ }"), (Mistake{1, "line 1: the root key is unknown"}));
    EXPECT_EQ(MistakeIn(u"HKCR\n'a'"), (Mistake{2, "line 2: the root key needs an opening brace"}));
    EXPECT_EQ(MistakeIn(u"HKCR\n{\n"), (Mistake{3, "line 3: a name is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR\n{\n}\n}"), (Mistake{4, "line 4: the root key is unknown"}));
    EXPECT_EQ(MistakeIn(u"HKCR { \n = s 'x' }"), (Mistake{2, "line 2: a name is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { ForceRemove\n }"), (Mistake{2, "line 2: a name is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { NoRemove ForceRemove a }"), (Mistake{1, "line 1: a name is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { Delete\n'' }"), (Mistake{2, "line 2: a key's name is empty or has a backslash"}));
    EXPECT_EQ(MistakeIn(u"HKCR { 'a\\b' }"), (Mistake{1, "line 1: a key's name is empty or has a backslash"}));
    EXPECT_EQ(MistakeIn(u"HKCR { Val a }"), (Mistake{1, "line 1: a value needs an equals sign"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = }"), (Mistake{1, "line 1: the data is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = s\n}"), (Mistake{2, "line 2: the data is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = s { }"), (Mistake{1, "line 1: the data is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = x 'y' }"), (Mistake{1, "line 1: the type of the data is unknown"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = 's' 'y' }"), (Mistake{1, "line 1: the type of the data is unknown"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = s '%SEVEN%' }"), (Mistake{1, "line 1: a variable has no value"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = s 'b }"), (Mistake{1, "line 1: a closing quote is missing"}));
}

TEST(RegistryScript, NamesTheLineOfTheMistakeNotOfWhatFollows) {
    EXPECT_EQ(MistakeIn(u"HKXX\n{ }"), (Mistake{1, "line 1: the root key is unknown"}));
    EXPECT_EQ(MistakeIn(u"HKCR {\n=\ns 'x' }"), (Mistake{2, "line 2: a name is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR {\n'a\\b'\n}"), (Mistake{2, "line 2: a key's name is empty or has a backslash"}));
    EXPECT_EQ(MistakeIn(u"HKCR { Delete\n''\n}"), (Mistake{2, "line 2: a key's name is empty or has a backslash"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a =\nx\n'y'\n}"), (Mistake{2, "line 2: the type of the data is unknown"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = s\n{\n}"), (Mistake{2, "line 2: the data is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = d\n'y'\n}"), (Mistake{2, "line 2: the data is not a number of 32 bits"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = b\n'y'\n}"), (Mistake{2, "line 2: the data is not a row of hexadecimal bytes"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a\n= s\n'%SEVEN%'\n}"), (Mistake{3, "line 3: a variable has no value"}));
}

TEST(RegistryScript, NamesTheLastLineWhereTheScriptEndsTooEarly) {
    EXPECT_EQ(MistakeIn(u"\n\n"), (Mistake{3, "line 3: a root key is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR\n"), (Mistake{2, "line 2: the root key needs an opening brace"}));
    EXPECT_EQ(MistakeIn(u"HKCR { Delete\n"), (Mistake{2, "line 2: a name is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { Val\n\n"), (Mistake{3, "line 3: a name is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { Val a\n"), (Mistake{2, "line 2: a value needs an equals sign"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a =\n"), (Mistake{2, "line 2: the type of the data is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = s\n"), (Mistake{2, "line 2: the data is missing"}));
    EXPECT_EQ(MistakeIn(u"HKCR { a = s 'b'\n"), (Mistake{2, "line 2: a name is missing"}));
}

TEST(RegistryScript, EndsAtTheRegistrysOwnDepth) {
    EXPECT_EQ(Parse(Nested(511)).size(), 1u);
    EXPECT_EQ(MistakeIn(Nested(512)).text, "line 1: the keys are nested too deeply");
    EXPECT_EQ(MistakeIn(Nested(100000)).text, "line 1: the keys are nested too deeply");
}

TEST(RewriteForCurrentUser, PutsTheUsersClassesInPlaceOfTheClassesRoot) {
    EXPECT_EQ(RewriteForCurrentUser(u"HKCR\n{\n    'a' = s 'b'\n}"),
              u"HKCU\r\n{\tSoftware\r\n\t{\r\n\t\tClasses\n{\n    'a' = s 'b'\n}\r\n\t}\r\n}\r\n");
}

TEST(RewriteForCurrentUser, ReturnsAScriptThatWritesToTheUsersClasses) {
    const RegistryScript script = Parse(RewriteForCurrentUser(u"HKCR { CLSID { {F8A9} { } } }"));
    ASSERT_EQ(script.size(), 1u);
    EXPECT_EQ(script[0].root, RegistryRoot::kCurrentUser);
    const RegistryEntry& software = script[0].entries.at(0);
    EXPECT_EQ(software.name, u"Software");
    const RegistryEntry& classes = software.entries.at(0);
    EXPECT_EQ(classes.name, u"Classes");
    EXPECT_EQ(classes.entries.at(0).name, u"CLSID");
    EXPECT_EQ(classes.entries.at(0).entries.at(0).name, u"{F8A9}");
}

TEST(RewriteForCurrentUser, LeavesOtherRootsAndNamesAlone) {
    for (const char16_t* script :
         {u"", u"HKLM { HKCR { 'HKCR' } }", u"HKEY_CLASSES_ROOT { a }", u"HKCU\r\n{ 'HKCR' = s 'HKCR {' }\r\n"}) {
        EXPECT_EQ(RewriteForCurrentUser(script), script);
    }
}

TEST(RewriteForCurrentUser, RewritesEachClassesRootOfAScript) {
    const RegistryScript script = Parse(RewriteForCurrentUser(u"HKCR { a { } } HKLM { b { } } hkcr { '}' { } }"));
    ASSERT_EQ(script.size(), 3u);
    EXPECT_EQ(script[0].root, RegistryRoot::kCurrentUser);
    EXPECT_EQ(script[1].root, RegistryRoot::kLocalMachine);
    EXPECT_EQ(script[1].entries.at(0).name, u"b");
    EXPECT_EQ(script[2].root, RegistryRoot::kCurrentUser);
    EXPECT_EQ(script[2].entries.at(0).entries.at(0).entries.at(0).name, u"}");
}

TEST(RewriteForCurrentUser, DoesNotMendAScriptWithAMistake) {
    for (const char16_t* script :
         {u"HKCR", u"HKCR {", u"HKCR { a { }", u"HKCR { } }", u"HKCR a { }", u"HKCR HKCR { }"}) {
        EXPECT_NE(MistakeIn(RewriteForCurrentUser(script)).line, 0u);
    }
    EXPECT_THROW(static_cast<void>(RewriteForCurrentUser(u"HKCR { 'a }")), RegistryScriptError);
}

}  // namespace
}  // namespace paylodge
