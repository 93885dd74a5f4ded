// The last download time of each merchant account, kept in records of the company file.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

#include "tests/support/bstr_allocations.hpp"
#include "tests/support/fake_site.hpp"
#include "tests/support/fake_storage_host.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/support/log_files.hpp"
#include "tests/support/no_application.hpp"
#include "tests/support/recorded_sleeps.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

using Calls = std::vector<std::string>;

const wchar_t* const kCategory = L"Vexlor:MAS:PaylodgeKey";
const wchar_t* const kAccount = L"MerchantAccountNumber";
const wchar_t* const kTime = L"LastPLDownloadTime";

const Calls kSelecting = {"CreateInstance()", "GetRunningApplication()", "QueryInterface(IHostApplication)",
                          "GetAddInGoodies()", "AttachToCurrentCompany()"};

[[nodiscard]] Calls operator+(Calls calls, const Calls& more) {
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

// A record being obtained, its account being read in the walk, and one of its properties being written.
[[nodiscard]] Calls Getting(int number, const char* how) {
    const std::string shown = "(" + std::to_string(number) + ")";
    return {"GetDataFileRecords(\"Vexlor:MAS:PaylodgeKey\")", "Exists" + shown, how + shown};
}
[[nodiscard]] Calls Visiting(int number, const char* how) {
    return kSelecting + Getting(number, how) + Calls{"GetPropertyBag()", "Read(\"MerchantAccountNumber\")"};
}
[[nodiscard]] Calls Writing(int number, const std::string& property_and_value) {
    return Getting(number, "Item") +
           Calls{"Lock()", "GetPropertyBag()", "Write(" + property_and_value + ")", "PutDataVersion(1)",
                 "Save()", "Unlock()"};
}

class DownloadTimes : public OperationTest {
  public:
    ~DownloadTimes() override { EXPECT_EQ(0, host_of_records_->held_locks); }

  protected:
    // The argument may be null.
    template <class Account>
    [[nodiscard]] Result Get(const Account& account) {
        return Ask(object_, &CPaylodge::GetLastTxnDownloadTime, account);
    }
    template <class Account, class Time>
    [[nodiscard]] Result Set(const Account& account, const Time& time) {
        return Do(object_, &CPaylodge::SetLastTxnDownloadTime, account, time);
    }

    [[nodiscard]] std::map<LONG, StoredRecord>& Records() { return host_of_records_->categories[kCategory]; }
    [[nodiscard]] Calls TakeCalls() { return std::exchange(host_of_records_->calls, {}); }

    void Store(LONG number, std::wstring_view account, std::wstring_view time) {
        Records()[number].Put(kAccount, account);
        Records()[number].Put(kTime, time);
    }
    // The account and time of a record, such as "A=1".
    [[nodiscard]] std::wstring Stored(LONG number) {
        return Records()[number].Text(kAccount) + L"=" + Records()[number].Text(kTime);
    }

    ProcessLog log_;
    // Always there but for the test that takes it away.
    std::optional<FakeStorageHost> host_of_records_{std::in_place};
};

[[nodiscard]] VARIANT Number(LONG value) {
    VARIANT number;
    V_VT(&number) = VT_I4;
    V_I4(&number) = value;
    return number;
}
[[nodiscard]] VARIANT NullValue() {
    VARIANT null;
    V_VT(&null) = VT_NULL;
    return null;
}

// Getting

TEST_F(DownloadTimes, AccountThatWasNeverStoredReadsAsZero) {
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"A"));
    EXPECT_EQ(Visiting(1, "Add"), TakeCalls());
    EXPECT_EQ(0, Records()[1].saves);
}

TEST_F(DownloadTimes, GetReadsTheTimeOfTheAccountsRecord) {
    Store(1, L"A", L"first");
    Store(2, L"B", L"second");
    Store(3, L"C", L"third");
    EXPECT_EQ((Result{S_OK, L"second"}), Get(L"B"));
    EXPECT_EQ(Visiting(1, "Item") + Visiting(2, "Item") + Getting(2, "Item") +
                  Calls({"GetPropertyBag()", "Read(\"LastPLDownloadTime\")"}),
              TakeCalls());
}

