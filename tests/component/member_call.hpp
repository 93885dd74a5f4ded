// Calls members as hosts and pages do: through the slot with their number, and by name through IDispatch.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string>
#include <vector>

#include "tests/component/members.hpp"

namespace paylodge::test {

struct Argument {
    std::string direction;  // [in], [out] or [out,retval]
    VARTYPE type;
    std::string name;

    [[nodiscard]] bool IsIn() const { return direction == "[in]"; }
    [[nodiscard]] bool IsResult() const { return direction == "[out,retval]"; }
};

// The arguments that a member's text declares.
[[nodiscard]] std::vector<Argument> ArgumentsOf(const Member& member);

struct Outcome {
    HRESULT result = S_OK;
    // As in Member::results; an untouched out parameter is shown as "untouched".
    std::string results;
    // The HRESULT in the exception information of Invoke.
    HRESULT exception = S_OK;
};

// Strings go in as "a&1", "a&2", ... and booleans as VARIANT_TRUE.
[[nodiscard]] Outcome CallSlot(IUnknown& object, const Member& member);
[[nodiscard]] Outcome CallInvoke(IDispatch& object, const Member& member);

// Null in the place of the result.
[[nodiscard]] HRESULT CallSlotWithoutResult(IUnknown& object, const Member& member);

// A slot called as a function with these parameters, whatever the interface's header says.
template <class... Parameters>
[[nodiscard]] HRESULT CallThroughSlot(IUnknown& object, int slot, Parameters... parameters) {
    using Function = HRESULT STDMETHODCALLTYPE(IUnknown*, Parameters...);
    void** const functions = *reinterpret_cast<void***>(&object);
    return reinterpret_cast<Function*>(functions[slot])(&object, parameters...);
}

// One slot called with one string.
[[nodiscard]] HRESULT CallSlot(IUnknown& object, int slot, BSTR argument);

// How scripts call: arguments in reverse order, and the member's kind as flags.
[[nodiscard]] WORD FlagsOf(Kind kind);

}  // namespace paylodge::test
