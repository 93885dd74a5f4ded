#include "control/connection_points.hpp"

#include <algorithm>
#include <ranges>

#include "com/boundary.hpp"
#include "com/bstr.hpp"
#include "com/variant.hpp"
#include "control/snapshot_enumerator.hpp"

namespace paylodge {
namespace {

struct ConnectionPointItems {
    using Interface = IEnumConnectionPoints;
    using Item = ComPtr<IConnectionPoint>;
    using Given = IConnectionPoint*;
    [[nodiscard]] static Given Give(Item item) noexcept { return item.Detach(); }
};

struct Connection {
    ComPtr<IUnknown> sink;
    DWORD cookie;
};

struct ConnectionItems {
    using Interface = IEnumConnections;
    using Item = Connection;
    using Given = CONNECTDATA;
    [[nodiscard]] static Given Give(Item item) noexcept { return {item.sink.Detach(), item.cookie}; }
};

// Arguments in the order in which they are added.
class InvokeArguments {
  public:
    // Throws E_OUTOFMEMORY, as adding a string does.
    explicit InvokeArguments(size_t count) { values_.reserve(count); }
    ~InvokeArguments() {
        for (VARIANT& value : values_) {
            ::VariantClear(&value);
        }
    }
    InvokeArguments(const InvokeArguments&) = delete;
    InvokeArguments& operator=(const InvokeArguments&) = delete;

    void Add(VARIANT_BOOL flag) { V_BOOL(&Append(VT_BOOL)) = flag; }
    void Add(BSTR text) {
        OwnedBstr copy = CopyBstr(text);
        V_BSTR(&Append(VT_BSTR)) = copy.Detach();
    }

    [[nodiscard]] DISPPARAMS Parameters() noexcept {
        return {values_.data(), nullptr, static_cast<UINT>(values_.size()), 0};
    }

  private:
    [[nodiscard]] VARIANT& Append(VARTYPE type) {
        VARIANT& value = values_.emplace_back();
        V_VT(&value) = type;
        return value;
    }

    std::vector<VARIANT> values_;
};

[[nodiscard]] HRESULT InvokeSink(IUnknown& sink, DISPID event, std::initializer_list<EventArgument> arguments) {
    // A sink's interface for events is a dispatch interface.
    auto& dispatch = static_cast<IDispatch&>(sink);
    InvokeArguments values(arguments.size());
    // The last one comes first.
    for (const EventArgument& argument : std::views::reverse(arguments)) {
        std::visit([&values](auto value) { values.Add(value); }, argument);
    }
    DISPPARAMS parameters = values.Parameters();
    OwnedVariant result;
    return dispatch.Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, result.Receive(),
                           nullptr, nullptr);
}

}  // namespace

STDMETHODIMP ConnectionPoint::QueryInterface(REFIID id, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IConnectionPoint)) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionInterface(IID* id) {
    if (id == nullptr) {
        return E_POINTER;
    }
    *id = sink_interface_;
    return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (container == nullptr) {
        return E_POINTER;
    }
    *container = ComPtr<IConnectionPointContainer>(&container_).Detach();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) try {
    if (cookie != nullptr) {
        *cookie = 0;
    }
    if (sink == nullptr || cookie == nullptr) {
        return E_POINTER;
    }
    const ComPtr<IConnectionPoint> keep_alive(this);
    ComPtr<IUnknown> interface_of_sink;
    if (FAILED(sink->QueryInterface(sink_interface_, interface_of_sink.ReceiveVoid()))) {
        return CONNECT_E_CANNOTCONNECT;
    }
    Slot& slot = FreeSlot();
    slot = {std::move(interface_of_sink), ++last_cookie_};
    *cookie = slot.cookie;
    return S_OK;
} catch (...) {
    return CaughtHResult();
}

ConnectionPoint::Slot& ConnectionPoint::FreeSlot() {
    const auto empty = std::ranges::find_if(slots_, [](const Slot& slot) { return !slot.sink; });
    return empty == slots_.end() ? slots_.emplace_back() : *empty;
}

STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) {
    const auto found =
        std::ranges::find_if(slots_, [cookie](const Slot& slot) { return slot.sink && slot.cookie == cookie; });
    if (found == slots_.end()) {
        return CONNECT_E_NOCONNECTION;
    }
    // The slot is empty before the sink hears of it, since its last release may come back here.
    const ComPtr<IUnknown> last = std::move(found->sink);
    return S_OK;
}

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** connections) try {
    if (connections == nullptr) {
        return E_POINTER;
    }
    *connections = nullptr;
    std::vector<Connection> connected;
    for (const Slot& slot : slots_) {
        if (slot.sink) {
            connected.push_back({slot.sink, slot.cookie});
        }
    }
    return SnapshotEnumerator<ConnectionItems>::Create(std::move(connected), connections);
} catch (...) {
    return CaughtHResult();
}

HRESULT RaiseEvent(ConnectionPoint& point, DISPID event, std::initializer_list<EventArgument> arguments) {
    // A sink may release the last reference to the object that raises the event.
    const ComPtr<IConnectionPoint> keep_alive(&point);
    HRESULT last = S_OK;
    const size_t count = point.SlotCount();
    for (size_t index = 0; index < count; ++index) {
        if (const ComPtr<IUnknown> sink = point.SinkAt(index)) {
            last = InvokeSink(*sink.Get(), event, arguments);
        }
    }
    return last;
}

HRESULT EnumConnectionPointsOf(std::span<ConnectionPoint* const> points, IEnumConnectionPoints** created) try {
    if (created == nullptr) {
        return E_POINTER;
    }
    *created = nullptr;
    std::vector<ComPtr<IConnectionPoint>> items;
    for (ConnectionPoint* const point : points) {
        items.emplace_back(point);
    }
    return SnapshotEnumerator<ConnectionPointItems>::Create(std::move(items), created);
} catch (...) {
    return CaughtHResult();
}

HRESULT FindConnectionPointOf(std::span<ConnectionPoint* const> points, REFIID id, IConnectionPoint** found) {
    if (found == nullptr) {
        return E_POINTER;
    }
    *found = nullptr;
    const auto point = std::ranges::find_if(
        points, [&id](ConnectionPoint* candidate) { return IsEqualIID(candidate->SinkInterface(), id); });
    if (point == points.end()) {
        return CONNECT_E_NOCONNECTION;
    }
    *found = ComPtr<IConnectionPoint>(*point).Detach();
    return S_OK;
}

}  // namespace paylodge