TEST_F(DownloadTimes, WalkEndsBehindTheLastRecord) {
    Store(1, L"A", L"1");
    Store(2, L"B", L"2");
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"C"));
    EXPECT_EQ(Visiting(1, "Item") + Visiting(2, "Item") + Visiting(3, "Add"), TakeCalls());
}

TEST_F(DownloadTimes, FirstOfTwoRecordsOfAnAccountCounts) {
    Store(1, L"A", L"first");
    Store(2, L"A", L"second");
    EXPECT_EQ((Result{S_OK, L"first"}), Get(L"A"));
}

TEST_F(DownloadTimes, OtherCategoriesAreNotLookedAt) {
    host_of_records_->categories[L"Vexlor:MAS"][1].Put(kAccount, L"A");
    host_of_records_->categories[L"Vexlor:MAS"][1].Put(kTime, L"elsewhere");
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"A"));
}

TEST_F(DownloadTimes, TimeThatCannotBeReadIsZero) {
    Store(1, L"A", L"1");
    host_of_records_->codes["Read(\"LastPLDownloadTime\")"] = kHostFailure;
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"A"));
    EXPECT_EQ(LoggedEntry("Failed to read property \"LastPLDownloadTime\" from property bag in LH.  "
                          "HRESULT=0x80040400"),
              log_.Take());
}

TEST_F(DownloadTimes, TimeThatIsNoStringIsConverted) {
    Store(1, L"A", L"");
    Records()[1].Put(kTime, Number(20240131));
    EXPECT_EQ((Result{S_OK, L"20240131"}), Get(L"A"));
}

TEST_F(DownloadTimes, TimeThatIsMissingInTheAccountsRecordIsEmpty) {
    Records()[1].Put(kAccount, L"A");
    EXPECT_EQ((Result{S_OK, L""}), Get(L"A"));
}

TEST_F(DownloadTimes, TimeOutsideTheCodePageComesBackWithItsDefaultCharacter) {
    Store(1, L"A", L"\u3042 caf\u00e9 \u20ac");
    EXPECT_EQ((Result{S_OK, L"? caf\u00e9 \u20ac"}), Get(L"A"));
}

TEST_F(DownloadTimes, GetWithANullOutParameterIsEPointerAndCallsNothing) {
    EXPECT_HRESULT(E_POINTER, object_.GetLastTxnDownloadTime(Argument(L"A"), nullptr));
    EXPECT_EQ(Calls(), TakeCalls());
}

// Setting

TEST_F(DownloadTimes, FirstSetMakesRecordOneWithAccountAndTime) {
    EXPECT_EQ(Result{S_OK}, Set(L"A", L"now"));
    EXPECT_EQ(Visiting(1, "Add") + kSelecting + Writing(1, "\"MerchantAccountNumber\", \"A\"") +
                  Writing(1, "\"LastPLDownloadTime\", \"now\""),
              TakeCalls());
    EXPECT_EQ(L"A=now", Stored(1));
    EXPECT_EQ(1, Records()[1].version);
    EXPECT_EQ(2, Records()[1].saves);
    EXPECT_EQ(1U, Records().size());
    EXPECT_EQ((Result{S_OK, L"now"}), Get(L"A"));
}

TEST_F(DownloadTimes, AnotherAccountGetsTheNextRecord) {
    EXPECT_EQ(Result{S_OK}, Set(L"A", L"1"));
    EXPECT_EQ(Result{S_OK}, Set(L"B", L"2"));
    EXPECT_EQ(L"A=1", Stored(1));
    EXPECT_EQ(L"B=2", Stored(2));
    EXPECT_EQ(2U, Records().size());
}

