#include "storage/logger.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <utility>

#include "com/ansi_text.hpp"
#include "com/owner.hpp"
#include "tests/support/fake_storage_host.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/support/log_files.hpp"
#include "tests/support/no_application.hpp"
#include "tests/unit/storage/logger_module.hpp"

namespace paylodge::test {
namespace {

namespace fs = std::filesystem;

using Calls = std::vector<std::string>;

const char* const kLog = "NALog.log";
const char* const kOldLog = "NAOldLog.log";

// What the host is asked for when the log's place is decided.
const Calls kFindingFolder = {"CreateInstance()", "GetRunningApplication()", "QueryInterface(IHostFolders)",
                              "GetFolder(2)"};

// A message box that was to be shown.
struct MessageBox {
    HWND owner;
    std::string text;
    std::string caption;
    UINT type;

    bool operator==(const MessageBox&) const = default;
};
void PrintTo(const MessageBox& box, std::ostream* stream) {
    *stream << "box \"" << box.caption << "\" of " << box.owner << " with type " << box.type << ": " << box.text;
}

// What the logger asks of the system, and what it gets.
struct FakeSystem {
    std::vector<MessageBox> boxes;
    Calls calls;
    HWND main_frame = nullptr;
    HMODULE flag_library = nullptr;
    bool flag = false;
};
FakeSystem* g_system = nullptr;

[[nodiscard]] std::string Show(const char* text) { return text == nullptr ? "null" : "\"" + std::string(text) + "\""; }

constexpr LoggerImports kImports = {
    .message_box = [](HWND owner, LPCSTR text, LPCSTR caption, UINT type) WINAPI -> int {
        g_system->boxes.push_back({owner, text, caption, type});
        return IDOK;
    },
    .find_window = [](LPCSTR class_name, LPCSTR window_name) WINAPI -> HWND {
        g_system->calls.push_back("FindWindowA(" + Show(class_name) + ", " + Show(window_name) + ")");
        return g_system->main_frame;
    },
    .find_module = [](DWORD, LPCWSTR name, HMODULE*) WINAPI -> BOOL {
        g_system->calls.push_back("GetModuleHandleExW(\"" + AnsiFromWide(name) + "\")");
        return FALSE;
    },
    .load_library = [](LPCWSTR name, HANDLE, DWORD) WINAPI -> HMODULE {
        g_system->calls.push_back("LoadLibraryExW(\"" + AnsiFromWide(name) + "\")");
        return g_system->flag_library;
    },
};

}  // namespace

// The host's feature flag: this program exports it under the name that the host's library has for it.
extern "C" bool __cdecl GetFeatureParamAsBool(const char* section, const char* name, const char* default_value) {
    g_system->calls.push_back("flag(" + Show(section) + ", " + Show(name) + ", " + Show(default_value) + ")");
    return g_system->flag;
}

namespace {

const char* const kFlagQuestion = "flag(\"SBSSettings\", \"NetworkAdapter.EnableLogContext\", null)";

class Logger : public testing::Test {
  public:
    ~Logger() override {
        fs::current_path(start_folder_);
        Unload();
        EXPECT_EQ(std::vector<MessageBox>(), system_.boxes);
        g_system = nullptr;
    }

  protected:
    Logger() : start_folder_(fs::current_path()) {
        g_system = &system_;
        system_.flag_library = ::GetModuleHandleW(nullptr);
        host_->folder = folder_.Path().wstring();
        LoadAnew();
    }
    // As in a new process.
    void LoadAnew() {
        Unload();
        module_.Reset(::LoadLibraryW(L"logger_module.dll"));
        ASSERT_TRUE(module_);
        Find<ReplaceImportsFunction>("ReplaceImports")(kImports);
    }

    void LogHResult(const std::string& function, const std::string& message, HRESULT result) const {
        Find<LogHResultFunction>("LogHResult")(function.c_str(), message.c_str(), result);
    }
    // The entry of most tests, and how the log shows it.
    void LogEntry() const { LogHResult("Class::Method()", "It failed.", E_FAIL); }
    static inline const std::string kEntry = LoggedEntry("It failed.  HRESULT=0x80004005");

    void LogText(const std::string& text) const { Find<LogTextFunction>("LogText")(text.c_str()); }

    // The bytes of a file with the times of this test replaced.
    [[nodiscard]] std::string Read(const fs::path& file) const { return WithoutTimes(ReadBytes(file), start_); }
    [[nodiscard]] std::string Log() const { return Read(folder_.Path() / kLog); }
    [[nodiscard]] std::string OldLog() const { return ReadBytes(folder_.Path() / kOldLog); }

