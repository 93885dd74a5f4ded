// Hostile request documents: whatever the text, the books return a response document and stay true.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "refhost/books/audit.hpp"
#include "refhost/books/processor.hpp"
#include "refhost/books/xml_reader.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] std::string Respond(Company& books, std::string_view text) {
    try {
        const Document document = ReadXml(text);
        CheckEnvelope(document);
        return ResponseText(ProcessDocument(document, books, kNow));
    } catch (const RefusedRequest& refused) {
        return ResponseText(ErrorResponse(refused.GetStatus()));
    }
}

void Try(std::string_view text) {
    constexpr int kTriesWithTheSameBooks = 500;
    static std::unique_ptr<Company> books;
    static int tries = 0;
    if (tries++ % kTriesWithTheSameBooks == 0) {
        if (books && !Audit(*books).empty()) {
            std::puts(Audit(*books).front().c_str());
            std::abort();
        }
        books = SampleBooks();
    }
    // As a whole document, and as the body of one.
    static_cast<void>(ReadXml(Respond(*books, text)));
    static_cast<void>(ReadXml(Respond(*books, Envelope(text))));
}

}  // namespace
}  // namespace paylodge::refhost

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::refhost::Try({reinterpret_cast<const char*>(data), size});
    return 0;
}
