#include "storage/log_text.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace paylodge {
namespace {

constexpr size_t kLongestEntry = 1023;

TEST(LogEntry, NamesTheFunctionTheMessageAndTheCode) {
    EXPECT_EQ("Class::Method(): It failed.  HRESULT=0x80004005\n",
              FormatLogEntry("Class::Method()", "It failed.", 0x80004005));
}

TEST(LogEntry, LeavesTheFunctionOutWhenNoneIsGiven) {
    EXPECT_EQ("It failed.  HRESULT=0x80004005\n", FormatLogEntry(std::nullopt, "It failed.", 0x80004005));
}

TEST(LogEntry, AnEmptyFunctionIsStillAFunction) { EXPECT_EQ(": m  HRESULT=0\n", FormatLogEntry("", "m", 0)); }

TEST(LogEntry, WritesTheCodeInLowerCaseHexadecimalAndZeroWithoutPrefix) {
    const struct {
        std::uint32_t code;
        std::string_view text;
    } kCodes[] = {{0, "0"},
                  {1, "0x1"},
                  {0x7FFFFFFF, "0x7fffffff"},
                  {0x80000000, "0x80000000"},
                  {0x800706BA, "0x800706ba"},
                  {0xFFFFFFFF, "0xffffffff"}};
    for (const auto& [code, text] : kCodes) {
        EXPECT_EQ("m  HRESULT=" + std::string(text) + "\n", FormatLogEntry(std::nullopt, "m", code));
    }
}

TEST(LogEntry, PercentSignsAreText) { EXPECT_EQ("%s%n: 100%d %  HRESULT=0\n", FormatLogEntry("%s%n", "100%d %", 0)); }

TEST(LogEntry, EndsItsTextsAtTheFirstNull) {
    using namespace std::string_view_literals;
    EXPECT_EQ("function: message  HRESULT=0x1\n", FormatLogEntry("function\0hidden"sv, "message\0hidden"sv, 1));
}

TEST(LogEntry, HoldsExactlyWhatFitsIntoTheBuffer) {
    const std::string tail = "  HRESULT=0x80004005\n";
    const std::string message(kLongestEntry - tail.size(), 'm');
    EXPECT_EQ(message + tail, FormatLogEntry(std::nullopt, message, 0x80004005));
}

TEST(LogEntry, IsCutBeforeTheNewlineWhenItIsOneTooLong) {
    const std::string tail = "  HRESULT=0x80004005\n";
    const std::string message(kLongestEntry - tail.size() + 1, 'm');
    EXPECT_EQ(message + "  HRESULT=0x8000400\n", FormatLogEntry(std::nullopt, message, 0x80004005));
}

TEST(LogEntry, OfAnyLengthIsCutAndEndsInANewline) {
    const std::string cut = std::string(kLongestEntry - 1, 'x') + "\n";
    for (const size_t length : {kLongestEntry, kLongestEntry + 1, size_t{4096}, size_t{1'000'000}}) {
        const std::string text(length, 'x');
        EXPECT_EQ(cut, FormatLogEntry(std::nullopt, text, 0)) << length;
        EXPECT_EQ(cut, FormatLogEntry(text, "m", 0)) << length;
    }
}

TEST(LostEntry, SaysWhichFileAndWhichEntry) {
    EXPECT_EQ("Could not open the log file \"C:\\logs\\NALog.log\"!\nIntended log entry: m  HRESULT=0\n",
              FormatLostEntry("C:\\logs\\NALog.log", "m  HRESULT=0\n"));
}

TEST(LostEntry, HoldsAnEntryOfAnyLengthWhole) {
    const std::string path(300, 'p');
    const std::string entry(5000, 'e');
    EXPECT_EQ("Could not open the log file \"" + path + "\"!\nIntended log entry: " + entry,
              FormatLostEntry(path, entry));
}

TEST(LogFolder, GetsABackslashUnlessItEndsInASlash) {
    const struct {
        std::wstring_view folder;
        std::wstring_view expected;
    } kFolders[] = {{L"C:\\data", L"C:\\data\\"},
                    {L"C:\\data\\", L"C:\\data\\"},
                    {L"C:\\data/", L"C:\\data/"},
                    {L"C:/data", L"C:/data\\"},
                    {L"/", L"/"},
                    {L"\\", L"\\"},
                    {L"C:\\data/.", L"C:\\data/.\\"}};
    for (const auto& [folder, expected] : kFolders) {
        EXPECT_EQ(expected, WithTrailingSlash(folder));
    }
}

TEST(LogSize, IsFullAbove50000Bytes) {
    EXPECT_FALSE(IsLogFull(0));
    EXPECT_FALSE(IsLogFull(49'999));
    EXPECT_FALSE(IsLogFull(50'000));
    EXPECT_TRUE(IsLogFull(50'001));
    EXPECT_TRUE(IsLogFull(std::numeric_limits<std::int64_t>::max()));
}

constexpr std::uint32_t kFirstStatus = 0x80049000;

TEST(NetworkStatus, NamesThirtyCodesInARow) {
    constexpr std::string_view kNames[] = {
        "OENETSTATUS_OK",
        "OENETSTATUS_CANT_INIT",
        "OENETSTATUS_CANT_CONNECT",
        "OENETSTATUS_BAD_URL",
        "OENETSTATUS_CANT_SEND",
        "OENETSTATUS_CANT_GET_SIZE",
        "OENETSTATUS_READ_ERROR",
        "OENETSTATUS_CLOSE_ERROR",
        "OENETSTATUS_CANT_BUILD_REQUEST",
        "OENETSTATUS_CANT_STAGE_REQUEST",
        "OENETSTATUS_CANT_INIT_REQUEST (Perhaps you haven't completed the Internet Connection Setup in Ledgerhall)",
        "OENETSTATUS_BUFFER_TOO_SHORT",
        "OENETSTATUS_BUFFER_ERROR",
        "OENETSTATUS_CANT_MAKE_TEMP_FILE",
        "OENETSTATUS_HTTP_400",
        "OENETSTATUS_HTTP_500",
        "OENETSTATUS_CANT_ADD_TRUSTED_ROOT",
        "OENETSTATUS_CANT_SET_SSL_INFO",
        "OENETSTATUS_SSL_GENERAL_ERROR",
        "OENETSTATUS_SSL_CONFIG_ERROR",
        "OENETSTATUS_SSL_INTERNAL_ERROR",
        "OENETSTATUS_SSL_CALLBACK_ERROR",
        "OENETSTATUS_SSL_NAME_MISMATCH",
        "OENETSTATUS_SSL_CERTID_MISMATCH",
        "OENETSTATUS_UNSUPPORTED",
        "OENETSTATUS_CANT_ABORT",
        "OENETSTATUS_USER_CANCELLED",
        "OENETSTATUS_TIMEOUT",
        "OENETSTATUS_SERVER_CONFIG",
        "OENETSTATUS_UNKNOWN_ERROR",
    };
    std::uint32_t code = kFirstStatus;
    for (const std::string_view name : kNames) {
        EXPECT_EQ(name, NetworkStatusName(code++));
    }
    EXPECT_EQ(0x8004901EU, code);
}

TEST(NetworkStatus, HasNoNameForAnyOtherCode) {
    for (const std::uint32_t code : {0U, 1U, 29U, 0x8004901EU, 0x8004901FU, 0x80049020U, 0x80048FFFU, 0x80049100U,
                                     0x00049000U, 0x0004901DU, 0x7FFFFFFFU, 0x80000000U, 0x80004005U, 0xFFFFFFFFU}) {
        EXPECT_EQ("", NetworkStatusName(code)) << code;
    }
}

using Folders = std::vector<std::wstring_view>;

TEST(FoldersOf, AreTheFolderAndThoseAboveItFromTheTopDown) {
    EXPECT_EQ((Folders{L"C:", L"C:\\Logs", L"C:\\Logs/Ledgerhall"}), FoldersOf(L"C:\\Logs/Ledgerhall\\"));
    EXPECT_EQ((Folders{L"relative"}), FoldersOf(L"relative\\"));
    EXPECT_EQ(Folders(), FoldersOf(L""));
    EXPECT_EQ(Folders(), FoldersOf(L"/"));
}

// In code page 932 the second byte of these characters is that of a backslash.
TEST(FoldersOf, AreNotCutInsideACharacterOfADoubleByteCodePage) {
    EXPECT_EQ((Folders{L"C:", L"C:\\\u8868\u30BD", L"C:\\\u8868\u30BD\\\u80FD"}),
              FoldersOf(L"C:\\\u8868\u30BD\\\u80FD\\"));
}

}  // namespace
}  // namespace paylodge
