#include "lhxml/envelope.hpp"

#include <array>
#include <cstdlib>
#include <ctime>

namespace paylodge {
namespace {

using namespace std::string_view_literals;

constexpr auto kDocumentElement = "LHXML"sv;
constexpr auto kMessageSet = "LHXMLMsgsRq"sv;

// Zero until the generator has been seeded.
unsigned g_seed = 0;

[[nodiscard]] int NextRandomNumber() {
    if (g_seed == 0) {
        g_seed = static_cast<unsigned>(std::time(nullptr));
        std::srand(g_seed);
    }
    return std::rand();
}

}  // namespace

std::string PassThroughEnvelope(std::string_view body) {
    constexpr auto kPrefix =
        R"(<?xml version="1.0"?><?lhxml version="7.0" ?><LHXML><LHXMLMsgsRq onError="continueOnError">)"sv;
    constexpr auto kSuffix = "</LHXMLMsgsRq></LHXML>"sv;
    std::string document;
    document.reserve(kPrefix.size() + body.size() + kSuffix.size());
    return document.append(kPrefix).append(body).append(kSuffix);
}

void BeginEnvelope(XMLBuilder& builder) {
    builder.AddProcessingInstruction(R"(?xml version="1.0" ?)");
    builder.AddProcessingInstruction(R"(?lhxml version="7.0" ?)");
    builder.OpenElement(kDocumentElement);
    builder.OpenElement(kMessageSet, std::array{"onError"sv}, std::array{"continueOnError"sv});
}

void EndEnvelope(XMLBuilder& builder) {
    builder.CloseElement(kMessageSet);
    builder.CloseElement(kDocumentElement);
}

void OpenRequestElement(XMLBuilder& builder, std::string_view name) {
    const std::string id = MakeRequestID();
    builder.OpenElement(name, std::array{"requestID"sv}, std::array{std::string_view(id)});
}

std::string MakeRequestID() { return "requestID_" + std::to_string(NextRandomNumber()); }

}  // namespace paylodge
