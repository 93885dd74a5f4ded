#include "storage/data_file_storage.hpp"

#include <comdef.h>

#include <string_view>
#include <utility>

#include "com/ansi_text.hpp"
#include "com/boundary.hpp"
#include "com/guarded_call.hpp"
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

// Logs a failure under the method's name. What cannot even be logged stays a failure.
Status Fail(const char* method, std::string_view message, HRESULT result,
            Status status = CDataFileStorage::kFailure) noexcept {
    static_cast<void>(AtBoundary([&] {
        CNALogger::LogHResult(method, std::string(message), result);
        return S_OK;
    }));
    return status;
}

// Runs a method of the class, out of which no exception comes.
template <class Method>
[[nodiscard]] Status RunMethod(const Method& method) noexcept {
    try {
        return method();
    } catch (...) {
        return CDataFileStorage::kFailure;
    }
}

// Calls a method of a host object; E_POINTER when the host returned no object before. What the host throws is an
// HRESULT.
template <class Interface, class Base, class... Parameters, class... Arguments>
[[nodiscard]] HRESULT Ask(const ComPtr<Interface>& object, HRESULT (STDMETHODCALLTYPE Base::*method)(Parameters...),
                          Arguments... arguments) noexcept {
    return object ? AtBoundary([&] { return CallHost([&] { return (object.Get()->*method)(arguments...); }); })
                  : E_POINTER;
}

// Holds a record's lock from the moment it is acquired, and unlocks the record at the end.
class RecordLock {
  public:
    explicit RecordLock(const ComPtr<IHostDataFileRecord>& record) noexcept : record_(record) {}
    ~RecordLock() { static_cast<void>(Unlock()); }
    RecordLock(const RecordLock&) = delete;
    RecordLock& operator=(const RecordLock&) = delete;

    // The HRESULT of the host's call; success does not mean that the lock was acquired.
    HRESULT Try() noexcept {
        VARIANT_BOOL is_acquired = VARIANT_FALSE;
        last_result_ = Ask(record_, &IHostDataFileRecord::Lock, &is_acquired);
        is_acquired_ = SUCCEEDED(last_result_) && is_acquired != VARIANT_FALSE;
        is_held_ = is_held_ || is_acquired_;
        return last_result_;
    }

    // Several tries, with a wait after each that does not acquire the lock; a failing call ends them at once.
    HRESULT TryRepeatedly() noexcept {
        for (int tries = 0; tries < kLockTries && SUCCEEDED(Try()) && !is_acquired_; ++tries) {
            ::Sleep(kMillisecondsBetweenTries);
        }
        return last_result_;
    }

    // kSuccess when the last try acquired the lock; everything else is logged.
    [[nodiscard]] Status Judge(const char* method) const noexcept {
        if (FAILED(last_result_)) {
            return Fail(method, kLockCallFailed, last_result_);
        }
        return is_acquired_ ? CDataFileStorage::kSuccess
                            : Fail(method, kLockNotAcquired, last_result_, CDataFileStorage::kLocked);
    }

    HRESULT Unlock() noexcept {
        return std::exchange(is_held_, false) ? Ask(record_, &IHostDataFileRecord::Unlock) : S_OK;
    }

    // Unlocks the record; a failure of that is logged.
    [[nodiscard]] Status Finish(const char* method) noexcept {
        const HRESULT result = Unlock();
        return FAILED(result) ? Fail(method, kUnlockFailed, result) : CDataFileStorage::kSuccess;
    }

  private:
    const ComPtr<IHostDataFileRecord>& record_;
    HRESULT last_result_ = S_OK;
    bool is_acquired_ = false;
    bool is_held_ = false;
};

// The steps of a write while the record is locked.
[[nodiscard]] Status WriteLocked(const ComPtr<IHostDataFileRecord>& record, const std::string& property_name,
                                 const VARIANT& value) {
    ComPtr<IHostPropertyBag> bag;
    HRESULT result = Ask(record, &IHostDataFileRecord::GetPropertyBag, bag.Receive());
    if (FAILED(result)) {
        return Fail(kWriteProperty, kBagFailed, result);
    }
    result = AtBoundary([&] { return Ask(bag, &IHostPropertyBag::Write, BstrFromAnsi(property_name).Get(), value); });
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

}  // namespace

Status CDataFileStorage::SelectDFR(const std::string& name, LONG record_id) {
    return RunMethod([&] { return Select(name, record_id); });
}

Status CDataFileStorage::ReadProperty(const std::string& property_name, VARIANT* value) {
    return RunMethod([&] { return Read(property_name, value); });
}

Status CDataFileStorage::WriteProperty(const std::string& property_name, VARIANT value) {
    return RunMethod([&] { return Write(property_name, value); });
}

Status CDataFileStorage::DeleteDFR() {
    return RunMethod([&] { return Delete(); });
}

Status CDataFileStorage::Select(const std::string& name, LONG record_id) {
    ComPtr<IHostApplication> application;
    HRESULT result = AtBoundary([&application] {
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
    HRESULT result = AtBoundary(
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

Status CDataFileStorage::Read(const std::string& property_name, VARIANT* value) {
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
    result = AtBoundary([&] { return Ask(bag, &IHostPropertyBag::Read, BstrFromAnsi(property_name).Get(), value); });
    return FAILED(result) ? Fail(kReadProperty,
                                 "Failed to read property \"" + property_name + "\" from property bag in LH.", result)
                          : kSuccess;
}

Status CDataFileStorage::Write(const std::string& property_name, const VARIANT& value) {
    if (!company_) {
        return Fail(kWriteProperty, "Must first call SelectDFR() to initialize this class", S_OK);
    }
    if (const Status status = InitDFRPointer(); status != kSuccess) {
        return status;
    }
    RecordLock lock(record_);
    lock.TryRepeatedly();
    if (const Status status = lock.Judge(kWriteProperty); status != kSuccess) {
        return status;
    }
    const Status status = WriteLocked(record_, property_name, value);
    return status == kSuccess ? lock.Finish(kWriteProperty) : status;
}

Status CDataFileStorage::Delete() {
    if (!company_) {
        return Fail(kDeleteDFR, "Must first call SelectDFR() to initialize this class", S_OK);
    }
    if (const Status status = InitDFRPointer(); status != kSuccess) {
        return status;
    }
    RecordLock lock(record_);
    if (FAILED(lock.TryRepeatedly())) {
        return lock.Judge(kDeleteDFR);
    }
    // The host is asked for the lock once more even if the record is locked already.
    lock.Try();
    if (const Status status = lock.Judge(kDeleteDFR); status != kSuccess) {
        return status;
    }
    const HRESULT result = Ask(record_, &IHostDataFileRecord::Delete);
    return FAILED(result) ? Fail(kDeleteDFR, "Failed to delete data file record in LH.", result)
                          : lock.Finish(kDeleteDFR);
}

}  // namespace paylodge
