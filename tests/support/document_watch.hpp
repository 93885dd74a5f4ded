// Keeps the DOM documents that the host's library makes in sight.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <vector>

#include "com/com_ptr.hpp"

namespace paylodge::test {

// Hands out what the platform's own class object makes, while it lives.
class DocumentWatch {
  public:
    DocumentWatch();
    ~DocumentWatch();
    DocumentWatch(const DocumentWatch&) = delete;
    DocumentWatch& operator=(const DocumentWatch&) = delete;

    // References on each document made so far, apart from the one that keeps it in sight.
    [[nodiscard]] std::vector<ULONG> References() const;

  private:
    class ClassObject;

    std::vector<ComPtr<IUnknown>> documents_;
    ComPtr<IClassFactory> class_object_;
    DWORD registration_ = 0;
};

}  // namespace paylodge::test
