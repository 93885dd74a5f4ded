#include "tests/refhost/sample_books.hpp"

#include <gtest/gtest.h>
#include <objbase.h>

#include "refhost/books/xml_reader.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::string_view kBooks = R"(<CompanyFile format="1" name="Corner Shop" nextNumber="20">
  <Accounts>
    <Account><ListID>L-1</ListID><TimeModified>2025-01-05T08:00:00</TimeModified><EditSequence>1</EditSequence>
      <Name>Checking</Name><FullName>Checking</FullName><IsActive>true</IsActive><AccountType>Bank</AccountType>
      <Balance>100.00</Balance></Account>
    <Account><ListID>L-2</ListID><TimeModified>2025-01-06T08:00:00</TimeModified><EditSequence>1</EditSequence>
      <Name>Till</Name><FullName>Checking:Till</FullName><IsActive>true</IsActive><AccountType>Bank</AccountType>
      <Balance>20.00</Balance></Account>
    <Account><ListID>L-3</ListID><TimeModified>2025-01-07T08:00:00</TimeModified><EditSequence>1</EditSequence>
      <Name>Old Bank</Name><FullName>Old Bank</FullName><IsActive>false</IsActive><AccountType>Bank</AccountType>
      <Balance>0.00</Balance></Account>
    <Account><ListID>L-4</ListID><TimeModified>2025-01-08T08:00:00</TimeModified><EditSequence>1</EditSequence>
      <Name>Undeposited Funds</Name><FullName>Undeposited Funds</FullName><IsActive>true</IsActive>
      <AccountType>OtherCurrentAsset</AccountType><Balance>5.00</Balance></Account>
    <Account><ListID>L-5</ListID><TimeModified>2025-01-09T08:00:00</TimeModified><EditSequence>1</EditSequence>
      <Name>Receivables</Name><FullName>Receivables</FullName><IsActive>true</IsActive>
      <AccountType>AccountsReceivable</AccountType><Balance>130.00</Balance></Account>
  </Accounts>
  <Customers>
    <Customer><ListID>L-6</ListID><EditSequence>1</EditSequence><Name>Smith</Name><FullName>Smith</FullName>
      <IsActive>true</IsActive><Balance>130.00</Balance></Customer>
    <Customer><ListID>L-7</ListID><EditSequence>1</EditSequence><Name>Kitchen</Name><FullName>Smith:Kitchen</FullName>
      <IsActive>true</IsActive><Balance>0.00</Balance></Customer>
    <Customer><ListID>L-8</ListID><EditSequence>1</EditSequence><Name>Smithson</Name><FullName>Smithson</FullName>
      <IsActive>true</IsActive><Balance>0.00</Balance></Customer>
  </Customers>
  <PaymentMethods>
    <PaymentMethod><ListID>L-9</ListID><Name>Cash</Name><IsActive>true</IsActive></PaymentMethod>
    <PaymentMethod><ListID>L-10</ListID><Name>Zinc tokens</Name><IsActive>true</IsActive></PaymentMethod>
  </PaymentMethods>
  <Invoices>
    <Invoice><TxnID>T-11</TxnID><EditSequence>1</EditSequence>
      <CustomerRef><ListID>L-6</ListID><FullName>Smith</FullName></CustomerRef><TxnDate>2025-02-02</TxnDate>
      <RefNumber>1002</RefNumber><AppliedAmount>0.00</AppliedAmount><BalanceRemaining>60.00</BalanceRemaining>
      <IsPaid>false</IsPaid></Invoice>
    <Invoice><TxnID>T-12</TxnID><EditSequence>1</EditSequence>
      <CustomerRef><ListID>L-6</ListID><FullName>Smith</FullName></CustomerRef><TxnDate>2025-02-01</TxnDate>
      <RefNumber>1001</RefNumber><AppliedAmount>0.00</AppliedAmount><BalanceRemaining>40.00</BalanceRemaining>
      <IsPaid>false</IsPaid></Invoice>
    <Invoice><TxnID>T-13</TxnID><EditSequence>1</EditSequence>
      <CustomerRef><ListID>L-7</ListID><FullName>Smith:Kitchen</FullName></CustomerRef><TxnDate>2025-01-01</TxnDate>
      <RefNumber>1000</RefNumber><AppliedAmount>-30.00</AppliedAmount><BalanceRemaining>0.00</BalanceRemaining>
      <IsPaid>true</IsPaid></Invoice>
  </Invoices>
</CompanyFile>)";

// The parser is a component object.
class ComEnvironment : public ::testing::Environment {
  public:
    void SetUp() override { ASSERT_EQ(::CoInitialize(nullptr), S_OK); }
    void TearDown() override { ::CoUninitialize(); }
};
const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new ComEnvironment);

[[nodiscard]] std::string AttributeText(const Element& element, std::string_view name) {
    const std::string* const value = FindAttribute(element, name);
    return value == nullptr ? "(none)" : *value;
}

}  // namespace

Company SampleBooks() { return Company(Read(kBooks).root); }

std::string Envelope(std::string_view requests, std::string_view on_error) {
    return "<?xml version=\"1.0\"?><?lhxml version=\"7.0\" ?><LHXML><LHXMLMsgsRq onError=\"" + std::string(on_error) +
           "\">" + std::string(requests) + "</LHXMLMsgsRq></LHXML>";
}

Document Read(std::string_view text) { return ReadXml(WideFromUtf8(text)); }

std::vector<Element> Send(Company& company, std::string_view requests, std::string_view on_error,
                          const std::function<void()>& save) {
    const Document document = Read(Envelope(requests, on_error));
    CheckEnvelope(document);
    const Element response = ProcessDocument(document, company, kNow, save);
    EXPECT_EQ(response.name, "LHXML");
    EXPECT_EQ(response.children.size(), 1U);
    EXPECT_EQ(response.children.front().name, "LHXMLMsgsRs");
    return response.children.front().children;
}

Element SendOne(Company& company, std::string_view request) {
    const std::vector<Element> responses = Send(company, request);
    EXPECT_EQ(responses.size(), 1U);
    return responses.empty() ? Element() : responses.front();
}

std::string StatusCode(const Element& response) { return AttributeText(response, "statusCode"); }

std::string StatusMessage(const Element& response) { return AttributeText(response, "statusMessage"); }

std::vector<std::string> Texts(const Element& response, std::string_view field) {
    std::vector<std::string> texts;
    for (const Element& record : response.children) {
        texts.emplace_back(ChildText(record, field));
    }
    return texts;
}

}  // namespace paylodge::refhost
