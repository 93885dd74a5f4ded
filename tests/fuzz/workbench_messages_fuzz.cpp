// What comes to the workbench from a page: messages are read or refused with a sentence, and a path leads nowhere but
// to a file below the served folder.
#include "tests/fuzz/pieces.hpp"
#include "workbench/server/messages.hpp"
#include "workbench/server/served_path.hpp"

namespace paylodge::workbench {
namespace {

using fuzz::ExpectSame;
using fuzz::ExpectTrue;

// Whether the text is such a message; what was read is compared with the text read once more.
template <class Read, class Compare>
void TryReading(std::string_view text, const Read& read, const Compare& compare) {
    try {
        const auto message = read(text);
        compare(message, Json::parse(text));
    } catch (const BadMessage& bad) {
        ExpectTrue(*bad.what() != '\0', "refused without a word");
    }
}

void TryMessage(std::string_view text) {
    TryReading(text, ReadCreateRequest, [](const CreateRequest& request, const Json& json) {
        ExpectSame(json["page"].get<std::string>(), request.page, "page");
        ExpectSame(json["class"].get<std::string>(), request.class_name, "class");
    });
    TryReading(text, ReadCallRequest, [](const CallRequest& request, const Json& json) {
        ExpectSame(json["member"].get<std::string>(), request.member, "member");
        ExpectTrue(json["object"] == request.object && request.object >= 0, "object");
        ExpectTrue(json["arguments"].size() == request.arguments.size(), "arguments");
        for (std::size_t i = 0; i < request.arguments.size(); ++i) {
            const Json& argument = json["arguments"][i];
            ExpectTrue(argument.is_object() || argument == request.arguments[i].value, "argument");
        }
    });
    TryReading(text, ReadReleaseRequest, [](const ReleaseRequest& request, const Json& json) {
        ExpectTrue(json["object"] == request.object && request.object >= 0, "object");
    });
    TryReading(text, ReadPushRequest, [](const PushRequest& request, const Json& json) {
        ExpectSame(json["method"].get<std::string>(), request.method, "method");
    });
    TryReading(text, ReadFaultRequest, [](const FaultRequest& request, const Json& json) {
        ExpectSame(json["call"].get<std::string>(), request.call, "call");
        ExpectTrue(json["nth"] == request.nth && request.nth >= 0, "nth");
        ExpectTrue(request.hresult >= -2147483648.0 && request.hresult <= 4294967295.0, "hresult");
    });
    TryReading(text, ReadPageMessage, [](const PageMessage& message, const Json& json) {
        ExpectTrue(json["type"] == "watch" || message.n >= 0, "n");
    });
}

void TryPath(std::string_view text) {
    const auto target = ReadTarget(text);
    ExpectTrue(!target || text.starts_with('/'), "a target begins with a slash");
    for (const std::string& path : {target ? target->path : std::string(text), std::string(text)}) {
        if (const auto file = RelativeFile(path)) {
            ExpectTrue(!file->empty() && file->front() != '/', "below the folder");
            ExpectTrue(file->find_first_of("\\:*?\"<>|") == std::string::npos, "no drive, no stream");
            ExpectTrue(("/" + *file + "/").find("/../") == std::string::npos, "not out of the folder");
            ExpectTrue(file->find('\0') == std::string::npos, "no null");
        }
    }
}

}  // namespace
}  // namespace paylodge::workbench

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::workbench::TryMessage(paylodge::fuzz::AsText(data, size));
    paylodge::workbench::TryPath(paylodge::fuzz::AsText(data, size));
    return 0;
}
