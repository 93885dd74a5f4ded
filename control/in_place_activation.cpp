#include "control/in_place_activation.hpp"

namespace paylodge {

HRESULT InPlaceActivation::Activate(IOleClientSite& client_site, const RECT* position) {
    const ComPtr<IUnknown> keep_alive = owner_.KeepAlive();
    if (!IsActive()) {
        if (const HRESULT result = EnterSite(client_site); FAILED(result)) {
            return result;
        }
    }
    if (Window() == nullptr) {
        if (const HRESULT result = CreateWindowInSite(position); FAILED(result)) {
            Deactivate();
            return result;
        }
    }
    window_.Show(true);
    client_site.ShowObject();
    return S_OK;
}

HRESULT InPlaceActivation::EnterSite(IOleClientSite& client_site) {
    ComPtr<IOleInPlaceSite> site;
    HRESULT result = client_site.QueryInterface(IID_IOleInPlaceSite, site.ReceiveVoid());
    if (FAILED(result)) {
        return result;
    }
    if (site->CanInPlaceActivate() != S_OK) {
        return E_FAIL;
    }
    site_ = site;
    result = site->OnInPlaceActivate();
    if (FAILED(result)) {
        site_.Reset();
    }
    return result;
}

HRESULT InPlaceActivation::CreateWindowInSite(const RECT* position) {
    // A container that deactivates the control from within these calls takes the site away.
    const ComPtr<IOleInPlaceSite> site = site_;
    HWND parent = nullptr;
    if (!site || FAILED(site->GetWindow(&parent))) {
        return E_FAIL;
    }
    ComPtr<IOleInPlaceFrame> frame;
    ComPtr<IOleInPlaceUIWindow> document;
    RECT place{};
    RECT clip{};
    OLEINPLACEFRAMEINFO frame_info{};
    frame_info.cb = sizeof frame_info;
    if (FAILED(site->GetWindowContext(frame.Receive(), document.Receive(), &place, &clip, &frame_info))) {
        if (position == nullptr) {
            return E_FAIL;
        }
        place = clip = *position;
    }
    if (!IsActive()) {
        return E_FAIL;
    }
    // Or shows the control from within them.
    if (Window() != nullptr) {
        return S_OK;
    }
    frame_ = std::move(frame);
    document_ = std::move(document);
    const HRESULT result = window_.Create(parent, place, owner_.Styles());
    window_.Place(place, clip);
    return result;
}

HRESULT InPlaceActivation::ActivateUi() {
    const ComPtr<IUnknown> keep_alive = owner_.KeepAlive();
    const ComPtr<IOleInPlaceSite> site = site_;
    if (!site) {
        return E_UNEXPECTED;
    }
    if (!is_ui_active_) {
        is_ui_active_ = true;
        if (const HRESULT result = site->OnUIActivate(); FAILED(result)) {
            is_ui_active_ = false;
            return result;
        }
        ComPtr<IOleInPlaceActiveObject> active_object;
        if (is_ui_active_ && SUCCEEDED(keep_alive.As(active_object))) {
            SetActiveObject(active_object.Get());
        }
    }
    // The container may have ended it from within these calls.
    if (is_ui_active_) {
        window_.TakeFocus();
    }
    return S_OK;
}

void InPlaceActivation::DeactivateUi() {
    if (!is_ui_active_) {
        return;
    }
    const ComPtr<IUnknown> keep_alive = owner_.KeepAlive();
    is_ui_active_ = false;
    const ComPtr<IOleInPlaceSite> site = site_;
    SetActiveObject(nullptr);
    site->OnUIDeactivate(FALSE);
}

void InPlaceActivation::Deactivate() {
    if (!IsActive()) {
        return;
    }
    const ComPtr<IUnknown> keep_alive = owner_.KeepAlive();
    DeactivateUi();
    const ComPtr<IOleInPlaceSite> site = std::move(site_);
    window_.Destroy();
    frame_.Reset();
    document_.Reset();
    if (site) {
        site->OnInPlaceDeactivate();
    }
}

void InPlaceActivation::Abandon() noexcept {
    is_ui_active_ = false;
    window_.DestroyUnnoticed();
    frame_.Reset();
    document_.Reset();
    site_.Reset();
}

void InPlaceActivation::Hide() {
    const ComPtr<IUnknown> keep_alive = owner_.KeepAlive();
    DeactivateUi();
    window_.Show(false);
}

// Sets the object that gets the user's keys (null for none) in frame and document; no border space is asked for.
void InPlaceActivation::SetActiveObject(IOleInPlaceActiveObject* object) {
    const ComPtr<IOleInPlaceFrame> frame = frame_;
    const ComPtr<IOleInPlaceUIWindow> document = document_;
    for (IOleInPlaceUIWindow* const window : {static_cast<IOleInPlaceUIWindow*>(frame.Get()), document.Get()}) {
        if (window == nullptr) {
            continue;
        }
        // The call for one of them may have ended what the other one would be notified of.
        if (object != nullptr && !is_ui_active_) {
            return;
        }
        window->SetActiveObject(object, nullptr);
        if (object != nullptr) {
            window->SetBorderSpace(nullptr);
        }
    }
}

}  // namespace paylodge
