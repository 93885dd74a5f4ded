#include "storage/logger.hpp"

#include <direct.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <initializer_list>
#include <memory>

#include "com/ansi_text.hpp"
#include "com/guarded_call.hpp"
#include "com/host_library.hpp"
#include "hostapi/libraries.hpp"
#include "storage/log_text.hpp"
#include "storage/running_application.hpp"

namespace paylodge {
namespace {

constexpr std::wstring_view kLogName = L"NALog.log";
constexpr std::wstring_view kOldLogName = L"NAOldLog.log";

// Empty until the first call. In the current-directory fallback there is no older generation.
std::wstring g_log_path;
std::wstring g_old_log_path;

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[nodiscard]] std::wstring AskHostForFolder() {
    try {
        OwnedBstr folder;
        if (const auto folders = FindApplication<IHostFolders>();
            folders && SUCCEEDED(CallHost([&] { return folders->GetFolder(kLogFolderKind, folder.Receive()); }))) {
            return folder ? std::wstring(folder.Get()) : std::wstring();
        }
    } catch (const _com_error&) {
        // A host that cannot be asked names no folder.
    }
    return {};
}

// Creates the folder, which ends in a slash, and every missing folder above it.
void CreateFolders(std::wstring_view folder) {
    for (const std::wstring_view part : FoldersOf(folder)) {
        const std::string path = AnsiFromWide(part);
        if (::GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
            ::_mkdir(path.c_str());
        }
    }
}

void SetUpPaths() {
    if (!g_log_path.empty()) {
        return;
    }
    const std::wstring host_folder = AskHostForFolder();
    if (host_folder.empty()) {
        g_log_path = std::wstring(L".\\").append(kLogName);
        return;
    }
    const std::wstring folder = WithTrailingSlash(host_folder);
    CreateFolders(folder);
    g_log_path = folder + std::wstring(kLogName);
    g_old_log_path = folder + std::wstring(kOldLogName);
}

// Failures are ignored: the next call tries again while the file is too large.
void RollOver() {
    const std::string path = AnsiFromWide(g_log_path);
    struct _stat64i32 status{};
    if (g_old_log_path.empty() || ::_stat64i32(path.c_str(), &status) != 0 || !IsLogFull(status.st_size)) {
        return;
    }
    const std::string old_path = AnsiFromWide(g_old_log_path);
    static_cast<void>(std::remove(old_path.c_str()));
    static_cast<void>(std::rename(path.c_str(), old_path.c_str()));
}

void ShowLostEntry(const std::string& entry) {
    ::MessageBoxA(::FindWindowA("OrkaFrame", nullptr), FormatLostEntry(AnsiFromWide(g_log_path), entry).c_str(),
                  "Network Adapter", MB_OK);
}

// The log opened for appending, or null.
[[nodiscard]] File OpenLog() { return File(std::fopen(AnsiFromWide(g_log_path).c_str(), "a")); }

HostLibrary g_feature_flags(kFeatureFlagLibrary);

// A missing library counts as a flag that is off.
[[nodiscard]] bool IsContextLogged() {
    auto* const get_flag = g_feature_flags.Find<GetFeatureParamAsBoolFunction>(kGetFeatureParamAsBool);
    return get_flag != nullptr && get_flag("SBSSettings", "NetworkAdapter.EnableLogContext", nullptr);
}

// Formatted output would bring the compiler's library for numbers along.
void Write(const File& log, std::initializer_list<const char*> texts) {
    for (const char* const text : texts) {
        std::fputs(text, log.get());
    }
}

}  // namespace

void CNALogger::LogHResult(const std::string& function, const std::string& message, HRESULT result) {
    SetUpPaths();
    RollOver();
    const auto context = IsContextLogged() ? std::optional<std::string_view>(function) : std::nullopt;
    const std::string entry = FormatLogEntry(context, message, static_cast<std::uint32_t>(result));
    if (const File log = OpenLog()) {
        const __time64_t now = ::_time64(nullptr);
        // The time stamp ends in a newline: an entry takes two lines.
        Write(log, {::_ctime64(&now), "   ", entry.c_str()});
    } else {
        ShowLostEntry(entry);
    }
}

void CNALogger::LogText(const std::string& text) {
    SetUpPaths();
    RollOver();
    if (const File log = OpenLog()) {
        const __time64_t now = ::_time64(nullptr);
        std::array<char, 80> stamp{};
        std::strftime(stamp.data(), stamp.size(), "%c", ::_localtime64(&now));
        Write(log, {text.c_str(), "  ", stamp.data(), "\n"});
    } else {
        ShowLostEntry(text);
    }
}

}  // namespace paylodge
