#include "bridge/channel_registry.hpp"

namespace paylodge {

std::map<std::wstring, IPaylodgeCtrl10*, std::less<>> g_mapChannelControls;

IPaylodgeCtrl10* FindChannelControl(std::wstring_view channel_name) noexcept {
    const auto found = g_mapChannelControls.find(channel_name);
    return found == g_mapChannelControls.end() ? nullptr : found->second;
}

}  // namespace paylodge
