// Each call of the host that an operation of the company-file storage makes, and what becomes of its failure.

#include <windows.h>

#include <comdef.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string_view>

#include "tests/support/live_allocations.hpp"
#include "tests/support/peak_memory.hpp"
#include "tests/support/rows.hpp"
#include "tests/unit/storage/data_file_storage_fixture.hpp"

namespace paylodge::test {
namespace {

struct Failure {
    Operation operation;
    const char* method;
    const char* function;
    const char* message;
};

void PrintTo(const Failure& failure, std::ostream* stream) { *stream << failure.operation.name << failure.method; }

constexpr const char* kNotCreated = "Failed to create COM object.";
constexpr const char* kNoRecords = "Failed to get data file records from company file in LH.";
constexpr const char* kNotDetermined = "Failed to determine if a data file record exists from data file records in LH.";
constexpr const char* kNoItem = "Failed to ask for item from data file records in LH.";
constexpr const char* kNotAdded = "Failed to add from data file records in LH.";
constexpr const char* kNoLock = "Failed to acquire lock for data file record in LH.";
constexpr const char* kNoBag = "Failed to get property bag from data file record in LH.";
constexpr const char* kNotUnlocked = "Failed to unlock data file record in LH.";

const Failure kFailures[] = {
    {kSelect, "CreateInstance", kSelect.function, kNotCreated},
    {kSelect, "GetRunningApplication", kSelect.function, kNotCreated},
    {kSelect, "QueryInterface", kSelect.function, kNotCreated},
    {kSelect, "GetAddInGoodies", kSelect.function, "Failed to get add-in goodies from LH application."},
    {kSelect, "AttachToCurrentCompany", kSelect.function,
     "Failed to attach to current company from add-in goodies in LH."},
    {kRead, "GetDataFileRecords", kInit, kNoRecords},
    {kRead, "Exists", kInit, kNotDetermined},
    {kRead, "Item", kInit, kNoItem},
    {kRead, "Add", kInit, kNotAdded},
    {kRead, "GetPropertyBag", kRead.function, kNoBag},
    {kRead, "Read", kRead.function, "Failed to read property \"Key\" from property bag in LH."},
    {kWrite, "GetDataFileRecords", kInit, kNoRecords},
    {kWrite, "Exists", kInit, kNotDetermined},
    {kWrite, "Item", kInit, kNoItem},
    {kWrite, "Add", kInit, kNotAdded},
    {kWrite, "Lock", kWrite.function, kNoLock},
    {kWrite, "GetPropertyBag", kWrite.function, kNoBag},
    {kWrite, "Write", kWrite.function, "Failed to write property \"Key\" to property bag in LH."},
    {kWrite, "PutDataVersion", kWrite.function, "Failed to put data version to data file record in LH."},
    {kWrite, "Save", kWrite.function, "Failed to save data file record in LH."},
    {kWrite, "Unlock", kWrite.function, kNotUnlocked},
    {kDelete, "GetDataFileRecords", kInit, kNoRecords},
    {kDelete, "Exists", kInit, kNotDetermined},
    {kDelete, "Item", kInit, kNoItem},
    {kDelete, "Add", kInit, kNotAdded},
    {kDelete, "Lock", kDelete.function, kNoLock},
    {kDelete, "Delete", kDelete.function, "Failed to delete data file record in LH."},
    {kDelete, "Unlock", kDelete.function, kNotUnlocked},
};

class FailingCall : public DataFileStorage, public testing::WithParamInterface<Failure> {
  protected:
    FailingCall() {
        if (GetParam().operation.run != kSelect.run) {
            Select();
        }
    }

    // Runs the operation on a record that is there unless the row is about adding it.
    [[nodiscard]] LONG Run() {
        host_.categories.clear();
        if (std::string(GetParam().method) != "Add") {
            Stored().Put(L"Key", L"old");
        }
        host_.calls.clear();
        return GetParam().operation.run(storage_);
    }
    [[nodiscard]] LONG FailWith(HRESULT code) {
        host_.codes[GetParam().method] = code;
        return Run();
    }

    // What a run without failure asks of the host up to the call that the row is about.
    [[nodiscard]] Calls CallsUpToFailure() {
        EXPECT_EQ(kSuccess, Run());
        Calls calls = TakeCalls();
        const auto failing = std::ranges::find_if(
            calls, [](const std::string& call) { return call.substr(0, call.find('(')) == GetParam().method; });
        calls.erase(failing + 1, calls.end());
        return calls;
    }

