// Files of the sources that tests read.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace paylodge::test {

// The file with this path from the top of the sources, such as docs/requests.md. A test runs somewhere below that top,
// in a checkout as well as in the test kit. Throws std::runtime_error when there is no such file.
[[nodiscard]] inline std::filesystem::path SourceFile(const std::string& name) {
    for (auto folder = std::filesystem::current_path();; folder = folder.parent_path()) {
        if (std::filesystem::exists(folder / name)) {
            return folder / name;
        }
        if (folder == folder.root_path()) {
            throw std::runtime_error("no " + name + " in or above " + std::filesystem::current_path().string());
        }
    }
}

}  // namespace paylodge::test
