#include "storage/data_file_storage.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "tests/support/log_files.hpp"
#include "tests/support/no_application.hpp"
#include "tests/support/recorded_sleeps.hpp"
#include "tests/unit/storage/data_file_storage_fixture.hpp"

namespace paylodge::test {
namespace {

// Selecting

TEST_F(DataFileStorage, SelectFindsTheCurrentCompanyAndAsksForNoRecord) {
    EXPECT_EQ(kSuccess, storage_.SelectDFR("Category", 7));
    EXPECT_EQ(kSelecting, host_.calls);
}

TEST_F(DataFileStorage, SelectKeepsNothingButTheCompany) {
    const int before = host_.live_objects;
    EXPECT_EQ(kSuccess, storage_.SelectDFR("Category", 7));
    EXPECT_EQ(before + 1, host_.live_objects);
    EXPECT_EQ(kSuccess, storage_.SelectDFR("Category", 8));
    EXPECT_EQ(before + 1, host_.live_objects);
}

TEST_F(DataFileStorage, SelectAgainMovesToAnotherRecord) {
    host_.categories[L"Other"][-2].Put(L"Key", L"there");
    Select();
    ASSERT_EQ(kSuccess, storage_.SelectDFR("Other", -2));
    EXPECT_EQ(kSelecting, TakeCalls());
    OwnedVariant value;
    EXPECT_EQ(kSuccess, storage_.ReadProperty("Key", value.Receive()));
    EXPECT_EQ(L"there", View(value.Bstr()));
    EXPECT_EQ((Calls{"GetDataFileRecords(\"Other\")", "Exists(-2)", "Item(-2)", "GetPropertyBag()", "Read(\"Key\")"}),
              host_.calls);
}

TEST_F(DataFileStorage, SelectWithoutARunningApplicationLogsZero) {
    host_.null_results = {"GetRunningApplication"};
    EXPECT_EQ(kFailure, kSelect.run(storage_));
    EXPECT_EQ(LoggedEntry("Failed to get LH Application ptr.  HRESULT=0"), log_.Take());
    SetLogContextFlag(true);
    EXPECT_EQ(kFailure, kSelect.run(storage_));
    EXPECT_EQ(LoggedEntry("NetworkAdapterManager:CDataFileStorage::SelectDFR(const char*, long): Failed to get LH "
                          "Application ptr.  HRESULT=0"),
              log_.Take());
}

TEST_F(DataFileStorage, SelectWithAnApplicationOfAnotherKindLogsZero) {
    host_.codes["QueryInterface"] = E_NOINTERFACE;
    EXPECT_EQ(kFailure, kSelect.run(storage_));
    EXPECT_EQ(LoggedEntry("Failed to get LH Application ptr.  HRESULT=0"), log_.Take());
}

TEST_F(DataFileStorage, SelectWithALocatorOfAnotherKindIsAFailedCreation) {
    host_.codes["CreateInstance"] = E_NOINTERFACE;
    EXPECT_EQ(kFailure, kSelect.run(storage_));
    EXPECT_EQ(LoggedEntry("Failed to create COM object.  HRESULT=0x80004002"), log_.Take());
}

TEST_F(DataFileStorage, SelectSurvivesAHostThatSucceedsWithoutAnObject) {
    for (const char* method : {"GetAddInGoodies", "AttachToCurrentCompany"}) {
        host_.null_results = {method};
        static_cast<void>(kSelect.run(storage_));
        static_cast<void>(log_.Take());
        EXPECT_EQ(kFailure, kRead.run(storage_)) << method;
        EXPECT_NE("", log_.Take()) << method;
    }
}

TEST_F(DataFileStorage, FailedSelectKeepsTheOldCompanyUntilAttachingFails) {
    for (const char* method : {"CreateInstance", "GetRunningApplication", "QueryInterface", "GetAddInGoodies"}) {
        Select();
        host_.codes = {{method, kHostFailure}};
        EXPECT_EQ(kFailure, storage_.SelectDFR("Category", 7));
        host_.codes.clear();
        EXPECT_EQ(kSuccess, kRead.run(storage_)) << method;
        static_cast<void>(TakeCalls());
        EXPECT_NE("", log_.Take());
    }
    Select();
    host_.codes = {{"AttachToCurrentCompany", kHostFailure}};
    EXPECT_EQ(kFailure, storage_.SelectDFR("Category", 7));
    EXPECT_NE("", log_.Take());
    EXPECT_EQ(kFailure, kRead.run(storage_));
    EXPECT_EQ(LoggedEntry("Must first call SelectDFR() to initialize this class.  HRESULT=0"), log_.Take());
}

TEST_F(DataFileStorage, FailedSelectRemembersTheRecordOnceTheApplicationWasLookedFor) {
    Select();
    host_.codes = {{"GetAddInGoodies", kHostFailure}};
    EXPECT_EQ(kFailure, storage_.SelectDFR("Other", 8));
    host_.codes.clear();
    static_cast<void>(TakeCalls());
    EXPECT_EQ(kSuccess, kRead.run(storage_));
    EXPECT_EQ((Calls{"GetDataFileRecords(\"Other\")", "Exists(8)", "Add(8)", "GetPropertyBag()", "Read(\"Key\")"}),
              TakeCalls());

    host_.codes = {{"GetRunningApplication", kHostFailure}};
    EXPECT_EQ(kFailure, storage_.SelectDFR("Third", 9));
    host_.codes.clear();
    static_cast<void>(TakeCalls());
    EXPECT_EQ(kSuccess, kRead.run(storage_));
    EXPECT_EQ("GetDataFileRecords(\"Other\")", host_.calls.front());
    EXPECT_NE("", log_.Take());
}

TEST(DataFileStorageWithoutHost, SelectLogsThatTheClassIsNotRegistered) {
    const NoApplication no_application;
    ProcessLog log;
    CDataFileStorage storage;
    EXPECT_EQ(kFailure, kSelect.run(storage));
    EXPECT_EQ(LoggedEntry("Failed to create COM object.  HRESULT=0x80040154"), log.Take());
}

// Before selecting

TEST_F(DataFileStorage, OperationsBeforeSelectingLogThatAndLeaveTheHostAlone) {
    for (const bool is_flag_on : {false, true}) {
        SetLogContextFlag(is_flag_on);
        for (const Operation& operation : kOnRecord) {
            EXPECT_EQ(kFailure, operation.run(storage_)) << operation.name;
            const char* const message = operation.run == kRead.run
                                            ? "Must first call SelectDFR() to initialize this class."
                                            : "Must first call SelectDFR() to initialize this class";
            EXPECT_EQ(LoggedEntry(FailureText(is_flag_on, operation.function, message, S_OK)), log_.Take());
        }
    }
    EXPECT_EQ(Calls{}, host_.calls);
}

TEST_F(DataFileStorage, OperationsAfterAFailedSelectLogThatAndLeaveTheHostAlone) {
    host_.codes["AttachToCurrentCompany"] = kHostFailure;
    EXPECT_EQ(kFailure, kSelect.run(storage_));
    static_cast<void>(log_.Take());
    static_cast<void>(TakeCalls());
    for (const Operation& operation : kOnRecord) {
        EXPECT_EQ(kFailure, operation.run(storage_)) << operation.name;
    }
    EXPECT_NE("", log_.Take());
    EXPECT_EQ(Calls{}, host_.calls);
}

// Reading

TEST_F(DataFileStorage, ReadReturnsTheValueWithoutALock) {
    Select();
    OwnedVariant value;
    EXPECT_EQ(kSuccess, storage_.ReadProperty("Key", value.Receive()));
    EXPECT_EQ(L"old", View(value.Bstr()));
    EXPECT_EQ(kGettingRecord + Calls({"GetPropertyBag()", "Read(\"Key\")"}), host_.calls);
}

TEST_F(DataFileStorage, ReadReturnsValuesOfAnyType) {
    Select();
    VARIANT number;
    V_VT(&number) = VT_I4;
    V_I4(&number) = 42;
    Stored().Put(L"Key", number);
    OwnedVariant value;
    EXPECT_EQ(kSuccess, storage_.ReadProperty("Key", value.Receive()));
    EXPECT_EQ(VT_I4, value.Type());
    EXPECT_EQ(42, V_I4(&value.Get()));
}

TEST_F(DataFileStorage, ReadOfARecordThatDoesNotExistAddsIt) {
    host_.categories.clear();
    Select();
    OwnedVariant value;
    EXPECT_EQ(kSuccess, storage_.ReadProperty("Key", value.Receive()));
    EXPECT_EQ(VT_EMPTY, value.Type());
    EXPECT_EQ((Calls{"GetDataFileRecords(\"Category\")", "Exists(7)", "Add(7)", "GetPropertyBag()", "Read(\"Key\")"}),
              host_.calls);
    EXPECT_EQ(0, Stored().saves);
}

TEST_F(DataFileStorage, FailedReadLeavesTheValueAlone) {
    Select();
    for (const char* method : {"GetDataFileRecords", "Exists", "Item", "GetPropertyBag", "Read"}) {
        host_.codes = {{method, kHostFailure}};
        VARIANT value;
        V_VT(&value) = VT_I4;
        V_I4(&value) = 0x5A5A;
        EXPECT_EQ(kFailure, storage_.ReadProperty("Key", &value)) << method;
        EXPECT_EQ(VT_I4, V_VT(&value)) << method;
        EXPECT_EQ(0x5A5A, V_I4(&value)) << method;
    }
    EXPECT_NE("", log_.Take());
}

TEST_F(DataFileStorage, EachOperationGetsTheRecordAnew) {
    Select();
    EXPECT_EQ(kSuccess, kRead.run(storage_));
    static_cast<void>(TakeCalls());
    host_.categories.clear();
    EXPECT_EQ(kSuccess, kRead.run(storage_));
    EXPECT_EQ("Add(7)", host_.calls.at(2));
}

TEST_F(DataFileStorage, ASuccessOtherThanOkIsASuccess) {
    for (const char* method :
         {"CreateInstance", "GetRunningApplication", "GetAddInGoodies", "AttachToCurrentCompany", "GetDataFileRecords",
          "Exists", "Item", "GetPropertyBag", "Read", "Lock", "Write", "PutDataVersion", "Save", "Unlock", "Delete"}) {
        host_.codes[method] = S_FALSE;
    }
    Select();
    for (const Operation& operation : kOnRecord) {
        EXPECT_EQ(kSuccess, operation.run(storage_)) << operation.name;
    }
}

// Writing

TEST_F(DataFileStorage, WriteLocksWritesSavesAndUnlocks) {
    Select();
    EXPECT_EQ(kSuccess, storage_.WriteProperty("Key", OwnedVariant(MakeBstr(L"new")).Get()));
    EXPECT_EQ(kGettingRecord + Calls({"Lock()", "GetPropertyBag()", "Write(\"Key\", \"new\")", "PutDataVersion(1)",
                                      "Save()", "Unlock()"}),
              host_.calls);
    EXPECT_EQ(L"new", Stored().Text(L"Key"));
    EXPECT_EQ(1, Stored().version);
    EXPECT_EQ(1, Stored().saves);
}

TEST_F(DataFileStorage, WriteLeavesTheCallersValueToTheCaller) {
    Select();
    const OwnedVariant value(MakeBstr(L"mine"));
    const BSTR text = value.Bstr();
    EXPECT_EQ(kSuccess, storage_.WriteProperty("Key", value.Get()));
    EXPECT_EQ(text, value.Bstr());
    EXPECT_EQ(L"mine", View(value.Bstr()));
}

TEST_F(DataFileStorage, WriteAddsARecordThatDoesNotExist) {
    host_.categories.clear();
    Select();
    EXPECT_EQ(kSuccess, kWrite.run(storage_));
    EXPECT_EQ("Add(7)", host_.calls.at(2));
    EXPECT_EQ(L"value", Stored().Text(L"Key"));
}

TEST_F(DataFileStorage, WriteKeepsValuesByteForByte) {
    Select();
    const std::wstring long_text(1'000'000, L'x');
    for (const std::wstring& text :
         {std::wstring(L"a\0b", 3), std::wstring(), std::wstring(L"\u3042\xD800"), long_text}) {
        EXPECT_EQ(kSuccess, storage_.WriteProperty("Key", OwnedVariant(MakeBstr(text)).Get()));
        EXPECT_EQ(text, Stored().Text(L"Key"));
    }
}

// Deleting

TEST_F(DataFileStorage, DeleteLocksTwiceDeletesAndUnlocks) {
    Select();
    EXPECT_EQ(kSuccess, storage_.DeleteDFR());
    EXPECT_EQ(kGettingRecord + Calls({"Lock()", "Lock()", "Delete()", "Unlock()"}), host_.calls);
    EXPECT_FALSE(host_.categories[L"Category"].contains(7));
}

// The lock

[[nodiscard]] Calls Locks(size_t count) { return Calls(count, "Lock()"); }
[[nodiscard]] std::vector<DWORD> Sleeps(size_t count) { return std::vector<DWORD>(count, 100); }

class RefusedLock : public DataFileStorage, public testing::WithParamInterface<size_t> {
  protected:
    RefusedLock() {
        Select();
        host_.lock_answers.assign(GetParam(), Refused());
    }

