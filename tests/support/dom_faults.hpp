// Makes calls of the platform's XML document object fail.
#pragma once

#include <windows.h>

namespace paylodge::test {

// While it lives, the steps of walking through documents (first child, next sibling, parent, name, type, text) are
// counted, and the one with the given number, from 1, fails with E_ABORT; 0 for none. One at a time. It stands in the
// tables of functions of the document's own nodes.
class DomFaults {
  public:
    explicit DomFaults(int number_to_fail = 0);
    ~DomFaults();
    DomFaults(const DomFaults&) = delete;
    DomFaults& operator=(const DomFaults&) = delete;

    [[nodiscard]] int Count() const noexcept;
    // Whether it came to the step that was to fail.
    [[nodiscard]] bool HasFailed() const noexcept;

    static constexpr HRESULT kFailure = E_ABORT;
};

}  // namespace paylodge::test
