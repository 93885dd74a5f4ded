// A day at the terminal without an end: day_writer COMPANY_FILE PROGRESS_FILE
//
// Records sales, refunds, payments and deposits one after the other until it is killed. Behind each document that was
// committed it adds a line with the number of the document to the progress file.

#include <cstdio>
#include <string>

#include "refhost/books/company.hpp"
#include "refhost/books/processor.hpp"
#include "refhost/books/xml_reader.hpp"

namespace {

constexpr const char* kHead =
    "<?xml version=\"1.0\"?><?lhxml version=\"7.0\"?><LHXML><LHXMLMsgsRq onError=\"continueOnError\">";

// One document with a request of each kind.
[[nodiscard]] std::string Requests(int number) {
    const std::string text = std::to_string(number);
    return kHead +
           ("<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>Smith</FullName></"
            "CustomerRef><RefNumber>D-" +
            text +
            "</RefNumber><TotalAmount>1.25</TotalAmount><IsAutoApply>true</IsAutoApply></ReceivePaymentAdd>"
            "</ReceivePaymentAddRq><ItemPaymentAddRq><ItemPaymentAdd><Name>Item " +
            text + "</Name></ItemPaymentAdd></ItemPaymentAddRq><SalesReceiptAddRq><SalesReceiptAdd><RefNumber>D-" +
            text + "</RefNumber><SalesReceiptLineAdd><ItemRef><FullName>Item " + text +
            "</FullName></ItemRef><Amount>10</Amount></SalesReceiptLineAdd></SalesReceiptAdd></SalesReceiptAddRq>"
            "<CreditMemoAddRq><CreditMemoAdd><CustomerRef><FullName>Smith</FullName></CustomerRef><CreditMemoLineAdd>"
            "<ItemRef><FullName>Item " +
            text +
            "</FullName></ItemRef><Amount>2</Amount></CreditMemoLineAdd></CreditMemoAdd></CreditMemoAddRq>"
            "<DepositAddRq><DepositAdd><DepositToAccountRef><FullName>Checking</FullName></DepositToAccountRef>"
            "<DepositLineAdd><AccountRef><FullName>Undeposited Funds</FullName></AccountRef><Amount>9</Amount>"
            "</DepositLineAdd></DepositAdd></DepositAddRq></LHXMLMsgsRq></LHXML>");
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        return 2;
    }
    std::FILE* const progress = std::fopen(arguments[2], "a");
    if (progress == nullptr) {
        return 3;
    }
    const auto company = paylodge::refhost::Company::Open(arguments[1]);
    int number = static_cast<int>(company->Records(paylodge::refhost::kSalesReceipts).size());
    for (;;) {
        const auto document = paylodge::refhost::ReadXml(Requests(++number));
        static_cast<void>(paylodge::refhost::ProcessDocument(document, *company, "2025-03-11T10:20:30"));
        std::fprintf(progress, "%d\n", number);
        std::fflush(progress);
    }
}