TEST_F(DownloadTimes, SetAgainRewritesOnlyTheTimeOfTheAccountsRecord) {
    Store(1, L"A", L"1");
    Store(2, L"B", L"2");
    Store(3, L"C", L"3");
    EXPECT_EQ(Result{S_OK}, Set(L"B", L"new"));
    EXPECT_EQ(Visiting(1, "Item") + Visiting(2, "Item") + Writing(2, "\"LastPLDownloadTime\", \"new\""), TakeCalls());
    EXPECT_EQ(L"A=1", Stored(1));
    EXPECT_EQ(L"B=new", Stored(2));
    EXPECT_EQ(L"C=3", Stored(3));
}

TEST_F(DownloadTimes, AccountsThatDifferInCaseOnlyAreDifferent) {
    EXPECT_EQ(Result{S_OK}, Set(L"abc", L"lower"));
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"ABC"));
    EXPECT_EQ(Result{S_OK}, Set(L"ABC", L"upper"));
    EXPECT_EQ(L"abc=lower", Stored(1));
    EXPECT_EQ(L"ABC=upper", Stored(2));
    EXPECT_EQ((Result{S_OK, L"lower"}), Get(L"abc"));
    EXPECT_EQ((Result{S_OK, L"upper"}), Get(L"ABC"));
}

TEST_F(DownloadTimes, AccountsAreComparedByCodeUnitsAndTheirCount) {
    using namespace std::string_view_literals;
    const std::wstring_view accounts[] = {L"a"sv,       L"a "sv,     L"a\0"sv, L"a\0b"sv, L"\u00e9"sv,
                                          L"e\u0301"sv, L"\u3042"sv, L"?"sv,   L"00"sv,   L"0"sv};
    LONG number = 0;
    for (const std::wstring_view account : accounts) {
        EXPECT_EQ((Result{S_OK, L"0"}), Get(account)) << number;
        EXPECT_EQ(Result{S_OK}, Set(account, std::to_wstring(++number)));
        EXPECT_EQ(account, Records()[number].Text(kAccount));
    }
    EXPECT_EQ(std::size(accounts), Records().size());
    number = 0;
    for (const std::wstring_view account : accounts) {
        EXPECT_EQ((Result{S_OK, std::to_wstring(++number)}), Get(account));
    }
}

TEST_F(DownloadTimes, TimesComeBackAsTheyWereStored) {
    using namespace std::string_literals;
    for (const std::wstring& time : {L""s, L"0"s, L"2024-01-31T12:00:00Z"s, L" spaces and \"quotes\" & <signs>\r\n"s,
                                     L"a\0b"s, L"\0"s, L"caf\u00e9 \u20ac"s, std::wstring(1'000'000, L'9')}) {
        EXPECT_EQ(Result{S_OK}, Set(L"A", time));
        EXPECT_EQ(time, Records()[1].Text(kTime));
        EXPECT_EQ((Result{S_OK, time}), Get(L"A"));
    }
    EXPECT_EQ(1U, Records().size());
}

TEST_F(DownloadTimes, AccountOfAnyLengthIsAnAccount) {
    const std::wstring account(1'000'000, L'1');
    EXPECT_EQ(Result{S_OK}, Set(account, L"long"));
    EXPECT_EQ((Result{S_OK, L"long"}), Get(account));
    EXPECT_EQ((Result{S_OK, L"0"}), Get(account + L"2"));
}

TEST_F(DownloadTimes, NullAndEmptyAccountsAreTheSame) {
    EXPECT_EQ((Result{S_OK, L"0"}), Get(nullptr));
    EXPECT_EQ(Result{S_OK}, Set(nullptr, L"null"));
    EXPECT_EQ((Result{S_OK, L"null"}), Get(L""));
    EXPECT_EQ(Result{S_OK}, Set(L"", L"empty"));
    EXPECT_EQ((Result{S_OK, L"empty"}), Get(nullptr));
    EXPECT_EQ(1U, Records().size());
}

TEST_F(DownloadTimes, NullTimeIsStoredAsAStringAndReadAsEmpty) {
    EXPECT_EQ(Result{S_OK}, Set(L"A", nullptr));
    EXPECT_EQ(VT_BSTR, Records()[1].properties[kTime].Type());
    EXPECT_EQ((Result{S_OK, L""}), Get(L"A"));
}

// The walk

