#include "com/guarded_call.hpp"

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <stdexcept>

#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

constexpr DWORD kForeignCppException = 0xE06D7363;

// Whether the work returned.
[[nodiscard]] bool Guarded(const std::function<void()>& work) {
    return RunGuarded(work, &IsForeignExceptionOrCrash) == 0;
}

void Raise(DWORD code) { ::RaiseException(code, 0, 0, nullptr); }

TEST(GuardedCall, RunsTheFunctionOnce) {
    int count = 0;
    EXPECT_TRUE(Guarded([&count] { ++count; }));
    EXPECT_EQ(count, 1);
}

TEST(GuardedCall, FailsWhenTheFunctionTouchesMemoryThatIsNotThere) {
    EXPECT_FALSE(Guarded([] { *reinterpret_cast<volatile int*>(16) = 1; }));
}

TEST(GuardedCall, FailsWhenTheFunctionCallsWhatIsNotThere) {
    EXPECT_FALSE(Guarded([] { reinterpret_cast<void (*)()>(16)(); }));
}

TEST(GuardedCall, FailsOnEveryOtherStructuredException) {
    for (const DWORD code :
         {EXCEPTION_INT_DIVIDE_BY_ZERO, EXCEPTION_IN_PAGE_ERROR, kForeignCppException, DWORD{0xE0000001}}) {
        EXPECT_FALSE(Guarded([code] { Raise(code); })) << std::hex << code;
    }
}

TEST(GuardedCall, IsAsGoodAsNewAfterAFailure) {
    for (int round = 0; round < 1000; ++round) {
        ASSERT_FALSE(Guarded([] { Raise(EXCEPTION_ACCESS_VIOLATION); }));
        ASSERT_TRUE(Guarded([] {}));
    }
}

TEST(GuardedCall, CatchesInTheInnermostCall) {
    bool is_inner_done = true;
    EXPECT_TRUE(Guarded([&is_inner_done] { is_inner_done = Guarded([] { Raise(EXCEPTION_ACCESS_VIOLATION); }); }));
    EXPECT_FALSE(is_inner_done);
    EXPECT_FALSE(Guarded([] {
        static_cast<void>(Guarded([] {}));
        Raise(EXCEPTION_ACCESS_VIOLATION);
    }));
}

#ifndef _WIN64
[[nodiscard]] DWORD FirstHandler() {
    DWORD first = 0;
    asm volatile("movl %%fs:0, %0" : "=r"(first));
    return first;
}

TEST(GuardedCall, LeavesTheThreadsOtherHandlersInPlace) {
    const DWORD before = FirstHandler();
    EXPECT_TRUE(Guarded([before] { EXPECT_NE(FirstHandler(), before); }));
    EXPECT_EQ(FirstHandler(), before);
    EXPECT_FALSE(Guarded([] { Raise(EXCEPTION_ACCESS_VIOLATION); }));
    EXPECT_EQ(FirstHandler(), before);
}
#endif

TEST(GuardedCall, LetsAFunctionHandleItsOwnExceptions) {
    EXPECT_TRUE(Guarded([] {
        try {
            throw std::runtime_error("caught inside");
        } catch (const std::runtime_error&) {
        }
    }));
}

TEST(GuardedCall, LetsCppExceptionsThrough) {
    bool is_destroyed = false;
    struct Mark {
        bool& is_destroyed;
        ~Mark() { is_destroyed = true; }
    };
    EXPECT_THROW(static_cast<void>(Guarded([&is_destroyed] {
                     const Mark mark{is_destroyed};
                     throw std::runtime_error("on its way");
                 })),
                 std::runtime_error);
    EXPECT_TRUE(is_destroyed);
}

TEST(GuardedCall, ReturnsTheCodeThatItCaught) {
    for (const DWORD code : {EXCEPTION_ACCESS_VIOLATION, kForeignCppException, DWORD{0xE0000001}}) {
        EXPECT_EQ(code, RunGuarded([code] { Raise(code); }, &IsForeignExceptionOrCrash));
    }
    EXPECT_EQ(0U, RunGuarded([] {}, &IsForeignExceptionOrCrash));
}

// Debuggers wait for the first two; after an overflow there is no stack to go on with.
TEST(GuardedCall, LeavesBreakpointsAndOverflowsOfTheStackToOthers) {
    for (const DWORD code : {EXCEPTION_BREAKPOINT, EXCEPTION_SINGLE_STEP, EXCEPTION_STACK_OVERFLOW}) {
        bool has_returned = false;
        const auto inner = [&] {
            static_cast<void>(Guarded([code] { Raise(code); }));
            has_returned = true;
        };
        const auto catch_all = [](DWORD) { return true; };
        EXPECT_EQ(code, RunGuarded(inner, +catch_all)) << std::hex << code;
        EXPECT_FALSE(has_returned) << std::hex << code;
    }
}

TEST(GuardedCall, LetsPassWhatItsFilterDoesNotName) {
    DWORD inner = 1;
    const auto crash = [] { Raise(EXCEPTION_ACCESS_VIOLATION); };
    const auto guard_for_cpp = [&] { inner = RunGuarded(crash, &IsForeignCppException); };
    EXPECT_EQ(static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION), RunGuarded(guard_for_cpp, &IsForeignExceptionOrCrash));
    EXPECT_EQ(1U, inner) << "the inner call returned";
}

TEST(HostCall, ReturnsWhatTheHostReturns) {
    EXPECT_HRESULT(S_FALSE, CallHost([] { return S_FALSE; }));
}

TEST(HostCall, ThrowsAForeignCppExceptionAsAComError) {
    try {
        static_cast<void>(CallHost([]() -> HRESULT {
            Raise(kForeignCppException);
            return S_OK;
        }));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const _com_error& error) {
        EXPECT_HRESULT(E_FAIL, error.Error());
    }
}

TEST(HostCall, LetsComErrorsOfThisCompilerThrough) {
    try {
        static_cast<void>(CallHost([]() -> HRESULT { throw _com_error(E_ABORT); }));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const _com_error& error) {
        EXPECT_HRESULT(E_ABORT, error.Error());
    }
}

TEST(HostCall, LetsCrashesPass) {
    const auto crash = []() -> HRESULT {
        Raise(EXCEPTION_ACCESS_VIOLATION);
        return S_OK;
    };
    EXPECT_FALSE(Guarded([&] { static_cast<void>(CallHost(crash)); }));
}

}  // namespace
}  // namespace paylodge::test