    RecordedSleeps sleeps_;
};

class LockRefusedAtFirst : public RefusedLock {};

TEST_P(LockRefusedAtFirst, WriteTriesAgainAndSucceeds) {
    EXPECT_EQ(kSuccess, kWrite.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(GetParam() + 1) +
                  Calls({"GetPropertyBag()", "Write(\"Key\", \"value\")", "PutDataVersion(1)", "Save()", "Unlock()"}),
              host_.calls);
    EXPECT_EQ(Sleeps(GetParam()), sleeps_.milliseconds);
}

TEST_P(LockRefusedAtFirst, DeleteTriesAgainAndLocksOnceMore) {
    EXPECT_EQ(kSuccess, kDelete.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(GetParam() + 2) + Calls({"Delete()", "Unlock()"}), host_.calls);
    EXPECT_EQ(Sleeps(GetParam()), sleeps_.milliseconds);
}

INSTANTIATE_TEST_SUITE_P(Times, LockRefusedAtFirst, testing::Range<size_t>(0, 5), testing::PrintToStringParamName());

// Refused for ever looks the same as refused five times, but for the call that only Delete makes.
class LockRefused : public RefusedLock {};

TEST_P(LockRefused, WriteGivesUpAfterFiveTries) {
    EXPECT_EQ(kLocked, kWrite.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(5), host_.calls);
    EXPECT_EQ(Sleeps(5), sleeps_.milliseconds);
    EXPECT_EQ(LoggedEntry("Could not acquire data file record lock in LH.  HRESULT=0"), log_.Take());
    EXPECT_EQ(L"old", Stored().Text(L"Key"));
}

INSTANTIATE_TEST_SUITE_P(Times, LockRefused, testing::Values(5, 6, 100), testing::PrintToStringParamName());

class LockTest : public DataFileStorage {
  protected:
    LockTest() { Select(); }

