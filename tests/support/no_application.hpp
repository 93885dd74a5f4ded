// A machine without the host's application.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include "com/com_ptr.hpp"

namespace paylodge::test {

// While it lives, the class of the host's application locator behaves as where it is not registered.
class NoApplication {
  public:
    NoApplication();
    ~NoApplication();
    NoApplication(const NoApplication&) = delete;
    NoApplication& operator=(const NoApplication&) = delete;

  private:
    ComPtr<IClassFactory> class_object_;
    DWORD registration_ = 0;
};

}  // namespace paylodge::test
