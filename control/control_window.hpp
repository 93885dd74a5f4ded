// The child window of a control that is active in place.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include "com/com_ptr.hpp"

namespace paylodge {

struct WindowStyles {
    DWORD style;
    DWORD extended_style;
};

// What the window notifies its control of.
class ControlWindowEvents {
  public:
    virtual void OnWindowPaint(HDC dc, const RECT& client) = 0;
    virtual void OnWindowFocus(bool has_focus) = 0;
    // A mouse button went down in a window that is not active.
    virtual void OnWindowMouseActivate() = 0;
    // A reference that keeps the control alive while a message is handled.
    [[nodiscard]] virtual ComPtr<IUnknown> KeepAlive() = 0;

  protected:
    ~ControlWindowEvents() = default;
};

// Used on the thread that created the window. The window class is the module's own and is unregistered with the last
// window, so that none outlives the module.
class ControlWindow {
  public:
    explicit ControlWindow(ControlWindowEvents& events) noexcept : events_(events) {}
    // Destroys the window unnoticed.
    ~ControlWindow();
    ControlWindow(const ControlWindow&) = delete;
    ControlWindow& operator=(const ControlWindow&) = delete;

    // The system's error as an HRESULT. There must be no window yet.
    [[nodiscard]] HRESULT Create(HWND parent, const RECT& position, const WindowStyles& styles);
    void Destroy() noexcept;
    // The same without notifying the control of anything, such as the focus that the window loses.
    void DestroyUnnoticed() noexcept;
    // Null before Create, and again once the window is gone, whoever destroyed it.
    [[nodiscard]] HWND Handle() const noexcept { return handle_; }

    // Moves the window and lets only the part inside `clip` be seen; both in the parent's client coordinates.
    void Place(const RECT& position, const RECT& clip) noexcept;
    void Show(bool visible) noexcept;
    // Moves the focus into the window unless it is there already.
    void TakeFocus() noexcept;
    void Redraw() noexcept;

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wide, LPARAM large);
    [[nodiscard]] LRESULT Handle(UINT message, WPARAM wide, LPARAM large);
    void Paint(HDC given);

    ControlWindowEvents& events_;
    HWND handle_ = nullptr;
};

}  // namespace paylodge
