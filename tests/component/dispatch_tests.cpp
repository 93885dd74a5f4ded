// The ways in which script engines call: named arguments, arguments by reference, values of other types.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "com/ansi_text.hpp"
#include "com/variant.hpp"
#include "tests/component/member_call.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/component/variant_values.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Dispatch : public Component {
  protected:
    // Arguments in the order that Invoke wants: the last one first, named ones before all others.
    [[nodiscard]] HRESULT Call(const Member& member, std::vector<VARIANT> arguments, std::vector<DISPID> named = {}) {
        result_.reset();
        result_.emplace();
        DISPPARAMS parameters{arguments.data(), named.data(), static_cast<UINT>(arguments.size()),
                              static_cast<UINT>(named.size())};
        return paylodge->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, FlagsOf(member.kind), &parameters,
                                member.kind == Kind::kPut ? nullptr : result_->Receive(), nullptr, nullptr);
    }
    [[nodiscard]] HRESULT Put(const char* property, const VARIANT& value) {
        return Call(FindMember(property, Kind::kPut), {value}, {DISPID_PROPERTYPUT});
    }
    [[nodiscard]] std::string Get(const char* property) {
        return CallSlot(*paylodge.Get(), FindMember(property, Kind::kGet)).results;
    }

    const OwnedBstr first_ = MakeBstr(L"first");
    const OwnedBstr second_ = MakeBstr(L"second");

  private:
    std::optional<OwnedVariant> result_;
};

#ifndef _WIN64
// Far more than a 32-bit process can convert: the host goes on.
TEST_F(Dispatch, StringThatNoMemoryIsLeftForIsOutOfMemory) {
    constexpr UINT kCharacters = 380'000'000;
    const OwnedBstr text(::SysAllocStringLen(nullptr, kCharacters));
    if (!text) {
        GTEST_SKIP() << "this process has no 760 MB in one piece";
    }
    std::fill_n(text.Get(), kCharacters, L'x');
    EXPECT_HRESULT(E_OUTOFMEMORY, Call(FindMember("GetAccounts"), {Text(text)}));
    EXPECT_HRESULT(E_OUTOFMEMORY, Call(FindMember("ProcessLHRequest"), {Text(text)}));
    EXPECT_THAT(host.calls, IsEmpty());
    EXPECT_HRESULT(S_OK, Call(FindMember("GetAccounts"), {Text(first_)}));
}
#endif

TEST_F(Dispatch, ArgumentsByPositionComeInReverseOrder) {
    EXPECT_HRESULT(S_OK, Call(FindMember("OpenTxnForm"), {Text(second_), Text(first_)}));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<TxnDisplayModType>first</TxnDisplayModType>"));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<TxnID>second</TxnID>"));
}

TEST_F(Dispatch, ArgumentsByNameComeInAnyOrder) {
    std::wstring texts[] = {L"OpenTxnForm", L"TXNID", L"txnType"};
    LPOLESTR names[] = {texts[0].data(), texts[1].data(), texts[2].data()};
    DISPID ids[3] = {};
    ASSERT_HRESULT(S_OK, paylodge->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids));
    EXPECT_HRESULT(S_OK, Call(FindMember("OpenTxnForm"), {Text(second_), Text(first_)}, {ids[1], ids[2]}));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<TxnDisplayModType>first</TxnDisplayModType>"));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<TxnID>second</TxnID>"));
}

TEST_F(Dispatch, ReferencesToVariantsAreFollowed) {
    VARIANT first = Text(first_);
    VARIANT second = Text(second_);
    EXPECT_HRESULT(S_OK, Call(FindMember("OpenTxnForm"), {Reference(second), Reference(first)}));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<TxnDisplayModType>first</TxnDisplayModType>"));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<TxnID>second</TxnID>"));
}

TEST_F(Dispatch, ReferencesToStringsAreFollowed) {
    BSTR text = first_.Get();
    VARIANT reference = OfType(VT_BYREF | VT_BSTR);
    V_BSTRREF(&reference) = &text;
    EXPECT_HRESULT(S_OK, Call(FindMember("GetAccounts"), {reference}));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<AccountType>first</AccountType>"));
    EXPECT_EQ(first_.Get(), text);
}

TEST_F(Dispatch, NumbersBecomeStrings) {
    EXPECT_HRESULT(S_OK, Call(FindMember("OpenTxnForm"), {Number(42), Text(first_)}));
    EXPECT_THAT(host.OnlyRequest(), HasSubstr("<TxnID>42</TxnID>"));
}

TEST_F(Dispatch, EmptyBecomesTheEmptyString) {
    EXPECT_HRESULT(S_OK, Call(FindMember("OpenTxnForm"), {OfType(VT_EMPTY), Text(first_)}));
    EXPECT_THAT(host.OnlyRequest(), Not(HasSubstr("<TxnID>")));
}

