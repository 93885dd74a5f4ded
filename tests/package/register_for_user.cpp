// Registers what the module registers, for the current user alone; with /u takes it back. The module keeps that way to
// itself, so this program carries the module's scripts and type library in its own resources.

#include <string_view>

#include "frame/module/server_registration.hpp"

int main(int argument_count, char** arguments) {
    using enum paylodge::RegistrationScope;
    const bool remove = argument_count > 1 && std::string_view(arguments[1]) == "/u";
    const HRESULT result = remove ? paylodge::UnregisterServer(kCurrentUser) : paylodge::RegisterServer(kCurrentUser);
    return result == S_OK ? 0 : 1;
}
