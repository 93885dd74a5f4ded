// A fake of the host's application and the data file records of its company file: it records every call with its
// arguments, keeps the records in memory, and fails where the test asks for it.
#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/variant.hpp"
#include "hostapi/application.hpp"

namespace paylodge::test {

// What one call of a record's Lock returns.
struct LockAnswer {
    HRESULT result = S_OK;
    bool is_acquired = true;
};

// A record of the company file.
struct StoredRecord {
    std::map<std::wstring, OwnedVariant> properties;
    LONG version = 0;
    int saves = 0;

    void Put(const std::wstring& property, const VARIANT& value);
    void Put(const std::wstring& property, std::wstring_view text);
    // The text of a string property; "(none)" without one.
    [[nodiscard]] std::wstring Text(const std::wstring& property) const;
};

// Stands in for the host while it lives: CoCreateInstance of the locator's class creates this one's. When it goes,
// everything that was handed out has to have come back.
class FakeStorageHost {
  public:
    FakeStorageHost();
    ~FakeStorageHost();
    FakeStorageHost(const FakeStorageHost&) = delete;
    FakeStorageHost& operator=(const FakeStorageHost&) = delete;

    // The calls so far, one text each, such as `Add(1)` or `Write("Key", "value")`. Texts are shown between double
    // quotes, null as null. CoCreateInstance is `CreateInstance()`, a question for one of the application's interfaces
    // `QueryInterface(IHostApplication)`.
    std::vector<std::string> calls;

    // HRESULTs that calls return instead of S_OK, by method name or, before that, by the whole text of the call. A
    // call that fails does nothing.
    std::map<std::string, HRESULT> codes;
    // Answers this to the call with this number, from 1; 0 for none.
    size_t failing_call = 0;
    HRESULT failing_code = E_FAIL;
    // Run in that call; may throw.
    std::function<void()> on_failing_call;
    // Methods that succeed with null instead of an object or a string.
    std::set<std::string> null_results;
    // What Lock and Exists say for yes: hosts do not all keep to VARIANT_TRUE.
    VARIANT_BOOL yes = VARIANT_TRUE;
    // Answers of the next calls of Lock, in order; without one, the lock is acquired.
    std::deque<LockAnswer> lock_answers;

    // The company file: records by category and number.
    std::map<std::wstring, std::map<LONG, StoredRecord>> categories;
    // Run when a call is recorded, by method name.
    std::map<std::string, std::function<void()>> on_call;

    // What GetFolder returns.
    std::wstring folder;

    // Objects that are alive and references to the application.
    int live_objects = 0;
    // Locks that were acquired and not released.
    int held_locks = 0;

    // The HRESULT of the call that is now recorded.
    HRESULT Record(const std::string& method, const std::string& arguments = "");

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
    ComPtr<IClassFactory> class_object_;
    DWORD registration_ = 0;
};

}  // namespace paylodge::test
