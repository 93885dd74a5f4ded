// A company file on disk: read whole, written whole, and open in one process at a time.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "refhost/books/company.hpp"
#include "refhost/books/file_handle.hpp"

namespace paylodge::refhost {

// The steps of saving, in their order. A file is written in several pieces.
inline constexpr std::wstring_view kCreateNewFileStep = L"CompanyFile.CreateNew";
inline constexpr std::wstring_view kWriteFileStep = L"CompanyFile.Write";
inline constexpr std::wstring_view kFlushFileStep = L"CompanyFile.Flush";
inline constexpr std::wstring_view kReplaceFileStep = L"CompanyFile.Replace";
// Too late to fail.
inline constexpr std::wstring_view kSavedFileStep = L"CompanyFile.Saved";

// Is told each step before it is taken; a HostError that it raises is the failure of that step.
using SaveWatch = std::function<void(std::wstring_view step)>;

class CompanyFile {
  public:
    // Reads the file and locks it: the file PATH.lock exists while it is open, names the process and is held open by
    // it, so that a lock whose process is gone stops nobody. What a process left behind that died while it saved is
    // removed. Raises HostError.
    [[nodiscard]] static std::unique_ptr<CompanyFile> Open(const std::wstring& path);

    // The full path.
    [[nodiscard]] const std::wstring& Path() const noexcept { return path_; }
    [[nodiscard]] Company& Books() noexcept { return company_; }

    // Writes the books to PATH.new, flushes it to disk and renames it over the file, so that a crash at any moment
    // leaves the old or the new file whole. Raises HostError; the file is as before then.
    void Save(const SaveWatch& watch = [](std::wstring_view) {}) const;

  private:
    CompanyFile(std::wstring path, FileHandle lock, Company company) noexcept;

    std::wstring path_;
    FileHandle lock_;
    Company company_;
};

// Whether both name the same file; neither has to exist.
[[nodiscard]] bool IsSamePath(const std::wstring& left, const std::wstring& right);

}  // namespace paylodge::refhost
