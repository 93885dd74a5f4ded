#include "refhost/books/processor.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/request.hpp"
#include "refhost/books/values.hpp"
#include "refhost/books/xml_writer.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::string_view kDocumentName = "LHXML";
constexpr std::string_view kRequestsName = "LHXMLMsgsRq";
constexpr std::string_view kResponsesName = "LHXMLMsgsRs";
constexpr std::string_view kContinueOnError = "continueOnError";
constexpr std::string_view kStopOnError = "stopOnError";

[[nodiscard]] const Instruction* FindInstruction(const Document& document, std::string_view target) {
    const auto found = std::ranges::find(document.instructions, target, &Instruction::target);
    return found == document.instructions.end() ? nullptr : &*found;
}

void CheckInstruction(const Document& document, std::string_view target, std::string_view version) {
    const Instruction* const instruction = FindInstruction(document, target);
    const std::string expected = "<?" + std::string(target) + " version=\"" + std::string(version) + "\"?>";
    if (instruction == nullptr) {
        throw RefusedRequest(Code::kUnknownVersion, "The document lacks the line " + expected + '.');
    }
    const std::string_view data = Trimmed(instruction->data);
    const std::string wanted(version);
    const bool is_known =
        data.starts_with("version=\"" + wanted + '"') || data.starts_with("version='" + wanted + '\'');
    if (!is_known) {
        throw RefusedRequest(Code::kUnknownVersion, "The document is of an unknown version: <?" + std::string(target) +
                                                        ' ' + std::string(data) + "?> instead of " + expected + '.');
    }
}

void CheckNoText(const Element& element) {
    if (!Trimmed(element.text).empty()) {
        throw RefusedRequest(Code::kUnknownEnvelope, element.name + " holds text where elements belong.");
    }
}

void CheckOnError(const Element& requests) {
    const std::string* const on_error = FindAttribute(requests, "onError");
    if (on_error == nullptr || (*on_error != kContinueOnError && *on_error != kStopOnError)) {
        throw RefusedRequest(Code::kUnknownOnError,
                             "The attribute onError of " + requests.name +
                                 (on_error == nullptr ? " is missing" : " is " + Quoted(*on_error)) +
                                 "; it has to be " + std::string(kContinueOnError) + " or " +
                                 std::string(kStopOnError) + '.');
    }
}

[[nodiscard]] Element ResponseElement(std::string_view name, std::string_view request_id, const Status& status) {
    Element response = MakeElement(name);
    response.attributes = {{"requestID", std::string(request_id)},
                           {"statusCode", std::to_string(static_cast<int>(status.code))},
                           {"statusSeverity", std::string(status.Severity())},
                           {"statusMessage", status.message}};
    return response;
}

[[nodiscard]] std::string_view RequestId(const Element& request) {
    const std::string* const id = FindAttribute(request, "requestID");
    return id == nullptr ? std::string_view() : std::string_view(*id);
}

// A name with a prefix would need that prefix's declaration in the response, too.
[[nodiscard]] std::string ResponseName(std::string_view request_name) {
    if (request_name.find(':') != std::string_view::npos) {
        return "ErrorRs";
    }
    if (request_name.ends_with("Rq")) {
        request_name.remove_suffix(2);
    }
    return std::string(request_name) + "Rs";
}

[[nodiscard]] Element RefusedResponse(const Element& request, const Status& status) {
    return ResponseElement(ResponseName(request.name), RequestId(request), status);
}

void CheckAttributes(const Element& request) {
    for (const Attribute& attribute : request.attributes) {
        if (attribute.name != "requestID") {
            throw RefusedRequest(Code::kUnknownField,
                                 request.name + " has the unknown attribute " + Quoted(attribute.name) + '.');
        }
    }
}

// A change is made as a whole or not at all.
[[nodiscard]] Answer ChangeBooks(const RequestKind& kind, const RequestContext& context) {
    if (context.company.IsReadOnly()) {
        throw RefusedRequest(Code::kReadOnly, "The company file " + Quoted(context.company.Path()) +
                                                  " is write-protected, so that nothing can be changed.");
    }
    Savepoint savepoint(context.company.Data());
    Answer answer = kind.answer(context);
    savepoint.Keep();
    return answer;
}

[[nodiscard]] Element AnswerRequest(const RequestContext& context) {
    const Element& request = context.request;
    const RequestKind* const kind = FindRequestKind(request.name);
    if (kind == nullptr) {
        throw RefusedRequest(Code::kUnknownRequest, "The request " + Quoted(request.name) + " is unknown.");
    }
    CheckAttributes(request);
    CheckFields(request, kind->fields);
    Answer answer = kind->changes_books ? ChangeBooks(*kind, context) : kind->answer(context);
    const Status status = answer.not_found.empty() ? Status() : Status{Code::kNotFound, std::move(answer.not_found)};
    Element response = RefusedResponse(request, status);
    response.children = std::move(answer.records);
    return response;
}

