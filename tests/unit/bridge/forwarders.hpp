// The methods of the control that forward to the bridge library.
#pragma once

#include <span>
#include <string>

#include "tests/unit/bridge/control_fixture.hpp"

namespace paylodge::test {

// What becomes of what the library's function returns.
enum class Returns { kNothing, kReencodedText, kByte, kCopiedText, kString };

struct Forwarder {
    const char* name;
    Returns returns;
    // The call of the library's function as BridgeCalls shows it, without the variant.
    const wchar_t* call;
    // Calls the method; a result is put into the slot that fits.
    HRESULT (*run)(CPaylodgeCtrl& control, BSTR* text, VARIANT_BOOL* flag);

    friend std::ostream& operator<<(std::ostream& stream, const Forwarder& forwarder) {
        return stream << forwarder.name;
    }
};

[[nodiscard]] std::span<const Forwarder> Forwarders() noexcept;

// The HRESULT of the call, and the result, which is untouched where there is none.
[[nodiscard]] Result Forward(const Forwarder& forwarder, CPaylodgeCtrl& control);

// What the method returns without its function.
[[nodiscard]] Result WithoutFunction(const Forwarder& forwarder);

[[nodiscard]] inline std::string NameOfForwarder(const ::testing::TestParamInfo<Forwarder>& information) {
    return information.param.name;
}

}  // namespace paylodge::test
