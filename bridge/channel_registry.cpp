#include "bridge/channel_registry.hpp"

namespace paylodge {

std::map<std::wstring, ChannelControl, std::less<>> g_mapChannelControls;
// Without memory for it, the library does not load.
OwnedBstr g_bstrChannelName = MakeBstr(L"Default");  // NOLINT(cert-err58-cpp)

const ChannelControl* FindChannelControl(std::wstring_view channel_name) noexcept {
    const auto found = g_mapChannelControls.find(channel_name);
    return found == g_mapChannelControls.end() ? nullptr : &found->second;
}

void RemoveChannelControl(const IPaylodgeCtrl10* control) noexcept {
    std::erase_if(g_mapChannelControls, [control](const auto& channel) { return channel.second.control == control; });
}

}  // namespace paylodge
