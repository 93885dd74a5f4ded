// Whether what was allocated is freed again: COM strings and everything else of the task allocator.
#pragma once

#include <windows.h>

#include <objidl.h>

#include "com/com_ptr.hpp"

namespace paylodge::test {

// Counts while it lives, for all DLLs of the process. Strings are counted only where automation does not keep freed
// ones: the environment variable OANOCACHE has to be set before the program starts.
class LiveAllocations {
  public:
    LiveAllocations();
    ~LiveAllocations();
    LiveAllocations(const LiveAllocations&) = delete;
    LiveAllocations& operator=(const LiveAllocations&) = delete;

    [[nodiscard]] static bool CanCountStrings() noexcept;

    // What was allocated since the start and has not been freed.
    [[nodiscard]] int Count() const noexcept { return count_; }

  private:
    class Spy;

    int count_ = 0;
    ComPtr<IMallocSpy> spy_;
};

}  // namespace paylodge::test