    [[nodiscard]] static std::string Logged(bool is_flag_on, HRESULT code) {
        return LoggedEntry(FailureText(is_flag_on, GetParam().function, GetParam().message, code));
    }
};

TEST_P(FailingCall, IsLoggedOnceAndReturned) {
    for (const bool is_flag_on : {false, true}) {
        SetLogContextFlag(is_flag_on);
        for (const HRESULT code : {E_FAIL, kHostFailure, static_cast<HRESULT>(0x800706BA)}) {
            EXPECT_EQ(kFailure, FailWith(code));
            EXPECT_EQ(Logged(is_flag_on, code), log_.Take());
        }
    }
}

TEST_P(FailingCall, EndsTheOperationAndReleasesTheLock) {
    Calls expected = CallsUpToFailure();
    const bool is_locked = std::find(expected.begin(), expected.end() - 1, "Lock()") != expected.end() - 1;
    if (is_locked && expected.back() != "Unlock()") {
        expected.emplace_back("Unlock()");
    }
    EXPECT_EQ(kFailure, FailWith(kHostFailure));
    EXPECT_EQ(expected, host_.calls);
    EXPECT_NE("", log_.Take());
}

TEST_P(FailingCall, IsTheOnlyOneLoggedWhenUnlockingFailsAsWell) {
    host_.codes["Unlock"] = E_ACCESSDENIED;
    EXPECT_EQ(kFailure, FailWith(kHostFailure));
    EXPECT_EQ(Logged(false, kHostFailure), log_.Take());
}

TEST_P(FailingCall, LeaksNothing) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "OANOCACHE is not set: automation keeps freed strings";
    }
    EXPECT_EQ(kFailure, FailWith(kHostFailure));
    const int objects = host_.live_objects;
    const LiveAllocations allocations;
    EXPECT_EQ(kFailure, FailWith(kHostFailure));
    host_.categories.clear();
    EXPECT_EQ(0, allocations.Count());
    EXPECT_EQ(objects, host_.live_objects);
    EXPECT_NE("", log_.Take());
}

TEST_P(FailingCall, DoesNotHinderTheNextCall) {
    EXPECT_EQ(kFailure, FailWith(kHostFailure));
    EXPECT_NE("", log_.Take());
    host_.codes.clear();
    EXPECT_EQ(kSuccess, Run());
}

// What a host throws, and the HRESULT that the log has for it.
struct ThrownByHost {
    const char* name;
    void (*throw_it)();
    HRESULT logged;
    // Thrown by code of this compiler, whose exceptions do not pass the system's creation of an object on x86.
    bool is_ours;
};
const ThrownByHost kThrownByHost[] = {
    {"ComError", [] { throw _com_error(kHostFailure); }, kHostFailure, true},
    {"BadAlloc", [] { throw std::bad_alloc(); }, E_OUTOFMEMORY, true},
    {"OtherException", [] { throw std::runtime_error("unexpected"); }, E_UNEXPECTED, true},
    {"PlatformsCompiler", [] { ::RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr); }, E_FAIL, false},
};

TEST_P(FailingCall, ThatThrowsIsLoggedOnceAndReturned) {
    const std::string method = GetParam().method;
    for (const auto& [name, throw_it, logged, is_ours] : kThrownByHost) {
        SCOPED_TRACE(name);
        if (is_ours && method == "CreateInstance") {
            continue;
        }
        host_.on_call[method] = throw_it;
        EXPECT_EQ(kFailure, Run());
        EXPECT_EQ(Logged(false, logged), log_.Take());
        if (method == "Unlock") {
            // The host threw before it unlocked.
            host_.held_locks = 0;
        }
        EXPECT_EQ(0, host_.held_locks);
        host_.on_call.clear();
        EXPECT_EQ(kSuccess, Run()) << "the next call works";
    }
}

INSTANTIATE_TEST_SUITE_P(Host, FailingCall, testing::ValuesIn(kFailures), testing::PrintToStringParamName());

class FailureUnderLock : public FailingCall {};

TEST_P(FailureUnderLock, IsLoggedBeforeTheRecordIsUnlocked) {
    std::string logged_before;
    host_.on_call["Unlock"] = [&] { logged_before = log_.Take(); };
    EXPECT_EQ(kFailure, FailWith(kHostFailure));
    EXPECT_EQ(Logged(false, kHostFailure), logged_before);
}

[[nodiscard]] bool IsUnderLock(const Failure& failure) {
    constexpr std::string_view kMethods[] = {"GetPropertyBag", "Write", "PutDataVersion", "Save", "Delete"};
    return failure.operation.run != kRead.run && std::ranges::find(kMethods, failure.method) != std::end(kMethods);
}

INSTANTIATE_TEST_SUITE_P(Host, FailureUnderLock, testing::ValuesIn(RowsThat(kFailures, IsUnderLock)),
                         testing::PrintToStringParamName());

// Not selecting, where the system makes the host's objects, which is not made for exceptions.
class FailingRecordCall : public FailingCall {};

// Every heap allocation of the operation and of the host in it in turn.
TEST_P(FailingRecordCall, WithoutMemoryLeavesNoLockAndThrowsNothing) {
    EXPECT_EQ(kFailure, FailWith(kHostFailure)) << "the log's place is known from here on";
    bool has_failed = true;
    for (int number = 1; has_failed; ++number) {
        host_.calls.clear();
        const FailingAllocation failing(number);
        EXPECT_NO_THROW(static_cast<void>(GetParam().operation.run(storage_)));
        has_failed = failing.HasFailed();
        EXPECT_EQ(0, host_.held_locks) << number;
    }
    static_cast<void>(log_.Take());
}

INSTANTIATE_TEST_SUITE_P(
    Host, FailingRecordCall,
    testing::ValuesIn(RowsThat(kFailures, [](const Failure& failure) { return failure.operation.run != kSelect.run; })),
    testing::PrintToStringParamName());

}  // namespace
}  // namespace paylodge::test