TEST_F(DownloadTimes, HoleEndsTheWalkAndIsReused) {
    Store(1, L"A", L"1");
    Records()[2].Put(kTime, L"left over");
    Store(3, L"C", L"3");
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"C"));
    EXPECT_EQ(Result{S_OK}, Set(L"B", L"2"));
    EXPECT_EQ(L"B=2", Stored(2));
    EXPECT_EQ((Result{S_OK, L"3"}), Get(L"C"));
    EXPECT_EQ(3U, Records().size());
}

TEST_F(DownloadTimes, RecordThatIsMissingIsAHole) {
    Store(1, L"A", L"1");
    Store(3, L"C", L"3");
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"C"));
    EXPECT_EQ(Result{S_OK}, Set(L"B", L"2"));
    EXPECT_EQ(L"B=2", Stored(2));
}

TEST_F(DownloadTimes, RecordThatCannotBeReadIsAHole) {
    Store(1, L"A", L"1");
    Store(2, L"B", L"2");
    host_of_records_->codes["Exists(2)"] = kHostFailure;
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"B"));
    EXPECT_EQ(LoggedEntry("Failed to determine if a data file record exists from data file records in LH.  "
                          "HRESULT=0x80040400"),
              log_.Take());
}

TEST_F(DownloadTimes, AccountThatIsNoStringIsComparedAsOne) {
    Store(1, L"A", L"1");
    Records()[2].Put(kAccount, Number(4711));
    Records()[2].Put(kTime, L"of the number");
    Store(3, L"C", L"3");
    EXPECT_EQ((Result{S_OK, L"of the number"}), Get(L"4711"));
    EXPECT_EQ((Result{S_OK, L"3"}), Get(L"C"));
}

// What a member throws; S_OK when it returns.
[[nodiscard]] HRESULT Thrown(const std::function<void()>& call) {
    try {
        call();
    } catch (const _com_error& error) {
        return error.Error();
    }
    return S_OK;
}

TEST_F(DownloadTimes, AccountThatCannotBeConvertedThrows) {
    Records()[1].Put(kAccount, NullValue());
    StringSink time;
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH,
                   Thrown([&] { static_cast<void>(object_.GetLastTxnDownloadTime(Argument(L"A"), time.Slot())); }));
    EXPECT_EQ(kNull, time.Show());
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH, Thrown([&] { static_cast<void>(Set(L"A", L"1")); }));
    EXPECT_EQ(VT_NULL, Records()[1].properties[kAccount].Type());
    EXPECT_EQ(1U, Records().size());
}

TEST_F(DownloadTimes, TimeThatCannotBeConvertedThrows) {
    Store(1, L"A", L"1");
    Records()[1].Put(kTime, NullValue());
    StringSink time;
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH,
                   Thrown([&] { static_cast<void>(object_.GetLastTxnDownloadTime(Argument(L"A"), time.Slot())); }));
    EXPECT_EQ(kNull, time.Show());
}

TEST_F(DownloadTimes, AccountsByTheThousandCostEachTheSame) {
    constexpr LONG kAccounts = 2000;
    for (LONG number = 1; number <= kAccounts; ++number) {
        Store(number, L"account " + std::to_wstring(number), L"time " + std::to_wstring(number));
    }
    EXPECT_EQ((Result{S_OK, L"time 2000"}), Get(L"account 2000"));
    EXPECT_EQ(2000 * Visiting(1, "Item").size() + Getting(1, "Item").size() + 2, TakeCalls().size());
    EXPECT_EQ(Result{S_OK}, Set(L"account 2001", L"time 2001"));
    EXPECT_EQ(L"account 2001=time 2001", Stored(2001));
    EXPECT_EQ((Result{S_OK, L"time 1"}), Get(L"account 1"));
}

// Pages

TEST_F(DownloadTimes, RefusedPageGetsNothingAndTheHostIsNotAsked) {
    Store(1, L"A", L"1");
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(&static_cast<IPaylodge8&>(object_), site);
    EXPECT_EQ((Result{S_OK, kUntouched}), Get(L"A"));
    EXPECT_EQ(Result{S_OK}, Set(L"A", L"2"));
    EXPECT_HRESULT(S_OK, object_.GetLastTxnDownloadTime(nullptr, nullptr));
    EXPECT_EQ(Calls(), TakeCalls());
    EXPECT_EQ(L"A=1", Stored(1));
}

