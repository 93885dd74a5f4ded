// Every call of the host's records fails in turn, in every way, in everything that is stored in the company file: the
// result is the described one, the failure is logged once, locks and objects are given back, and the next call works.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <string>

#include "storage/data_file_storage.hpp"
#include "tests/support/fake_storage_host.hpp"
#include "tests/support/host_fault.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/support/log_files.hpp"
#include "tests/support/recorded_sleeps.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

constexpr const wchar_t* kCategory = L"Vexlor:MAS:PaylodgeKey";
constexpr const wchar_t* kAccount = L"MerchantAccountNumber";
constexpr const wchar_t* kTime = L"LastPLDownloadTime";

[[nodiscard]] Result OfStatus(CDataFileStorage::Status status) { return {status, L"status"}; }

[[nodiscard]] Result Delete() {
    CDataFileStorage storage;
    const CDataFileStorage::Status selected = storage.SelectDFR("Vexlor:MAS:PaylodgeKey", 1);
    return OfStatus(selected == CDataFileStorage::kSuccess ? storage.DeleteDFR() : selected);
}

struct Storing {
    const char* name;
    // Whether the account is stored before.
    bool is_stored;
    Result (*call)(CPaylodge& object);
    Result healthy;
    Result failed;
    // The calls at the beginning whose failure does no more than that the account is not found.
    size_t calls_of_search;
    // The record that it leaves.
    std::wstring left;
};

std::ostream& operator<<(std::ostream& stream, const Storing& storing) { return stream << storing.name; }

const Storing kStorings[] = {
    {"GetStored",
     true,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetLastTxnDownloadTime, L"A"); },
     {S_OK, L"old"},
     {S_OK, L"0"},
     0,
     L"A=old"},
    {"SetStored",
     true,
     [](CPaylodge& object) { return Do(object, &CPaylodge::SetLastTxnDownloadTime, L"A", L"new"); },
     {S_OK},
     {E_FAIL},
     10,
     L"A=new"},
    {"SetNew",
     false,
     [](CPaylodge& object) { return Do(object, &CPaylodge::SetLastTxnDownloadTime, L"A", L"new"); },
     {S_OK},
     {E_FAIL},
     10,
     L"A=new"},
    {"Delete", true, [](CPaylodge&) { return Delete(); }, OfStatus(CDataFileStorage::kSuccess),
     OfStatus(CDataFileStorage::kFailure), 0, L"(none)=(none)"},
};

class StorageFaults : public OperationTest, public ::testing::WithParamInterface<Storing> {
  protected:
    static void TearDownTestSuite() { std::cout << combinations_ << " combinations of call and failure\n"; }

    [[nodiscard]] StoredRecord& FirstRecord() { return records_.categories[kCategory][1]; }
    void Reset() {
        records_.categories.clear();
        if (GetParam().is_stored) {
            FirstRecord().Put(kAccount, L"A");
            FirstRecord().Put(kTime, L"old");
        }
        records_.calls.clear();
    }
    [[nodiscard]] Result Call() { return GetParam().call(object_); }
    void ExpectHealthyCall() {
        Reset();
        EXPECT_EQ(GetParam().healthy, Call());
        EXPECT_EQ(GetParam().left, FirstRecord().Text(kAccount) + L"=" + FirstRecord().Text(kTime));
        EXPECT_EQ("", log_.Take());
        ExpectNothingHeld();
    }
    void ExpectNothingHeld() const {
        EXPECT_EQ(0, records_.held_locks);
        EXPECT_EQ(0, records_.live_objects);
    }

    void Try(size_t call, const HostFault& fault) {
        Reset();
        records_.failing_call = call;
        records_.failing_code = fault.code;
        records_.on_failing_call = [&fault] {
            if (fault.IsThrown()) {
                fault.Throw();
            }
        };
        Result result{};
        {
            const LiveAllocations allocations;
            result = Call();
            records_.failing_call = 0;
            records_.categories.clear();
            if (LiveAllocations::CanCountStrings()) {
                EXPECT_EQ(0, allocations.Count()) << "strings are left";
            }
        }
        EXPECT_EQ(call <= GetParam().calls_of_search ? GetParam().healthy : GetParam().failed, result);
        const std::string log = log_.Take();
        EXPECT_EQ(2, std::ranges::count(log, '\n')) << "one entry of two lines: " << log;
        ExpectNothingHeld();
        ExpectHealthyCall();
        ++combinations_;
    }

    inline static int combinations_ = 0;
    ProcessLog log_;
    RecordedSleeps sleeps_;
    FakeStorageHost records_;
};

INSTANTIATE_TEST_SUITE_P(, StorageFaults, ::testing::ValuesIn(kStorings),
                         [](const auto& row) { return row.param.name; });

TEST_P(StorageFaults, EndAsDescribedAndLeaveNothingBehind) {
    ExpectHealthyCall();
    Reset();
    static_cast<void>(Call());
    const std::vector<std::string> calls = records_.calls;
    for (size_t call = 1; call <= calls.size(); ++call) {
        for (const HostFault& fault : kHostFaults) {
            if (calls[call - 1] == "CreateInstance()" && fault.IsThrown()) {
                // What the system holds of the class object meanwhile would never be released.
                continue;
            }
            SCOPED_TRACE(::testing::Message() << "call " << call << ", " << calls[call - 1] << " " << fault);
            Try(call, fault);
        }
    }
}

}  // namespace
}  // namespace paylodge::test
