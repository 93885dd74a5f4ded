// An object as script sees it: members by name, described by its type information.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>

#include <map>
#include <optional>
#include <string>

#include "com/com_ptr.hpp"
#include "workbench/server/messages.hpp"

namespace paylodge::workbench {

// What came of a call.
struct Outcome {
    HRESULT result = S_OK;
    // The error's own words, where it has any.
    std::string description;
    Json value;
    // By the number of the argument, counted from 0, what was passed by reference.
    std::map<std::size_t, Json> out;
};

// Calls a member through IDispatch, as a script engine does. Throws E_OUTOFMEMORY.
[[nodiscard]] Outcome CallMember(IDispatch& object, const std::string& member, CallKind kind,
                                 const std::vector<Value>& values);

// Its members for scripts, in the order of their ids. Throws COM errors.
[[nodiscard]] Json DescribeMembers(IDispatch& object);

// Its event interface; null for an object without events. Throws COM errors.
[[nodiscard]] ComPtr<ITypeInfo> EventsOf(IDispatch& object);
[[nodiscard]] Json DescribeEvents(ITypeInfo& events);

}  // namespace paylodge::workbench
