// What each operation costs beside what it cannot avoid, in the same run: the same request sent, the same response
// converted and loaded, and the leanest walk that reads the texts that are needed. Prints a table and writes JSON to
// the file that is named on the command line.

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "com/ansi_text.hpp"
#include "com/object_root.hpp"
#include "com/owner.hpp"
#include "hostapi/libraries.hpp"
#include "hostapi/request_processor.hpp"
#include "lhxml/dom.hpp"
#include "operations/paylodge.hpp"
#include "tests/support/without_dispatch.hpp"

namespace paylodge {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::array kRecordCounts = {100, 10'000, 100'000};
constexpr int kRuns = 5;

// The response that the processor below gives to every request.
OwnedBstr g_response;

// A processor that costs next to nothing.
class InstantProcessor : public test::WithoutDispatch<IRequestProcessor> {
  public:
    using Row = InterfaceRow<InstantProcessor>;
    static constexpr std::array kInterfaces = {Row::Of<IRequestProcessor>(), Row::Of<IDispatch>()};

    STDMETHODIMP ProcessRequest(BSTR, BSTR, BSTR* response) override {
        *response = CopyBstr(g_response.Get()).Detach();
        return S_OK;
    }
    STDMETHODIMP OpenConnection(BSTR, BSTR) override { return S_OK; }
    STDMETHODIMP CloseConnection() override { return S_OK; }
    STDMETHODIMP BeginSession(BSTR, LONG, BSTR*) override { return S_OK; }
    STDMETHODIMP EndSession(BSTR) override { return S_OK; }