class DocumentRun {
  public:
    DocumentRun(Company& company, std::string_view now) noexcept : company_(company), now_(now) {}

    [[nodiscard]] Element Answer(const Element& requests) {
        stops_on_error_ = *FindAttribute(requests, "onError") == kStopOnError;
        Element responses = MakeElement(kResponsesName);
        for (const Element& request : requests.children) {
            responses.children.push_back(AnswerOne(request));
        }
        return responses;
    }

  private:
    [[nodiscard]] Element AnswerOne(const Element& request) {
        if (is_stopped_) {
            return RefusedResponse(request, {Code::kNotProcessed,
                                             "Not processed: an earlier request failed, and onError is stopOnError."});
        }
        try {
            return AnswerRequest({request, company_, now_});
        } catch (const RefusedRequest& refused) {
            return Refuse(request, refused.GetStatus());
        } catch (const BrokenRule& broken) {
            return Refuse(request, {Code::kBrokenRule, std::string("The books forbid it: ") + broken.what() + '.'});
        }
    }

    [[nodiscard]] Element Refuse(const Element& request, const Status& status) {
        is_stopped_ = stops_on_error_;
        return RefusedResponse(request, status);
    }

    Company& company_;
    std::string_view now_;
    bool stops_on_error_ = false;
    bool is_stopped_ = false;
};

[[nodiscard]] Element AnswerAllWith(const Element& requests, const Status& status) {
    Element responses = MakeElement(kResponsesName);
    for (const Element& request : requests.children) {
        responses.children.push_back(RefusedResponse(request, status));
    }
    return responses;
}

[[nodiscard]] bool MayChangeBooks(const Element& requests) {
    return std::ranges::any_of(requests.children, [](const Element& request) {
        const RequestKind* const kind = FindRequestKind(request.name);
        return kind != nullptr && kind->changes_books;
    });
}

[[nodiscard]] Element AnswerAndCommit(const Element& requests, Company& company, std::string_view now) {
    if (!MayChangeBooks(requests)) {
        return DocumentRun(company, now).Answer(requests);
    }
    Transaction transaction(company.Data());
    Element responses = DocumentRun(company, now).Answer(requests);
    transaction.Commit();
    return responses;
}

// The status for what happened to the company file.
[[nodiscard]] Code CodeFor(Problem problem) noexcept {
    switch (problem) {
        case Problem::kReadOnly:
            return Code::kReadOnly;
        case Problem::kDiskFull:
            return Code::kDiskFull;
        case Problem::kCannotWrite:
            return Code::kNotSaved;
        case Problem::kDamaged:
            return Code::kDamaged;
        default:
            return Code::kNoCompanyFile;
    }
}

[[nodiscard]] Element Enveloped(Element responses) {
    Element document = MakeElement(kDocumentName);
    document.children.push_back(std::move(responses));
    return document;
}

}  // namespace

void CheckEnvelope(const Document& document) {
    CheckInstruction(document, "xml", "1.0");
    CheckInstruction(document, "lhxml", "7.0");
    const Element& root = document.root;
    if (root.name != kDocumentName) {
        throw RefusedRequest(Code::kUnknownEnvelope,
                             "The document element is " + Quoted(root.name) + ", not " + Quoted(kDocumentName) + '.');
    }
    CheckNoText(root);
    if (root.children.size() != 1 || root.children.front().name != kRequestsName) {
        throw RefusedRequest(Code::kUnknownEnvelope,
                             root.name + " has to hold one " + std::string(kRequestsName) + " and nothing else.");
    }
    CheckNoText(root.children.front());
    CheckOnError(root.children.front());
}

Element ProcessDocument(const Document& document, Company& company, std::string_view now) {
    try {
        return Enveloped(AnswerAndCommit(document.root.children.front(), company, now));
    } catch (const HostError& error) {
        return RefuseRequests(document, error);
    }
}

Element RefuseRequests(const Document& document, const HostError& error) {
    return Enveloped(AnswerAllWith(document.root.children.front(), {CodeFor(error.GetProblem()), error.what()}));
}

Element ErrorResponse(const Status& status) {
    Element responses = MakeElement(kResponsesName);
    responses.children.push_back(ResponseElement("ErrorRs", {}, status));
    return Enveloped(std::move(responses));
}

std::string ResponseText(const Element& response) { return "<?xml version=\"1.0\" ?>" + CompactXml(response); }

}  // namespace paylodge::refhost
