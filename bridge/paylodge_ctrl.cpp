// The control itself: its channels, its notification data and its drawing.

#include "bridge/paylodge_ctrl.hpp"

#include "bridge/channel_registry.hpp"
#include "com/bstr.hpp"
#include "control/gdi.hpp"

namespace paylodge {
namespace {

constexpr std::wstring_view kDefaultChannel = L"Default";

// Null until something is stored.
OwnedBstr g_bstrTxnNotificationData;

void Unsubscribe(std::wstring_view channel_name) noexcept {
    if (const auto channel = g_mapChannelControls.find(channel_name); channel != g_mapChannelControls.end()) {
        g_mapChannelControls.erase(channel);
    }
}

void Subscribe(std::wstring_view channel_name, const ChannelControl& control) {
    g_mapChannelControls.insert_or_assign(std::wstring(channel_name), control);
}

}  // namespace

CPaylodgeCtrl::~CPaylodgeCtrl() { RemoveChannelControl(this); }

// The latest subscriber of a channel receives its pushes.
STDMETHODIMP CPaylodgeCtrl::SubscribeToNotifications() {
    Subscribe(kDefaultChannel, {this, &CProxy_IPaylodgeCtrlEvents<CPaylodgeCtrl>::Point()});
    return S_OK;
}

// Removes whichever control is subscribed.
STDMETHODIMP CPaylodgeCtrl::UnSubscribeFromNotifications() {
    Unsubscribe(kDefaultChannel);
    return S_OK;
}

STDMETHODIMP CPaylodgeCtrl::SubscribeToNotifications2(BSTR bstrFeature) {
    Subscribe(View(bstrFeature), {this, &CProxy_IPaylodgeCtrlEvents<CPaylodgeCtrl>::Point()});
    return S_OK;
}

STDMETHODIMP CPaylodgeCtrl::UnSubscribeFromNotifications2(BSTR bstrFeature) {
    Unsubscribe(View(bstrFeature));
    return S_OK;
}

// Chooses the channel for pushes, whether or not a control is subscribed to it.
STDMETHODIMP CPaylodgeCtrl::SetChannelName(BSTR bstrFeature) {
    if (bstrFeature == nullptr || bstrFeature != g_bstrChannelName.Get()) {
        g_bstrChannelName = CopyBstr(bstrFeature);
    }
    return S_OK;
}

// A copy byte for byte; null when nothing was stored.
STDMETHODIMP CPaylodgeCtrl::get_LHTransactionNotificationData(BSTR* pVal) {
    if (pVal == nullptr) {
        return E_POINTER;
    }
    *pVal = CopyBstr(g_bstrTxnNotificationData.Get()).Detach();
    return S_OK;
}

STDMETHODIMP CPaylodgeCtrl::put_LHTransactionNotificationData(BSTR newVal) {
    if (newVal == nullptr || newVal != g_bstrTxnNotificationData.Get()) {
        g_bstrTxnNotificationData = CopyBstr(newVal);
    }
    return S_OK;
}

HRESULT CPaylodgeCtrl::OnDraw(const DrawContext& context) {
    constexpr std::string_view kName = "PaylodgeCtrl";
    const RECTL& bounds = context.bounds;
    const ClipToRectangle clip(context.dc, bounds);
    ::Rectangle(context.dc, bounds.left, bounds.top, bounds.right, bounds.bottom);
    ::SetTextAlign(context.dc, TA_CENTER | TA_BASELINE);
    ::TextOutA(context.dc, (bounds.left + bounds.right) / 2, (bounds.top + bounds.bottom) / 2, kName.data(),
               static_cast<int>(kName.size()));
    return S_OK;
}

}  // namespace paylodge
