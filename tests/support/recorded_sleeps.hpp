// Waiting that is noted instead of done.
#pragma once

#include <windows.h>

#include <vector>

namespace paylodge::test {

// While one lives, calls of Sleep by this program's own code return at once and are recorded here. One at a time.
class RecordedSleeps {
  public:
    RecordedSleeps() noexcept;
    ~RecordedSleeps();
    RecordedSleeps(const RecordedSleeps&) = delete;
    RecordedSleeps& operator=(const RecordedSleeps&) = delete;

    std::vector<DWORD> milliseconds;
};

}  // namespace paylodge::test
