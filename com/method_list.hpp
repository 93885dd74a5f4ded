// The methods of a dual interface as a list that templates can walk.
#pragma once

namespace paylodge {

template <auto... methods>
struct MethodList {};

// ScriptMembers<Interface>::Methods: the methods in slot order, from the first one behind IDispatch on. The build makes
// it from the interface definitions: NAME_methods.hpp beside the header NAME.h.
template <class Interface>
struct ScriptMembers;

}  // namespace paylodge
