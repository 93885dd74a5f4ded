// Oskerin.dll as the component's control meets it: loaded from its file, its functions found by their names.
#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "com/bstr.hpp"
#include "com/module.hpp"
#include "refhost/objects/utf8.hpp"
#include "refhost/oskerin/account_services.hpp"
#include "refhost/oskerin/script_listener.hpp"
#include "refhost/oskerin/simulated_reader.hpp"
#include "refhost/oskerin/tlv.hpp"

namespace paylodge::refhost {
namespace {

class Oskerin : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(library_); }
    void TearDown() override {
        ListenWith(nullptr, nullptr);
        ::SetEnvironmentVariableW(L"OSKERIN_SCRIPT_FILE", nullptr);
    }

    template <class Result, class... Arguments>
    Result Call(const char* name, Arguments... arguments) const {
        using Function = Result __cdecl(Arguments...);
        auto* const function =
            reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(library_.Get(), name)));
        EXPECT_NE(function, nullptr) << name;
        return function == nullptr ? Result() : function(arguments...);
    }
    [[nodiscard]] std::string Text(const char* name) const { return Utf8FromWide(Call<const wchar_t*>(name)); }
    [[nodiscard]] std::string Given(const char* name, const wchar_t* text) const {
        const OwnedBstr given(Call<BSTR>(name, text));
        EXPECT_TRUE(given) << name;
        return Utf8FromWide(View(given));
    }

    void Execute(const char* browser_instance, const char* script) const {
        Call<void>("ExecuteJavaScript", browser_instance, script);
    }
    void ListenWith(ScriptListener* listener, void* context) const {
        Call<void>("SetScriptListener", listener, context);
    }

  private:
    ModuleHandle library_{::LoadLibraryW(
        (std::filesystem::path(Module::Path()).parent_path() / L"../refhost/Oskerin.dll").lexically_normal().c_str())};
};

TEST_F(Oskerin, TakesAPaymentThroughItsReader) {
    CardReader expected;
    const auto expect_same = [&](const char* step) {
        EXPECT_EQ(expected.TakeResult(), Text("EMVProcessorResult")) << step;
        EXPECT_EQ(expected.CardParameters(), Text("EMVGetCardParameters")) << step;
        EXPECT_EQ(expected.BatchData(), Text("EMVGetBatchData")) << step;
        EXPECT_EQ(expected.IsConnected(), Call<bool>("EMVIsDeviceConnected")) << step;
        EXPECT_EQ(expected.IsConnected() ? "USB" : "NONE", Text("GetConnectionMode")) << step;
    };
    expect_same("at first");
    Call<void>("InitializeSession");
    expected.InitializeSession();
    expect_same("InitializeSession");
    Call<void>("isDeviceHere");
    expect_same("isDeviceHere");
    Call<void>("ConnectDevice");
    expected.Connect();
    expect_same("ConnectDevice");
    Call<void>("GetEmvDeviceInfo");
    expected.RequestDeviceInfo();
    expect_same("GetEmvDeviceInfo");
    Call<void>("StartEMV", L"12.50");
    expected.Start("12.50");
    expect_same("StartEMV");
    Call<void>("HandleAidSelecttion");
    expected.SelectApplication();
    expect_same("HandleAidSelecttion");
    Call<void>("SendOnlineProcessResult", L"APPROVED");
    expected.SendOnlineResult("APPROVED");
    expect_same("SendOnlineProcessResult");
    Call<void>("ShowFinalConfirmationWindow");
    expected.Confirm();
    expect_same("ShowFinalConfirmationWindow");
    EXPECT_NE("", Text("EMVGetBatchData"));
    Call<void>("CancelCheckCard");
    expected.Cancel();
    expect_same("CancelCheckCard");
    Call<void>("DisconnectDevice");
    expected.Disconnect();
    expect_same("DisconnectDevice");
    Call<void>("ResetSession");
    expected.ResetSession();
    expect_same("ResetSession");
}

TEST_F(Oskerin, KeepsEachTextUntilTheSameFunctionIsCalledAgain) {
    const wchar_t* const connection = Call<const wchar_t*>("GetConnectionMode");
    const wchar_t* const tlv = Call<const wchar_t*>("GetDecodedTlvData", L"5A0111", L"");
    const wchar_t* const token = Call<const wchar_t*>("GetCardBasedToken", L"header", L"body");
    const wchar_t* const token2 = Call<const wchar_t*>("GetCardBasedToken2", 0, L"header", L"body");
    const wchar_t* const result = Call<const wchar_t*>("EMVProcessorResult");
    static_cast<void>(Text("EMVGetCardParameters"));
    static_cast<void>(Text("EMVGetBatchData"));
    EXPECT_EQ("NONE", Utf8FromWide(connection));
    EXPECT_EQ(DescribeTlv("5A0111", ""), Utf8FromWide(tlv));
    EXPECT_EQ(CardBasedToken(true, "header", "body"), Utf8FromWide(token));
    EXPECT_EQ(CardBasedToken(false, "header", "body"), Utf8FromWide(token2));
    EXPECT_EQ(CardReader().TakeResult(), Utf8FromWide(result));
}

