#include "tests/refhost/books/sample_books.hpp"

#include <gtest/gtest.h>

#include "refhost/books/audit.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/books/xml_reader.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::string_view kBooks = R"(<CompanyFile format="2" name="Corner Shop" nextNumber="20">
  <Accounts>
    <Account><ListID>L-1</ListID><TimeCreated>2025-01-05T08:00:00</TimeCreated><Name>Checking</Name>
      <FullName>Checking</FullName><IsActive>true</IsActive><AccountType>Bank</AccountType></Account>
    <Account><ListID>L-2</ListID><TimeCreated>2025-01-06T08:00:00</TimeCreated><Name>Till</Name>
      <FullName>Checking:Till</FullName><IsActive>true</IsActive><ParentRef><ListID>L-1</ListID><FullName>Checking</FullName></ParentRef><AccountType>Bank</AccountType></Account>
    <Account><ListID>L-3</ListID><TimeCreated>2025-01-07T08:00:00</TimeCreated><Name>Old Bank</Name>
      <FullName>Old Bank</FullName><IsActive>false</IsActive><AccountType>Bank</AccountType></Account>
    <Account><ListID>L-4</ListID><TimeCreated>2025-01-08T08:00:00</TimeCreated><Name>Undeposited Funds</Name>
      <FullName>Undeposited Funds</FullName><IsActive>true</IsActive><AccountType>OtherCurrentAsset</AccountType></Account>
    <Account><ListID>L-5</ListID><TimeCreated>2025-01-09T08:00:00</TimeCreated><Name>Receivables</Name>
      <FullName>Receivables</FullName><IsActive>true</IsActive><AccountType>AccountsReceivable</AccountType></Account>
    <Account><ListID>L-14</ListID><TimeCreated>2025-01-09T08:00:00</TimeCreated><Name>Sales</Name>
      <FullName>Sales</FullName><IsActive>true</IsActive><AccountType>Income</AccountType></Account>
    <Account><ListID>L-15</ListID><TimeCreated>2025-01-09T08:00:00</TimeCreated><Name>Capital</Name>
      <FullName>Capital</FullName><IsActive>true</IsActive><AccountType>Equity</AccountType></Account>
  </Accounts>
  <Customers>
    <Customer><ListID>L-6</ListID><TimeCreated>2025-01-05T08:00:00</TimeCreated><Name>Smith</Name></Customer>
    <Customer><ListID>L-7</ListID><TimeCreated>2025-01-05T08:00:00</TimeCreated><Name>Kitchen</Name>
      <ParentRef><ListID>L-6</ListID><FullName>Smith</FullName></ParentRef></Customer>
    <Customer><ListID>L-8</ListID><TimeCreated>2025-01-05T08:00:00</TimeCreated><Name>Smithson</Name></Customer>
  </Customers>
  <PaymentMethods>
    <PaymentMethod><ListID>L-9</ListID><TimeCreated>2025-01-05T08:00:00</TimeCreated><Name>Cash</Name></PaymentMethod>
    <PaymentMethod><ListID>L-10</ListID><TimeCreated>2025-01-05T08:00:00</TimeCreated>
      <Name>Zinc tokens</Name></PaymentMethod>
  </PaymentMethods>
  <Invoices>
    <Invoice><TxnID>T-11</TxnID><TimeCreated>2025-02-02T08:00:00</TimeCreated>
      <CustomerRef><FullName>Smith</FullName></CustomerRef><TxnDate>2025-02-02</TxnDate><RefNumber>1002</RefNumber>
      <Subtotal>60.00</Subtotal><BalanceRemaining>60.00</BalanceRemaining>
      <Posting><AccountRef><FullName>Receivables</FullName></AccountRef><CustomerRef><FullName>Smith</FullName></CustomerRef><Amount>60.00</Amount></Posting>
      <Posting><AccountRef><FullName>Sales</FullName></AccountRef><Amount>-60.00</Amount></Posting>
    </Invoice>
    <Invoice><TxnID>T-12</TxnID><TimeCreated>2025-02-01T08:00:00</TimeCreated>
      <CustomerRef><FullName>Smith</FullName></CustomerRef><TxnDate>2025-02-01</TxnDate><RefNumber>1001</RefNumber>
      <Subtotal>40.00</Subtotal><BalanceRemaining>40.00</BalanceRemaining>
      <Posting><AccountRef><FullName>Receivables</FullName></AccountRef><CustomerRef><FullName>Smith</FullName></CustomerRef><Amount>40.00</Amount></Posting>
      <Posting><AccountRef><FullName>Sales</FullName></AccountRef><Amount>-40.00</Amount></Posting>
    </Invoice>
    <Invoice><TxnID>T-13</TxnID><TimeCreated>2025-01-01T08:00:00</TimeCreated>
      <CustomerRef><FullName>Smith:Kitchen</FullName></CustomerRef><TxnDate>2025-01-01</TxnDate><RefNumber>1000</RefNumber>
      <Subtotal>30.00</Subtotal><BalanceRemaining>0.00</BalanceRemaining>
      <Posting><AccountRef><FullName>Receivables</FullName></AccountRef><CustomerRef><FullName>Smith:Kitchen</FullName></CustomerRef><Amount>30.00</Amount></Posting>
      <Posting><AccountRef><FullName>Sales</FullName></AccountRef><Amount>-30.00</Amount></Posting>
    </Invoice>
  </Invoices>
  <ReceivedPayments>
    <ReceivePayment><TxnID>T-17</TxnID><TimeCreated>2025-01-09T08:00:00</TimeCreated>
      <CustomerRef><FullName>Smith:Kitchen</FullName></CustomerRef><TxnDate>2025-01-09</TxnDate>
      <TotalAmount>30.00</TotalAmount>
      <AppliedToTxnRet><TxnID>T-13</TxnID><Amount>30.00</Amount></AppliedToTxnRet>
      <Posting><AccountRef><FullName>Checking</FullName></AccountRef><Amount>30.00</Amount></Posting>
      <Posting><AccountRef><FullName>Receivables</FullName></AccountRef><CustomerRef><FullName>Smith:Kitchen</FullName></CustomerRef><Amount>-30.00</Amount></Posting>
    </ReceivePayment>
  </ReceivedPayments>
  <JournalEntries>
    <JournalEntry><TxnID>T-16</TxnID><TimeCreated>2025-01-01T08:00:00</TimeCreated><TxnDate>2025-01-01</TxnDate>
      <TotalAmount>125.00</TotalAmount>
      <Posting><AccountRef><FullName>Checking</FullName></AccountRef><Amount>70.00</Amount></Posting>
      <Posting><AccountRef><FullName>Checking:Till</FullName></AccountRef><Amount>20.00</Amount></Posting>
      <Posting><AccountRef><FullName>Undeposited Funds</FullName></AccountRef><Amount>5.00</Amount></Posting>
      <Posting><AccountRef><FullName>Receivables</FullName></AccountRef><CustomerRef><FullName>Smith</FullName></CustomerRef><Amount>30.00</Amount></Posting>
      <Posting><AccountRef><FullName>Capital</FullName></AccountRef><Amount>-125.00</Amount></Posting>
    </JournalEntry>
  </JournalEntries>