    // The message boxes that were not looked at yet.
    [[nodiscard]] std::vector<MessageBox> TakeBoxes() { return std::exchange(system_.boxes, {}); }

    ScratchFolder folder_;
    FakeSystem system_;
    std::optional<FakeStorageHost> host_{std::in_place};

  private:
    void Unload() {
        module_.Reset();
        EXPECT_EQ(nullptr, ::GetModuleHandleW(L"logger_module.dll"));
    }

    template <class Function>
    [[nodiscard]] Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module_.Get(), name)));
    }

    fs::path start_folder_;
    std::time_t start_ = std::time(nullptr);
    ModuleHandle module_;
};

[[nodiscard]] std::string LostEntry(const fs::path& log, const std::string& entry) {
    return "Could not open the log file \"" + AnsiFromWide(log.wstring()) + "\"!\nIntended log entry: " + entry;
}

// Entries

TEST_F(Logger, EntryIsALineWithTheTimeAndALineWithTheFailure) {
    LogEntry();
    EXPECT_EQ("<ctime>\r\n   It failed.  HRESULT=0x80004005\r\n", Log());
}

TEST_F(Logger, EntriesAreAppended) {
    WriteBytes(folder_.Path() / kLog, "from before\r\n");
    LogEntry();
    LogHResult("f", "Again.", S_OK);
    LogText("some text");
    EXPECT_EQ("from before\r\n" + kEntry + "<ctime>\r\n   Again.  HRESULT=0\r\nsome text  <%c>\r\n", Log());
}

TEST_F(Logger, EntryNamesTheFunctionWhileTheFlagIsOn) {
    system_.flag = true;
    LogEntry();
    system_.flag = false;
    LogEntry();
    EXPECT_EQ("<ctime>\r\n   Class::Method(): It failed.  HRESULT=0x80004005\r\n" + kEntry, Log());
}

TEST_F(Logger, FlagIsAskedForEachEntryAndItsLibraryLoadedOnce) {
    LogEntry();
    LogEntry();
    LogText("text");
    EXPECT_EQ(
        (Calls{"GetModuleHandleExW(\"Kesto.dll\")", "LoadLibraryExW(\"Kesto.dll\")", kFlagQuestion, kFlagQuestion}),
        system_.calls);
}

TEST_F(Logger, MissingFlagLibraryCountsAsOff) {
    system_.flag = true;
    system_.flag_library = nullptr;
    LogEntry();
    EXPECT_EQ(kEntry, Log());
}

TEST_F(Logger, FlagLibraryWithoutTheExportCountsAsOff) {
    system_.flag = true;
    system_.flag_library = ::GetModuleHandleW(L"kernel32.dll");
    LogEntry();
    EXPECT_EQ(kEntry, Log());
}

TEST_F(Logger, EntryLongerThanTheBufferIsCutAndEndsItsLine) {
    system_.flag = true;
    LogHResult(std::string(2000, 'f'), std::string(2000, 'm'), E_FAIL);
    LogEntry();
    EXPECT_EQ(LoggedEntry(std::string(1022, 'f')) + LoggedEntry("Class::Method(): It failed.  HRESULT=0x80004005"),
              Log());
}

TEST_F(Logger, EmptyTextsAreEntries) {
    system_.flag = true;
    LogHResult("", "", S_OK);
    LogText("");
    EXPECT_EQ("<ctime>\r\n   :   HRESULT=0\r\n  <%c>\r\n", Log());
}

TEST_F(Logger, PercentSignsAreText) {
    LogHResult("%s", "%s%n%d", S_OK);
    LogText("%s%n%d");
    EXPECT_EQ("<ctime>\r\n   %s%n%d  HRESULT=0\r\n%s%n%d  <%c>\r\n", Log());
}

TEST_F(Logger, FreeTextOfAnyLengthIsWhole) {
    const std::string text(100'000, 't');
    LogText(text);
    EXPECT_EQ(text + "  <%c>\r\n", Log());
}

TEST(LoggerTexts, EndAtTheirFirstNull) {
    ProcessLog log;
    SetLogContextFlag(true);
    using namespace std::string_literals;
    CNALogger().LogHResult("function\0hidden"s, "message\0hidden"s, S_OK);
    CNALogger().LogText("text\0hidden"s);
    EXPECT_EQ(LoggedEntry("function: message  HRESULT=0") + "text  <%c>\r\n", log.Take());
}

TEST_F(Logger, NothingStaysOpenBetweenEntries) {
    LogEntry();
    EXPECT_TRUE(fs::remove(folder_.Path() / kLog));
    LogText("new");
    EXPECT_TRUE(fs::remove(folder_.Path() / kLog));
    LogEntry();
    EXPECT_EQ(kEntry, Log());
}

TEST_F(Logger, LeaksNothing) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "OANOCACHE is not set: automation keeps freed strings";
    }
    LogEntry();
    LoadAnew();
    const LiveAllocations allocations;
    LogEntry();
    EXPECT_EQ(0, allocations.Count());
}

