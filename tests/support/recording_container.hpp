// A container that writes down what its control asks of it, and that a test can make refuse or interfere.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <ocidl.h>
#include <servprov.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "com/object_root.hpp"
#include "paylodge.h"

namespace paylodge::test {

// What happened, in order.
class Record {
  public:
    void Add(const std::string& call) {
        calls_.push_back(call);
        if (const auto reaction = reactions.find(call); reaction != reactions.end()) {
            reaction->second();
        }
    }
    // What was written since the last time, separated by blanks.
    [[nodiscard]] std::string Take() {
        std::string text;
        for (const std::string& call : std::exchange(calls_, {})) {
            text += (text.empty() ? "" : " ") + call;
        }
        return text;
    }

    void Clear() noexcept { calls_.clear(); }

    // What a call sets off, by its text.
    std::map<std::string, std::function<void()>> reactions;

  private:
    std::vector<std::string> calls_;
};

// The frame window's object.
class RecordingFrame : public IOleInPlaceFrame {
  public:
    using Row = InterfaceRow<RecordingFrame>;
    static constexpr std::array kInterfaces = {Row::Of<IOleInPlaceFrame>(),
                                               Row::Of<IOleInPlaceUIWindow, IOleInPlaceFrame>(),
                                               Row::Of<IOleWindow, IOleInPlaceFrame>()};
    explicit RecordingFrame(Record& record) : record_(record) {}

    STDMETHODIMP GetWindow(HWND* /*window*/) override { return E_NOTIMPL; }
    STDMETHODIMP ContextSensitiveHelp(BOOL /*enter*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetBorder(LPRECT /*border*/) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS /*widths*/) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS widths) override {
        record_.Add(widths == nullptr ? "NoBorderSpace" : "BorderSpace");
        return S_OK;
    }
    STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR /*name*/) override {
        active_object = ComPtr<IOleInPlaceActiveObject>(object);
        record_.Add(object == nullptr ? "NoActiveObject" : "ActiveObject");
        return S_OK;
    }
    STDMETHODIMP InsertMenus(HMENU /*menu*/, LPOLEMENUGROUPWIDTHS /*widths*/) override { return E_NOTIMPL; }
    STDMETHODIMP SetMenu(HMENU /*menu*/, HOLEMENU /*description*/, HWND /*window*/) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveMenus(HMENU /*menu*/) override { return E_NOTIMPL; }
    STDMETHODIMP SetStatusText(LPCOLESTR /*text*/) override { return E_NOTIMPL; }
    STDMETHODIMP EnableModeless(BOOL /*enable*/) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(LPMSG /*message*/, WORD /*id*/) override { return S_FALSE; }

    ComPtr<IOleInPlaceActiveObject> active_object;

  protected:
    ~RecordingFrame() = default;

  private:
    Record& record_;
};

