// How the books of the reference host grow: the time to open a company file, to add a payment and to find a record,
// with 100 transactions and with 100,000. Exit status 1 when a limit is missed.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "refhost/books/company.hpp"
#include "refhost/books/ledger.hpp"
#include "refhost/books/names.hpp"
#include "refhost/books/processor.hpp"
#include "refhost/books/xml_reader.hpp"

namespace paylodge::refhost {
namespace {

constexpr int kFew = 100;
constexpr int kMany = 100'000;
constexpr int kRuns = 101;
constexpr double kLongestOpening = 3000;
constexpr double kLargestRatio = 2;
constexpr std::string_view kNow = "2026-01-15T10:20:30";

template <class Action>
[[nodiscard]] double MillisecondsOf(const Action& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

template <class Action>
[[nodiscard]] double MedianOf(const Action& action) {
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        times.push_back(MillisecondsOf([&] { action(run); }));
    }
    std::ranges::sort(times);
    return times[times.size() / 2];
}

void AddAccount(Company& company, std::string_view name, std::string_view type) {
    company.Data().Run(
        "INSERT INTO accounts (number, name, full_name, folded_name, is_active, type) VALUES (?, ?, ?, ?, 1, ?)",
        company.NewNumber(kNow), name, name, Folded(name), type);
}

// A company with a tenth as many customers as transactions, each of which is an invoice or a payment.
void Fill(Company& company, int count) {
    Transaction transaction(company.Data());
    AddAccount(company, "Checking", "Bank");
    AddAccount(company, "Receivables", "AccountsReceivable");
    AddAccount(company, "Sales", "Income");
    AddAccount(company, "Undeposited Funds", "OtherCurrentAsset");
    const auto account = [&company](std::string_view name) { return *company.NumberOfName(kAccounts, name); };
    const RecordNumber receivables = account("Receivables");
    const RecordNumber sales = account("Sales");
    const RecordNumber funds = account("Undeposited Funds");
    std::vector<RecordNumber> customers;
    for (int index = 0; index < count / 10; ++index) {
        customers.push_back(company.NewNumber(kNow));
        const std::string name = "Customer " + std::to_string(index);
        company.Data().Run(
            "INSERT INTO customers (number, name, full_name, folded_name, is_active) VALUES (?, ?, ?, ?, 1)",
            customers.back(), name, name, Folded(name));
    }
    for (int index = 0; index < count; ++index) {
        const bool is_invoice = static_cast<size_t>(index) / customers.size() % 2 == 0;
        Entry entry;
        entry.kind = is_invoice ? &kInvoices : &kReceivedPayments;
        entry.customer = customers[static_cast<size_t>(index) % customers.size()];
        entry.receivables = receivables;
        entry.date = "2025-" + std::string(index % 12 < 9 ? "0" : "") + std::to_string(index % 12 + 1) + "-15";
        entry.ref_number = "R-" + std::to_string(index);
        entry.total = 1000 + index % 7;
        entry.postings = {{receivables, entry.customer, is_invoice ? entry.total : -entry.total},
                          {is_invoice ? sales : funds, {}, is_invoice ? -entry.total : entry.total}};
        static_cast<void>(Enter(company, entry, kNow));
    }
    transaction.Commit();
}

void Send(Company& company, const std::string& request) {
    const Document document =
        ReadXml("<?xml version=\"1.0\"?><?lhxml version=\"7.0\"?><LHXML><LHXMLMsgsRq onError=\"stopOnError\">" +
                request + "</LHXMLMsgsRq></LHXML>");
    const Element response = ProcessDocument(document, company, kNow).children.front().children.front();
    if (*FindAttribute(response, "statusCode") != "0" || response.children.empty()) {
        std::fprintf(stderr, "%s\n", ResponseText(response).c_str());
        std::exit(1);
    }
}

struct Figures {
    double opening;
    double payment;
    double by_name;
    double by_id;
    double by_reference;
    double open_invoices;
};

[[nodiscard]] Figures Measure(const std::string& path, int count) {
    std::filesystem::remove(path);
    Fill(*Company::Create(path, "Bench"), count);
    Figures figures{};
    std::unique_ptr<Company> company;
    figures.opening = MillisecondsOf([&] { company = Company::Open(path); });
    const std::string customer = std::to_string(count / 20);
    const RecordNumber number = *company->NumberOfName(kCustomers, "Customer " + customer);
    figures.payment = MedianOf([&](int run) {
        Send(*company, "<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>Customer " + customer +
                           "</FullName></CustomerRef><RefNumber>B-" + std::to_string(run) +
                           "</RefNumber><TotalAmount>1</TotalAmount></ReceivePaymentAdd></ReceivePaymentAddRq>");
    });
    figures.by_name = MedianOf([&](int) {
        Send(*company, "<CustomerQueryRq><FullName>CUSTOMER " + customer + "</FullName></CustomerQueryRq>");
    });
    figures.by_id = MedianOf([&](int) {
        Send(*company, "<CustomerQueryRq><ListID>L-" + std::to_string(number) + "</ListID></CustomerQueryRq>");
    });
    figures.by_reference = MedianOf(
        [&](int) { Send(*company, "<InvoiceQueryRq><RefNumber>R-" + customer + "</RefNumber></InvoiceQueryRq>"); });
    figures.open_invoices = MedianOf([&](int) {
        Send(*company, "<InvoiceQueryRq><EntityFilter><ListID>L-" + std::to_string(number) +
                           "</ListID></EntityFilter><PaidStatus>NotPaidOnly</PaidStatus></InvoiceQueryRq>");
    });
    company.reset();
    std::filesystem::remove(path);
    return figures;
}

// Whether the row keeps within its limit.
[[nodiscard]] bool Print(const char* what, double few, double many, bool is_within) {
    std::printf("%-34s %12.3f %12.3f %7.2f%s\n", what, few, many, many / few, is_within ? "" : "  too slow");
    return is_within;
}

[[nodiscard]] bool PrintRatio(const char* what, double few, double many) {
    return Print(what, few, many, many <= few * kLargestRatio);
}

int Run(const std::string& path) {
    const Figures few = Measure(path, kFew);
    const Figures many = Measure(path, kMany);
    std::printf("%-34s %12s %12s %7s\n", "ms", "100", "100,000", "ratio");
    bool is_within = Print("open the company file", few.opening, many.opening, many.opening < kLongestOpening);
    is_within = PrintRatio("add a payment", few.payment, many.payment) && is_within;
    is_within = PrintRatio("find a customer by name", few.by_name, many.by_name) && is_within;
    is_within = PrintRatio("find a customer by id", few.by_id, many.by_id) && is_within;
    is_within = PrintRatio("find an invoice by its number", few.by_reference, many.by_reference) && is_within;
    is_within = PrintRatio("open invoices of a customer", few.open_invoices, many.open_invoices) && is_within;
    return is_within ? 0 : 1;
}

}  // namespace
}  // namespace paylodge::refhost

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "Usage: books_bench COMPANY_FILE\n");
        return 2;
    }
    return paylodge::refhost::Run(arguments[1]);
}