// Where the log stands

TEST_F(Logger, FolderIsAskedForOnce) {
    LogEntry();
    EXPECT_EQ(kFindingFolder, host_->calls);
    const ScratchFolder other;
    host_->folder = other.Path().wstring();
    LogEntry();
    LogText("text");
    EXPECT_EQ(kFindingFolder, host_->calls);
    EXPECT_EQ(kEntry + kEntry + "text  <%c>\r\n", Log());
}

TEST_F(Logger, FolderIsAskedForAnewInANewProcess) {
    LogEntry();
    LoadAnew();
    const ScratchFolder other;
    host_->folder = other.Path().wstring();
    LogText("text");
    EXPECT_EQ(kEntry, Log());
    EXPECT_EQ("text  <%c>\r\n", Read(other.Path() / kLog));
}

struct FolderForm {
    const char* name;
    const wchar_t* appended;
    const wchar_t* expected;
};
void PrintTo(const FolderForm& form, std::ostream* stream) { *stream << form.name; }

class LogFolderForm : public Logger, public testing::WithParamInterface<FolderForm> {};

TEST_P(LogFolderForm, IsCreatedWithItsParentsAndHoldsTheLog) {
    host_->folder += GetParam().appended;
    LogEntry();
    EXPECT_EQ(kEntry, Read(folder_.Path() / GetParam().expected / kLog));
    EXPECT_EQ("(no file)", ReadBytes(folder_.Path() / GetParam().expected / kOldLog));
}

TEST_P(LogFolderForm, NamesTheLogAsItIs) {
    host_->folder += GetParam().appended;
    fs::create_directories(folder_.Path() / GetParam().expected / kLog);
    LogText("lost");
    std::wstring log = host_->folder;
    log += log.back() == L'/' || log.back() == L'\\' ? L"" : L"\\";
    EXPECT_EQ((std::vector<MessageBox>{{nullptr, LostEntry(log + L"NALog.log", "lost"), "Network Adapter", MB_OK}}),
              TakeBoxes());
}

INSTANTIATE_TEST_SUITE_P(Host, LogFolderForm,
                         testing::Values(FolderForm{"NoSlash", L"", L""}, FolderForm{"Backslash", L"\\", L""},
                                         FolderForm{"ForwardSlash", L"/", L""},
                                         FolderForm{"MissingFolder", L"\\a", L"a"},
                                         FolderForm{"MissingFolderBackslash", L"\\a\\", L"a"},
                                         FolderForm{"MissingFolderForwardSlash", L"\\a/", L"a"},
                                         FolderForm{"MissingParents", L"\\a\\b b\\c.d", L"a/b b/c.d"},
                                         FolderForm{"MixedSlashes", L"/a\\b/c", L"a/b/c"},
                                         FolderForm{"DoubledSlashes", L"\\\\a//b\\", L"a/b"},
                                         FolderForm{"AnsiCharacters", L"\\caf\u00e9", L"caf\u00e9"}),
                         testing::PrintToStringParamName());

TEST_F(Logger, FolderThatCannotBeCreatedLosesTheEntry) {
    WriteBytes(folder_.Path() / "file", "in the way");
    host_->folder += L"\\file\\folder";
    LogEntry();
    EXPECT_EQ((std::vector<MessageBox>{
                  {nullptr, LostEntry(folder_.Path() / "file\\folder\\NALog.log", "It failed.  HRESULT=0x80004005\n"),
                   "Network Adapter", MB_OK}}),
              TakeBoxes());
    EXPECT_EQ("in the way", ReadBytes(folder_.Path() / "file"));
}

TEST_F(Logger, FolderOutsideTheCodePageLosesTheEntryAndSaysWhere) {
    host_->folder += L"\\\u3042";
    LogText("lost");
    const std::vector<MessageBox> boxes = TakeBoxes();
    ASSERT_EQ(1U, boxes.size());
    EXPECT_EQ(LostEntry(folder_.Path() / "?\\NALog.log", "lost"), boxes.front().text);
}

