// A company file on disk: read whole, written whole, and open in one process at a time.
#pragma once

#include <memory>
#include <string>

#include "refhost/company.hpp"
#include "refhost/file_handle.hpp"

namespace paylodge::refhost {

class CompanyFile {
  public:
    // Reads the file and locks it: the file PATH.lock exists while it is open, names the process and is held open by
    // it, so that a lock whose process is gone stops nobody. Raises HostError.
    [[nodiscard]] static std::unique_ptr<CompanyFile> Open(const std::wstring& path);

    // The full path.
    [[nodiscard]] const std::wstring& Path() const noexcept { return path_; }
    [[nodiscard]] Company& Books() noexcept { return company_; }

    // Writes the books to PATH.new, flushes it to disk and renames it over the file, so that a crash at any moment
    // leaves the old or the new file whole. Raises HostError; the file is as before then.
    void Save() const;

  private:
    CompanyFile(std::wstring path, FileHandle lock, Company company) noexcept;

    std::wstring path_;
    FileHandle lock_;
    Company company_;
};

// Whether both name the same file; neither has to exist.
[[nodiscard]] bool IsSamePath(const std::wstring& left, const std::wstring& right);

}  // namespace paylodge::refhost
