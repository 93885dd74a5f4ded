#include "storage/log_text.hpp"

#include <algorithm>
#include <array>
#include <charconv>

namespace paylodge {
namespace {

constexpr size_t kEntryCapacity = 1023;

constexpr std::uint32_t kFirstNetworkStatus = 0x80049000;
constexpr std::array<std::string_view, 30> kNetworkStatusNames = {
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

// What a C string of this text holds.
[[nodiscard]] std::string_view UpToNull(std::string_view text) noexcept { return text.substr(0, text.find('\0')); }

// "0" for success, else lower-case hexadecimal.
[[nodiscard]] std::string FormatHResult(std::uint32_t hresult) {
    std::array<char, 2 * sizeof(hresult)> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), hresult, 16);
    return std::string(hresult == 0 ? "" : "0x").append(digits.data(), end);
}

}  // namespace

std::string FormatLogEntry(std::optional<std::string_view> function, std::string_view message, std::uint32_t hresult) {
    std::string entry;
    if (function) {
        entry.append(UpToNull(*function)).append(": ");
    }
    entry.append(UpToNull(message)).append("  HRESULT=").append(FormatHResult(hresult));
    entry.resize(std::min(entry.size(), kEntryCapacity - 1));
    return entry.append("\n");
}

std::string FormatLostEntry(std::string_view log_path, std::string_view entry) {
    return std::string("Could not open the log file \"")
        .append(log_path)
        .append("\"!\nIntended log entry: ")
        .append(entry);
}

std::wstring WithTrailingSlash(std::wstring_view folder) {
    std::wstring result(folder);
    if (!folder.ends_with(L'\\') && !folder.ends_with(L'/')) {
        result.push_back(L'\\');
    }
    return result;
}

std::vector<std::wstring_view> FoldersOf(std::wstring_view folder) {
    constexpr std::wstring_view kSlashes = L"\\/";
    std::vector<std::wstring_view> folders;
    for (size_t end = folder.find_first_of(kSlashes); end != std::wstring_view::npos;
         end = folder.find_first_of(kSlashes, end + 1)) {
        if (end > 0) {
            folders.push_back(folder.substr(0, end));
        }
    }
    return folders;
}

std::string_view NetworkStatusName(std::uint32_t code) noexcept {
    const std::uint32_t index = code ^ kFirstNetworkStatus;
    return index < kNetworkStatusNames.size() ? kNetworkStatusNames[index] : std::string_view();
}

}  // namespace paylodge
