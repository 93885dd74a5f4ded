// Everything that a container sets up when it takes a control in, in one go.

#include <windows.h>

#include "control/control_base.hpp"

namespace paylodge {

HRESULT ControlBase::ConnectQuickly(const QACONTAINER& container, QACONTROL& control, DWORD misc_status) {
    const ComPtr<IUnknown> keep_alive = KeepAlive();
    const ULONG size = control.cbSize;
    control = {};
    control.cbSize = size;
    control.dwMiscStatus = misc_status;
    control.dwViewStatus = ViewStatus();
    SetSiteOfControl(container.pClientSite);
    HRESULT result = S_OK;
    if (container.pAdviseSink != nullptr) {
        result = SetViewAdvise(DVASPECT_CONTENT, 0, container.pAdviseSink);
    }
    if (SUCCEEDED(result) && container.pPropertyNotifySink != nullptr) {
        result = Connect(container.pPropertyNotifySink, IID_IPropertyNotifySink, control.dwPropNotifyCookie);
    }
    if (SUCCEEDED(result) && container.pUnkEventSink != nullptr) {
        result = ConnectEventSink(container.pUnkEventSink, control.dwEventCookie);
    }
    return result;
}

// A control without such a connection point never calls the sink: no reason to refuse the container.
HRESULT ControlBase::Connect(IUnknown* sink, REFIID event_interface, DWORD& cookie) {
    ComPtr<IConnectionPointContainer> points;
    ComPtr<IConnectionPoint> point;
    if (FAILED(KeepAlive().As(points)) || FAILED(points->FindConnectionPoint(event_interface, point.Receive()))) {
        return S_OK;
    }
    return point->Advise(sink, &cookie);
}

HRESULT ControlBase::ConnectEventSink(IUnknown* sink, DWORD& cookie) {
    ComPtr<IProvideClassInfo2> class_info;
    IID event_interface;
    if (FAILED(KeepAlive().As(class_info)) ||
        FAILED(class_info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &event_interface))) {
        return S_OK;
    }
    return Connect(sink, event_interface, cookie);
}

}  // namespace paylodge
