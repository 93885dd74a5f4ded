// How much memory this program's own code holds at a time: what it takes from the heap, and the COM strings that it
// allocates. What the DLLs that it calls hold is not counted.
#pragma once

#include <cstddef>

namespace paylodge::test {

// Counts while it lives, one at a time; blocks that are older do not count.
class PeakMemory {
  public:
    PeakMemory() noexcept;
    ~PeakMemory();
    PeakMemory(const PeakMemory&) = delete;
    PeakMemory& operator=(const PeakMemory&) = delete;

    // The most bytes that were held at a time so far.
    [[nodiscard]] size_t Bytes() const noexcept;
};

// While it lives, the heap allocation with this number, from 1, fails. One at a time.
class FailingAllocation {
  public:
    explicit FailingAllocation(int number) noexcept;
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    // Whether it came to that allocation.
    [[nodiscard]] bool HasFailed() const noexcept;
};

}  // namespace paylodge::test
