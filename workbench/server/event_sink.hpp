// Listens to the events of a control on behalf of a page.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>

#include <functional>
#include <string>

#include "com/com_ptr.hpp"
#include "workbench/server/messages.hpp"

namespace paylodge::workbench {

// The name of the event and its arguments in their order.
using OnEvent = std::function<void(const std::string& name, Json arguments)>;

// A connection to the events of an object, until it goes.
class EventConnection {
  public:
    // Throws COM errors.
    EventConnection(IDispatch& object, ITypeInfo& events, OnEvent on_event);
    ~EventConnection();
    EventConnection(const EventConnection&) = delete;
    EventConnection& operator=(const EventConnection&) = delete;

  private:
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

}  // namespace paylodge::workbench
