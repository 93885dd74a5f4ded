#include "workbench/server/messages.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace paylodge::workbench {
namespace {

constexpr std::size_t kMostArguments = 64;

[[nodiscard]] Json ReadObject(std::string_view text) {
    Json message = Json::parse(text, nullptr, false);
    if (!message.is_object()) {
        throw BadMessage("The message is no JSON object in UTF-8.");
    }
    return message;
}

[[noreturn]] void Refuse(std::string_view name, std::string_view wanted) {
    throw BadMessage(std::string("The message needs the member \"").append(name).append("\", ").append(wanted) + '.');
}

[[nodiscard]] const Json& Member(const Json& message, std::string_view name, std::string_view wanted) {
    const auto found = message.find(name);
    if (found == message.end()) {
        Refuse(name, wanted);
    }
    return *found;
}

[[nodiscard]] std::string TextMember(const Json& message, std::string_view name) {
    constexpr std::string_view kWanted = "a string";
    const Json& member = Member(message, name, kWanted);
    if (!member.is_string()) {
        Refuse(name, kWanted);
    }
    return member.get<std::string>();
}

[[nodiscard]] std::int64_t WholeMember(const Json& message, std::string_view name, std::int64_t largest) {
    constexpr std::string_view kWanted = "a whole number";
    const Json& member = Member(message, name, kWanted);
    if (!member.is_number_integer() || (member.is_number_unsigned() && member.get<std::uint64_t>() > INT64_MAX)) {
        Refuse(name, kWanted);
    }
    const auto number = member.get<std::int64_t>();
    if (number < 0 || number > largest) {
        Refuse(name, kWanted);
    }
    return number;
}

[[nodiscard]] bool IsScalar(const Json& value) noexcept {
    return value.is_string() || value.is_boolean() || value.is_number() || value.is_null();
}

// `undefined` as messages have it.
[[nodiscard]] bool IsEmpty(const Json& value) {
    return value.is_object() && value.size() == 1 && value.contains("type") && value["type"] == "empty";
}

[[nodiscard]] Value ReadValue(const Json& value) {
    constexpr std::string_view kWanted =
        R"(a string, a boolean, a number, null, {"type": "empty"} or {"type": "reference", "value": ...})";
    if (IsScalar(value)) {
        return {value, false};
    }
    if (IsEmpty(value)) {
        return {Json(Json::value_t::discarded), false};
    }
    const auto type = value.is_object() ? value.find("type") : value.end();
    if (value.is_object() && type != value.end() && *type == "reference" && value.size() == 2) {
        const auto inner = value.find("value");
        if (inner != value.end() && IsScalar(*inner)) {
            return {*inner, true};
        }
        if (inner != value.end() && IsEmpty(*inner)) {
            return {Json(Json::value_t::discarded), true};
        }
    }
    throw BadMessage(std::string("An argument has to be ").append(kWanted) + '.');
}

[[nodiscard]] std::vector<Value> ReadArguments(const Json& message) {
    constexpr std::string_view kWanted = "an array of at most 64 values";
    const Json& member = Member(message, "arguments", kWanted);
    if (!member.is_array() || member.size() > kMostArguments) {
        Refuse("arguments", kWanted);
    }
    std::vector<Value> arguments;
    for (const Json& value : member) {
        arguments.push_back(ReadValue(value));
    }
    return arguments;
}

[[nodiscard]] CallKind ReadKind(const Json& message) {
    const std::string kind = TextMember(message, "kind");
    static constexpr std::array<std::pair<std::string_view, CallKind>, 3> kKinds{
        {{"call", CallKind::kCall}, {"get", CallKind::kGet}, {"put", CallKind::kPut}}};
    for (const auto& [name, value] : kKinds) {
        if (kind == name) {
            return value;
        }
    }
    Refuse("kind", R"("call", "get" or "put")");
}

}  // namespace

CreateRequest ReadCreateRequest(std::string_view text) {
    const Json message = ReadObject(text);
    return {TextMember(message, "page"), TextMember(message, "class")};
}

CallRequest ReadCallRequest(std::string_view text) {
    const Json message = ReadObject(text);
    return {TextMember(message, "page"), WholeMember(message, "object", INT64_MAX), TextMember(message, "member"),
            ReadKind(message), ReadArguments(message)};
}

ReleaseRequest ReadReleaseRequest(std::string_view text) {
    const Json message = ReadObject(text);
    return {TextMember(message, "page"), WholeMember(message, "object", INT64_MAX)};
}

PushRequest ReadPushRequest(std::string_view text) {
    const Json message = ReadObject(text);
    return {TextMember(message, "method"), ReadArguments(message)};
}

FaultRequest ReadFaultRequest(std::string_view text) {
    constexpr std::string_view kWanted = "an HRESULT as a number";
    const Json message = ReadObject(text);
    const Json& hresult = Member(message, "hresult", kWanted);
    if (!hresult.is_number()) {
        Refuse("hresult", kWanted);
    }
    const auto number = hresult.get<double>();
    if (number != std::floor(number) || number < -2147483648.0 || number > 4294967295.0) {
        Refuse("hresult", kWanted);
    }
    return {TextMember(message, "call"), number,
            static_cast<std::int32_t>(WholeMember(message, "nth", std::numeric_limits<std::int32_t>::max()))};
}

std::string ReadTextMember(std::string_view text, std::string_view name) { return TextMember(ReadObject(text), name); }

PageMessage ReadPageMessage(std::string_view text) {
    const Json message = ReadObject(text);
    const std::string type = TextMember(message, "type");
    if (type == "watch") {
        const Json& is_on = Member(message, "on", "true or false");
        if (!is_on.is_boolean()) {
            Refuse("on", "true or false");
        }
        PageMessage watch;
        watch.is_on = is_on.get<bool>();
        return watch;
    }
    if (type != "delivered" && type != "failed") {
        Refuse("type", R"("watch", "delivered" or "failed")");
    }
    PageMessage done;
    done.type = type == "delivered" ? PageMessage::Type::kDelivered : PageMessage::Type::kFailed;
    done.n = WholeMember(message, "n", INT64_MAX);
    if (type == "failed") {
        done.message = TextMember(message, "message");
    }
    return done;
}

std::string ResultText(std::int32_t result) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(result));
    return text.data();
}

std::string Text(const Json& message) { return message.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace paylodge::workbench