TEST_F(Logger, FolderEndsAtItsFirstNull) {
    host_->folder += std::wstring(L"\\a\0b", 4);
    LogText("text");
    EXPECT_EQ("text  <%c>\r\n", Read(folder_.Path() / "a" / kLog));
}

TEST_F(Logger, FolderOfAnyLengthIsSurvived) {
    host_->folder += L"\\" + std::wstring(5000, L'f');
    LogText("lost");
    const std::vector<MessageBox> boxes = TakeBoxes();
    ASSERT_EQ(1U, boxes.size());
    EXPECT_EQ(LostEntry(host_->folder + L"\\NALog.log", "lost"), boxes.front().text);
}

// A log that cannot be opened

class LockedLog : public Logger {
  protected:
    LockedLog() { fs::create_directory(folder_.Path() / kLog); }

    [[nodiscard]] std::string Lost(const std::string& entry) const { return LostEntry(folder_.Path() / kLog, entry); }
};

TEST_F(LockedLog, EntryIsShownToTheUserByTheHostsMainFrame) {
    for (const bool has_frame : {true, false}) {
        system_.main_frame = has_frame ? ::GetDesktopWindow() : nullptr;
        LogEntry();
        LogText("text");
        EXPECT_EQ((std::vector<MessageBox>{
                      {system_.main_frame, Lost("It failed.  HRESULT=0x80004005\n"), "Network Adapter", MB_OK},
                      {system_.main_frame, Lost("text"), "Network Adapter", MB_OK}}),
                  TakeBoxes());
    }
    EXPECT_EQ(4, std::count(system_.calls.begin(), system_.calls.end(), "FindWindowA(\"OrkaFrame\", null)"));
}

TEST_F(LockedLog, EntryShownNamesTheFunctionWhileTheFlagIsOn) {
    system_.flag = true;
    LogEntry();
    ASSERT_EQ(1U, system_.boxes.size());
    EXPECT_EQ(Lost("Class::Method(): It failed.  HRESULT=0x80004005\n"), TakeBoxes().front().text);
}