  protected:
    ~InstantProcessor() = default;
};

class InstantBroker : public test::WithoutDispatch<IHostObjectBroker>,
                      public CComCoClass<InstantBroker, &kHostObjectBrokerClass> {
  public:
    using Row = InterfaceRow<InstantBroker>;
    static constexpr std::array kInterfaces = {Row::Of<IHostObjectBroker>(), Row::Of<IDispatch>()};

    STDMETHODIMP CreateObjectFromClassId(BSTR, IUnknown** object) override {
        *object = ComObject<InstantProcessor>::Create().Detach();
        return S_OK;
    }

  protected:
    ~InstantBroker() = default;
};

// What has to be read of a response: the element, and the texts of each record. Within a batch, records stand one level
// deeper, below the response to each request.
struct Reading {
    std::wstring_view element;
    std::span<const std::wstring_view> texts;
    bool is_batch = false;
};

struct Operation {
    std::string name;
    // One record of the response.
    std::string record;
    std::string response_element;
    Reading reading;
    // One request of the batch that the operation is given; empty for queries.
    std::string batch_request;
    std::function<HRESULT(CPaylodge&, BSTR argument, BSTR* result)> call;
};

[[nodiscard]] std::string Repeat(const std::string& text, int count) {
    std::string result;
    result.reserve(text.size() * static_cast<size_t>(count));
    for (int index = 0; index < count; ++index) {
        result += text;
    }
    return result;
}

[[nodiscard]] std::string MakeResponse(const Operation& operation, int count) {
    const std::string records = Repeat(operation.record, count);
    const std::string element = operation.reading.is_batch
                                    ? records
                                    : "<" + operation.response_element + R"( requestID="1" statusCode="0">)" + records +
                                          "</" + operation.response_element + ">";
    return "<?xml version=\"1.0\" ?><LHXML><LHXMLMsgsRs>" + element + "</LHXMLMsgsRs></LHXML>";
}

// The leanest steps that there are.
[[nodiscard]] ComPtr<IXMLDOMNode> FirstChild(IXMLDOMNode* node) {
    ComPtr<IXMLDOMNode> child;
    static_cast<void>(node->get_firstChild(child.Receive()));
    return child;
}
[[nodiscard]] ComPtr<IXMLDOMNode> NextSibling(IXMLDOMNode* node) {
    ComPtr<IXMLDOMNode> sibling;
    static_cast<void>(node->get_nextSibling(sibling.Receive()));
    return sibling;
}

[[nodiscard]] ComPtr<IXMLDOMNode> FindElement(std::string_view response, std::wstring_view name) {
    ComPtr<IXMLDOMNode> element;
    static_cast<void>(FindResponseElement(response, name, element));
    return element;
}

[[nodiscard]] size_t ReadTexts(IXMLDOMNode* record, std::span<const std::wstring_view> names) {
    size_t length = 0;
    size_t left = names.size();
    for (auto child = FirstChild(record); child && left > 0; child = NextSibling(child.Get())) {
        OwnedBstr name;
        static_cast<void>(child->get_nodeName(name.Receive()));
        if (std::ranges::find(names, View(name)) != names.end()) {
            std::string text;
            GetNodeText(child.Get(), text);
            length += text.size();
            --left;
        }
    }
    return length;
}

[[nodiscard]] size_t ReadStatus(IXMLDOMNode* response) {
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    std::string value;
    static_cast<void>(response->get_attributes(attributes.Receive()));
    size_t length = 0;
    for (const auto name : {"requestID"sv, "statusCode"sv, "statusSeverity"sv, "statusMessage"sv}) {
        GetAttributeValue(attributes.Get(), name, value);
        length += value.size();
    }
    return length;
}

// The least that an operation has to do. Gives the length of what was read, so that nothing is optimised away.
[[nodiscard]] size_t RunFloor(const Operation& operation, const std::string& request) {
    if (operation.reading.is_batch) {
        size_t names = 0;
        const auto requests = FindElement(request, L"LHXMLMsgsRq");
        for (auto child = FirstChild(requests.Get()); child; child = NextSibling(child.Get())) {
            std::string name;
            GetNodeName(child.Get(), name);
            names += name.size();
        }
        if (names == 0) {
            return 0;
        }
    }
    OwnedBstr response;
    if (FAILED(CPaylodge::SendLHRequest(request, response.Receive()))) {
        return 0;
    }
    size_t length = 0;
    const auto element = FindElement(AnsiFromBstr(response.Get()), operation.reading.element);
    for (auto child = FirstChild(element.Get()); child; child = NextSibling(child.Get())) {
        if (operation.reading.is_batch) {
            std::string name;
            GetNodeName(child.Get(), name);
            length += name.size() + ReadStatus(child.Get()) +
                      ReadTexts(FirstChild(child.Get()).Get(), operation.reading.texts);
        } else {
            length += ReadTexts(child.Get(), operation.reading.texts);
        }
    }
    return length;
}

template <class Action>
[[nodiscard]] double MillisecondsOf(const Action& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

[[nodiscard]] double Median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

struct Row {
    std::string operation;
    int records;
    double milliseconds;
    double floor_milliseconds;

    [[nodiscard]] double Ratio() const { return milliseconds / floor_milliseconds; }
};

// Operation and floor in turn, so that a busy machine slows both.
[[nodiscard]] Row Measure(CPaylodge& object, const Operation& operation, int count) {
    g_response = BstrFromAnsi(MakeResponse(operation, count));
    const std::string batch = Repeat(operation.batch_request, count);
    const OwnedBstr argument = BstrFromAnsi(operation.reading.is_batch ? batch : "Bank");
    const std::string floor_request = "<LHXML><LHXMLMsgsRq>" + batch + "</LHXMLMsgsRq></LHXML>";
    std::vector<double> times;
    std::vector<double> floors;
    size_t length = 0;
    for (int run = 0; run < kRuns + 1; ++run) {
        OwnedBstr result;
        const double time =
            MillisecondsOf([&] { static_cast<void>(operation.call(object, argument.Get(), result.Receive())); });
        const double floor = MillisecondsOf([&] { length += RunFloor(operation, floor_request); });
        if (run > 0) {
            times.push_back(time);
            floors.push_back(floor);
        }
    }
    if (length == 0) {
        std::fprintf(stderr, "%s: the floor read nothing; is LHUtilities.dll there?\n", operation.name.c_str());
        std::exit(1);
    }
    return {operation.name, count, Median(times), Median(floors)};
}

constexpr std::array kNameTexts = {L"Name"sv};
constexpr std::array kFullNameTexts = {L"FullName"sv};
constexpr std::array kAccountTexts = {L"FullName"sv, L"AccountType"sv, L"ListID"sv};
constexpr std::array kBalanceTexts = {L"FullName"sv, L"Balance"sv, L"BankNumber"sv, L"AccountNumber"sv};
constexpr std::array kInvoiceTexts = {L"BalanceRemaining"sv, L"RefNumber"sv};
constexpr std::array kSaleTexts = {L"TxnID"sv, L"RefNumber"sv, L"TotalAmount"sv, L"Memo"sv};

[[nodiscard]] std::vector<Operation> MakeOperations() {
    const std::string account =
        "<AccountRet><ListID>80000001</ListID><EditSequence>1</EditSequence><Name>Checking</Name>"
        "<FullName>Bank:Checking</FullName><IsActive>true</IsActive><AccountType>Bank</AccountType>"
        "<AccountNumber>1010</AccountNumber><BankNumber>5550001</BankNumber><Balance>1234.56</Balance></AccountRet>";
    const std::string item =
        "<ItemServiceRet><ListID>8000</ListID><Name>Deck Stain</Name><FullName>Paint:Deck Stain</FullName>"
        "<IsActive>true</IsActive></ItemServiceRet>";
    const std::string customer =
        "<CustomerRet><ListID>8000</ListID><EditSequence>1</EditSequence><Name>Harbor Cafe</Name></CustomerRet>";
    const std::string invoice =
        "<InvoiceRet><TxnID>1F2</TxnID><RefNumber>1001</RefNumber><BalanceRemaining>40.00</BalanceRemaining>"
        "</InvoiceRet>";
    const std::string sale_response =
        R"(<SalesReceiptAddRs requestID="1" statusCode="0" statusSeverity="Info" statusMessage="OK"><SalesReceiptRet>)"
        "<TxnID>1F2</TxnID><RefNumber>77</RefNumber><TotalAmount>12.50</TotalAmount><Memo>Visa</Memo>"
        "</SalesReceiptRet></SalesReceiptAddRs>";
    const std::string sale = R"(<SalesReceiptAddRq requestID="1"><SalesReceiptAdd><Memo>Visa</Memo></SalesReceiptAdd>)"
                             "</SalesReceiptAddRq>";
    const auto query = [](HRESULT (STDMETHODCALLTYPE CPaylodge::*member)(BSTR, BSTR*)) {
        return [member](CPaylodge& object, BSTR argument, BSTR* result) { return (object.*member)(argument, result); };
    };
    return {
        {"GetAccounts",
         account,
         "AccountQueryRs",
         {L"AccountQueryRs", kFullNameTexts},
         "",
         query(&CPaylodge::GetAccounts)},
        {"GetAccountsForMultipleTypes",
         account,
         "AccountQueryRs",
         {L"AccountQueryRs", kAccountTexts},
         "",
         query(&CPaylodge::GetAccountsForMultipleTypes)},
        {"GetBalanceForAccountType",
         account,
         "AccountQueryRs",
         {L"AccountQueryRs", kBalanceTexts},
         "",
         query(&CPaylodge::GetBalanceForAccountType)},
        {"GetItems",
         item,
         "ItemQueryRs",
         {L"ItemQueryRs", kFullNameTexts},
         "",
         [](CPaylodge& object, BSTR, BSTR* result) { return object.GetItems(result); }},
        {"GetPaymentMethods",
         customer,
         "PaymentMethodQueryRs",
         {L"PaymentMethodQueryRs", kNameTexts},
         "",
         [](CPaylodge& object, BSTR, BSTR* result) { return object.GetPaymentMethods(result); }},
        {"GetCustomerIDForName",
         customer,
         "CustomerQueryRs",
         {L"CustomerQueryRs", kNameTexts},
         "",
         query(&CPaylodge::GetCustomerIDForName)},
        {"GetInvoiceInfoForCustomerID",
         invoice,
         "InvoiceQueryRs",
         {L"InvoiceQueryRs", kInvoiceTexts},
         "",
         [](CPaylodge& object, BSTR argument, BSTR* result) {
             return object.GetInvoiceInfoForCustomerID(argument, MakeBstr(L"99999.99").Get(), result);
         }},
        {"CreateTxns",
         sale_response,
         "",
         {L"LHXMLMsgsRs", kSaleTexts, true},
         sale,
         [](CPaylodge& object, BSTR argument, BSTR* result) {
             return object.CreateTxns(argument, VARIANT_FALSE, result);
         }},
    };
}

void WriteJson(const char* file_name, const std::vector<Row>& rows) {
    std::ofstream file(file_name);
    file << "[\n";
    for (const Row& row : rows) {
        file << R"(  {"operation": ")" << row.operation << R"(", "records": )" << row.records << R"(, "milliseconds": )"
             << row.milliseconds << R"(, "floor_milliseconds": )" << row.floor_milliseconds << R"(, "ratio": )"
             << row.Ratio() << "}" << (&row == &rows.back() ? "\n" : ",\n");
    }
    file << "]\n";
}

int Run(const char* json_file) {
    const auto factory = ComObject<ClassFactory<InstantBroker>>::Create();
    DWORD registration = 0;
    if (FAILED(::CoRegisterClassObject(kHostObjectBrokerClass, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                       &registration))) {
        return 1;
    }
    const auto object = ComObject<CPaylodge>::Create();
    std::vector<Row> rows;
    std::printf("%-30s %8s %12s %12s %7s\n", "operation", "records", "ms", "floor ms", "ratio");
    for (const Operation& operation : MakeOperations()) {
        for (const int count : kRecordCounts) {
            rows.push_back(Measure(*object.Get(), operation, count));
            const Row& row = rows.back();
            std::printf("%-30s %8d %12.3f %12.3f %7.3f\n", row.operation.c_str(), row.records, row.milliseconds,
                        row.floor_milliseconds, row.Ratio());
            std::fflush(stdout);
        }
    }
    WriteJson(json_file, rows);
    return 0;
}

}  // namespace
}  // namespace paylodge

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: operations_bench FILE.json\n");
        return 2;
    }
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return 1;
    }
    // Loaded as in the host's own process.
    const paylodge::ModuleHandle utilities(::LoadLibraryW(paylodge::kUtilityLibrary));
    const int result = paylodge::Run(argv[1]);
    ::CoUninitialize();
    return result;
}