    RecordedSleeps sleeps_;
};

// Every other value than VARIANT_FALSE is a yes.
TEST_F(LockTest, AYesOfTheHostNeedNotBeVariantTrue) {
    for (const VARIANT_BOOL yes : {VARIANT_BOOL{1}, VARIANT_BOOL{2}, VARIANT_BOOL{256}}) {
        host_.yes = yes;
        host_.calls.clear();
        EXPECT_EQ(kSuccess, kWrite.run(storage_)) << yes;
        EXPECT_EQ(
            kGettingRecord + Locks(1) +
                Calls({"GetPropertyBag()", "Write(\"Key\", \"value\")", "PutDataVersion(1)", "Save()", "Unlock()"}),
            host_.calls);
    }
    host_.calls.clear();
    EXPECT_EQ(kSuccess, kDelete.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(2) + Calls({"Delete()", "Unlock()"}), host_.calls);
    EXPECT_EQ(Sleeps(0), sleeps_.milliseconds);
}

TEST_F(LockTest, DeleteSucceedsWhenOnlyTheAdditionalCallAcquires) {
    host_.lock_answers.assign(5, Refused());
    EXPECT_EQ(kSuccess, kDelete.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(6) + Calls({"Delete()", "Unlock()"}), host_.calls);
    EXPECT_EQ(Sleeps(5), sleeps_.milliseconds);
}

TEST_F(LockTest, DeleteGivesUpAfterTheAdditionalCall) {
    host_.lock_answers.assign(6, Refused());
    EXPECT_EQ(kLocked, kDelete.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(6), host_.calls);
    EXPECT_EQ(Sleeps(5), sleeps_.milliseconds);
    EXPECT_EQ(LoggedEntry("Could not acquire data file record lock in LH.  HRESULT=0"), log_.Take());
    EXPECT_TRUE(host_.categories[L"Category"].contains(7));
}

TEST_F(LockTest, GivingUpLogsTheLastCallsCodeAndTheFunction) {
    SetLogContextFlag(true);
    host_.lock_answers = {Refused(), Refused(), Refused(), Refused(), Refused(S_FALSE)};
    EXPECT_EQ(kLocked, kWrite.run(storage_));
    EXPECT_EQ(
        LoggedEntry(std::string(kWrite.function) + ": Could not acquire data file record lock in LH.  HRESULT=0x1"),
        log_.Take());
    host_.lock_answers = {Refused(), Refused(), Refused(), Refused(), Refused(), Refused(S_FALSE)};
    EXPECT_EQ(kLocked, kDelete.run(storage_));
    EXPECT_EQ(
        LoggedEntry(std::string(kDelete.function) + ": Could not acquire data file record lock in LH.  HRESULT=0x1"),
        log_.Take());
}

TEST_F(LockTest, FailingCallEndsTheTriesAtOnce) {
    for (const Operation& operation : {kWrite, kDelete}) {
        for (size_t refusals = 0; refusals < 5; ++refusals) {
            host_.lock_answers.assign(refusals, Refused());
            host_.lock_answers.push_back({.result = kHostFailure});
            EXPECT_EQ(kFailure, operation.run(storage_));
            EXPECT_EQ(kGettingRecord + Locks(refusals + 1), TakeCalls());
            EXPECT_EQ(Sleeps(refusals), std::exchange(sleeps_.milliseconds, {}));
            EXPECT_EQ(LoggedEntry("Failed to acquire lock for data file record in LH.  HRESULT=0x80040400"),
                      log_.Take());
        }
    }
}

TEST_F(LockTest, FailingAdditionalCallOfDeleteIsAFailure) {
    host_.lock_answers.assign(5, Refused());
    host_.lock_answers.push_back({.result = kHostFailure});
    EXPECT_EQ(kFailure, kDelete.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(6), host_.calls);
    EXPECT_EQ(LoggedEntry("Failed to acquire lock for data file record in LH.  HRESULT=0x80040400"), log_.Take());
}

// The lock of the first call is held by then, and has to be released.
TEST_F(LockTest, DeleteReleasesTheLockWhenTheAdditionalCallGetsNone) {
    host_.lock_answers = {{}, Refused()};
    EXPECT_EQ(kLocked, kDelete.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(2) + Calls({"Unlock()"}), TakeCalls());
    EXPECT_EQ(LoggedEntry("Could not acquire data file record lock in LH.  HRESULT=0"), log_.Take());

    host_.lock_answers = {{}, {.result = kHostFailure}};
    EXPECT_EQ(kFailure, kDelete.run(storage_));
    EXPECT_EQ(kGettingRecord + Locks(2) + Calls({"Unlock()"}), TakeCalls());
    EXPECT_EQ(LoggedEntry("Failed to acquire lock for data file record in LH.  HRESULT=0x80040400"), log_.Take());
}

TEST_F(DataFileStorage, WaitingForALockTakesATenthOfASecondForEachTry) {
    Select();
    host_.lock_answers.assign(5, Refused());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(kLocked, kWrite.run(storage_));
    const auto waited = std::chrono::steady_clock::now() - start;
    // Timers of the system are a little early now and then.
    EXPECT_GE(waited, std::chrono::milliseconds(480));
    EXPECT_NE("", log_.Take());
}

// What is released, and when

class LiveObjectsAtCall : public DataFileStorage {
  protected:
    // How many of the host's objects are alive when the method is called, for each call of the operation.
    [[nodiscard]] std::vector<int> At(const char* method, const Operation& operation, int times) {
        std::vector<int> counts;
        host_.on_call[method] = [&] { counts.push_back(host_.live_objects); };
        for (int count = 0; count < times; ++count) {
            EXPECT_EQ(kSuccess, operation.run(storage_));
        }
        host_.on_call.clear();
        return counts;
    }
};

TEST_F(LiveObjectsAtCall, SelectReleasesTheOldCompanyBeforeItAsksForTheNewOne) {
    const std::vector<int> counts = At("AttachToCurrentCompany", kSelect, 3);
    EXPECT_EQ(std::vector<int>(3, counts.at(0)), counts);
}

TEST_F(LiveObjectsAtCall, OperationsReleaseTheOldRecordBeforeTheyAskForItsCollection) {
    Select();
    const std::vector<int> first = At("GetDataFileRecords", kRead, 1);
    for (const Operation& operation : kOnRecord) {
        EXPECT_EQ(first, At("GetDataFileRecords", operation, 1)) << operation.name;
    }
}

// Names that nobody expects

TEST_F(DataFileStorage, CategoryAndPropertyNamesGoToTheHostWhole) {
    const std::string name = std::string(10'000, 'n');
    ASSERT_EQ(kSuccess, storage_.SelectDFR(name, 1));
    static_cast<void>(TakeCalls());
    EXPECT_EQ(kSuccess, storage_.WriteProperty(name, OwnedVariant(MakeBstr(L"v")).Get()));
    EXPECT_EQ("GetDataFileRecords(\"" + name + "\")", host_.calls.front());
    EXPECT_EQ("Write(\"" + name + "\", \"v\")", host_.calls.at(5));
}

TEST_F(DataFileStorage, FailureAboutALongPropertyNameIsCutToTheLogsEntry) {
    Select();
    host_.codes["Read"] = kHostFailure;
    OwnedVariant value;
    EXPECT_EQ(kFailure, storage_.ReadProperty(std::string(100'000, 'n'), value.Receive()));
    const std::string start = "Failed to read property \"";
    EXPECT_EQ(LoggedEntry(start + std::string(1022 - start.size(), 'n')), log_.Take());
}

TEST_F(DataFileStorage, PercentSignsInAPropertyNameAreText) {
    Select();
    host_.codes["Read"] = kHostFailure;
    OwnedVariant value;
    EXPECT_EQ(kFailure, storage_.ReadProperty("%s%n%d", value.Receive()));
    EXPECT_EQ(LoggedEntry("Failed to read property \"%s%n%d\" from property bag in LH.  HRESULT=0x80040400"),
              log_.Take());
}

TEST_F(DataFileStorage, SurvivesAHostThatSucceedsWithoutAnObject) {
    for (const char* method : {"GetDataFileRecords", "Item", "GetPropertyBag"}) {
        for (const Operation& operation : {kRead, kWrite}) {
            Select();
            host_.null_results = {method};
            EXPECT_EQ(kFailure, operation.run(storage_)) << operation.name << " " << method;
            EXPECT_NE("", log_.Take()) << operation.name << " " << method;
            host_.null_results.clear();
            static_cast<void>(TakeCalls());
        }
    }
}

}  // namespace
}  // namespace paylodge::test
