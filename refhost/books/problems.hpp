// What keeps the host from doing its work.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace paylodge::refhost {

// Callers get a different HRESULT for each.
enum class Problem {
    kNoFileOpen,
    kOtherFileOpen,
    kMissing,
    kUnreadable,
    kLocked,
    kDamaged,
    kForeign,
    kNewer,
    kReadOnly,
    kDiskFull,
    kCannotWrite,
    // A text that is no company, or contradicts itself.
    kBadText,
};

// In words for the person in front of it.
class HostError : public std::runtime_error {
  public:
    HostError(Problem problem, const std::string& message, std::optional<std::int32_t> planned = std::nullopt)
        : std::runtime_error(message), problem_(problem), planned_(planned) {}

    [[nodiscard]] Problem GetProblem() const noexcept { return problem_; }
    // The HRESULT that a test planned for the step that failed; nothing for a failure of the machine's own.
    [[nodiscard]] std::optional<std::int32_t> PlannedResult() const noexcept { return planned_; }

  private:
    Problem problem_;
    std::optional<std::int32_t> planned_;
};

// A change that a constraint of the schema forbids.
class BrokenRule : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace paylodge::refhost
