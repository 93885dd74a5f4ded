// Calls of the host's code, which another compiler built: its exceptions are structured ones.
#pragma once

#include <windows.h>

#include <comdef.h>

#include <exception>
#include <utility>

namespace paylodge {

// Which structured exceptions a guarded call catches, by their codes.
using ExceptionFilter = bool __cdecl(DWORD code);

// C++ exceptions of the platform's own compiler, COM errors among them.
[[nodiscard]] bool __cdecl IsForeignCppException(DWORD code) noexcept;

// Those and crashes: all but the C++ exceptions of this compiler, breakpoints and single steps, which are a debugger's,
// and stack overflow, which is the system's, since the stack has lost its guard page then.
[[nodiscard]] bool __cdecl IsForeignExceptionOrCrash(DWORD code) noexcept;

extern "C" {
// Calls function(context), which must not let a C++ exception of this compiler out. The code of the exception that the
// filter caught, or 0 when the function returned. What is on the stack between the function and the exception is
// abandoned, not destroyed, as far as this compiler built it.
[[nodiscard]] DWORD CallGuarded(void(__cdecl* function)(void* context), void* context, ExceptionFilter* filter);
}

// Runs work() and catches the structured exceptions that the filter names: their code, or 0. The work's own frame has
// to be without destructors. C++ exceptions that reach the work are thrown again here; on x86 one cannot leave the
// module that threw it, and ends the process there.
template <class Work>
[[nodiscard]] DWORD RunGuarded(const Work& work, ExceptionFilter* filter) {
    struct Context {
        const Work& work;
        std::exception_ptr thrown;
    } context{work, nullptr};
    const DWORD code = CallGuarded(
        [](void* argument) {
            auto& running = *static_cast<Context*>(argument);
            try {
                running.work();
            } catch (...) {
                running.thrown = std::current_exception();
            }
        },
        &context, filter);
    if (context.thrown) {
        std::rethrow_exception(std::move(context.thrown));
    }
    return code;
}

// Calls the host. A C++ exception of the host's compiler is thrown as the COM error E_FAIL; crashes pass.
template <class Work>
auto CallHost(const Work& work) {
    decltype(work()) result{};
    if (RunGuarded([&] { result = work(); }, &IsForeignCppException) != 0) {
        _com_issue_error(E_FAIL);
    }
    return result;
}

}  // namespace paylodge
