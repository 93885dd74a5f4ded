#include "control/control_window.hpp"

#include <utility>

#include "com/module.hpp"
#include "control/gdi.hpp"

namespace paylodge {
namespace {

constexpr wchar_t kWindowClass[] = L"PaylodgeControl";

[[nodiscard]] HRESULT LastError() noexcept { return HRESULT_FROM_WIN32(::GetLastError()); }

[[nodiscard]] HRESULT RegisterWindowClass(WNDPROC procedure) noexcept {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.style = CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS;
    description.lpfnWndProc = procedure;
    description.hInstance = Module::Instance();
    description.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
    description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    description.lpszClassName = kWindowClass;
    const bool registered = ::RegisterClassExW(&description) != 0 || ::GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
    return registered ? S_OK : LastError();
}

[[nodiscard]] SIZE SizeOf(const RECT& rectangle) noexcept {
    return {rectangle.right - rectangle.left, rectangle.bottom - rectangle.top};
}

}  // namespace

ControlWindow::~ControlWindow() {
    DestroyUnnoticed();
    // Fails while other controls have windows, which is as it should be.
    ::UnregisterClassW(kWindowClass, Module::Instance());
}

HRESULT ControlWindow::Create(HWND parent, const RECT& position, const WindowStyles& styles) {
    if (const HRESULT result = RegisterWindowClass(&Procedure); FAILED(result)) {
        return result;
    }
    const SIZE size = SizeOf(position);
    // The procedure notes the handle when the window's first message comes, and its loss with the last one.
    const HWND created = ::CreateWindowExW(styles.extended_style, kWindowClass, L"", styles.style, position.left,
                                           position.top, size.cx, size.cy, parent, nullptr, Module::Instance(), this);
    return created == nullptr ? LastError() : S_OK;
}

void ControlWindow::Destroy() noexcept {
    if (handle_ != nullptr) {
        ::DestroyWindow(handle_);
    }
}

void ControlWindow::DestroyUnnoticed() noexcept {
    if (const HWND window = std::exchange(handle_, nullptr)) {
        ::SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        ::DestroyWindow(window);
    }
}

void ControlWindow::Place(const RECT& position, const RECT& clip) noexcept {
    if (handle_ == nullptr) {
        return;
    }
    RECT visible;
    ::IntersectRect(&visible, &position, &clip);
    if (::EqualRect(&visible, &position)) {
        ::SetWindowRgn(handle_, nullptr, TRUE);
    } else {
        ::OffsetRect(&visible, -position.left, -position.top);
        Region region(::CreateRectRgnIndirect(&visible));
        // The system owns the region once it has taken it.
        if (::SetWindowRgn(handle_, region.Get(), TRUE) != 0) {
            static_cast<void>(region.Detach());
        }
    }
    const SIZE size = SizeOf(position);
    ::SetWindowPos(handle_, nullptr, position.left, position.top, size.cx, size.cy, SWP_NOZORDER | SWP_NOACTIVATE);
}

void ControlWindow::Show(bool visible) noexcept {
    if (handle_ != nullptr) {
        ::ShowWindow(handle_, visible ? SW_SHOWNA : SW_HIDE);
    }
}

void ControlWindow::TakeFocus() noexcept {
    const HWND focus = ::GetFocus();
    if (handle_ != nullptr && focus != handle_ && !::IsChild(handle_, focus)) {
        ::SetFocus(handle_);
    }
}

void ControlWindow::Redraw() noexcept {
    if (handle_ != nullptr) {
        ::InvalidateRect(handle_, nullptr, TRUE);
    }
}

LRESULT CALLBACK ControlWindow::Procedure(HWND window, UINT message, WPARAM wide, LPARAM large) {
    if (message == WM_NCCREATE) {
        auto* const self = static_cast<ControlWindow*>(reinterpret_cast<CREATESTRUCTW*>(large)->lpCreateParams);
        self->handle_ = window;
        ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* const self = reinterpret_cast<ControlWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr) {
        return ::DefWindowProcW(window, message, wide, large);
    }
    const ComPtr<IUnknown> keep_alive = self->events_.KeepAlive();
    if (message == WM_NCDESTROY) {
        ::SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->handle_ = nullptr;
        return ::DefWindowProcW(window, message, wide, large);
    }
    return self->Handle(message, wide, large);
}

LRESULT ControlWindow::Handle(UINT message, WPARAM wide, LPARAM large) {
    switch (message) {
        case WM_PAINT:
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wide));
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            events_.OnWindowFocus(message == WM_SETFOCUS);
            return 0;
        case WM_MOUSEACTIVATE:
            events_.OnWindowMouseActivate();
            return MA_ACTIVATE;
        default:
            return ::DefWindowProcW(handle_, message, wide, large);
    }
}

// Paints on the given context, or on the window's own when none is given.
void ControlWindow::Paint(HDC given) {
    RECT client;
    ::GetClientRect(handle_, &client);
    if (given != nullptr) {
        const SavedDc saved(given);
        events_.OnWindowPaint(given, client);
        return;
    }
    PAINTSTRUCT paint;
    if (const HDC dc = ::BeginPaint(handle_, &paint)) {
        events_.OnWindowPaint(dc, client);
        ::EndPaint(handle_, &paint);
    }
}

}  // namespace paylodge