TEST_F(DownloadTimes, ApprovedPageIsServed) {
    FakeSite site(PageAt(kApprovedPage));
    const OnSite on_site(&static_cast<IPaylodge8&>(object_), site);
    EXPECT_EQ(Result{S_OK}, Set(L"A", L"2"));
    EXPECT_EQ((Result{S_OK, L"2"}), Get(L"A"));
}

// Failures

TEST_F(DownloadTimes, GetIsZeroWhicheverOfTheHostsCallsFails) {
    const Calls calls = Visiting(1, "Item") + Getting(1, "Item") + Calls{"GetPropertyBag()", "Read()"};
    for (size_t number = 1; number <= calls.size(); ++number) {
        Store(1, L"A", L"1");
        host_of_records_->failing_call = number;
        EXPECT_EQ((Result{S_OK, L"0"}), Get(L"A")) << calls[number - 1];
        EXPECT_EQ(number, TakeCalls().size()) << calls[number - 1];
        EXPECT_NE("", log_.Take()) << calls[number - 1];
    }
    host_of_records_->failing_call = 0;
    EXPECT_EQ((Result{S_OK, L"1"}), Get(L"A"));
}

// A walk that breaks off has not found the account, which then gets the record where it broke off.
TEST_F(DownloadTimes, SetOfAnAccountFailsWhenItsTimeCannotBeWritten) {
    const size_t walk = Visiting(1, "Item").size();
    const size_t end = walk + Writing(1, "").size();
    for (size_t number = 1; number <= end; ++number) {
        Store(1, L"A", L"1");
        host_of_records_->failing_call = number;
        EXPECT_EQ(Result{number <= walk ? S_OK : E_FAIL}, Set(L"A", L"2")) << number;
        EXPECT_EQ(0, host_of_records_->held_locks) << number;
        EXPECT_NE("", log_.Take()) << number;
        EXPECT_EQ(L"A", Records()[1].Text(kAccount)) << number;
        EXPECT_EQ(1U, Records().size()) << number;
        static_cast<void>(TakeCalls());
    }
}

TEST_F(DownloadTimes, FirstSetFailsWhenItsRecordCannotBeSelectedOrWritten) {
    const size_t walk = Visiting(1, "Add").size();
    const size_t account_written = walk + kSelecting.size() + Writing(1, "").size();
    const size_t end = account_written + Writing(1, "").size();
    for (size_t number = 1; number <= end; ++number) {
        host_of_records_->categories.clear();
        host_of_records_->failing_call = number;
        EXPECT_EQ(Result{number <= walk ? S_OK : E_FAIL}, Set(L"A", L"1")) << number;
        EXPECT_EQ(0, host_of_records_->held_locks) << number;
        EXPECT_NE("", log_.Take()) << number;
        if (number > account_written) {
            EXPECT_EQ(L"A", Records()[1].Text(kAccount)) << number;
        }
        static_cast<void>(TakeCalls());
    }
}

TEST_F(DownloadTimes, FailureBetweenTheWritesLeavesAnAccountWithoutATime) {
    host_of_records_->codes["Write(\"LastPLDownloadTime\", \"1\")"] = kHostFailure;
    EXPECT_EQ(Result{E_FAIL}, Set(L"A", L"1"));
    EXPECT_EQ(L"A=(none)", Stored(1));
    EXPECT_EQ(LoggedEntry("Failed to write property \"LastPLDownloadTime\" to property bag in LH.  HRESULT=0x80040400"),
              log_.Take());
    host_of_records_->codes.clear();
    EXPECT_EQ(Result{S_OK}, Set(L"A", L"2"));
    EXPECT_EQ(L"A=2", Stored(1));
    EXPECT_EQ(1U, Records().size());
}

