// What the tests of the company-file storage share: its operations as rows, and a storage over a fake host.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "storage/data_file_storage.hpp"
#include "tests/support/fake_storage_host.hpp"
#include "tests/support/log_files.hpp"

namespace paylodge::test {

using Calls = std::vector<std::string>;

inline constexpr LONG kSuccess = 0;
inline constexpr LONG kFailure = -9995;
inline constexpr LONG kLocked = -9997;

// A failure of the host's own.
inline constexpr HRESULT kHostFailure = static_cast<HRESULT>(0x80040400);

// A method of the class: its name in the log, and a call for the tables below.
struct Operation {
    const char* name;
    const char* function;
    LONG (*run)(CDataFileStorage& storage);
};

inline constexpr Operation kSelect = {
    "Select", "NetworkAdapterManager:CDataFileStorage::SelectDFR(const char*, long)",
    [](CDataFileStorage& storage) -> LONG { return storage.SelectDFR("Category", 7); }};
inline constexpr Operation kRead = {"Read",
                                    "NetworkAdapterManager:CDataFileStorage::ReadProperty(const char*, VARIANT*)",
                                    [](CDataFileStorage& storage) -> LONG {
                                        OwnedVariant value;
                                        return storage.ReadProperty("Key", value.Receive());
                                    }};
inline constexpr Operation kWrite = {"Write",
                                     "NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT)",
                                     [](CDataFileStorage& storage) -> LONG {
                                         return storage.WriteProperty("Key", OwnedVariant(MakeBstr(L"value")).Get());
                                     }};
inline constexpr Operation kDelete = {"Delete", "NetworkAdapterManager:CDataFileStorage::DeleteDFR()",
                                      [](CDataFileStorage& storage) -> LONG { return storage.DeleteDFR(); }};
inline constexpr Operation kOnRecord[] = {kRead, kWrite, kDelete};

inline const char* const kInit = "NetworkAdapterManager:CDataFileStorage::InitDFRPointer()";

inline const Calls kSelecting = {"CreateInstance()", "GetRunningApplication()", "QueryInterface(IHostApplication)",
                                 "GetAddInGoodies()", "AttachToCurrentCompany()"};
inline const Calls kGettingRecord = {"GetDataFileRecords(\"Category\")", "Exists(7)", "Item(7)"};

[[nodiscard]] inline Calls operator+(Calls calls, const Calls& more) {
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

[[nodiscard]] inline LockAnswer Refused(HRESULT result = S_OK) { return {.result = result, .is_acquired = false}; }

class DataFileStorage : public testing::Test {
  public:
    ~DataFileStorage() override { EXPECT_EQ(0, host_.held_locks); }

  protected:
    DataFileStorage() { Stored().Put(L"Key", L"old"); }

    void Select() {
        EXPECT_EQ(kSuccess, kSelect.run(storage_));
        EXPECT_EQ(kSelecting, TakeCalls());
    }

    [[nodiscard]] Calls TakeCalls() { return std::exchange(host_.calls, {}); }

    [[nodiscard]] StoredRecord& Stored() { return host_.categories[L"Category"][7]; }

    ProcessLog log_;
    FakeStorageHost host_;
    CDataFileStorage storage_;
};

}  // namespace paylodge::test
