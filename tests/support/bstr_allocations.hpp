// The COM strings that the code in this program allocates: counted, and made to fail.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace paylodge::test {

// Counts allocations while it lives; the one with the given number (from 1; 0 for none) fails, the others go on as
// usual. One at a time. Only this program's own code is concerned, no DLL.
class BstrAllocations {
  public:
    explicit BstrAllocations(int number_to_fail = 0) noexcept;
    ~BstrAllocations();
    BstrAllocations(const BstrAllocations&) = delete;
    BstrAllocations& operator=(const BstrAllocations&) = delete;

    // What is allocated between the two is neither counted nor fails.
    void Pause() noexcept { is_paused_ = true; }
    void Resume() noexcept { is_paused_ = false; }

    [[nodiscard]] int Count() const noexcept { return count_; }
    [[nodiscard]] bool HasFailed() const noexcept { return number_to_fail_ != 0 && count_ >= number_to_fail_; }
    // The string that was allocated last; it may have been freed since.
    [[nodiscard]] BSTR Last() const noexcept { return last_; }

    // Called at each allocation of the program.
    template <class Allocate>
    [[nodiscard]] static BSTR Run(const Allocate& allocate);

  private:
    int number_to_fail_;
    int count_ = 0;
    bool is_paused_ = false;
    BSTR last_ = nullptr;
};

}  // namespace paylodge::test