// The site of one control: client site, in-place site, control site, ambient properties, advise sink and services.
class RecordingSite : public IOleClientSite,
                      public IOleInPlaceSite,
                      public IOleControlSite,
                      public IDispatch,
                      public IAdviseSinkEx,
                      public IServiceProvider {
  public:
    using Row = InterfaceRow<RecordingSite>;
    static constexpr std::array kInterfaces = {
        Row::Of<IOleClientSite>(),
        Row::Of<IOleInPlaceSite>(),
        Row::Of<IOleWindow, IOleInPlaceSite>(),
        Row::Of<IOleControlSite>(),
        Row::Of<IDispatch>(),
        Row::Of<IAdviseSinkEx>(),
        Row::Of<IAdviseSink, IAdviseSinkEx>(),
        Row::Of<IServiceProvider>(),
    };
    explicit RecordingSite(Record& record) : frame(ComObject<RecordingFrame>::Create(record)), record_(record) {}

    // Client site
    STDMETHODIMP SaveObject() override { return Write("SaveObject"); }
    STDMETHODIMP GetMoniker(DWORD /*assign*/, DWORD /*which*/, IMoniker** /*moniker*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer** container) override {
        *container = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP ShowObject() override { return Write("ShowObject"); }
    STDMETHODIMP OnShowWindow(BOOL /*show*/) override { return Write("OnShowWindow"); }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

    // In-place site
    STDMETHODIMP GetWindow(HWND* window) override {
        *window = parent;
        return Answer("GetWindow");
    }
    STDMETHODIMP ContextSensitiveHelp(BOOL /*enter*/) override { return E_NOTIMPL; }
    STDMETHODIMP CanInPlaceActivate() override { return Write("CanInPlaceActivate"); }
    STDMETHODIMP OnInPlaceActivate() override { return Write("OnInPlaceActivate"); }
    STDMETHODIMP OnUIActivate() override { return Write("OnUIActivate"); }
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame_object, IOleInPlaceUIWindow** document_object, LPRECT place,
                                  LPRECT visible, LPOLEINPLACEFRAMEINFO info) override {
        *frame_object = nullptr;
        *document_object = nullptr;
        EXPECT_EQ(sizeof *info, info->cb);
        const HRESULT result = Write("GetWindowContext");
        if (FAILED(result)) {
            return result;
        }
        *frame_object = ComPtr<IOleInPlaceFrame>(frame.Get()).Detach();
        *document_object = ComPtr<IOleInPlaceUIWindow>(document.Get()).Detach();
        *place = position;
        *visible = clip;
        info->hwndFrame = parent;
        return S_OK;
    }
    STDMETHODIMP Scroll(SIZE /*extent*/) override { return E_NOTIMPL; }
    STDMETHODIMP OnUIDeactivate(BOOL undoable) override {
        return Write(undoable ? "OnUIDeactivateUndoable" : "OnUIDeactivate");
    }
    STDMETHODIMP OnInPlaceDeactivate() override { return Write("OnInPlaceDeactivate"); }
    STDMETHODIMP DiscardUndoState() override { return E_NOTIMPL; }
    STDMETHODIMP DeactivateAndUndo() override { return E_NOTIMPL; }
    STDMETHODIMP OnPosRectChange(LPCRECT /*place*/) override { return E_NOTIMPL; }

    // Control site
    STDMETHODIMP OnControlInfoChanged() override { return E_NOTIMPL; }
    STDMETHODIMP LockInPlaceActive(BOOL /*lock*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetExtendedControl(IDispatch** control) override {
        *control = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP TransformCoords(POINTL* /*himetric*/, POINTF* /*container*/, DWORD /*flags*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP TranslateAccelerator(MSG* /*message*/, DWORD modifiers) override {
        return Write("Key" + std::to_string(modifiers));
    }
    STDMETHODIMP OnFocus(BOOL got) override { return Write(got ? "OnFocus" : "OnFocusLost"); }
    STDMETHODIMP ShowPropertyFrame() override { return E_NOTIMPL; }

    // Ambient properties
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                               DISPID* /*ids*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD flags, DISPPARAMS* /*parameters*/,
                        VARIANT* result, EXCEPINFO* /*exception*/, UINT* /*argument_error*/) override {
        record_.Add("Ambient" + std::to_string(member));
        const auto value = ambient.find(member);
        if (value == ambient.end() || flags != DISPATCH_PROPERTYGET) {
            return DISP_E_MEMBERNOTFOUND;
        }
        V_VT(result) = ambient_type;
        V_BOOL(result) = value->second;
        return Answer("Ambient" + std::to_string(member));
    }

    // Advise sink
    STDMETHODIMP_(void) OnDataChange(FORMATETC* /*format*/, STGMEDIUM* medium) override {
        record_.Add(medium->tymed == TYMED_NULL ? "OnDataChange" : "OnDataChangeWithData");
    }
    STDMETHODIMP_(void) OnViewChange(DWORD aspect, LONG index) override {
        record_.Add("OnViewChange(" + std::to_string(aspect) + "," + std::to_string(index) + ")");
    }
    STDMETHODIMP_(void) OnRename(IMoniker* /*moniker*/) override { record_.Add("OnRename"); }
    STDMETHODIMP_(void) OnSave() override { record_.Add("OnSave"); }
    STDMETHODIMP_(void) OnClose() override { record_.Add("OnClose"); }
    STDMETHODIMP_(void) OnViewStatusChange(DWORD /*status*/) override { record_.Add("OnViewStatusChange"); }

    // Services: the site itself, whatever is asked for.
    STDMETHODIMP QueryService(REFGUID service, REFIID id, void** object) override {
        record_.Add("QueryService");
        last_service = service;
        return static_cast<IOleClientSite*>(this)->QueryInterface(id, object);
    }

    HWND parent = nullptr;
    RECT position{10, 20, 210, 120};
    RECT clip{0, 0, 1000, 1000};
    ComPtr<ComObject<RecordingFrame>> frame;
    // Another frame, for the document's window; null for none.
    ComPtr<ComObject<RecordingFrame>> document;
    std::map<DISPID, VARIANT_BOOL> ambient;
    VARTYPE ambient_type = VT_BOOL;
    // HRESULTs that calls return instead of S_OK.
    std::map<std::string, HRESULT> answers;
    GUID last_service{};

  protected:
    ~RecordingSite() = default;

  private:
    [[nodiscard]] HRESULT Write(const std::string& call) {
        record_.Add(call);
        return Answer(call);
    }
    [[nodiscard]] HRESULT Answer(const std::string& call) const {
        const auto answer = answers.find(call);
        return answer == answers.end() ? S_OK : answer->second;
    }

    Record& record_;
};

