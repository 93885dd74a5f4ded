// Arguments and responses that nobody sends who means well: every operation returns one of its HRESULTs, sends nothing
// but what its request is made of, fetches nothing, and works the next time.

#include <winsock2.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "lhxml/envelope.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_calls.hpp"

namespace paylodge::test {
namespace {

using namespace std::string_literals;

constexpr int kLevels = 100'000;

[[nodiscard]] std::wstring Repeated(std::wstring_view text, int count) {
    std::wstring repeated;
    repeated.reserve(text.size() * static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

[[nodiscard]] std::wstring Nested() { return Repeated(L"<Add>", kLevels) + Repeated(L"</Add>", kLevels); }

// Ten levels of entities that each stand for ten of the level below: ten thousand million characters.
[[nodiscard]] std::wstring EntityBomb() {
    std::wstring text = L"<!DOCTYPE LHXML [<!ENTITY e0 \"aaaaaaaaaa\">";
    for (int level = 1; level <= 9; ++level) {
        text += L"<!ENTITY e" + std::to_wstring(level) + L" \"" +
                Repeated(L"&e" + std::to_wstring(level - 1) + L";", 10) + L"\">";
    }
    return text +
           L"]><LHXML><LHXMLMsgsRs><AccountQueryRs><A><FullName>&e9;</FullName></A></AccountQueryRs>"
           L"<ItemQueryRs><I><Name>&e9;</Name></I></ItemQueryRs></LHXMLMsgsRs></LHXML>";
}

// A document that names what stands at this address in every way that a document can.
[[nodiscard]] std::wstring Fetching(const std::wstring& address) {
    return L"<!DOCTYPE LHXML SYSTEM \"" + address + L"\" [<!ENTITY secret SYSTEM \"" + address +
           L"\"><!ENTITY % more SYSTEM \"" + address +
           L"\"> %more;]><LHXML xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:noNamespaceSchemaLocation='" +
           address +
           L"'><LHXMLMsgsRs><AccountQueryRs statusCode='0'><A><FullName>&secret;</FullName><Name>&secret;</Name>"
           L"<ListID>&secret;</ListID></A></AccountQueryRs></LHXMLMsgsRs></LHXML>";
}

[[nodiscard]] const std::vector<std::pair<const char*, std::wstring>>& HostileTexts() {
    static const std::vector<std::pair<const char*, std::wstring>> texts = {
        {"a null", std::wstring(L"a\0b", 3)},
        {"nulls", std::wstring(20, L'\0')},
        {"half characters", L"\xD83D \xDE00 \xD83D"},
        {"a non-character", L"\xFFFE\xFFFF"},
        {"control characters", L"\x01\x02\x1B\x7F\x85"},
        {"the end of everything", L"]]></LHXMLMsgsRq></LHXML>"},
        {"markup", L"\"'><Name a=\"1\">&amp;<![CDATA[x]]><?pi?><!-- c --></Name>"},
        {"line ends", L"\r\n\n\r\u2028"},
        {"many quotes", std::wstring(100'000, L'"')},
        {"another encoding", L"<?xml version=\"1.0\" encoding=\"utf-7\"?><R>+ADw-A/+AD4-</R>"},
        {"deep nesting", Nested()},
        {"an entity bomb", EntityBomb()},
        {"a percent sign", L"%s%n%x%1000000d"},
    };
    return texts;
}

class HostileText : public OperationTest, public ::testing::WithParamInterface<OperationCall> {
  protected:
    [[nodiscard]] Result Call(const std::wstring& text) { return GetParam().call(object_, text); }

    // The HRESULTs that operations return for what they were given or sent, whatever it is.
    static void ExpectKnown(const Result& result, const char* what) {
        EXPECT_TRUE(result.code == S_OK || result.code == E_FAIL) << what << ": " << result;
    }

    // Wine loads a document with a type declaration, which the platform's parser refuses, and cannot walk past it.
    static void ExpectKnownOfADeclaration(const Result& result, const char* what) {
        if (result.code != E_NOTIMPL) {
            ExpectKnown(result, what);
        }
    }

    // What the operation made of a response; at the end it works with a good one.
    [[nodiscard]] Result ReadResponse(const std::wstring& response) {
        host_.answers.clear();
        RespondExactly(response);
        Result result = Call(L"1");
        host_.answers.clear();
        return result;
    }
};

INSTANTIATE_TEST_SUITE_P(, HostileText, ::testing::ValuesIn(kOperationCalls), NameOf);

TEST_P(HostileText, AsAnArgumentBecomesAValueAndNothingElse) {
    const auto tags = [this] { return std::ranges::count(host_.requests.front(), L'<'); };
    static_cast<void>(Call(L"<Rq/>"));
    ASSERT_FALSE(host_.requests.empty());
    const auto harmless = tags();
    for (const auto& [what, text] : HostileTexts()) {
        host_.requests.clear();
        ExpectKnown(Call(text), what);
        if (GetParam().passes_through) {
            continue;
        }
        ASSERT_FALSE(host_.requests.empty()) << what;
        const std::string_view name = GetParam().name;
        if (name == "GetAccountsForMultipleTypes") {
            // One value for each account type that the text lists.
            EXPECT_EQ(harmless % 2, tags() % 2) << what;
        } else {
            // Too long a text is no amount, and left out.
            const bool has_no_amount = name == "TransferFunds" && text.size() >= 30;
            EXPECT_EQ(harmless - (has_no_amount ? 2 : 0), tags()) << what;
        }
    }
}

TEST_P(HostileText, AsAResponseIsReadOrCountsAsNone) {
    for (const auto& [what, text] : HostileTexts()) {
        ExpectKnown(ReadResponse(text), what);
        ExpectKnown(ReadResponse(ResponseDocument(text)), what);
        ExpectKnown(ReadResponse(ResponseDocument(L"<AccountQueryRs statusCode='0'><A><FullName>" + text +
                                                  L"</FullName></A></AccountQueryRs>")),
                    what);
    }
}

TEST_P(HostileText, NeverMakesItFetchAFile) {
    wchar_t folder[MAX_PATH];
    ASSERT_NE(0U, ::GetCurrentDirectoryW(MAX_PATH, folder));
    std::ofstream("secret.txt") << "the secret";
    std::wstring address = L"file:///" + std::wstring(folder) + L"/secret.txt";
    std::ranges::replace(address, L'\\', L'/');
    for (const std::wstring& place : {address, L"secret.txt"s}) {
        const Result result = ReadResponse(Fetching(place));
        ExpectKnownOfADeclaration(result, "a response");
        // The operations that pass a response on pass on what came.
        EXPECT_EQ(std::wstring::npos, result.text.find(L"the secret")) << result;
        ExpectKnown(Call(Fetching(place)), "an argument");
        for (const std::wstring& request : host_.requests) {
            EXPECT_EQ(std::wstring::npos, request.find(L"the secret"));
        }
    }
    std::remove("secret.txt");
}

// A port of this machine, to which nobody may connect.
class Listener {
  public:
    Listener() {
        WSADATA data;
        EXPECT_EQ(0, ::WSAStartup(MAKEWORD(2, 2), &data));
        socket_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        int size = sizeof address;
        EXPECT_EQ(0, ::bind(socket_, reinterpret_cast<const sockaddr*>(&address), size));
        EXPECT_EQ(0, ::listen(socket_, 1));
        EXPECT_EQ(0, ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size));
        port_ = ::ntohs(address.sin_port);
    }
    ~Listener() {
        ::closesocket(socket_);
        ::WSACleanup();
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] std::wstring Address() const { return L"http://127.0.0.1:" + std::to_wstring(port_) + L"/x.dtd"; }
    [[nodiscard]] bool HasVisitor() const {
        u_long is_not_blocking = 1;
        ::ioctlsocket(socket_, static_cast<long>(FIONBIO), &is_not_blocking);
        const SOCKET visitor = ::accept(socket_, nullptr, nullptr);
        if (visitor != INVALID_SOCKET) {
            ::closesocket(visitor);
        }
        return visitor != INVALID_SOCKET;
    }

  private:
    SOCKET socket_ = INVALID_SOCKET;
    u_short port_ = 0;
};

TEST_P(HostileText, NeverMakesItConnectAnywhere) {
    const Listener listener;
    ExpectKnownOfADeclaration(ReadResponse(Fetching(listener.Address())), "a response");
    ExpectKnown(Call(Fetching(listener.Address())), "an argument");
    EXPECT_FALSE(listener.HasVisitor());
}

// That the listener would have seen it.
TEST(Listener, SeesAVisitor) {
    const Listener listener;
    EXPECT_FALSE(listener.HasVisitor());
    const std::wstring address = listener.Address();
    const SOCKET visitor = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    place.sin_port = ::htons(static_cast<u_short>(std::stoi(address.substr(address.rfind(L':') + 1))));
    EXPECT_EQ(0, ::connect(visitor, reinterpret_cast<const sockaddr*>(&place), sizeof place));
    EXPECT_TRUE(listener.HasVisitor());
    ::closesocket(visitor);
}

class HugeText : public OperationTest {};

// Once, and where there is room for it.
TEST_F(HugeText, OfAHundredMegabytesIsPassedThroughWhole) {
#ifdef _WIN64
    constexpr size_t kCharacters = 50'000'000;
    const std::wstring text(kCharacters, L'x');
    RespondExactly(text);
    const Result result = Ask(object_, &CPaylodge::ProcessLHRequest, text);
    EXPECT_HRESULT(S_OK, result.code);
    EXPECT_TRUE(result.text == text);
    ASSERT_EQ(1U, host_.requests.size());
    EXPECT_EQ(kCharacters + PassThroughEnvelope({}).size(), host_.requests.front().size());
    host_.requests.clear();
    // A list as long as the parsers of all versions of Wine read it: they stop at 10,000,000 characters.
    constexpr size_t kAccounts = 9;
    const std::wstring name(1'000'000, L'x');
    std::wstring list;
    std::wstring expected;
    for (size_t account = 0; account < kAccounts; ++account) {
        list += L"<A><FullName>" + name + L"</FullName></A>";
        expected += L"<AccountName>" + name + L"</AccountName>\r\n";
    }
    Respond(L"<AccountQueryRs statusCode='0'>" + list + L"</AccountQueryRs>");
    const Result accounts = Ask(object_, &CPaylodge::GetAccounts, L"Bank");
    EXPECT_HRESULT(S_OK, accounts.code);
    EXPECT_TRUE(accounts.text == expected) << accounts.text.size() << " of " << expected.size();
#else
    GTEST_SKIP() << "a process of 32 bits has no room for several texts of 100 MB";
#endif
}

}  // namespace
}  // namespace paylodge::test
