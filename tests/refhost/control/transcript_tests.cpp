#include "refhost/control/transcript.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "refhost/objects/processor_object.hpp"
#include "tests/refhost/objects/host_server.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::refhost {
namespace {

// Standard output goes to a file meanwhile.
class OutputInFile {
  public:
    OutputInFile() : file_(::CreateFileW(kName, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr)) {
        EXPECT_NE(INVALID_HANDLE_VALUE, file_);
        EXPECT_TRUE(::SetStdHandle(STD_OUTPUT_HANDLE, file_));
    }
    ~OutputInFile() {
        ::SetStdHandle(STD_OUTPUT_HANDLE, before_);
        ::CloseHandle(file_);
        ::DeleteFileW(kName);
    }
    OutputInFile(const OutputInFile&) = delete;
    OutputInFile& operator=(const OutputInFile&) = delete;

    [[nodiscard]] static std::string Bytes() {
        std::ifstream file(std::filesystem::path(kName), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    static constexpr const wchar_t* kName = L"transcript.txt";

    HANDLE before_ = ::GetStdHandle(STD_OUTPUT_HANDLE);
    HANDLE file_;
};

class Transcript : public HostTest {
  protected:
    void SetUp() override {
        HostTest::SetUp();
        processor_ = host_.Create<IRequestProcessor>(kRequestProcessorClass);
        ASSERT_HRESULT(S_OK, processor_->OpenConnection(nullptr, MakeBstr(L"Test").Get()));
        ASSERT_HRESULT(S_OK, processor_->BeginSession(nullptr, 2, ticket_.Receive()));
    }
    void TearDown() override {
        ::SetEnvironmentVariableW(L"LEDGERHALL_TRANSCRIPT", nullptr);
        HostTest::TearDown();
    }

    // What is printed while the host answers a request with a text.
    [[nodiscard]] std::string Of(std::wstring_view request, std::wstring_view response) const {
        EXPECT_HRESULT(S_OK, control_->AnswerNext(MakeBstr(response).Get(), S_OK));
        const OutputInFile output;
        OwnedBstr received;
        EXPECT_HRESULT(S_OK, processor_->ProcessRequest(ticket_.Get(), MakeBstr(request).Get(), received.Receive()));
        return OutputInFile::Bytes();
    }

    ComPtr<IRequestProcessor> processor_;
    OwnedBstr ticket_;
};

TEST_F(Transcript, ShowsRequestsAndResponsesReadably) {
    ::SetEnvironmentVariableW(L"LEDGERHALL_TRANSCRIPT", L"1");
    EXPECT_EQ(
        "    request to Ledgerhall\n"
        "      > <?lhxml version=\"7.0\"?>\n"
        "      > <LHXML>\n"
        "      >   <A b=\"c\">Caf\xC3\xA9 &amp; \xE2\x82\xAC</A>\n"
        "      > </LHXML>\n"
        "    response from Ledgerhall\n"
        "      < <LHXML/>\n",
        Of(L"<?lhxml version=\"7.0\"?><LHXML><A b='c'>Caf\u00E9 &amp; \u20AC</A></LHXML>", L"<LHXML></LHXML>"));
}

TEST_F(Transcript, ShowsTextThatIsNoDocumentAsItIs) {
    ::SetEnvironmentVariableW(L"LEDGERHALL_TRANSCRIPT", L"1");
    EXPECT_EQ(
        "    request to Ledgerhall\n"
        "      > <open>\n"
        "      > \n"
        "      > and more\n"
        "    response from Ledgerhall\n"
        "      < \n",
        Of(L"<open>\n\nand more", L""));
}

TEST_F(Transcript, IsPrintedOnlyWhenItIsAskedFor) {
    EXPECT_EQ("", Of(L"<a/>", L"<b/>"));
    for (const wchar_t* const value : {L"0", L"", L"11", L"true"}) {
        ::SetEnvironmentVariableW(L"LEDGERHALL_TRANSCRIPT", value);
        EXPECT_EQ("", Of(L"<a/>", L"<b/>")) << Text(MakeBstr(value));
    }
}

}  // namespace
}  // namespace paylodge::refhost
