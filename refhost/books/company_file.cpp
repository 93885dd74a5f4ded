#include "refhost/books/company_file.hpp"

#include <string_view>

#include "com/module.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/books/xml_writer.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

// Small enough that a process can die in the middle of a small company file, too.
constexpr size_t kPieceSize = 16384;

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

[[nodiscard]] std::string Shown(const std::wstring& path) { return Quoted(Utf8FromWide(path)); }

[[nodiscard]] std::string SystemErrorText(DWORD error) {
    wchar_t buffer[256] = {};
    const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                                          buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
    const std::string text = Utf8FromWide({buffer, length});
    return std::string(Trimmed(text)) + " (system error " + std::to_string(error) + ')';
}

[[noreturn]] void Fail(const std::string& what) {
    const DWORD error = ::GetLastError();
    throw HostError(what + ": " + SystemErrorText(error));
}

[[nodiscard]] std::wstring FullPath(const std::wstring& path) {
    const DWORD size = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full_path(size, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), size, full_path.data(), nullptr);
    if (length == 0 || length >= size) {
        Fail("The path " + Shown(path) + " of the company file cannot be used");
    }
    full_path.resize(length);
    return full_path;
}

[[nodiscard]] FileHandle OpenToRead(const std::wstring& path) {
    return FileHandle(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Nothing when a read fails.
[[nodiscard]] bool ReadAll(const FileHandle& file, std::string& bytes) {
    char buffer[64 * 1024];
    for (DWORD count = 0;;) {
        if (!::ReadFile(file.Get(), buffer, sizeof buffer, &count, nullptr)) {
            return false;
        }
        if (count == 0) {
            return true;
        }
        bytes.append(buffer, count);
    }
}

[[nodiscard]] bool WritePiece(const FileHandle& file, std::string_view bytes) {
    DWORD written = 0;
    return ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

[[nodiscard]] std::string ReadFileText(const std::wstring& path) {
    const FileHandle file = OpenToRead(path);
    std::string bytes;
    if (!file || !ReadAll(file, bytes)) {
        Fail("The company file " + Shown(path) + " cannot be read");
    }
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    return bytes.starts_with(kByteOrderMark) ? bytes.substr(kByteOrderMark.size()) : bytes;
}

[[nodiscard]] Company ReadCompany(const std::wstring& path) {
    const auto text = WideFromUntrustedUtf8(ReadFileText(path));
    try {
        if (!text) {
            throw HostError("it is not UTF-8 text");
        }
        return Company(ReadXml(*text).root);
    } catch (const std::exception& error) {
        throw HostError(Shown(path) + " is not a company file: " + error.what());
    }
}

[[nodiscard]] std::wstring ProgramPath() {
    wchar_t path[MAX_PATH] = {};
    return {path, ::GetModuleFileNameW(nullptr, path, MAX_PATH)};
}

[[nodiscard]] std::string OwnerName() {
    return "process " + std::to_string(::GetCurrentProcessId()) + ", " + Utf8FromWide(ProgramPath());
}

[[noreturn]] void FailLocked(const std::wstring& path, const std::wstring& lock_path) {
    const DWORD error = ::GetLastError();
    std::string owner;
    if (const FileHandle lock = OpenToRead(lock_path); error == ERROR_SHARING_VIOLATION && lock) {
        static_cast<void>(ReadAll(lock, owner));
        throw HostError("The company file " + Shown(path) + " is in use by " +
                        (owner.empty() ? "another process" : owner) + "; close it there first.");
    }
    ::SetLastError(error);
    Fail("The company file " + Shown(path) + " cannot be locked with " + Shown(lock_path));
}

// The handle itself is the lock: the system closes it with its process, however that ends, and removes the file. A file
// that is left behind all the same, as after a power cut, has nobody holding it and is simply taken over.
[[nodiscard]] FileHandle Lock(const std::wstring& path) {
    const std::wstring lock_path = path + L".lock";
    FileHandle lock(::CreateFileW(lock_path.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!lock) {
        FailLocked(path, lock_path);
    }
    if (!WritePiece(lock, OwnerName())) {
        Fail("The lock file " + Shown(lock_path) + " cannot be written");
    }
    return lock;
}

void WriteNewFile(const std::wstring& path, std::string_view text, const SaveWatch& watch) {
    const auto check = [&path](bool is_done) {
        if (!is_done) {
            Fail("The company file cannot be saved: " + Shown(path) + " cannot be written");
        }
    };
    watch(kCreateNewFileStep);
    const FileHandle file(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    check(static_cast<bool>(file));
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, kPieceSize);
        watch(kWriteFileStep);
        check(WritePiece(file, piece));
        text.remove_prefix(piece.size());
    }
    watch(kFlushFileStep);
    check(::FlushFileBuffers(file.Get()) != FALSE);
}

[[nodiscard]] std::wstring NewFilePath(const std::wstring& path) { return path + L".new"; }

}  // namespace

std::unique_ptr<CompanyFile> CompanyFile::Open(const std::wstring& path) {
    std::wstring full_path = FullPath(path);
    if (!OpenToRead(full_path)) {
        Fail("The company file " + Shown(full_path) + " cannot be opened");
    }
    FileHandle lock = Lock(full_path);
    ::DeleteFileW(NewFilePath(full_path).c_str());
    Company company = ReadCompany(full_path);
    return std::unique_ptr<CompanyFile>(new CompanyFile(std::move(full_path), std::move(lock), std::move(company)));
}

void CompanyFile::Save(const SaveWatch& watch) const {
    const std::wstring new_path = NewFilePath(path_);
    try {
        WriteNewFile(new_path, std::string(kDeclaration) + IndentedXml(company_.Root()), watch);
        watch(kReplaceFileStep);
        if (!::MoveFileExW(new_path.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            Fail("The company file " + Shown(path_) + " cannot be replaced");
        }
    } catch (const HostError&) {
        ::DeleteFileW(new_path.c_str());
        throw;
    }
    watch(kSavedFileStep);
}

CompanyFile::CompanyFile(std::wstring path, FileHandle lock, Company company) noexcept
    : path_(std::move(path)), lock_(std::move(lock)), company_(std::move(company)) {}

bool IsSamePath(const std::wstring& left, const std::wstring& right) {
    return ::CompareStringOrdinal(FullPath(left).c_str(), -1, FullPath(right).c_str(), -1, TRUE) == CSTR_EQUAL;
}

}  // namespace paylodge::refhost
