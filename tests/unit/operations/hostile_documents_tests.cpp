// Responses that came to harm, always the same ones in a run of tests, others in each run of ./dev fuzz: each operation
// returns one of its HRESULTs, its own XML stays well-formed, and what it returns is what a plain query of the document
// finds. A failure shows the document.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "com/ansi_text.hpp"
#include "lhxml/dom.hpp"
#include "lhxml/xml_builder.hpp"
#include "operations/check_matching.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_calls.hpp"

namespace paylodge::test {
namespace {

constexpr int kDocuments = 300;

// Set by ./dev fuzz: how many seconds to go on, with documents that nobody has seen.
constexpr const char* kFuzzSeconds = "PAYLODGE_FUZZ_SECONDS";

// When to stop.
class Budget {
  public:
    [[nodiscard]] bool IsFuzzing() const noexcept { return seconds_ != nullptr; }
    [[nodiscard]] bool IsLeft(int documents) const {
        return IsFuzzing() ? std::chrono::steady_clock::now() < end_ : documents < kDocuments;
    }

  private:
    const char* const seconds_ = std::getenv(kFuzzSeconds);
    const std::chrono::steady_clock::time_point end_ =
        std::chrono::steady_clock::now() + std::chrono::seconds(seconds_ == nullptr ? 0 : std::atoi(seconds_));
};

constexpr std::wstring_view kWhole =
    LR"(<?xml version="1.0" ?><LHXML><LHXMLMsgsRs><AccountQueryRs requestID="1" statusCode="0"><AccountRet><ListID>L-1</ListID>)"
    LR"(<EditSequence>2</EditSequence><IsActive>false</IsActive><FullName>Checking &amp; more</FullName>)"
    LR"(<AccountType>Bank</AccountType><Balance>1.00</Balance></AccountRet><AccountRet><FullName>Second</FullName>)"
    LR"(</AccountRet></AccountQueryRs><AccountAddRs statusCode="0"/><AccountModRs statusCode="0"/><DepositAddRs statusCode="0">)"
    LR"(<DepositRet><TxnID>1</TxnID><DepositTotal>2.00</DepositTotal></DepositRet></DepositAddRs><CustomerQueryRs><CustomerRet>)"
    LR"(<ListID>L-2</ListID><Name>1</Name></CustomerRet><CustomerRet><Name>1</Name><ListID>L-3</ListID></CustomerRet></CustomerQueryRs>)"
    LR"(<InvoiceQueryRs><InvoiceRet><RefNumber>7</RefNumber><BalanceRemaining>0.40</BalanceRemaining></InvoiceRet><InvoiceRet>)"
    LR"(<RefNumber>8</RefNumber><BalanceRemaining>0.60</BalanceRemaining></InvoiceRet></InvoiceQueryRs><ItemQueryRs><ItemRet>)"
    LR"(<Name>Item</Name><FullName>Full</FullName><SalesTaxCodeRef><ListID>t</ListID></SalesTaxCodeRef></ItemRet></ItemQueryRs>)"
    LR"(<SalesTaxCodeQueryRs><S><IsTaxable>true</IsTaxable></S></SalesTaxCodeQueryRs><PaymentMethodQueryRs><P><Name>Visa</Name>)"
    LR"(</P><P><Name>Cash</Name></P></PaymentMethodQueryRs></LHXMLMsgsRs></LHXML>)";

// What is put into a document, which mostly stays well-formed by it.
constexpr std::wstring_view kPieces[] = {
    L"<FullName>x</FullName>",
    L"<Name/>",
    L"<!-- c -->",
    L"<?p i?>",
    L"<![CDATA[<&]]>",
    L"text",
    L"&lt;",
    L"&#233;",
    L"\u20ac",
    L"\u4e2d",
    L"<RefNumber>9</RefNumber>",
    L"<BalanceRemaining>1.00</BalanceRemaining>",
    L" ",
    L"<AccountQueryRs><A><FullName>y</FullName></A></AccountQueryRs>",
    L"<CustomerRet/>",
    L"<",
    L">",
    L"&",
    L"\"",
    L"<ListID/>",
    L"<PaymentMethodQueryRs/>",
    L"\r\n",
};

class HarmedDocuments {
  public:
    explicit HarmedDocuments(unsigned seed) : random_(seed) {}

