// How scripts enter a dual interface: no exception leaves a call of theirs.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <array>

#include "com/boundary.hpp"
#include "com/method_list.hpp"

namespace paylodge {

// A second view of an object, for the platform's implementation of Invoke: the same slots in the same order, each of
// which calls the object's own and turns what that throws into an HRESULT. The platform's code between a script and the
// object is not made for exceptions: on x86 one that is thrown there ends the process. Callers of the object's own
// slots do not come this way. Lives on the stack of one Invoke.
template <class Interface>
class ScriptEntry {
  public:
    explicit ScriptEntry(Interface& object) noexcept : object_(object) {}
    ScriptEntry(const ScriptEntry&) = delete;
    ScriptEntry& operator=(const ScriptEntry&) = delete;

    // What Invoke calls the slots of.
    [[nodiscard]] void* Instance() noexcept { return this; }
    // Whether a call ran out of memory.
    [[nodiscard]] bool IsOutOfMemory() const noexcept { return is_out_of_memory_; }

  private:
    // The platform's headers have another one beside it.
    static constexpr HRESULT (STDMETHODCALLTYPE IUnknown::*kQueryInterface)(REFIID, void**) = &IUnknown::QueryInterface;

    template <auto method>
    struct Slot;
    template <class Result, class Base, class... Arguments, Result (STDMETHODCALLTYPE Base::*method)(Arguments...)>
    struct Slot<method> {
        static Result STDMETHODCALLTYPE Call(ScriptEntry* entry, Arguments... arguments) noexcept {
            try {
                return (entry->object_.*method)(arguments...);
            } catch (...) {
                const HRESULT result = CaughtHResult();
                entry->is_out_of_memory_ = result == E_OUTOFMEMORY;
                return static_cast<Result>(result);
            }
        }
    };

    template <auto... methods>
    [[nodiscard]] static std::array<void*, sizeof...(methods)> SlotsOf(MethodList<methods...> /*list*/) noexcept {
        return {reinterpret_cast<void*>(&Slot<methods>::Call)...};
    }
    [[nodiscard]] static auto MakeTable() noexcept {
        struct Table {
            std::array<void*, 7> dispatch;
            decltype(SlotsOf(typename ScriptMembers<Interface>::Methods{})) members;
        };
        return Table{
            SlotsOf(MethodList<kQueryInterface, &IUnknown::AddRef, &IUnknown::Release, &IDispatch::GetTypeInfoCount,
                               &IDispatch::GetTypeInfo, &IDispatch::GetIDsOfNames, &IDispatch::Invoke>{}),
            SlotsOf(typename ScriptMembers<Interface>::Methods{})};
    }

    // The first member, where callers look for the table of slots.
    const void* slots_ = &kTable;
    Interface& object_;
    bool is_out_of_memory_ = false;

    inline static const auto kTable = MakeTable();
};

}  // namespace paylodge