// A site that calls back when its last reference goes.
class SiteWithLastWord : public RecordingSite {
  public:
    using RecordingSite::RecordingSite;
    void FinalRelease() const { on_last_release(); }

    std::function<void()> on_last_release = [] {};

  protected:
    ~SiteWithLastWord() = default;
};

// A sink for events of a dispatch interface; writes down each call with its arguments in the caller's order.
class RecordingSink : public IDispatch {
  public:
    RecordingSink(Record& record, std::string name, REFIID event_interface)
        : record_(record), name_(std::move(name)), event_interface_(event_interface) {}

    STDMETHODIMP GetTypeInfoCount(UINT* /*count*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                               DISPID* /*ids*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* argument_error) override {
        is_call_as_documented = IsEqualIID(reserved, IID_NULL) && locale == LOCALE_USER_DEFAULT &&
                                flags == DISPATCH_METHOD && parameters->cNamedArgs == 0 && result != nullptr &&
                                exception == nullptr && argument_error == nullptr;
        arguments.clear();
        for (UINT index = parameters->cArgs; index-- > 0;) {
            arguments.push_back(Text(parameters->rgvarg[index]));
        }
        if (gives_result) {
            V_VT(result) = VT_BSTR;
            V_BSTR(result) = ::SysAllocString(L"result");
        }
        record_.Add(name_ + std::to_string(member));
        return answer;
    }

    HRESULT answer = S_OK;
    bool gives_result = false;
    bool is_call_as_documented = false;
    std::vector<std::wstring> arguments;

    // Of the event interfaces, the sink has the one that it was made for.
    template <const IID* id>
    [[nodiscard]] static void* AsEventInterface(RecordingSink* sink) noexcept {
        return IsEqualIID(*id, sink->event_interface_) ? static_cast<IDispatch*>(sink) : nullptr;
    }
    using Row = InterfaceRow<RecordingSink>;
    static constexpr std::array kInterfaces = {
        Row::Of<IDispatch>(),
        Row{&DIID__IPaylodgeCtrlEvents, &AsEventInterface<&DIID__IPaylodgeCtrlEvents>},
        Row{&IID_IPropertyNotifySink, &AsEventInterface<&IID_IPropertyNotifySink>},
    };

  protected:
    ~RecordingSink() = default;

  private:
    [[nodiscard]] static std::wstring Text(const VARIANT& value) {
        switch (V_VT(&value)) {
            case VT_BSTR:
                return V_BSTR(&value) == nullptr ? L"(null)"
                                                 : std::wstring(V_BSTR(&value), ::SysStringLen(V_BSTR(&value)));
            case VT_BOOL:
                return L"bool " + std::to_wstring(V_BOOL(&value));
            default:
                return L"(type " + std::to_wstring(V_VT(&value)) + L")";
        }
    }

    Record& record_;
    std::string name_;
    IID event_interface_;
};

}  // namespace paylodge::test