    [[nodiscard]] std::wstring Next() {
        std::wstring document(kWhole);
        for (size_t left = Below(4) + 1; left > 0; --left) {
            Harm(document);
        }
        return document;
    }

  private:
    [[nodiscard]] size_t Below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random_); }

    // The beginning of a tag, so that documents that still load are not rare.
    [[nodiscard]] size_t AnyTag(const std::wstring& document) {
        const size_t found = document.find(L'<', Below(document.size()));
        return found == std::wstring::npos ? 0 : found;
    }

    void Harm(std::wstring& document) {
        switch (Below(6)) {
            case 0:
                document.insert(Below(document.size()), kPieces[Below(std::size(kPieces))]);
                return;
            case 1:
                document.erase(Below(document.size()), Below(4));
                return;
            case 2: {
                const std::wstring part = document.substr(AnyTag(document), Below(60));
                document.insert(AnyTag(document), part);
                return;
            }
            default:
                document.insert(AnyTag(document), kPieces[Below(std::size(kPieces))]);
                return;
        }
    }

    std::mt19937 random_;
};

[[nodiscard]] bool Loads(std::wstring_view text) {
    std::string error;
    return static_cast<bool>(LoadXmlDocument(AnsiFromWide(std::wstring(text)), error));
}

// The texts that a query selects, of a document that loads.
class Queried {
  public:
    explicit Queried(const std::wstring& response) {
        std::string error;
        document_ = LoadXmlDocument(AnsiFromWide(response), error);
    }

    [[nodiscard]] explicit operator bool() const noexcept { return static_cast<bool>(document_); }

    // For each record that the path selects, the text of its first child of this name; nothing without one.
    [[nodiscard]] std::vector<std::optional<std::string>> Texts(const wchar_t* records, const wchar_t* name) const {
        std::vector<std::optional<std::string>> texts;
        ComPtr<IXMLDOMNodeList> list;
        EXPECT_HRESULT(S_OK, document_->selectNodes(MakeBstr(records).Get(), list.Receive()));
        long count = 0;
        EXPECT_HRESULT(S_OK, list->get_length(&count));
        for (long i = 0; i < count; ++i) {
            ComPtr<IXMLDOMNode> record;
            EXPECT_HRESULT(S_OK, list->get_item(i, record.Receive()));
            ComPtr<IXMLDOMNode> child;
            static_cast<void>(record->selectSingleNode(MakeBstr(name).Get(), child.Receive()));
            std::string text;
            EXPECT_HRESULT(S_OK, GetNodeText(child.Get(), text));
            texts.push_back(child ? std::optional(text) : std::nullopt);
        }
        return texts;
    }

  private:
    ComPtr<IXMLDOMDocument2> document_;
};

class HarmedResponse : public OperationTest {
  protected:
    [[nodiscard]] std::wstring Send(const OperationCall& operation, const std::wstring& response) {
        host_.answers.clear();
        RespondExactly(response);
        RespondExactly(response);
        Result result = operation.call(object_, L"1");
        EXPECT_TRUE(result.code == S_OK || result.code == E_FAIL) << operation.name << ": " << result;
        if (operation.writes_xml && result.code == S_OK && !HasOtherNodes(result.text)) {
            EXPECT_TRUE(Loads(L"<R>" + result.text + L"</R>")) << operation.name << ": " << result;
        }
        return result.text;
    }

    // A summary names each node of the response, also those whose names are none of an element.
    [[nodiscard]] static bool HasOtherNodes(const std::wstring& text) {
        return text.find(L"<#") != std::wstring::npos || text.find(L"<p ") != std::wstring::npos;
    }

