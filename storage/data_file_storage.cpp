#include "storage/data_file_storage.hpp"

#include <comdef.h>

#include "com/ansi_text.hpp"
#include "storage/logger.hpp"
#include "storage/running_application.hpp"

namespace paylodge {
namespace {

using Status = CDataFileStorage::Status;

// The names under which the log knows the methods.
constexpr const char* kSelectDFR = "NetworkAdapterManager:CDataFileStorage::SelectDFR(const char*, long)";
constexpr const char* kInitDFRPointer = "NetworkAdapterManager:CDataFileStorage::InitDFRPointer()";
constexpr const char* kReadProperty = "NetworkAdapterManager:CDataFileStorage::ReadProperty(const char*, VARIANT*)";
constexpr const char* kWriteProperty = "NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT)";
constexpr const char* kDeleteDFR = "NetworkAdapterManager:CDataFileStorage::DeleteDFR()";

constexpr const char* kLockCallFailed = "Failed to acquire lock for data file record in LH.";
constexpr const char* kLockNotAcquired = "Could not acquire data file record lock in LH.";
constexpr const char* kBagFailed = "Failed to get property bag from data file record in LH.";
constexpr const char* kUnlockFailed = "Failed to unlock data file record in LH.";

constexpr int kLockTries = 5;
constexpr DWORD kMillisecondsBetweenTries = 100;
constexpr LONG kDataVersion = 1;

// Logs a failure under the method's name.
Status Fail(const char* method, const std::string& message, HRESULT result,
            Status status = CDataFileStorage::kFailure) {
    CNALogger::LogHResult(method, message, result);
    return status;
}

// Calls a method of a host object; E_POINTER when the host gave no object before.
template <class Interface, class Base, class... Parameters, class... Arguments>
[[nodiscard]] HRESULT Ask(const ComPtr<Interface>& object, HRESULT (STDMETHODCALLTYPE Base::*method)(Parameters...),
                          Arguments... arguments) {
    return object ? (object.Get()->*method)(arguments...) : E_POINTER;
}

// Runs one step; a COM error that it raises is its code.
template <class Step>
[[nodiscard]] HRESULT Attempt(const Step& step) {
    try {
        return step();
    } catch (const _com_error& error) {
        return error.Error();
    }
}

struct LockResult {
    HRESULT result;
    bool is_acquired;
};

[[nodiscard]] LockResult TryLock(const ComPtr<IHostDataFileRecord>& record) {
    VARIANT_BOOL is_acquired = VARIANT_FALSE;
    const HRESULT result = Ask(record, &IHostDataFileRecord::Lock, &is_acquired);
    return {result, SUCCEEDED(result) && is_acquired != VARIANT_FALSE};
}

// Several tries, with a wait after each that does not get the lock; a failing call ends them at once.
[[nodiscard]] LockResult TryLockRepeatedly(const ComPtr<IHostDataFileRecord>& record) {
    LockResult lock{};
    for (int tries = 0; tries < kLockTries; ++tries) {
        lock = TryLock(record);
        if (FAILED(lock.result) || lock.is_acquired) {
            break;
        }
        ::Sleep(kMillisecondsBetweenTries);
    }
    return lock;
}

// kSuccess when the lock was acquired; everything else is logged.
[[nodiscard]] Status JudgeLock(const char* method, const LockResult& lock) {
    if (FAILED(lock.result)) {
        return Fail(method, kLockCallFailed, lock.result);
    }
    return lock.is_acquired ? CDataFileStorage::kSuccess
                            : Fail(method, kLockNotAcquired, lock.result, CDataFileStorage::kLocked);
}

// The steps of a write while the record is locked.
[[nodiscard]] Status WriteLocked(const ComPtr<IHostDataFileRecord>& record, const std::string& property_name,
                                 const VARIANT& value) {
    ComPtr<IHostPropertyBag> bag;
    HRESULT result = Ask(record, &IHostDataFileRecord::GetPropertyBag, bag.Receive());
    if (FAILED(result)) {
        return Fail(kWriteProperty, kBagFailed, result);
    }
    result = Attempt([&] { return Ask(bag, &IHostPropertyBag::Write, BstrFromAnsi(property_name).Get(), value); });
    if (FAILED(result)) {
        return Fail(kWriteProperty, "Failed to write property \"" + property_name + "\" to property bag in LH.",
                    result);
    }
    result = Ask(record, &IHostDataFileRecord::PutDataVersion, kDataVersion);
    if (FAILED(result)) {
        return Fail(kWriteProperty, "Failed to put data version to data file record in LH.", result);
    }
    result = Ask(record, &IHostDataFileRecord::Save);
    if (FAILED(result)) {
        return Fail(kWriteProperty, "Failed to save data file record in LH.", result);
    }
    return CDataFileStorage::kSuccess;
}

// Unlocks the record after `done`, which wins over a failure of unlocking.
[[nodiscard]] Status Unlock(const char* method, const ComPtr<IHostDataFileRecord>& record, Status done) {
    const HRESULT result = Ask(record, &IHostDataFileRecord::Unlock);
    return done == CDataFileStorage::kSuccess && FAILED(result) ? Fail(method, kUnlockFailed, result) : done;
}

}  // namespace

Status CDataFileStorage::SelectDFR(const std::string& name, LONG record_id) {
    ComPtr<IHostApplication> application;
    HRESULT result = Attempt([&application] {
        application = FindApplication<IHostApplication>();
        return S_OK;
    });
    if (FAILED(result)) {
        return Fail(kSelectDFR, "Failed to create COM object.", result);
    }
    name_ = name;
    record_id_ = record_id;
    if (!application) {
        return Fail(kSelectDFR, "Failed to get LH Application ptr.", S_OK);
    }
    ComPtr<IHostAddInGoodies> goodies;
    result = Ask(application, &IHostApplication::GetAddInGoodies, goodies.Receive());
    if (FAILED(result)) {
        return Fail(kSelectDFR, "Failed to get add-in goodies from LH application.", result);
    }
    company_.Reset();
    result = Ask(goodies, &IHostAddInGoodies::AttachToCurrentCompany, company_.Receive());
    if (FAILED(result)) {
        return Fail(kSelectDFR, "Failed to attach to current company from add-in goodies in LH.", result);
    }
    return kSuccess;
}

// Obtains the selected record anew, so that each operation sees the host's current one.
Status CDataFileStorage::InitDFRPointer() {
    record_.Reset();
    if (!company_) {
        _com_issue_error(E_POINTER);
    }
    ComPtr<IHostDataFileRecords> records;
    HRESULT result = Attempt(
        [&] { return Ask(company_, &IHostCompany::GetDataFileRecords, BstrFromAnsi(name_).Get(), records.Receive()); });
    if (FAILED(result)) {
        return Fail(kInitDFRPointer, "Failed to get data file records from company file in LH.", result);
    }
    VARIANT_BOOL exists = VARIANT_FALSE;
    result = Ask(records, &IHostDataFileRecords::Exists, record_id_, &exists);
    if (FAILED(result)) {
        return Fail(kInitDFRPointer, "Failed to determine if a data file record exists from data file records in LH.",
                    result);
    }
    if (exists != VARIANT_FALSE) {
        result = Ask(records, &IHostDataFileRecords::Item, record_id_, record_.Receive());
        return FAILED(result) ? Fail(kInitDFRPointer, "Failed to ask for item from data file records in LH.", result)
                              : kSuccess;
    }
    result = Ask(records, &IHostDataFileRecords::Add, record_id_, record_.Receive());
    return FAILED(result) ? Fail(kInitDFRPointer, "Failed to add from data file records in LH.", result) : kSuccess;
}

Status CDataFileStorage::ReadProperty(const std::string& property_name, VARIANT* value) {
    if (!company_) {
        return Fail(kReadProperty, "Must first call SelectDFR() to initialize this class.", S_OK);
    }
    if (const Status status = InitDFRPointer(); status != kSuccess) {
        return status;
    }
    ComPtr<IHostPropertyBag> bag;
    HRESULT result = Ask(record_, &IHostDataFileRecord::GetPropertyBag, bag.Receive());
    if (FAILED(result)) {
        return Fail(kReadProperty, kBagFailed, result);
    }
    result = Attempt([&] { return Ask(bag, &IHostPropertyBag::Read, BstrFromAnsi(property_name).Get(), value); });
    return FAILED(result) ? Fail(kReadProperty,
                                 "Failed to read property \"" + property_name + "\" from property bag in LH.", result)
                          : kSuccess;
}

Status CDataFileStorage::WriteProperty(const std::string& property_name, VARIANT value) {
    if (!company_) {
        return Fail(kWriteProperty, "Must first call SelectDFR() to initialize this class", S_OK);
    }
    if (const Status status = InitDFRPointer(); status != kSuccess) {
        return status;
    }
    if (const Status status = JudgeLock(kWriteProperty, TryLockRepeatedly(record_)); status != kSuccess) {
        return status;
    }
    return Unlock(kWriteProperty, record_, WriteLocked(record_, property_name, value));
}

Status CDataFileStorage::DeleteDFR() {
    if (!company_) {
        return Fail(kDeleteDFR, "Must first call SelectDFR() to initialize this class", S_OK);
    }
    if (const Status status = InitDFRPointer(); status != kSuccess) {
        return status;
    }
    const LockResult lock = TryLockRepeatedly(record_);
    if (FAILED(lock.result)) {
        return JudgeLock(kDeleteDFR, lock);
    }
    // Asked once more in any case.
    if (const Status status = JudgeLock(kDeleteDFR, TryLock(record_)); status != kSuccess) {
        return lock.is_acquired ? Unlock(kDeleteDFR, record_, status) : status;
    }
    const HRESULT result = Ask(record_, &IHostDataFileRecord::Delete);
    const Status deleted =
        FAILED(result) ? Fail(kDeleteDFR, "Failed to delete data file record in LH.", result) : kSuccess;
    return Unlock(kDeleteDFR, record_, deleted);
}

}  // namespace paylodge
