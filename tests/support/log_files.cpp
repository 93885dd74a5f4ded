#include "tests/support/log_files.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "storage/logger.hpp"
#include "tests/support/fake_storage_host.hpp"

namespace paylodge::test {
namespace {

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

[[nodiscard]] std::string ShortTime(std::time_t time) {
    char text[80];
    return {text, std::strftime(text, sizeof text, "%c", std::localtime(&time))};
}

// The first entry decides where the log of the process stands, so one is written here before any other.
class LogOfProcess {
  public:
    LogOfProcess() {
        FakeStorageHost host;
        host.folder = folder_.Path().wstring();
        CNALogger::LogText("start");
        EXPECT_EQ("start  <%c>\r\n", Take());
    }

    [[nodiscard]] std::string Take() {
        const auto file = folder_.Path() / "NALog.log";
        const std::string text = std::filesystem::exists(file) ? ReadBytes(file) : "";
        std::filesystem::remove(file);
        return WithoutTimes(text, start_);
    }

  private:
    ScratchFolder folder_;
    std::time_t start_ = std::time(nullptr);
};

}  // namespace

ScratchFolder::ScratchFolder() {
    static int count = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("paylodge_storage." + std::to_string(::GetCurrentProcessId()) + "." + std::to_string(++count));
    // A process with the same number may have crashed and left its folder.
    std::filesystem::remove_all(path_);
    EXPECT_TRUE(std::filesystem::create_directories(path_));
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
    EXPECT_FALSE(error) << path_ << ": " << error.message();
}

std::string ReadBytes(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return stream ? std::string(std::istreambuf_iterator<char>(stream), {}) : "(no file)";
}

void WriteBytes(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream stream(file, std::ios::binary);
    stream << bytes;
    EXPECT_TRUE(stream.good()) << file;
}

std::string WithoutTimes(std::string text, std::time_t start) {
    const std::time_t end = std::time(nullptr);
    for (std::time_t time = start; time <= end; ++time) {
        ReplaceAll(text, std::string_view(std::ctime(&time)).substr(0, 24), "<ctime>");
        ReplaceAll(text, ShortTime(time), "<%c>");
    }
    return text;
}

std::string LoggedEntry(std::string_view text) { return "<ctime>\r\n   " + std::string(text) + "\r\n"; }

std::string FailureText(bool is_flag_on, std::string_view function, std::string_view message, HRESULT result) {
    char code[16];
    std::snprintf(code, sizeof code, "%#lx", static_cast<DWORD>(result));
    return (is_flag_on ? std::string(function) + ": " : "") + std::string(message) + "  HRESULT=" + code;
}

void SetLogContextFlag(bool is_on) {
    EXPECT_TRUE(
        ::SetEnvironmentVariableA("KESTO_FLAGS", is_on ? "SBSSettings/NetworkAdapter.EnableLogContext=true" : nullptr));
}

ProcessLog::ProcessLog() {
    SetLogContextFlag(false);
    static_cast<void>(Take());
}

ProcessLog::~ProcessLog() { EXPECT_EQ("", Take()); }

std::string ProcessLog::Take() {
    static LogOfProcess log;
    return log.Take();
}

}  // namespace paylodge::test