TEST_F(DownloadTimes, SetFailsWhileSomebodyElseHoldsTheRecord) {
    const RecordedSleeps sleeps;
    Store(1, L"A", L"1");
    for (const wchar_t* account : {L"A", L"B"}) {
        host_of_records_->lock_answers.assign(5, {.is_acquired = false});
        EXPECT_EQ(Result{E_FAIL}, Set(account, L"2"));
        EXPECT_EQ(LoggedEntry("Could not acquire data file record lock in LH.  HRESULT=0"), log_.Take());
    }
    EXPECT_EQ(10U, sleeps.milliseconds.size());
    EXPECT_EQ(L"A=1", Stored(1));
    EXPECT_EQ(L"(none)=(none)", Stored(2));
}

TEST_F(DownloadTimes, WithoutAHostGetIsZeroAndSetFails) {
    host_of_records_.reset();
    std::optional<NoApplication> no_application(std::in_place);
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"A"));
    EXPECT_EQ(Result{E_FAIL}, Set(L"A", L"1"));
    const std::string not_created = LoggedEntry("Failed to create COM object.  HRESULT=0x80040154");
    EXPECT_EQ(not_created + not_created + not_created, log_.Take());
    no_application.reset();
    host_of_records_.emplace();
}

// Memory

class DownloadTimesMemory : public DownloadTimes {
  protected:
    DownloadTimesMemory() { Store(1, L"A", L"1"); }

    // Fails each allocation of a string in turn, until the call needs no more.
    void FailEachAllocation(const std::function<void()>& call) {
        for (int number = 1;; ++number) {
            BstrAllocations allocations(number);
            const HRESULT thrown = Thrown(call);
            if (!allocations.HasFailed()) {
                EXPECT_GT(number, 3);
                break;
            }
            EXPECT_TRUE(thrown == S_OK || thrown == E_OUTOFMEMORY) << number << ": " << thrown;
            EXPECT_EQ(0, host_of_records_->held_locks) << number;
        }
        static_cast<void>(log_.Take());
    }
};

TEST_F(DownloadTimesMemory, LackOfItIsThrownByGetOrReadsAsZero) {
    const Argument account(L"A");
    FailEachAllocation([&] {
        StringSink time;
        const HRESULT result = object_.GetLastTxnDownloadTime(account, time.Slot());
        EXPECT_HRESULT(S_OK, result);
        EXPECT_TRUE(time.Show() == L"0" || time.Show() == L"1") << ::testing::PrintToString(time.Show());
    });
    EXPECT_EQ((Result{S_OK, L"1"}), Get(L"A"));
}

TEST_F(DownloadTimesMemory, LackOfItIsThrownBySetOrFails) {
    const Argument account(L"B");
    const Argument time(L"2");
    FailEachAllocation([&] { static_cast<void>(object_.SetLastTxnDownloadTime(account, time)); });
    EXPECT_EQ(Result{S_OK}, Set(L"B", L"3"));
    EXPECT_EQ((Result{S_OK, L"3"}), Get(L"B"));
}

TEST_F(DownloadTimesMemory, IsFreedOnEveryWay) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "OANOCACHE is not set: automation keeps freed strings";
    }
    EXPECT_EQ((Result{S_OK, L"1"}), Get(L"A"));
    const LiveAllocations allocations;
    EXPECT_EQ((Result{S_OK, L"0"}), Get(L"B"));
    EXPECT_EQ(Result{S_OK}, Set(L"B", L"2"));
    EXPECT_EQ(Result{S_OK}, Set(L"B", L"3"));
    EXPECT_EQ((Result{S_OK, L"3"}), Get(L"B"));
    host_of_records_->codes["Save"] = kHostFailure;
    EXPECT_EQ(Result{E_FAIL}, Set(L"A", L"4"));
    Records()[1].Put(kAccount, NullValue());
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH, Thrown([&] { static_cast<void>(Get(L"A")); }));
    host_of_records_->categories.clear();
    EXPECT_EQ(0, allocations.Count());
    EXPECT_NE("", log_.Take());
}

}  // namespace
}  // namespace paylodge::test
