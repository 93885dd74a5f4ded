#include "workbench/server/event_sink.hpp"

#include <comdef.h>

#include <map>
#include <utility>

#include "com/boundary.hpp"
#include "com/object_root.hpp"
#include "paylodge.h"
#include "workbench/server/script_values.hpp"
#include "workbench/server/scripted_object.hpp"

namespace paylodge::workbench {
namespace {

void Check(HRESULT result) {
    if (FAILED(result)) {
        _com_issue_error(result);
    }
}

using EventNames = std::map<DISPID, std::string>;

class CEventSink : public _IPaylodgeCtrlEvents {
  public:
    using Row = InterfaceRow<CEventSink>;
    static constexpr std::array kInterfaces = {Row::Of<_IPaylodgeCtrlEvents>(),
                                               Row::Of<IDispatch, _IPaylodgeCtrlEvents>()};

    CEventSink(EventNames names, OnEvent on_event) : names_(std::move(names)), on_event_(std::move(on_event)) {}

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        return AtBoundary([&] {
            const auto found = names_.find(event);
            if (found == names_.end()) {
                return DISP_E_MEMBERNOTFOUND;
            }
            Json arguments = Json::array();
            for (UINT left = parameters->cArgs; left > 0; --left) {
                arguments.push_back(ReadVariant(parameters->rgvarg[left - 1]));
            }
            on_event_(found->second, std::move(arguments));
            return S_OK;
        });
    }

  protected:
    ~CEventSink() = default;

  private:
    EventNames names_;
    OnEvent on_event_;
};

}  // namespace

EventConnection::EventConnection(IDispatch& object, ITypeInfo& events, OnEvent on_event) {
    EventNames names;
    for (const Json& event : DescribeEvents(events)) {
        names.emplace(event["id"].get<DISPID>(), event["name"].get<std::string>());
    }
    TYPEATTR* attributes = nullptr;
    Check(events.GetTypeAttr(&attributes));
    const IID id = attributes->guid;
    events.ReleaseTypeAttr(attributes);
    ComPtr<IConnectionPointContainer> container;
    Check(object.QueryInterface(IID_IConnectionPointContainer, container.ReceiveVoid()));
    Check(container->FindConnectionPoint(id, point_.Receive()));
    ComPtr<IDispatch> sink;
    Check(ComObject<CEventSink>::Create(std::move(names), std::move(on_event)).As(sink));
    Check(point_->Advise(sink.Get(), &cookie_));
}

EventConnection::~EventConnection() { point_->Unadvise(cookie_); }

}  // namespace paylodge::workbench