TEST_F(Oskerin, MakesTokensWithAuthorizationUnlessToldOtherwise) {
    const auto token = [this](int use_authorization) {
        return Utf8FromWide(Call<const wchar_t*>("GetCardBasedToken2", use_authorization, L"Caf\u00E9", L"\U0001F600"));
    };
    const std::string with = CardBasedToken(true, "Caf\xC3\xA9", "\xF0\x9F\x98\x80");
    EXPECT_EQ(with, Utf8FromWide(Call<const wchar_t*>("GetCardBasedToken", L"Caf\u00E9", L"\U0001F600")));
    EXPECT_EQ(with, token(1));
    EXPECT_EQ(with, token(-1));
    EXPECT_EQ(CardBasedToken(false, "Caf\xC3\xA9", "\xF0\x9F\x98\x80"), token(0));
}

TEST_F(Oskerin, DecodesTheWantedTags) {
    EXPECT_EQ(R"({"9F02":"AA"})", Utf8FromWide(Call<const wchar_t*>("GetDecodedTlvData", L"5A01119F0201AA", L"9F02")));
}

TEST_F(Oskerin, GivesTheAccountServicesAsStringsOfTheCaller) {
    EXPECT_EQ(UserData("CompanyName"), Given("GetLHUserData", L"CompanyName"));
    EXPECT_EQ(AuthenticatedUrl("https://a.example/?b"), Given("AuthenticateURL", L"https://a.example/?b"));
    const OwnedBstr status(Call<BSTR>("GetPaymentIdentityStatus"));
    EXPECT_EQ(PaymentIdentityStatus(), Utf8FromWide(View(status)));
    const OwnedBstr linking(Call<BSTR>("isRealmMergeLinkingEnabled"));
    EXPECT_EQ(L"true", View(linking));
}

TEST_F(Oskerin, TakesNullTextsForEmptyOnes) {
    constexpr const wchar_t* kNothing = nullptr;
    EXPECT_EQ(UserData(""), Given("GetLHUserData", kNothing));
    EXPECT_EQ(AuthenticatedUrl(""), Given("AuthenticateURL", kNothing));
    EXPECT_EQ("{}", Utf8FromWide(Call<const wchar_t*>("GetDecodedTlvData", kNothing, kNothing)));
    EXPECT_EQ(CardBasedToken(true, "", ""),
              Utf8FromWide(Call<const wchar_t*>("GetCardBasedToken", kNothing, kNothing)));
    EXPECT_EQ(CardBasedToken(true, "", "b"), Utf8FromWide(Call<const wchar_t*>("GetCardBasedToken", kNothing, L"b")));
}

struct Heard {
    std::string browser_instance;
    std::string script;
    bool operator==(const Heard&) const = default;
};

void __cdecl Listen(void* context, const char* browser_instance, const char* script) {
    static_cast<std::vector<Heard>*>(context)->push_back({browser_instance, script});
}

[[nodiscard]] std::string FileBytes(const wchar_t* name) {
    std::ifstream file(std::filesystem::path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(Oskerin, HandsScriptsToItsListenerAlone) {
    ::SetEnvironmentVariableW(L"OSKERIN_SCRIPT_FILE", L"unheard.txt");
    std::vector<Heard> first;
    std::vector<Heard> second;
    ListenWith(&Listen, &first);
    Execute("browser", "run('\xE9')");
    Execute(nullptr, nullptr);
    ListenWith(&Listen, &second);
    Execute("b", "last");
    EXPECT_EQ((std::vector<Heard>{{"browser", "run('\xE9')"}, {"", ""}}), first);
    EXPECT_EQ((std::vector<Heard>{{"b", "last"}}), second);
    EXPECT_FALSE(std::filesystem::exists("unheard.txt"));
}

TEST_F(Oskerin, AppendsScriptsToTheFileThatTheEnvironmentNames) {
    constexpr const wchar_t* kName = L"scripts \u65e5\u672c.txt";
    ::DeleteFileW(kName);
    Execute("browser", "nobody listens");
    ::SetEnvironmentVariableW(L"OSKERIN_SCRIPT_FILE", kName);
    std::vector<Heard> heard;
    ListenWith(&Listen, &heard);
    Execute("browser", "heard");
    ListenWith(nullptr, nullptr);
    Execute("browser", "f(1);\nf(2);");
    Execute(nullptr, nullptr);
    EXPECT_EQ("browser=browser bytes=11\nf(1);\nf(2);\nbrowser= bytes=0\n\n", FileBytes(kName));
    EXPECT_EQ(1U, heard.size());
    EXPECT_TRUE(::DeleteFileW(kName));
}

}  // namespace
}  // namespace paylodge::refhost
