// What the fake of the host's bridge library notifies the test program of, and asks it for.
#pragma once

#include <windows.h>

namespace paylodge::test {

// Implemented by the test program, which exports `TheBridgeObserver`.
class BridgeObserver {
  public:
    // A function of this variant of the library has been called. Its arguments follow, in their order.
    virtual void Called(const char* variant, const char* function) = 0;
    virtual void GotText(const wchar_t* text) = 0;
    virtual void GotNarrowText(const char* text) = 0;
    virtual void GotNumber(int number) = 0;
    // The end of ExecuteJavaScript; may throw.
    virtual void Ran() = 0;
    // Whether ExecuteJavaScript then throws an exception, which is the library's own.
    [[nodiscard]] virtual bool ThrowsAtEnd() = 0;

    // What functions return. Texts stay the library's, strings become the caller's.
    [[nodiscard]] virtual const wchar_t* Text() = 0;
    [[nodiscard]] virtual BSTR String() = 0;
    [[nodiscard]] virtual unsigned char Byte() = 0;

  protected:
    ~BridgeObserver() = default;
};

using FindBridgeObserver = BridgeObserver* __cdecl();

}  // namespace paylodge::test
