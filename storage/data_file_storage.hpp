// Small named values in numbered records of the company file that the host has open.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string>

#include "com/com_ptr.hpp"
#include "hostapi/application.hpp"

namespace paylodge {

// Every failure is logged once and returned as a number; no exception leaves the class, and a record that was locked is
// unlocked whatever fails. Used on the thread of the accounting object.
class CDataFileStorage {
  public:
    using Status = LONG;
    static constexpr Status kSuccess = 0;
    static constexpr Status kFailure = -9995;
    // Only from WriteProperty and DeleteDFR: somebody else holds the record's lock.
    static constexpr Status kLocked = -9997;

    CDataFileStorage() = default;
    CDataFileStorage(const CDataFileStorage&) = delete;
    CDataFileStorage& operator=(const CDataFileStorage&) = delete;
    virtual ~CDataFileStorage() = default;

    // Binds to the host's current company and says which record the calls below are about. Comes first; may be called
    // again for another record. The record need not exist.
    [[nodiscard]] Status SelectDFR(const std::string& name, LONG record_id);

    // Reads one property into an empty variant that the caller clears. A record that does not exist is added to the
    // host's collection by this, unsaved.
    [[nodiscard]] Status ReadProperty(const std::string& property_name, VARIANT* value);

    // Writes one property under the record's lock and saves the record. The value stays the caller's.
    [[nodiscard]] Status WriteProperty(const std::string& property_name, VARIANT value);

    // Deletes the record under its lock.
    [[nodiscard]] Status DeleteDFR();

  private:
    [[nodiscard]] Status Select(const std::string& name, LONG record_id);
    [[nodiscard]] Status InitDFRPointer();
    [[nodiscard]] Status Read(const std::string& property_name, VARIANT* value);
    [[nodiscard]] Status Write(const std::string& property_name, const VARIANT& value);
    [[nodiscard]] Status Delete();

    ComPtr<IHostCompany> company_;
    ComPtr<IHostDataFileRecord> record_;
    std::string name_;
    LONG record_id_ = 0;
};

}  // namespace paylodge
