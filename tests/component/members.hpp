// Every member of the accounting object's interfaces, written down once more: what hosts and pages are built against.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/rows.hpp"

namespace paylodge::test {

enum class Kind { kMethod, kGet, kPut };

// A member as the type library describes it.
struct InterfaceMember {
    int interface_number;  // 1 is the first, which adds to IDispatch
    DISPID id;
    int slot;
    Kind kind;
    const char* name;
    const char* arguments;  // as in the interface definition; those of properties have no names
    const char* help;       // null where no text is promised
};

struct Member : InterfaceMember {
    // What a fresh module returns, called with the arguments of MakeArguments and a host that answers every request
    // with an empty document.
    HRESULT result;
    const char* results;  // results in their order: strings in quotes or null, booleans as numbers
    const char* request;  // an element of the one document that the host receives, or null when it receives none
};

inline constexpr int kInterfaces = 8;
inline constexpr int kSetNotificationChannelSlot = 77;

[[nodiscard]] std::span<const Member> Members();
// For tests with a case for each member of some sort.
template <class Predicate>
[[nodiscard]] std::vector<Member> MembersThat(const Predicate& predicate) {
    return RowsThat(Members(), predicate);
}
// For the names of parameterised tests, such as put_ReconFeeData.
[[nodiscard]] std::string NameOf(const Member& member);
[[nodiscard]] const Member& FindMember(std::string_view name, Kind kind = Kind::kMethod);

// Ids of IPaylodge to IPaylodge8, in this order.
[[nodiscard]] std::span<const IID> InterfaceIds();

}  // namespace paylodge::test