TEST_F(LockedLog, LongTextIsShownWithoutOverrun) {
    const std::string text(100'000, 't');
    LogText(text);
    LogHResult("f", text, E_FAIL);
    const std::vector<MessageBox> boxes = TakeBoxes();
    ASSERT_EQ(2U, boxes.size());
    EXPECT_EQ(Lost(text), boxes[0].text);
    EXPECT_EQ(Lost(std::string(1022, 't') + "\n"), boxes[1].text);
}

TEST_F(LockedLog, LaterEntriesAreWrittenOnceTheLogCanBeOpened) {
    LogText("lost");
    fs::remove(folder_.Path() / kLog);
    LogText("kept");
    EXPECT_EQ("kept  <%c>\r\n", Log());
    EXPECT_EQ(1U, TakeBoxes().size());
}

TEST_F(Logger, LogThatSomebodyHoldsOpenLosesTheEntry) {
    WriteBytes(folder_.Path() / kLog, "theirs");
    {
        const FileHandle held(::CreateFileW((folder_.Path() / kLog).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(held);
        LogText("lost");
    }
    EXPECT_EQ(1U, TakeBoxes().size());
    EXPECT_EQ("theirs", Log());
}

// Without a folder

struct MissingFolder {
    const char* name;
    void (*take_away)(FakeStorageHost& host);
};
void PrintTo(const MissingFolder& missing, std::ostream* stream) { *stream << missing.name; }

class LoggerWithoutFolder : public Logger, public testing::WithParamInterface<MissingFolder> {
  protected:
    LoggerWithoutFolder() {
        GetParam().take_away(*host_);
        fs::current_path(folder_.Path());
    }
};

TEST_P(LoggerWithoutFolder, LogStandsInTheCurrentFolder) {
    LogEntry();
    EXPECT_EQ(kEntry, Log());
}

TEST_P(LoggerWithoutFolder, HostIsNotAskedAgain) {
    LogEntry();
    host_->codes.clear();
    host_->null_results.clear();
    host_->folder = (folder_.Path() / "later").wstring();
    host_->calls.clear();
    LogEntry();
    EXPECT_EQ(Calls(), host_->calls);
    EXPECT_EQ(kEntry + kEntry, Log());
}

TEST_P(LoggerWithoutFolder, LogIsNeverRolledOver) {
    const std::string full(60'000, 'x');
    WriteBytes(folder_.Path() / kLog, full);
    LogEntry();
    LogText("text");
    EXPECT_EQ(full + kEntry + "text  <%c>\r\n", Log());
    EXPECT_EQ("(no file)", OldLog());
}

TEST_P(LoggerWithoutFolder, LostEntryNamesTheLogInTheCurrentFolder) {
    fs::create_directory(folder_.Path() / kLog);
    LogText("lost");
    const std::vector<MessageBox> boxes = TakeBoxes();
    ASSERT_EQ(1U, boxes.size());
    EXPECT_EQ("Could not open the log file \".\\NALog.log\"!\nIntended log entry: lost", boxes.front().text);
}

INSTANTIATE_TEST_SUITE_P(
    Host, LoggerWithoutFolder,
    testing::Values(
        MissingFolder{"LocatorCannotBeCreated", [](auto& host) { host.codes["CreateInstance"] = E_FAIL; }},
        MissingFolder{"LocatorIsOfAnotherKind", [](auto& host) { host.codes["CreateInstance"] = E_NOINTERFACE; }},
        MissingFolder{"LocatorFails", [](auto& host) { host.codes["GetRunningApplication"] = E_FAIL; }},
        MissingFolder{"NoApplicationRuns", [](auto& host) { host.null_results = {"GetRunningApplication"}; }},
        MissingFolder{"ApplicationHasNoFolders", [](auto& host) { host.codes["QueryInterface"] = E_NOINTERFACE; }},
        MissingFolder{"ApplicationFails", [](auto& host) { host.codes["QueryInterface"] = E_ACCESSDENIED; }},
        MissingFolder{"FolderFails", [](auto& host) { host.codes["GetFolder"] = E_FAIL; }},
        MissingFolder{"FolderIsNull", [](auto& host) { host.null_results = {"GetFolder"}; }},
        MissingFolder{"FolderIsEmpty", [](auto& host) { host.folder.clear(); }}),
    testing::PrintToStringParamName());

TEST_F(Logger, LogStandsInTheCurrentFolderWithoutAHost) {
    host_.reset();
    const NoApplication no_application;
    fs::current_path(folder_.Path());
    LogEntry();
    EXPECT_EQ(kEntry, Log());
}

// Rollover

TEST_F(Logger, LogOfExactly50000BytesIsKept) {
    const std::string full(50'000, 'x');
    WriteBytes(folder_.Path() / kLog, full);
    LogEntry();
    EXPECT_EQ(full + kEntry, Log());
    EXPECT_EQ("(no file)", OldLog());
}

TEST_F(Logger, LogOf50001BytesMakesWayForANewOne) {
    const std::string full(50'001, 'x');
    WriteBytes(folder_.Path() / kLog, full);
    LogEntry();
    EXPECT_EQ(kEntry, Log());
    EXPECT_EQ(full, OldLog());
}

TEST_F(Logger, FreeTextRollsTheLogOverAsWell) {
    const std::string full(50'001, 'x');
    WriteBytes(folder_.Path() / kLog, full);
    LogText("text");
    EXPECT_EQ("text  <%c>\r\n", Log());
    EXPECT_EQ(full, OldLog());
}

TEST_F(Logger, OneOlderLogIsKept) {
    for (const char letter : {'a', 'b', 'c'}) {
        WriteBytes(folder_.Path() / kLog, std::string(50'001, letter));
        LogEntry();
        EXPECT_EQ(std::string(50'001, letter), OldLog());
        EXPECT_EQ(kEntry, Log());
    }
    EXPECT_EQ(2, std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()));
}

TEST_F(Logger, LogThatCannotBeMovedGrowsUntilItCan) {
    const std::string full(50'001, 'x');
    WriteBytes(folder_.Path() / kLog, full);
    fs::create_directory(folder_.Path() / kOldLog);
    LogEntry();
    EXPECT_EQ(full + kEntry, Log());
    fs::remove(folder_.Path() / kOldLog);
    const std::string grown = ReadBytes(folder_.Path() / kLog);
    LogText("text");
    EXPECT_EQ(grown, OldLog());
    EXPECT_EQ("text  <%c>\r\n", Log());
}

TEST_F(Logger, EntriesByTheThousandFillAtMostTwoLogs) {
    constexpr size_t kEntryBytes = 24 + 2 + 3 + 1023 + 1;
    for (int entry = 0; entry < 200; ++entry) {
        LogHResult("f", std::string(2000, 'm'), E_FAIL);
    }
    EXPECT_LE(fs::file_size(folder_.Path() / kLog), 50'000 + kEntryBytes);
    EXPECT_LE(fs::file_size(folder_.Path() / kOldLog), 50'000 + kEntryBytes);
    EXPECT_GT(fs::file_size(folder_.Path() / kOldLog), 50'000U);
}

}  // namespace
}  // namespace paylodge::test
