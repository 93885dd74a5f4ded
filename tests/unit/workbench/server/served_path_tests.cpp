#include "workbench/server/served_path.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace paylodge::workbench {
namespace {

// The file that a target of a request means; nothing when it is refused.
[[nodiscard]] std::optional<std::string> FileOf(std::string_view text) {
    const auto target = ReadTarget(text);
    return target ? RelativeFile(target->path) : std::nullopt;
}

TEST(ServedPath, NamesAFileBelowTheFolder) {
    EXPECT_EQ("index.html", FileOf("/"));
    EXPECT_EQ("a/b/index.html", FileOf("/a/b/"));
    EXPECT_EQ("a/b.js", FileOf("/a/b.js?v=1#part"));
    EXPECT_EQ("with blank.txt", FileOf("/with%20blank.txt"));
    EXPECT_EQ("\xC3\xA9t\xC3\xA9.css", FileOf("/%C3%A9t%C3%A9.css"));
    EXPECT_EQ("100%.txt", FileOf("/100%25.txt"));
    EXPECT_EQ("content.txt", FileOf("/content.txt"));
    EXPECT_EQ("com.html", FileOf("/com.html"));
    EXPECT_EQ("com10.html", FileOf("/com10.html"));
}

class Attack : public testing::TestWithParam<const char*> {};

TEST_P(Attack, NamesNoFile) { EXPECT_EQ(std::nullopt, FileOf(GetParam())); }

INSTANTIATE_TEST_SUITE_P(OutOfTheFolder, Attack,
                         testing::Values("/../secret", "/a/../../secret", "/..", "/.", "/./a", "/%2e%2e/secret",
                                         "/%2E%2E%2Fsecret", "/..%2fsecret", "/..%5csecret", "/..\\secret", "/a\\b",
                                         "/%5c%5cserver/share", "//server/share", "/a//b", "\\..\\secret", "secret", "",
                                         "http://elsewhere/", "*"));
INSTANTIATE_TEST_SUITE_P(DrivesAndStreams, Attack,
                         testing::Values("/C:/Windows/win.ini", "/c%3a/windows", "/a.txt::$DATA", "/a.txt:stream",
                                         "/index.html%3a%3a$DATA", "/Z:"));
INSTANTIATE_TEST_SUITE_P(Devices, Attack,
                         testing::Values("/con", "/CON", "/nul", "/NUL.txt", "/aux.js", "/a/prn", "/com1", "/LPT9.html",
                                         "/com%C2%B9", "/conin$", "/CONOUT$", "/nul%20.txt", "/clock$"));
INSTANTIATE_TEST_SUITE_P(NamesThatWindowsReadsAsOthers, Attack,
                         testing::Values("/a.txt.", "/a.txt%20", "/a%20/b", "/a./b", "/PROGRA~1", "/a*", "/a%3f",
                                         "/%3Ca%3E", "/a%7Cb", "/a%22b"));
INSTANTIATE_TEST_SUITE_P(BytesThatAreNoText, Attack,
                         testing::Values("/a%00.txt", "/a%0d%0ab", "/%7f", "/%ff", "/%c0%ae%c0%ae/secret", "/%e0%80%ae",
                                         "/%ed%a0%80", "/%f5%80%80%80", "/%c3", "/%", "/%4", "/%zz"));
INSTANTIATE_TEST_SUITE_P(HiddenFiles, Attack, testing::Values("/.git/config", "/.env", "/a/.htpasswd", "/%2egit"));

TEST(ServedPath, IsDecodedOnce) { EXPECT_EQ("a%2fb", FileOf("/a%252fb")); }

TEST(Target, HasItsQuery) {
    const auto target = ReadTarget("/workbench/socket?page=a%20b&token=&flag&x=1=2");
    ASSERT_TRUE(target);
    EXPECT_EQ("/workbench/socket", target->path);
    EXPECT_EQ("a b", target->query.at("page"));
    EXPECT_EQ("", target->query.at("token"));
    EXPECT_EQ("", target->query.at("flag"));
    EXPECT_EQ("1=2", target->query.at("x"));
    EXPECT_EQ(std::nullopt, ReadTarget("/a?b=%zz"));
}

TEST(MediaType, FollowsTheExtension) {
    EXPECT_EQ("text/html", MediaType("a/index.HTML"));
    EXPECT_EQ("text/javascript", MediaType("main.mjs"));
    EXPECT_EQ("application/octet-stream", MediaType("a.html/file"));
    EXPECT_EQ("application/octet-stream", MediaType("noextension"));
    EXPECT_EQ("application/octet-stream", MediaType("program.exe"));
}

TEST(Utf8, IsToldFromOtherBytes) {
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_TRUE(IsUtf8("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"));
    EXPECT_FALSE(IsUtf8("caf\xE9"));
    EXPECT_FALSE(IsUtf8("\xF4\x90\x80\x80"));
    EXPECT_FALSE(IsUtf8("\xE2\x82"));
}

}  // namespace
}  // namespace paylodge::workbench
