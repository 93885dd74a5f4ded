// Folders for logs, and what the logs in them say.
#pragma once

#include <windows.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge::test {

// An empty folder of its own, gone with everything in it when the test is over.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

// The bytes of a file; "(no file)" without one.
[[nodiscard]] std::string ReadBytes(const std::filesystem::path& file);
void WriteBytes(const std::filesystem::path& file, std::string_view bytes);

// The text with every time from `start` until now replaced: by "<ctime>" in the form of ctime without its newline, by
// "<%c>" in that of strftime.
[[nodiscard]] std::string WithoutTimes(std::string text, std::time_t start);

// The bytes of one entry in a log, its time replaced.
[[nodiscard]] std::string LoggedEntry(std::string_view text);

// What the log entry for a failure says, without its newline: the function only when the host's flag is on.
[[nodiscard]] std::string FailureText(bool is_flag_on, std::string_view function, std::string_view message,
                                      HRESULT result);

// Sets the flag of the host's library (the reference host's) that decides whether entries name the function.
void SetLogContextFlag(bool is_on);

// The log of this process for the length of a test: empty at first, with the host's flag off, and an entry that is left
// over at the end is a failure that nobody expected. The first one puts the log into a scratch folder, so it has to
// stand before any host.
class ProcessLog {
  public:
    ProcessLog();
    ~ProcessLog();
    ProcessLog(const ProcessLog&) = delete;
    ProcessLog& operator=(const ProcessLog&) = delete;

    // Everything that was logged since the last time, the times replaced.
    [[nodiscard]] static std::string Take();
};

}  // namespace paylodge::test
