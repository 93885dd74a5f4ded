// The files of the page folder, and nothing outside it.
#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>

#include "com/owner.hpp"

namespace paylodge::workbench {

class PageFiles {
  public:
    // A folder that exists.
    explicit PageFiles(const std::filesystem::path& folder);

    // The bytes of a file, by a path of RelativeFile. Nothing when there is no such file, when it is too large, or when
    // it is outside the folder, as a link may lead there.
    [[nodiscard]] std::optional<std::string> Read(const std::string& file) const;
    [[nodiscard]] bool IsFolder(const std::string& file) const;

  private:
    enum class Kind { kNone, kFile, kFolder };
    [[nodiscard]] Kind KindOf(const FileHandle& file) const;

    std::filesystem::path folder_;
    std::wstring resolved_;
};

}  // namespace paylodge::workbench
