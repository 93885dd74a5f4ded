// What pages say to the workbench, in JSON, and what it says to them: docs in workbench/README.md.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge::workbench {

using Json = nlohmann::json;

// A message that is not what it has to be; the text says which member is wrong.
class BadMessage : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A value of a script as it comes in a message.
struct Value {
    // A string, a boolean, a number, null; discarded for `undefined`.
    Json value;
    bool is_reference = false;
};

enum class CallKind { kCall, kGet, kPut };

struct CreateRequest {
    std::string page;
    std::string class_name;
};

struct CallRequest {
    std::string page;
    std::int64_t object = 0;
    std::string member;
    CallKind kind = CallKind::kCall;
    std::vector<Value> arguments;
};

struct ReleaseRequest {
    std::string page;
    std::int64_t object = 0;
};

struct PushRequest {
    std::string method;
    std::vector<Value> arguments;
};

struct FaultRequest {
    std::string call;
    // An HRESULT, signed or unsigned.
    double hresult = 0;
    std::int32_t nth = 1;
};

struct PageMessage {
    enum class Type { kWatch, kDelivered, kFailed };
    Type type = Type::kWatch;
    bool is_on = true;
    std::int64_t n = 0;
    std::string message;
};

// All of these throw BadMessage.
[[nodiscard]] CreateRequest ReadCreateRequest(std::string_view text);
[[nodiscard]] CallRequest ReadCallRequest(std::string_view text);
[[nodiscard]] ReleaseRequest ReadReleaseRequest(std::string_view text);
[[nodiscard]] PushRequest ReadPushRequest(std::string_view text);
[[nodiscard]] FaultRequest ReadFaultRequest(std::string_view text);
// The one string member of an object.
[[nodiscard]] std::string ReadTextMember(std::string_view text, std::string_view name);
[[nodiscard]] PageMessage ReadPageMessage(std::string_view text);

// "0x80004005"
[[nodiscard]] std::string ResultText(std::int32_t result);

// A message as text; what is not UTF-8 in a string is replaced.
[[nodiscard]] std::string Text(const Json& message);

}  // namespace paylodge::workbench
