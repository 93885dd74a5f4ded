// Which control receives what the host pushes on a channel.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "com/bstr.hpp"
#include "paylodge.h"

namespace paylodge {

class ConnectionPoint;

// A control as the channels see it; neither pointer holds a reference. A control is subscribed while it lives.
struct ChannelControl {
    IPaylodgeCtrl10* control;
    // The sinks of the control's events.
    ConnectionPoint* events;
};

// All of this is used on the host's user-interface thread only.

// Names compare code unit by code unit; null is the empty name.
extern std::map<std::wstring, ChannelControl, std::less<>> g_mapChannelControls;

// The channel on which the host pushes; "Default" until the host names another. May be null.
extern OwnedBstr g_bstrChannelName;

// The control under this name, or null.
[[nodiscard]] const ChannelControl* FindChannelControl(std::wstring_view channel_name) noexcept;

// Removes every channel of this control.
void RemoveChannelControl(const IPaylodgeCtrl10* control) noexcept;

}  // namespace paylodge
