// The part of a control's life that it spends as a window in its container.
#pragma once

#include <windows.h>

#include <oleidl.h>

#include "com/com_ptr.hpp"
#include "control/control_window.hpp"

namespace paylodge {

// What an activation asks of its control.
class InPlaceOwner : public ControlWindowEvents {
  public:
    [[nodiscard]] virtual WindowStyles Styles() const noexcept = 0;

  protected:
    ~InPlaceOwner() = default;
};

// Speaks with the container's in-place site, frame and document windows. The container may do anything in the calls
// that it gets, deactivating the control included.
class InPlaceActivation {
  public:
    explicit InPlaceActivation(InPlaceOwner& owner) noexcept : owner_(owner), window_(owner) {}

    // Shows the control's window in the site. `position` (may be null) serves where the site does not say one itself.
    // E_FAIL when the site refuses, or what failed; the control is inactive then.
    [[nodiscard]] HRESULT Activate(IOleClientSite& client_site, const RECT* position);
    // Makes the active control the one that the user works with. E_UNEXPECTED while inactive, or the site's failure.
    [[nodiscard]] HRESULT ActivateUi();
    void Deactivate();
    void DeactivateUi();
    void Hide();
    // Ends the activation of a control that is going away: the window goes with it, and the site is not called any
    // more.
    void Abandon() noexcept;

    [[nodiscard]] bool IsActive() const noexcept { return static_cast<bool>(site_); }
    [[nodiscard]] HWND Window() const noexcept { return window_.Handle(); }
    void Place(const RECT& position, const RECT& clip) noexcept { window_.Place(position, clip); }
    void Redraw() noexcept { window_.Redraw(); }

  private:
    [[nodiscard]] HRESULT EnterSite(IOleClientSite& client_site);
    [[nodiscard]] HRESULT CreateWindowInSite(const RECT* position);
    void SetActiveObject(IOleInPlaceActiveObject* object);

    InPlaceOwner& owner_;
    ControlWindow window_;
    // Set exactly while the control is active.
    ComPtr<IOleInPlaceSite> site_;
    ComPtr<IOleInPlaceFrame> frame_;
    ComPtr<IOleInPlaceUIWindow> document_;
    bool is_ui_active_ = false;
};

}  // namespace paylodge
