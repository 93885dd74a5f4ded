// Which control receives what the host pushes on a channel.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "paylodge.h"

namespace paylodge {

// Channel names compare code unit by code unit; null is the empty name. The controls are not reference-counted: a
// control is subscribed and unsubscribed while it lives. Used on the host's user-interface thread only.
extern std::map<std::wstring, IPaylodgeCtrl10*, std::less<>> g_mapChannelControls;

// The control under this name, or null.
[[nodiscard]] IPaylodgeCtrl10* FindChannelControl(std::wstring_view channel_name) noexcept;

}  // namespace paylodge
