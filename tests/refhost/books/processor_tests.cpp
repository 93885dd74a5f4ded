#include "refhost/books/processor.hpp"

#include <gtest/gtest.h>

#include "refhost/books/company_text.hpp"
#include "refhost/books/watched_vfs.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/books/xml_writer.hpp"
#include "tests/refhost/books/sample_books.hpp"
#include "tests/refhost/books/temporary_company.hpp"

namespace paylodge::refhost {
namespace {

struct EnvelopeCase {
    const char* name;
    std::string text;
    Code code;
    const char* message_part;
};

void PrintTo(const EnvelopeCase& envelope, std::ostream* output) { *output << envelope.name; }

class RefusedEnvelope : public ::testing::TestWithParam<EnvelopeCase> {};

TEST_P(RefusedEnvelope, HasAStatusThatNamesTheMistake) {
    try {
        CheckEnvelope(ReadXml(GetParam().text));
        FAIL() << "was accepted";
    } catch (const RefusedRequest& refused) {
        EXPECT_EQ(refused.GetStatus().code, GetParam().code);
        EXPECT_NE(refused.GetStatus().message.find(GetParam().message_part), std::string::npos)
            << refused.GetStatus().message;
    }
}

const std::string kHead = "<?xml version=\"1.0\"?><?lhxml version=\"7.0\" ?>";
const std::string kSet = "<LHXMLMsgsRq onError=\"continueOnError\"/>";
INSTANTIATE_TEST_SUITE_P(
    , RefusedEnvelope,
    ::testing::Values(
        EnvelopeCase{"NoDeclaration", "<?lhxml version=\"7.0\"?><LHXML>" + kSet + "</LHXML>", Code::kUnknownVersion,
                     "<?xml version=\"1.0\"?>"},
        EnvelopeCase{"NoInstruction", "<?xml version=\"1.0\"?><LHXML>" + kSet + "</LHXML>", Code::kUnknownVersion,
                     "<?lhxml version=\"7.0\"?>"},
        EnvelopeCase{"OtherVersion", "<?xml version=\"1.0\"?><?lhxml version=\"6.0\"?><LHXML>" + kSet + "</LHXML>",
                     Code::kUnknownVersion, "6.0"},
        EnvelopeCase{"VersionBeginsAlike",
                     "<?xml version=\"1.0\"?><?lhxml version=\"7.01\"?><LHXML>" + kSet + "</LHXML>",
                     Code::kUnknownVersion, "7.01"},
        EnvelopeCase{"OtherRoot", kHead + "<XML>" + kSet + "</XML>", Code::kUnknownEnvelope, "\"XML\""},
        EnvelopeCase{"NoMessageSet", kHead + "<LHXML/>", Code::kUnknownEnvelope, "LHXMLMsgsRq"},
        EnvelopeCase{"TwoMessageSets", kHead + "<LHXML>" + kSet + kSet + "</LHXML>", Code::kUnknownEnvelope,
                     "LHXMLMsgsRq"},
        EnvelopeCase{"ResponseSet", kHead + "<LHXML><LHXMLMsgsRs/></LHXML>", Code::kUnknownEnvelope, "LHXMLMsgsRq"},
        EnvelopeCase{"StrayText", kHead + "<LHXML>x" + kSet + "</LHXML>", Code::kUnknownEnvelope, "text"},
        EnvelopeCase{"StrayTextInSet", kHead + "<LHXML><LHXMLMsgsRq onError=\"stopOnError\">x</LHXMLMsgsRq></LHXML>",
                     Code::kUnknownEnvelope, "text"},
        EnvelopeCase{"NoOnError", kHead + "<LHXML><LHXMLMsgsRq/></LHXML>", Code::kUnknownOnError, "missing"},
        EnvelopeCase{"UnknownOnError", kHead + "<LHXML><LHXMLMsgsRq onError=\"ContinueOnError\"/></LHXML>",
                     Code::kUnknownOnError, "\"ContinueOnError\""}),
    [](const auto& test) { return test.param.name; });

TEST(Envelope, OfBothSpellingsIsAccepted) {
    EXPECT_NO_THROW(CheckEnvelope(ReadXml(Envelope(""))));
    EXPECT_NO_THROW(
        CheckEnvelope(ReadXml("<?xml version=\"1.0\" ?>\r\n<?lhxml version=\"7.0\" ?>\r\n<LHXML>\r\n"
                              "    <LHXMLMsgsRq onError=\"stopOnError\">\r\n    </LHXMLMsgsRq>\r\n</LHXML>")));
}

TEST(Response, ToNoRequestsIsAnEmptySet) {
    const auto books = SampleBooks();
    EXPECT_TRUE(Send(*books, "").empty());
}

TEST(Response, HasTheFourAttributesInTheirOrder) {
    const auto books = SampleBooks();
    EXPECT_EQ(
        CompactXml(SendOne(*books, "<ItemQueryRq requestID=\"a&amp;b\"/>")),
        "<ItemQueryRs requestID=\"a&amp;b\" statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status OK\"/>");
    EXPECT_EQ(CompactXml(SendOne(*books, "<ItemQueryRq/>")),
              "<ItemQueryRs requestID=\"\" statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status OK\"/>");
}

TEST(Response, OfAWholeDocumentHasItsForm) {
    EXPECT_EQ(ResponseText(ErrorResponse({Code::kMalformedDocument, "Bad <"})),
              "<?xml version=\"1.0\" ?><LHXML><LHXMLMsgsRs><ErrorRs requestID=\"\" statusCode=\"1000\" "
              "statusSeverity=\"Error\" statusMessage=\"Bad &lt;\"/></LHXMLMsgsRs></LHXML>");
}

TEST(Response, ToAnUnknownRequestIsAnErrorUnderItsName) {
    const auto books = SampleBooks();
    const Element response = SendOne(*books, "<BudgetQueryRq requestID=\"9\"/>");
    EXPECT_EQ(response.name, "BudgetQueryRs");
    EXPECT_EQ(*FindAttribute(response, "requestID"), "9");
    EXPECT_EQ(StatusCode(response), "1100");
    EXPECT_NE(StatusMessage(response).find("BudgetQueryRq"), std::string::npos);
    EXPECT_EQ(SendOne(*books, "<CheckAdd/>").name, "CheckAddRs");
    EXPECT_EQ(SendOne(*books, "<x:AccountQueryRq xmlns:x=\"urn:x\"/>").name, "ErrorRs");
}

TEST(Response, ToAMalformedRequestNamesTheField) {
    struct Case {
        const char* request;
        const char* code;
        const char* message_part;
    };
    const auto books = SampleBooks();
    for (const Case& test : {
             Case{"<AccountQueryRq><Colour>red</Colour></AccountQueryRq>", "2010", "Colour"},
             Case{"<AccountQueryRq>red</AccountQueryRq>", "2010", "AccountQueryRq"},
             Case{"<AccountQueryRq color=\"red\"/>", "2010", "color"},
             Case{"<AccountQueryRq><ActiveStatus a=\"b\">All</ActiveStatus></AccountQueryRq>", "2010", "ActiveStatus"},
             Case{"<AccountQueryRq><ActiveStatus><X/></ActiveStatus></AccountQueryRq>", "2010", "ActiveStatus"},
             Case{"<AccountQueryRq><ActiveStatus>Some</ActiveStatus></AccountQueryRq>", "2030", "ActiveStatus"},
             Case{"<AccountQueryRq><ActiveStatus/></AccountQueryRq>", "2030", "ActiveStatus"},
             Case{"<AccountQueryRq><AccountType>Bunk</AccountType></AccountQueryRq>", "2030", "AccountType"},
             Case{"<AccountQueryRq><MaxReturned>0</MaxReturned></AccountQueryRq>", "2030", "MaxReturned"},
             Case{"<AccountQueryRq><FromModifiedDate>now</FromModifiedDate></AccountQueryRq>", "2030",
                  "FromModifiedDate"},
             Case{"<AccountQueryRq><ActiveStatus>All</ActiveStatus><ActiveStatus>All</ActiveStatus></AccountQueryRq>",
                  "2020", "ActiveStatus"},
             Case{"<AccountQueryRq><AccountType>Bank</AccountType><ActiveStatus>All</ActiveStatus></AccountQueryRq>",
                  "2015", "ActiveStatus stands behind AccountType; the order is: ListID, FullName, MaxReturned"},
             Case{"<AccountAddRq><AccountAdd><Name>A\tB</Name><AccountType>Bank</AccountType></AccountAdd></"
                  "AccountAddRq>",
                  "2030", "AccountAdd/Name holds a control character"},
             Case{"<CustomerQueryRq><NameFilter><Name>x</Name></NameFilter></CustomerQueryRq>", "2000",
                  "NameFilter/MatchCriterion"},
             Case{"<AccountAddRq/>", "2000", "AccountAdd"},
             Case{"<AccountAddRq><AccountAdd><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>", "2000",
                  "AccountAdd/Name"},
             Case{"<AccountAddRq><AccountAdd><Name> </Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>",
                  "2000", "AccountAdd/Name"},
             Case{"<AccountAddRq><AccountAdd><Name>A</Name></AccountAdd></AccountAddRq>", "2000",
                  "AccountAdd/AccountType"},
             Case{"<AccountAddRq><AccountAdd><Name>A</Name><IsActive>yes</IsActive><AccountType>Bank</AccountType>"
                  "</AccountAdd></AccountAddRq>",
                  "2030", "AccountAdd/IsActive"},
         }) {
        const Element response = SendOne(*books, test.request);
        EXPECT_EQ(StatusCode(response), test.code) << test.request;
        EXPECT_NE(StatusMessage(response).find(test.message_part), std::string::npos) << StatusMessage(response);
        EXPECT_EQ(*FindAttribute(response, "statusSeverity"), "Error");
        EXPECT_TRUE(response.children.empty());
    }
    EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
}

constexpr std::string_view kThreeRequests =
    "<AccountAddRq><AccountAdd><Name>One</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>"
    "<AccountAddRq><AccountAdd><Name>One</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>"
    "<AccountAddRq><AccountAdd><Name>Two</Name><AccountType>Bank</AccountType></AccountAdd></AccountAddRq>";

[[nodiscard]] std::vector<std::string> Codes(const std::vector<Element>& responses) {
    std::vector<std::string> codes;
    for (const Element& response : responses) {
        codes.push_back(StatusCode(response));
    }
    return codes;
}

TEST(OnError, ContinueProcessesTheRequestsAfterAFailedOne) {
    const auto books = SampleBooks();
    EXPECT_EQ(Codes(Send(*books, kThreeRequests, "continueOnError")), (std::vector<std::string>{"0", "3100", "0"}));
    EXPECT_NE(books->FindByName(kAccounts, "Two"), std::nullopt);
}

TEST(OnError, StopLeavesTheRequestsAfterAFailedOne) {
    const auto books = SampleBooks();
    EXPECT_EQ(Codes(Send(*books, kThreeRequests, "stopOnError")), (std::vector<std::string>{"0", "3100", "1110"}));
    EXPECT_NE(books->FindByName(kAccounts, "One"), std::nullopt);
    EXPECT_EQ(books->FindByName(kAccounts, "Two"), std::nullopt);
}

TEST(OnError, StopDoesNotMindARecordThatIsNotFound) {
    const auto books = SampleBooks();
    EXPECT_EQ(Codes(Send(*books, "<AccountQueryRq><FullName>None</FullName></AccountQueryRq><AccountQueryRq/>",
                         "stopOnError")),
              (std::vector<std::string>{"2050", "0"}));
}

// Plans the nth step of a kind to fail, for as long as it lives.
class FailingStep {
  public:
    FailingStep(FileStep step, std::uint32_t result) {
        WatchSteps([=](FileStep taken) {
            return taken == step ? std::optional(static_cast<std::int32_t>(result)) : std::nullopt;
        });
    }
    ~FailingStep() { WatchSteps({}); }
    FailingStep(const FailingStep&) = delete;
    FailingStep& operator=(const FailingStep&) = delete;
};

TEST(Committing, HappensOnceForADocumentThatChangesTheBooks) {
    const TemporaryCompany file;
    const auto books = file.Open();
    int commits = 0;
    WatchSteps([&commits](FileStep step) {
        commits += step == FileStep::kCommit ? 1 : 0;
        return std::nullopt;
    });
    static_cast<void>(Send(*books, kThreeRequests));
    EXPECT_EQ(commits, 1);
    static_cast<void>(Send(*books, "<AccountQueryRq/>"));
    static_cast<void>(Send(*books, "<AccountAddRq/>"));
    EXPECT_EQ(commits, 1);
    WatchSteps({});
}

TEST(Committing, ThatFailsAtAnyStepTakesTheWholeDocumentBack) {
    const TemporaryCompany file;
    const auto books = file.Open();
    const std::string before = ExportText(*books);
    for (const FileStep step : {FileStep::kWrite, FileStep::kSync, FileStep::kCommit}) {
        std::vector<Element> responses;
        {
            const FailingStep fails(step, 0x8007001D);
            const Document document = ReadXml(Envelope(kThreeRequests));
            responses = ProcessDocument(document, *books, kNow).children.front().children;
        }
        EXPECT_EQ(Codes(responses), (std::vector<std::string>{"4010", "4010", "4010"})) << NameOf(step);
        EXPECT_NE(StatusMessage(responses[0]).find(std::string(NameOf(step)) + " was planned to fail with 0x8007001D"),
                  std::string::npos)
            << StatusMessage(responses[0]);
        EXPECT_EQ(ExportText(*books), before);
    }
    EXPECT_EQ(Codes(Send(*books, kThreeRequests)), (std::vector<std::string>{"0", "3100", "0"}));
}

TEST(Committing, SaysThatTheDiskIsFullAndLosesNothing) {
    const TemporaryCompany file;
    const auto books = file.Open();
    const std::string before = ExportText(*books);
    for (const FileStep step : {FileStep::kOpen, FileStep::kWrite, FileStep::kSync, FileStep::kCommit}) {
        std::vector<Element> responses;
        {
            const FailingStep fails(step, 0x80070070);
            const Document document = ReadXml(Envelope(kThreeRequests));
            responses = ProcessDocument(document, *books, kNow).children.front().children;
        }
        EXPECT_EQ(Codes(responses), (std::vector<std::string>{"4030", "4030", "4030"})) << NameOf(step);
        EXPECT_NE(StatusMessage(responses[0]).find("the disk is full"), std::string::npos)
            << StatusMessage(responses[0]);
        EXPECT_EQ(ExportText(*books), before);
    }
    EXPECT_EQ(Codes(Send(*books, kThreeRequests)), (std::vector<std::string>{"0", "3100", "0"}));
}

// Not a step that was planned: the database itself finds no room for another page.
TEST(Committing, LosesNothingWhereTheFileCannotGrow) {
    const TemporaryCompany file;
    const auto books = file.Open();
    const std::string before = ExportText(*books);
    books->Data().Run("PRAGMA max_page_count = 1");
    std::string requests;
    for (int number = 1; number <= 50; ++number) {
        requests += "<AccountAddRq><AccountAdd><Name>Account " + std::to_string(number) +
                    "</Name><AccountType>Bank</AccountType><Desc>" + std::string(200, 'x') +
                    "</Desc></AccountAdd></AccountAddRq>";
    }
    const Document document = ReadXml(Envelope(requests));
    const Element response = ProcessDocument(document, *books, kNow).children.front().children.front();
    EXPECT_EQ(StatusCode(response), "4030") << StatusMessage(response);
    EXPECT_EQ(ExportText(*books), before);
    books->Data().Run("PRAGMA max_page_count = 1000000");
    EXPECT_EQ(Codes(Send(*books, kThreeRequests)), (std::vector<std::string>{"0", "3100", "0"}));
}

TEST(ReadOnlyBooks, AnswerQueriesAndRefuseChanges) {
    const TemporaryCompany file;
    file.MakeReadOnly();
    const auto books = file.Open();
    ASSERT_TRUE(books->IsReadOnly());
    EXPECT_EQ(Codes(Send(*books, std::string(kThreeRequests) + "<AccountQueryRq/>")),
              (std::vector<std::string>{"4020", "4020", "4020", "0"}));
}

}  // namespace
}  // namespace paylodge::refhost
