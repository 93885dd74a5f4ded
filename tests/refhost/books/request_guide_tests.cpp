#include "refhost/books/request_guide.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "refhost/books/company_text.hpp"
#include "refhost/books/request.hpp"
#include "refhost/books/xml_writer.hpp"
#include "tests/refhost/books/sample_books.hpp"
#include "tests/support/source_file.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] std::string ReadSource(const std::string& name) {
    std::ifstream file(test::SourceFile(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

[[nodiscard]] std::unique_ptr<Company> SampleCompany() {
    const std::string text = ReadSource("examples/riverside.xml");
    auto company = Company::CreateInMemory(CompanyNameIn(text));
    ImportText(*company, text);
    return company;
}

TEST(RequestGuide, IsThePageInDocs) {
    EXPECT_TRUE(ReadSource("docs/requests.md") == RequestGuide())
        << "docs/requests.md is out of date: build/native/refhost/request_guide prints it anew";
}

TEST(RequestGuide, DescribesEachRequestOnceAndNoOther) {
    EXPECT_EQ(Notes().size(), RequestKinds().size());
    for (const RequestKind* const kind : RequestKinds()) {
        EXPECT_EQ(std::ranges::count(Notes(), kind->name, &RequestNotes::request), 1) << kind->name;
    }
}

TEST(IncludeRetElement, IsKnownToEveryQuery) {
    const auto company = SampleCompany();
    int records = 0;
    for (const RequestKind* const kind : RequestKinds()) {
        const std::string name(kind->name);
        if (!name.ends_with("QueryRq")) {
            continue;
        }
        const Element response = SendOne(*company, '<' + name +
                                                       "><IncludeRetElement>TxnID</IncludeRetElement>"
                                                       "<IncludeRetElement>ListID</IncludeRetElement></" +
                                                       name + '>');
        EXPECT_EQ(StatusCode(response), "0") << name << ": " << StatusMessage(response);
        for (const Element& record : response.children) {
            ++records;
            ASSERT_EQ(record.children.size(), 1U) << CompactXml(record);
            EXPECT_THAT(record.children.front().name, ::testing::AnyOf("TxnID", "ListID"));
        }
    }
    EXPECT_GT(records, 50);
}

class RequestExample : public ::testing::TestWithParam<RequestNotes> {};

TEST_P(RequestExample, WorksWithTheSampleCompany) {
    const auto company = SampleCompany();
    const Element response = SendOne(*company, GetParam().example);
    EXPECT_EQ(response.name.substr(0, response.name.size() - 1) + 'q', GetParam().request);
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    const RequestKind& kind = *FindRequestKind(GetParam().request);
    EXPECT_EQ(GetParam().changes.empty(), !kind.changes_books);
    EXPECT_EQ(ExportText(*company) == ExportText(*SampleCompany()), !kind.changes_books);
}

INSTANTIATE_TEST_SUITE_P(, RequestExample, ::testing::ValuesIn(Notes().begin(), Notes().end()),
                         [](const auto& test) { return std::string(test.param.request); });

}  // namespace
}  // namespace paylodge::refhost
