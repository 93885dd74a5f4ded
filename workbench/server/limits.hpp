// How much the workbench takes from anybody: a page that goes wrong, or somebody else's, cannot fill the machine.
#pragma once

#include <chrono>
#include <cstddef>

namespace paylodge::workbench {

inline constexpr std::size_t kLargestHeader = std::size_t{16} * 1024;
inline constexpr std::size_t kLargestBody = std::size_t{4} * 1024 * 1024;
inline constexpr std::size_t kLargestPageMessage = std::size_t{64} * 1024;
inline constexpr std::size_t kMostConnections = 64;
inline constexpr std::size_t kMostPages = 32;
inline constexpr std::size_t kMostObjectsOfPage = 64;
// What may wait for a page that does not read.
inline constexpr std::size_t kMostWaitingBytes = std::size_t{16} * 1024 * 1024;
inline constexpr std::size_t kLargestFile = std::size_t{64} * 1024 * 1024;

inline constexpr std::size_t kMostLogEntries = 2000;
inline constexpr std::size_t kMostLogBytes = std::size_t{8} * 1024 * 1024;
// A longer text is cut in the log.
inline constexpr std::size_t kLongestLogText = std::size_t{64} * 1024;

inline constexpr std::chrono::seconds kRequestTime{10};
inline constexpr std::chrono::seconds kIdleTime{60};
inline constexpr std::chrono::seconds kReplyTime{60};
// How long a document that was served may take to open its socket.
inline constexpr std::chrono::seconds kFirstConnectionTime{30};

}  // namespace paylodge::workbench
