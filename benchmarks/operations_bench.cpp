// What each operation costs beside what it cannot avoid, in the same run: the same request sent, the same response
// converted and loaded, and the leanest walk that reads the texts that are needed. Prints a table and writes JSON to
// the file that is named on the command line.

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "benchmarks/measure.hpp"
#include "com/ansi_text.hpp"
#include "com/object_root.hpp"
#include "com/owner.hpp"
#include "hostapi/libraries.hpp"
#include "hostapi/request_processor.hpp"
#include "lhxml/dom.hpp"
#include "operations/paylodge.hpp"
#include "refhost/objects/undispatched.hpp"

namespace paylodge {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::array kRecordCounts = {1, 100, 10'000, 100'000};
constexpr int kMostQuickRecords = 10'000;

// The response that the processor below returns for every request.
OwnedBstr g_response;

// A processor that costs next to nothing.
class InstantProcessor : public refhost::Undispatched<IRequestProcessor> {
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

class InstantBroker : public refhost::Undispatched<IHostObjectBroker>,
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

[[nodiscard]] bench::Row Measure(CPaylodge& object, const Operation& operation, int count,
                                 const bench::Limits& limits) {
    g_response = BstrFromAnsi(MakeResponse(operation, count));
    const std::string batch = Repeat(operation.batch_request, count);
    const OwnedBstr argument = BstrFromAnsi(operation.reading.is_batch ? batch : "Bank");
    const std::string floor_request = "<LHXML><LHXMLMsgsRq>" + batch + "</LHXMLMsgsRq></LHXML>";
    size_t length = 0;
    const bench::Row row = bench::Compare(
        operation.name, count, limits,
        [&] {
            OwnedBstr result;
            static_cast<void>(operation.call(object, argument.Get(), result.Receive()));
        },
        [&] { length += RunFloor(operation, floor_request); });
    if (length == 0) {
        std::fprintf(stderr, "%s: the floor read nothing; is LHUtilities.dll there?\n", operation.name.c_str());
        std::exit(1);
    }
    return row;
}

// A call that is recorded by the host: its floor converts the arguments, sends a request of about the same length that
// is ready, and hands the response back.
struct SmallCall {
    std::string name;
    std::vector<BSTR> arguments;
    std::string request;
    std::string response;
    // Whether the response's status is judged.
    std::wstring_view judged_element;
    std::function<HRESULT(CPaylodge&, std::span<const BSTR> arguments, BSTR* result)> call;
};

[[nodiscard]] size_t RunFloor(const SmallCall& small_call) {
    size_t length = 0;
    for (const BSTR argument : small_call.arguments) {
        length += AnsiFromBstr(argument).size();
    }
    OwnedBstr response;
    static_cast<void>(CPaylodge::SendLHRequest(small_call.request, response.Receive()));
    const std::string text = AnsiFromBstr(response.Get());
    if (!small_call.judged_element.empty()) {
        ComPtr<IXMLDOMNamedNodeMap> attributes;
        std::string value;
        static_cast<void>(FindElement(text, small_call.judged_element)->get_attributes(attributes.Receive()));
        GetAttributeValue(attributes.Get(), "statusCode"sv, value);
    }
    const OwnedBstr result = BstrFromAnsi(text);
    return length + ::SysStringLen(result.Get());
}

[[nodiscard]] bench::Row Measure(CPaylodge& object, const SmallCall& small_call, const bench::Limits& limits) {
    g_response = BstrFromAnsi(small_call.response);
    size_t length = 0;
    return bench::Compare(
        small_call.name, 1, limits,
        [&] {
            OwnedBstr result;
            if (FAILED(small_call.call(object, small_call.arguments, result.Receive()))) {
                std::fprintf(stderr, "%s failed\n", small_call.name.c_str());
                std::exit(1);
            }
        },
        [&] { length += RunFloor(small_call); });
}

// An argument of a small call, made before.
[[nodiscard]] BSTR Text(const wchar_t* text) {
    static std::vector<OwnedBstr> texts;
    texts.push_back(MakeBstr(text));
    return texts.back().Get();
}

[[nodiscard]] std::vector<SmallCall> MakeSmallCalls() {
    const std::string head = "<?xml version=\"1.0\" ?><LHXML><LHXMLMsgsRs>";
    const std::string status = R"( requestID="1" statusCode="0" statusSeverity="Info" statusMessage="Status OK">)";
    const std::string tail = "</LHXMLMsgsRs></LHXML>";
    const std::string payment = head + "<ReceivePaymentAddRs" + status +
                                "<ReceivePaymentRet><TxnID>1F2</TxnID><TotalAmount>12.50</TotalAmount>"
                                "</ReceivePaymentRet></ReceivePaymentAddRs>" +
                                tail;
    const std::string deposit = head + "<DepositAddRs" + status +
                                "<DepositRet><TxnID>1F2</TxnID><DepositTotal>12.50</DepositTotal></DepositRet>"
                                "</DepositAddRs>" +
                                tail;
    // Without the memo, which a payment does not carry.
    const std::vector arguments = {Text(L"Harbor Cafe"),
                                   Text(L"2026-11-21"),
                                   Text(L"12.5"),
                                   Text(L"PL-1001"),
                                   Text(L"Visa"),
                                   Text(L"true"),
                                   Text(L"************1111"),
                                   Text(L"12"),
                                   Text(L"2028"),
                                   Text(L"A. Holder"),
                                   Text(L"0"),
                                   Text(L"Approved"),
                                   Text(L"MB0012345678"),
                                   Text(L"5247710012345678"),
                                   Text(L"185PNI"),
                                   Text(L"MB0012345678"),
                                   Text(L"4"),
                                   Text(L"Completed"),
                                   Text(L"2026-11-21T10:00:00"),
                                   Text(L"1795255200"),
                                   Text(L"q00d6e61")};
    const std::vector accounts = {Text(L"Riverside Checking"), Text(L"Riverside Savings"), Text(L"100"), Text(L"memo")};
    const BSTR body = Text(L"<AccountQueryRq requestID=\"1\"><ActiveStatus>ActiveOnly</ActiveStatus></AccountQueryRq>");
    return {
        {"CreatePaymentTxn",
         arguments,
         std::string(1900, 'x'),
         payment,
         {},
         [](CPaylodge& object, std::span<const BSTR> a, BSTR* result) {
             return object.CreatePaymentTxn(a[0], a[1], a[2], a[3], a[4], nullptr, a[5], a[6], a[7], a[8], a[9], a[10],
                                            a[11], a[12], a[13], a[14], a[15], a[16], a[17], a[18], a[19], a[20],
                                            result);
         }},
        {"TransferFunds", accounts, std::string(700, 'x'), deposit, L"DepositAddRs",
         [](CPaylodge& object, std::span<const BSTR> a, BSTR* result) {
             return object.TransferFunds(a[0], a[1], a[2], a[3], result);
         }},
        {"ProcessLHRequest",
         {body},
         std::string(200, 'x'),
         payment,
         {},
         [](CPaylodge& object, std::span<const BSTR> a, BSTR* result) {
             return object.ProcessLHRequest(a[0], result);
         }},
    };
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

int Run(const char* json_file, bool is_quick) {
    const auto factory = ComObject<ClassFactory<InstantBroker>>::Create();
    DWORD registration = 0;
    if (FAILED(::CoRegisterClassObject(kHostObjectBrokerClass, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                       &registration))) {
        return 1;
    }
    const auto object = ComObject<CPaylodge>::Create();
    const bench::Limits& limits = is_quick ? bench::kQuick : bench::kThorough;
    std::vector<bench::Row> rows;
    bench::PrintHeading();
    for (const SmallCall& small_call : MakeSmallCalls()) {
        rows.push_back(Measure(*object.Get(), small_call, limits));
        bench::Print(rows.back());
    }
    for (const Operation& operation : MakeOperations()) {
        for (const int count : kRecordCounts) {
            if (is_quick && count > kMostQuickRecords) {
                break;
            }
            rows.push_back(Measure(*object.Get(), operation, count, limits));
            bench::Print(rows.back());
        }
    }
    bench::WriteJson(json_file, rows);
    return 0;
}

}  // namespace
}  // namespace paylodge

int main(int argc, char** argv) {
    const bool is_quick = argc == 3 && argv[2] == std::string_view("--quick");
    if (argc != 2 && !is_quick) {
        std::fprintf(stderr, "Usage: operations_bench FILE.json [--quick]\n");
        return 2;
    }
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return 1;
    }
    // Loaded as in the host's own process.
    const paylodge::ModuleHandle utilities(::LoadLibraryW(paylodge::kUtilityLibrary));
    const int result = paylodge::Run(argv[1], is_quick);
    ::CoUninitialize();
    return result;
}