TEST_F(Dispatch, NullIsNoString) {
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH, Call(FindMember("GetAccounts"), {OfType(VT_NULL)}));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(Dispatch, TextThatIsNoBooleanIsRefused) {
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH, Call(FindMember("CreateTxns"), {Text(first_), Text(second_)}));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(Dispatch, ScriptsTrueIsTrue) {
    VARIANT yes = OfType(VT_BOOL);
    V_BOOL(&yes) = VARIANT_TRUE;
    EXPECT_HRESULT(S_OK, Put("IsScanTxnCreated", yes));
    EXPECT_EQ("-1", Get("IsScanTxnCreated"));
    EXPECT_HRESULT(S_OK, Put("IsScanTxnCreated", OfType(VT_BOOL)));
    EXPECT_EQ("0", Get("IsScanTxnCreated"));
}

// The number is made a boolean on its way, so it arrives as VARIANT_TRUE; through the slot, 1 is not true.
TEST_F(Dispatch, NumberOneIsMadeTrueOnTheWay) {
    EXPECT_HRESULT(S_OK, Put("IsScanTxnCreated", Number(1)));
    EXPECT_EQ("-1", Get("IsScanTxnCreated"));
    EXPECT_HRESULT(S_OK, paylodge->put_IsScanTxnCreated(1));
    EXPECT_EQ("0", Get("IsScanTxnCreated"));
}

TEST_F(Dispatch, PutTakesReferences) {
    VARIANT value = Text(first_);
    EXPECT_HRESULT(S_OK, Put("ItemData", Reference(value)));
    EXPECT_EQ("\"first\"", Get("ItemData"));
}

TEST_F(Dispatch, PutKeepsACopy) {
    OwnedBstr text = MakeBstr(L"mine");
    EXPECT_HRESULT(S_OK, Put("ItemData", Text(text)));
    text.Get()[0] = L'X';
    EXPECT_EQ("\"mine\"", Get("ItemData"));
}

TEST_F(Dispatch, SecondPutIntoAFullMailboxIsAnException) {
    EXPECT_HRESULT(S_OK, Put("ReconBatchData", Text(first_)));
    EXPECT_HRESULT(DISP_E_EXCEPTION, Put("ReconBatchData", Text(second_)));
    EXPECT_EQ("\"first\"", Get("ReconBatchData"));
}

TEST_F(Dispatch, GetComesAsPropertyAsMethodOrAsBoth) {
    EXPECT_HRESULT(S_OK, Put("ItemData", Text(first_)));
    for (const int flags : {DISPATCH_PROPERTYGET, DISPATCH_PROPERTYGET | DISPATCH_METHOD}) {
        DISPPARAMS none{};
        OwnedVariant result;
        EXPECT_HRESULT(S_OK, paylodge->Invoke(FindMember("ItemData", Kind::kGet).id, IID_NULL, LOCALE_USER_DEFAULT,
                                              static_cast<WORD>(flags), &none, result.Receive(), nullptr, nullptr));
        ASSERT_EQ(VT_BSTR, result.Type());
        EXPECT_EQ(L"first", View(result.Bstr()));
    }
}

TEST_F(Dispatch, MethodComesWithThePropertyFlagToo) {
    DISPPARAMS none{};
    OwnedVariant result;
    EXPECT_HRESULT(S_OK,
                   paylodge->Invoke(FindMember("GetItems").id, IID_NULL, LOCALE_USER_DEFAULT,
                                    DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none, result.Receive(), nullptr, nullptr));
    EXPECT_EQ(VT_BSTR, result.Type());
}

TEST_F(Dispatch, OutArgumentIsFilledBesideTheResult) {
    EXPECT_HRESULT(S_OK, paylodge->SetReconPaymentDataAndParams(first_.Get(), second_.Get(), VARIANT_FALSE));
    EXPECT_EQ("0, \"second\"", CallInvoke(*paylodge.Get(), FindMember("GetReconPaymentParams")).results);
}

TEST_F(Dispatch, UnwantedResultIsReleased) {
    DISPPARAMS none{};
    EXPECT_HRESULT(S_OK, paylodge->Invoke(FindMember("GetItems").id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                          &none, nullptr, nullptr, nullptr));
    EXPECT_EQ(1U, host.requests.size());
}

TEST_F(Dispatch, UnknownMembersAreNotFound) {
    for (const DISPID id : {DISPID_VALUE, DISPID_NEWENUM, 0x32, 0x7fffffff}) {
        DISPPARAMS none{};
        EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, paylodge->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                                               &none, nullptr, nullptr, nullptr))
            << id;
    }
}

TEST_F(Dispatch, AnotherInterfaceIsUnknown) {
    DISPPARAMS none{};
    EXPECT_HRESULT(DISP_E_UNKNOWNINTERFACE,
                   paylodge->Invoke(FindMember("GetItems").id, IID_IPaylodge, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                    &none, nullptr, nullptr, nullptr));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(Dispatch, SurplusArgumentsAreDispEBadParamCount) {
    EXPECT_HRESULT(DISP_E_BADPARAMCOUNT, Call(FindMember("GetAccounts"), {Text(second_), Text(first_)}));
    EXPECT_THAT(host.calls, IsEmpty());
}

}  // namespace
}  // namespace paylodge::test
