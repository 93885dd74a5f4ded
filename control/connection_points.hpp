// Connection points: where an object's sinks are kept, and how events reach them.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <array>
#include <initializer_list>
#include <span>
#include <variant>
#include <vector>

#include "com/com_ptr.hpp"

namespace paylodge {

// One connection point: an object in its own right to its callers, that lives and dies with its container. A sink that
// is unadvised leaves an empty slot behind, which the next one to be advised takes; slots never move. So sinks may come
// and go while events are raised.
class ConnectionPoint final : public IConnectionPoint {
  public:
    // The container owns this connection point; it is not used before the container is constructed.
    ConnectionPoint(IConnectionPointContainer& container, REFIID sink_interface) noexcept
        : container_(container), sink_interface_(sink_interface) {}
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return container_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return container_.Release(); }

    // E_POINTER.
    STDMETHODIMP GetConnectionInterface(IID* id) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    // *cookie is never 0 on success and never the same twice. E_POINTER; CONNECT_E_CANNOTCONNECT for a sink that lacks
    // the interface of this connection point; E_OUTOFMEMORY.
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    // CONNECT_E_NOCONNECTION for a cookie that is not, or no longer, in use.
    STDMETHODIMP Unadvise(DWORD cookie) override;
    // Those connected now. E_POINTER, E_OUTOFMEMORY.
    STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

    // Releases every sink.
    void DisconnectAll() noexcept { const std::vector<Slot> sinks = std::move(slots_); }

    [[nodiscard]] const IID& SinkInterface() const noexcept { return sink_interface_; }

    // Slots in order, the empty ones included.
    [[nodiscard]] size_t SlotCount() const noexcept { return slots_.size(); }
    // The sink's interface of this connection point, or null for an empty slot.
    [[nodiscard]] ComPtr<IUnknown> SinkAt(size_t index) const noexcept { return slots_[index].sink; }

  private:
    struct Slot {
        ComPtr<IUnknown> sink;
        DWORD cookie = 0;
    };
    [[nodiscard]] Slot& FreeSlot();

    IConnectionPointContainer& container_;
    IID sink_interface_;
    std::vector<Slot> slots_;
    DWORD last_cookie_ = 0;
};

// An argument of an event; a string stays the caller's.
using EventArgument = std::variant<BSTR, VARIANT_BOOL>;

// Invokes the event on each sink connected when the call begins and still connected when its turn comes, in slot order;
// a sink that fails does not stop the next. Gives the result of the last call, S_OK without any. Each sink gets strings
// of its own: a failed allocation throws E_OUTOFMEMORY.
HRESULT RaiseEvent(ConnectionPoint& point, DISPID event, std::initializer_list<EventArgument> arguments);

// A connection point of Class for sinks with this interface, as a base class.
template <class Class, const IID* sink_interface>
class IConnectionPointImpl {
  public:
    [[nodiscard]] ConnectionPoint& Point() noexcept { return point_; }

  protected:
    IConnectionPointImpl() noexcept : point_(static_cast<Class&>(*this), *sink_interface) {}
    ~IConnectionPointImpl() = default;

  private:
    ConnectionPoint point_;
};

template <class Class>
class IPropertyNotifySinkCP : public IConnectionPointImpl<Class, &IID_IPropertyNotifySink> {};

// The connection points of a class: its bases of kind IConnectionPointImpl, in the order in which they are enumerated.
template <class... Bases>
struct ConnectionPointTable {
    template <class Class>
    [[nodiscard]] static std::array<ConnectionPoint*, sizeof...(Bases)> Of(Class& object) noexcept {
        return {&static_cast<Bases&>(object).Point()...};
    }
};

// What IConnectionPointContainer returns for an object with these connection points.
[[nodiscard]] HRESULT EnumConnectionPointsOf(std::span<ConnectionPoint* const> points, IEnumConnectionPoints** created);
[[nodiscard]] HRESULT FindConnectionPointOf(std::span<ConnectionPoint* const> points, REFIID id,
                                            IConnectionPoint** found);

// Class names its table as `ConnectionPoints`.
template <class Class>
class IConnectionPointContainerImpl : public IConnectionPointContainer {
  public:
    // E_POINTER, E_OUTOFMEMORY.
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override {
        return EnumConnectionPointsOf(Class::ConnectionPoints::Of(static_cast<Class&>(*this)), points);
    }
    // E_POINTER, CONNECT_E_NOCONNECTION.
    STDMETHODIMP FindConnectionPoint(REFIID id, IConnectionPoint** point) override {
        return FindConnectionPointOf(Class::ConnectionPoints::Of(static_cast<Class&>(*this)), id, point);
    }
};

}  // namespace paylodge
