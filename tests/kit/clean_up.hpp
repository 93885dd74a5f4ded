// Takes back what a test program left behind that was ended before its own end.
#pragma once

#include <filesystem>

namespace paylodge::kit {

// Removes the tests' keys from the user's part of the registry.
void RemoveScratchKeys();

// Removes the folder; a file that another program still reads is given a moment.
void RemoveFolder(const std::filesystem::path& folder);

}  // namespace paylodge::kit
