// The control of the built module, and its members written down once more: what hosts and pages are built against.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <ocidl.h>

#include <span>
#include <string>

#include "com/com_ptr.hpp"
#include "tests/component/members.hpp"
#include "tests/component/module_under_test.hpp"

namespace paylodge::test {

inline constexpr CLSID kControlClass = {0x00A0CCCE, 0x89E6, 0x4779, {0xAA, 0xCD, 0xE7, 0x74, 0x65, 0x1C, 0xB5, 0xAD}};
inline constexpr IID kControlEvents = {0x458632FF, 0x9CFF, 0x4A49, {0x95, 0x71, 0x94, 0xFB, 0x79, 0xD6, 0x35, 0x2E}};

// IPaylodgeCtrl to IPaylodgeCtrl10, in this order.
[[nodiscard]] std::span<const IID> ControlInterfaceIds();
// Such as IPaylodgeCtrl2, from 1.
[[nodiscard]] std::string ControlInterfaceName(int number);

// The first interface is IPaylodgeCtrl.
[[nodiscard]] std::span<const InterfaceMember> ControlMembers();
[[nodiscard]] const InterfaceMember& FindControlMember(std::string_view name, Kind kind = Kind::kMethod);

struct ControlEvent {
    DISPID id;
    const char* name;
    const char* arguments;
};
[[nodiscard]] std::span<const ControlEvent> ControlEvents();

[[nodiscard]] ComPtr<IPaylodgeCtrl10> CreateControl(const ModuleUnderTest& module);

// The point for the control's events.
[[nodiscard]] ComPtr<IConnectionPoint> EventPoint(IUnknown& control);

// The module with one control.
class ControlComponent : public ::testing::Test {
  protected:
    ModuleUnderTest module;
    ComPtr<IPaylodgeCtrl10> control = CreateControl(module);
};

}  // namespace paylodge::test