    [[nodiscard]] static std::wstring Elements(const char* name, const std::vector<std::optional<std::string>>& texts) {
        XMLBuilder builder;
        for (const auto& text : texts) {
            builder.AddElement(name, text.value_or(""));
        }
        return std::wstring(View(BstrFromAnsi(builder.GetText())));
    }

    void CompareWithQueries(const std::wstring& response) {
        const Queried document(response);
        if (!document) {
            return;
        }
        ++loaded_;
        EXPECT_EQ(Elements("AccountName", document.Texts(L"(//AccountQueryRs)[1]/*", L"FullName")),
                  Ask(object_, response, &CPaylodge::GetAccounts, L"Bank"));
        const auto names = document.Texts(L"(//PaymentMethodQueryRs)[1]/*", L"Name");
        const bool has_methods = !document.Texts(L"//PaymentMethodQueryRs", L".").empty();
        std::wstring methods;
        for (const auto& name : names) {
            XMLBuilder builder;
            builder.AddElement("PayMethName", name.value_or(""));
            if (!builder.GetText().empty()) {
                methods += L"    " + std::wstring(View(BstrFromAnsi(builder.GetText())));
            }
        }
        EXPECT_EQ(has_methods ? L"<PaymentMethods>\r\n" + methods + L"</PaymentMethods>\r\n" : L"",
                  Ask(object_, response, &CPaylodge::GetPaymentMethods));
        EXPECT_EQ(ExpectedInvoices(document),
                  Ask(object_, response, &CPaylodge::GetInvoiceInfoForCustomerID, L"1", L"1.00"));
    }

    template <class Member, class... Arguments>
    [[nodiscard]] std::wstring Ask(CPaylodge& object, const std::wstring& response, Member member,
                                   const Arguments&... arguments) {
        host_.answers.clear();
        RespondExactly(response);
        const Result result = test::Ask(object, member, arguments...);
        EXPECT_HRESULT(S_OK, result.code);
        return result.text;
    }

    // The invoice with a balance of one unit, or all of them when they come to it.
    [[nodiscard]] static std::wstring ExpectedInvoices(const Queried& document) {
        const auto balances = document.Texts(L"(//InvoiceQueryRs)[1]/*", L"BalanceRemaining");
        const auto references = document.Texts(L"(//InvoiceQueryRs)[1]/*", L"RefNumber");
        std::string list;
        int sum = 0;
        for (size_t i = 0; i < balances.size(); ++i) {
            if (!balances[i]) {
                continue;
            }
            const std::string reference = references[i].value_or("");
            const int cents = CentsFromText(*balances[i]);
            if (cents == 100) {
                return std::wstring(View(BstrFromAnsi(reference)));
            }
            list += reference.empty() || list.empty() ? reference : ", " + reference;
            sum += cents;
        }
        return sum == 100 ? std::wstring(View(BstrFromAnsi(list))) : L"";
    }

    int loaded_ = 0;
};

TEST_F(HarmedResponse, IsReadAsAPlainQueryReadsIt) {
    const Budget budget;
    HarmedDocuments documents(budget.IsFuzzing() ? std::random_device()() : 20'240);
    int number = 0;
    for (; budget.IsLeft(number) && !HasFailure(); ++number) {
        const std::wstring document = documents.Next();
        for (const OperationCall& operation : kOperationCalls) {
            static_cast<void>(Send(operation, document));
        }
        CompareWithQueries(document);
        EXPECT_FALSE(HasFailure()) << "document " << number << ": " << AnsiFromWide(document);
    }
    // Some load, some do not: both are worth something.
    EXPECT_GT(loaded_, number / 8);
    EXPECT_LT(loaded_, number);
    if (budget.IsFuzzing()) {
        std::printf("%d documents, of which %d load\n", number, loaded_);
    }
}

}  // namespace
}  // namespace paylodge::test
