// A fake of the host's object broker and request processor: it records every call with its arguments and does what
// the test asks for.
#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "com/com_ptr.hpp"
#include "hostapi/request_processor.hpp"

namespace paylodge::test {

// What one ProcessRequest returns.
struct Answer {
    HRESULT result = S_OK;
    std::wstring response = {};
    bool is_null = false;  // no response string at all
};

// Stands in for the host while it lives: CoCreateInstance of the broker class creates this one.
class FakeHost {
  public:
    // The context in which the broker's class object is registered.
    explicit FakeHost(DWORD context = CLSCTX_INPROC_SERVER);
    ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    // The calls so far, one text each, such as `BeginSession("", 2)`. Strings are shown between double quotes, null as
    // null.
    std::vector<std::string> calls;
    // The request documents as the processor received them.
    std::vector<std::wstring> requests;

    // Answers of the next requests, in order; without one, S_OK with an empty document element.
    std::deque<Answer> answers;
    // HRESULTs that methods return instead of S_OK, by name: "CreateObjectFromClassId", "OpenConnection",
    // "BeginSession", "ProcessRequest" (in place of the response), "EndSession", "CloseConnection". BeginSession hands
    // out no ticket then. "CreateInstance" is that of the broker's class object; it is not recorded.
    std::map<std::string, HRESULT> failures;
    // Run at the start of a method, by name; may throw.
    std::map<std::string, std::function<void()>> on_call;

    // What the broker hands out instead of a request processor; may be null.
    std::optional<ComPtr<IUnknown>> created_object;

    // Whether the broker's class object has a broker; without one it returns null with S_OK.
    bool has_broker = true;
    // The outer object for each broker that was asked for.
    std::vector<IUnknown*> outer_objects;

    // Objects that are alive, and references that the broker was left with.
    int live_processors = 0;
    ULONG broker_references = 0;

    // The one request that was sent, as narrow text; the test fails when there was not exactly one.
    [[nodiscard]] std::string OnlyRequest() const;

  private:
    ComPtr<IClassFactory> class_object_;
    DWORD registration_ = 0;
};

// The text with the digits of every requestID replaced by "N", so that documents can be compared byte for byte.
[[nodiscard]] std::string WithoutRequestIDs(std::string text);

}  // namespace paylodge::test