</CompanyFile>)";

[[nodiscard]] std::string AttributeText(const Element& element, std::string_view name) {
    const std::string* const value = FindAttribute(element, name);
    return value == nullptr ? "(none)" : *value;
}

}  // namespace

std::unique_ptr<Company> SampleBooks() {
    auto books = Company::CreateInMemory(CompanyNameIn(kBooks));
    ImportText(*books, kBooks);
    return books;
}

std::string Envelope(std::string_view requests, std::string_view on_error) {
    return "<?xml version=\"1.0\"?><?lhxml version=\"7.0\" ?><LHXML><LHXMLMsgsRq onError=\"" + std::string(on_error) +
           "\">" + std::string(requests) + "</LHXMLMsgsRq></LHXML>";
}

std::vector<Element> Send(Company& company, std::string_view requests, std::string_view on_error) {
    const Document document = ReadXml(Envelope(requests, on_error));
    CheckEnvelope(document);
    const Element response = ProcessDocument(document, company, kNow);
    EXPECT_EQ(response.name, "LHXML");
    EXPECT_EQ(response.children.size(), 1U);
    EXPECT_EQ(response.children.front().name, "LHXMLMsgsRs");
    EXPECT_EQ(Audit(company), std::vector<std::string>()) << "after " << requests;
    return response.children.front().children;
}

Element SendOne(Company& company, std::string_view request) {
    const std::vector<Element> responses = Send(company, request);
    EXPECT_EQ(responses.size(), 1U);
    return responses.empty() ? Element() : responses.front();
}

std::string BalanceOf(Company& company, const ListKind& kind, std::string_view name) {
    const auto record = company.FindByName(kind, name);
    return record ? std::string(ChildText(*record, "Balance")) : "(no such record)";
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
