// The built module, loaded anew for each test: its process-wide values are those of the start.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <oaidl.h>

#include <memory>
#include <string>

#include "com/com_ptr.hpp"
#include "paylodge.h"
#include "tests/component/members.hpp"
#include "tests/support/fake_host.hpp"
#include "tests/support/no_application.hpp"

namespace paylodge::test {

[[nodiscard]] std::wstring ModulePath();

// Loads the module, and checks at the end that it lets itself be unloaded.
class ModuleUnderTest {
  public:
    ModuleUnderTest();
    ~ModuleUnderTest();
    ModuleUnderTest(const ModuleUnderTest&) = delete;
    ModuleUnderTest& operator=(const ModuleUnderTest&) = delete;

    [[nodiscard]] HMODULE Handle() const noexcept { return handle_; }

    // An export as a function; null when there is none.
    template <class Function>
    [[nodiscard]] Function* Export(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(handle_, name)));
    }

    [[nodiscard]] HRESULT GetClassObject(REFCLSID class_id, REFIID interface_id, void** object) const;
    [[nodiscard]] HRESULT CanUnloadNow() const;

    // A new accounting object.
    [[nodiscard]] ComPtr<IPaylodge8> CreatePaylodge() const;

  private:
    HMODULE handle_;
};

// The module with a host around it, and one accounting object.
class Component : public ::testing::Test {
  protected:
    FakeHost host;
    NoApplication no_application;
    ModuleUnderTest module;
    ComPtr<IPaylodge8> paylodge = module.CreatePaylodge();
};

// Component tests with one case for each member.
class ComponentMember : public Component, public ::testing::WithParamInterface<Member> {};

// A failing case is known by its name.
void PrintTo(const Member& member, std::ostream* out);

}  // namespace paylodge::test
