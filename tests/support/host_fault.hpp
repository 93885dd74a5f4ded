// The ways in which a call of the host goes wrong.
#pragma once

#include <windows.h>

#include <comdef.h>

#include <array>
#include <cstdio>
#include <ostream>
#include <string>

namespace paylodge::test {

enum class FaultKind {
    kReturned,      // an HRESULT
    kThrown,        // a COM error of this compiler
    kThrownByHost,  // one of the platform's compiler, which built the host
};

struct HostFault {
    FaultKind kind;
    HRESULT code;

    [[nodiscard]] bool IsThrown() const noexcept { return kind != FaultKind::kReturned; }
    // Throws it; only for one that is thrown.
    void Throw() const {
        if (kind == FaultKind::kThrown) {
            throw _com_error(code);
        }
        constexpr DWORD kOfThePlatformsCompiler = 0xE06D7363;
        ::RaiseException(kOfThePlatformsCompiler, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    }
};

inline std::ostream& operator<<(std::ostream& stream, const HostFault& fault) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "%08lx", static_cast<unsigned long>(fault.code));
    constexpr std::array kKinds = {"returned ", "thrown ", "thrown by the platform's compiler "};
    return stream << kKinds.at(static_cast<size_t>(fault.kind)) << code.data();
}

inline constexpr std::array kHostFaults = {
    HostFault{FaultKind::kReturned, E_FAIL},
    HostFault{FaultKind::kReturned, E_OUTOFMEMORY},
    HostFault{FaultKind::kReturned, E_NOINTERFACE},
    HostFault{FaultKind::kReturned, RPC_E_DISCONNECTED},
    HostFault{FaultKind::kReturned, HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED)},
    // The processor's own.
    HostFault{FaultKind::kReturned, static_cast<HRESULT>(0x80040400)},
    HostFault{FaultKind::kThrown, E_OUTOFMEMORY},
    HostFault{FaultKind::kThrown, static_cast<HRESULT>(0x80040400)},
    HostFault{FaultKind::kThrownByHost, E_FAIL},
};

}  // namespace paylodge::test
