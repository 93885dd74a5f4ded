// What all controls share, whatever their class: the state behind the stock interfaces, and what these do with it.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include "com/object_root.hpp"
#include "control/draw_context.hpp"
#include "control/in_place_activation.hpp"

namespace paylodge {

// The stock interface templates (IOleObjectImpl and its neighbours) forward to the members here, whose results are
// those of the interface methods that they serve. Pointers may be null where that is said; all others are checked by
// the templates. Used on the apartment's thread.
class ControlBase : private InPlaceOwner {
  public:
    ControlBase(const ControlBase&) = delete;
    ControlBase& operator=(const ControlBase&) = delete;

    // Draws the control: in its window, on a container's device context or into a metafile.
    virtual HRESULT OnDraw(const DrawContext& context) = 0;

    // IUnknown of the whole object, without a reference of its own.
    [[nodiscard]] virtual IUnknown* ControlUnknown() noexcept = 0;
    // The VIEWSTATUS_ bits of what OnDraw draws.
    [[nodiscard]] virtual DWORD ViewStatus() const noexcept { return VIEWSTATUS_OPAQUE; }

    // Whether there is something that a save would keep.
    [[nodiscard]] bool IsControlDirty() const noexcept { return is_dirty_; }
    void SetControlDirty(bool dirty) noexcept { is_dirty_ = dirty; }

    // The client site, held with a reference; null takes it away.
    void SetSiteOfControl(IOleClientSite* site) { client_site_ = ComPtr<IOleClientSite>(site); }
    [[nodiscard]] const ComPtr<IOleClientSite>& SiteOfControl() const noexcept { return client_site_; }
    // A yes-or-no ambient property of the container, or `otherwise` where the container does not have it.
    [[nodiscard]] bool AmbientFlag(DISPID property, bool otherwise) const;

    // Both only for DVASPECT_CONTENT (DV_E_DVASPECT). Sizes are in HIMETRIC units. View and data sinks are notified
    // of a new size; a negative one is refused with E_INVALIDARG.
    [[nodiscard]] HRESULT SetControlExtent(DWORD aspect, const SIZEL& size);
    [[nodiscard]] HRESULT GetControlExtent(DWORD aspect, SIZEL& size) const;
    // The size that a control has before its container sets one.
    [[nodiscard]] static SIZEL NaturalExtent() noexcept;

    // `active_site` and `position` may be null. A verb that shows the control returns OLEOBJ_S_CANNOT_DOVERB_NOW
    // without a site; an unknown verb shows it too and returns OLEOBJ_S_INVALIDVERB; an unknown negative one E_NOTIMPL.
    [[nodiscard]] HRESULT ExecuteVerb(LONG verb, IOleClientSite* active_site, const RECT* position);
    // Saves through the site what has to be saved, deactivates, notifies the advise sinks and releases the view sink.
    // E_INVALIDARG, or why saving failed; the control then stays as it is.
    [[nodiscard]] HRESULT CloseControl(DWORD save_option);
    [[nodiscard]] InPlaceActivation& InPlace() noexcept { return in_place_; }
    // Gives a key stroke to the container; S_FALSE when it has no use for it.
    [[nodiscard]] HRESULT OfferKeyToContainer(MSG* message) const;

    // The holders are made on first use. E_OUTOFMEMORY.
    [[nodiscard]] HRESULT OleAdvise(ComPtr<IOleAdviseHolder>& holder);
    [[nodiscard]] HRESULT DataAdvise(ComPtr<IDataAdviseHolder>& holder);
    // One view sink (null takes it away); OLE_E_ADVISENOTSUPPORTED for aspects other than DVASPECT_CONTENT.
    [[nodiscard]] HRESULT SetViewAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink);
    // Each pointer may be null. The sink comes with a reference.
    void GetViewAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) const noexcept;
    // For when the control would draw something else than before: redraws the window and notifies the view sink.
    void FireViewChange();
    void FireDataChange();
    void FireSaved();

    // Releases what the control holds of its container, for the end of its life.
    void ReleaseContainer() noexcept;

    // Draws on a foreign device context and leaves it as it was. OnDraw sees device units, except in a metafile.
    [[nodiscard]] HRESULT DrawOn(HDC dc, const RECTL& bounds);
    // A global memory block with a picture of the control (METAFILEPICT), which the caller owns.
    [[nodiscard]] HRESULT RenderMetafile(HGLOBAL& picture);

    // The stream form of a control: the control framework's version number and no properties. Every version that has
    // been is read. E_FAIL for a stream that does not begin with one, or the stream's failure.
    [[nodiscard]] HRESULT SaveControl(IStream& stream, bool clear_dirty);
    [[nodiscard]] HRESULT LoadControl(IStream& stream);
    [[nodiscard]] static ULONG SavedSize() noexcept;
    // The same in the stream "Contents" of a storage.
    [[nodiscard]] HRESULT SaveControl(IStorage& storage);
    [[nodiscard]] HRESULT LoadControl(IStorage& storage);

    // Connects the sinks of `container` and fills `control`. The first sink that cannot be connected ends it.
    [[nodiscard]] HRESULT ConnectQuickly(const QACONTAINER& container, QACONTROL& control, DWORD misc_status);

  protected:
    ControlBase() noexcept : in_place_(*this) {}
    ~ControlBase() = default;

  private:
    void OnWindowPaint(HDC dc, const RECT& client) override;
    void OnWindowFocus(bool has_focus) override;
    void OnWindowMouseActivate() override;
    [[nodiscard]] ComPtr<IUnknown> KeepAlive() override { return ComPtr<IUnknown>(ControlUnknown()); }

    void TellViewSink();
    [[nodiscard]] HRESULT ShowInPlace(IOleClientSite* active_site, const RECT* position, bool with_ui);
    [[nodiscard]] HRESULT Connect(IUnknown* sink, REFIID event_interface, DWORD& cookie);
    [[nodiscard]] HRESULT ConnectEventSink(IUnknown* sink, DWORD& cookie);

    struct ViewAdvise {
        DWORD aspects = 0;
        DWORD flags = 0;
        ComPtr<IAdviseSink> sink;
    };

    ComPtr<IOleClientSite> client_site_;
    SIZEL extent_ = NaturalExtent();
    bool is_dirty_ = false;
    ComPtr<IOleAdviseHolder> ole_advise_;
    ComPtr<IDataAdviseHolder> data_advise_;
    ViewAdvise view_advise_;
    InPlaceActivation in_place_;
};

// The styles of a control's window.
template <DWORD window_style, DWORD window_extended_style = 0>
struct CWinTraits {
    static constexpr WindowStyles kStyles{window_style, window_extended_style};
};
using CControlWinTraits = CWinTraits<WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS>;

// The control base of a class, which has an interface table, IObjectWithSite and connection points.
template <class Class, class WinTraits = CControlWinTraits>
class CComControl : public ControlBase {
  public:
    [[nodiscard]] IUnknown* ControlUnknown() noexcept final {
        return static_cast<IUnknown*>(FindInterface(static_cast<Class*>(this), IID_IUnknown));
    }

    // Releases container, sinks and browser while the control is whole: their releases may call it.
    void FinalRelease() noexcept {
        auto& control = static_cast<Class&>(*this);
        ReleaseContainer();
        for (auto* const point : Class::ConnectionPoints::Of(control)) {
            point->DisconnectAll();
        }
        control.SetSite(nullptr);
    }

  protected:
    ~CComControl() = default;

  private:
    [[nodiscard]] WindowStyles Styles() const noexcept final { return WinTraits::kStyles; }
};

}  // namespace paylodge
