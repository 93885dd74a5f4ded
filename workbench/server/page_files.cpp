#include "workbench/server/page_files.hpp"

#include <windows.h>

#include "refhost/objects/utf8.hpp"
#include "workbench/server/limits.hpp"

namespace paylodge::workbench {
namespace {

[[nodiscard]] FileHandle Open(const std::filesystem::path& path) {
    return FileHandle(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// Where the file really is, every link followed.
[[nodiscard]] std::wstring ResolvedPath(const FileHandle& file) {
    std::wstring path(32768, L'\0');
    path.resize(
        ::GetFinalPathNameByHandleW(file.Get(), path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED));
    return path;
}

[[nodiscard]] std::optional<std::string> ReadAll(const FileHandle& file) {
    LARGE_INTEGER size = {};
    if (::GetFileSizeEx(file.Get(), &size) == FALSE || size.QuadPart > static_cast<LONGLONG>(kLargestFile)) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (::ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) == FALSE) {
        return std::nullopt;
    }
    bytes.resize(read);
    return bytes;
}

}  // namespace

PageFiles::PageFiles(const std::filesystem::path& folder)
    : folder_(std::filesystem::absolute(folder)), resolved_(ResolvedPath(Open(folder_))) {
    if (!resolved_.ends_with(L'\\')) {
        resolved_ += L'\\';
    }
}

PageFiles::Kind PageFiles::KindOf(const FileHandle& file) const {
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!file || ::GetFileType(file.Get()) != FILE_TYPE_DISK ||
        ::GetFileInformationByHandle(file.Get(), &information) == FALSE || !ResolvedPath(file).starts_with(resolved_)) {
        return Kind::kNone;
    }
    return (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Kind::kFolder : Kind::kFile;
}

std::optional<std::string> PageFiles::Read(const std::string& file) const {
    const FileHandle opened = Open(folder_ / refhost::WideFromUtf8(file));
    return KindOf(opened) == Kind::kFile ? ReadAll(opened) : std::nullopt;
}

bool PageFiles::IsFolder(const std::string& file) const {
    return KindOf(Open(folder_ / refhost::WideFromUtf8(file))) == Kind::kFolder;
}

}  // namespace paylodge::workbench
