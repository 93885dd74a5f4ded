// Every member through its slot and through IDispatch, without a page, on an approved page and on a refused one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "com/ansi_text.hpp"
#include "tests/component/member_call.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/support/fake_site.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::ValuesIn;

const auto kNameOfMember = [](const auto& row) { return NameOf(row.param); };

[[nodiscard]] HRESULT OnARefusedPage(const Member& member) {
    return member.name == std::string_view("ProcessLHRequest") ? E_FAIL : S_OK;
}

class Slot : public ComponentMember {
  protected:
    void ExpectFreshAnswer() {
        const Outcome outcome = CallSlot(*paylodge.Get(), GetParam());
        EXPECT_HRESULT(GetParam().result, outcome.result);
        EXPECT_EQ(GetParam().results, outcome.results);
        ExpectRequest();
    }
    void ExpectRequest() {
        if (GetParam().request == nullptr) {
            EXPECT_THAT(host.requests, IsEmpty());
        } else {
            EXPECT_THAT(host.OnlyRequest(), HasSubstr(std::string("<") + GetParam().request + " "));
        }
    }
};
INSTANTIATE_TEST_SUITE_P(Members, Slot, ValuesIn(Members().begin(), Members().end()), kNameOfMember);

TEST_P(Slot, WorksWithoutAPage) { ExpectFreshAnswer(); }

TEST_P(Slot, ReturnsTheSameOnAnApprovedPage) {
    FakeSite site(PageAt(kApprovedPage));
    const OnSite on_site(paylodge.Get(), site);
    ExpectFreshAnswer();
    EXPECT_EQ(5U, site.calls.size());
}

// Out parameters as they were, nothing sent, nothing stored.
TEST_P(Slot, DoesNothingOnARefusedPage) {
    {
        FakeSite site(PageAt(kRefusedPage));
        const OnSite on_site(paylodge.Get(), site);
        const Outcome outcome = CallSlot(*paylodge.Get(), GetParam());
        EXPECT_HRESULT(OnARefusedPage(GetParam()), outcome.result);
        for (const char* value : {"\"", "null", "0", "-1"}) {
            EXPECT_THAT(outcome.results, Not(HasSubstr(value)));
        }
    }
    EXPECT_THAT(host.calls, IsEmpty());
    for (const Member& member : Members()) {
        if (member.kind == Kind::kGet) {
            const Outcome fresh = CallSlot(*paylodge.Get(), member);
            EXPECT_HRESULT(member.result, fresh.result) << member.name;
            EXPECT_EQ(member.results, fresh.results) << member.name;
        }
    }
}

[[nodiscard]] bool HasResult(const Member& member) { return ArgumentsOf(member).back().IsResult(); }

class SlotWithResult : public ComponentMember {};
INSTANTIATE_TEST_SUITE_P(Members, SlotWithResult, ValuesIn(MembersThat(HasResult)), kNameOfMember);

TEST_P(SlotWithResult, NullOutParameterIsEPointer) {
    EXPECT_HRESULT(E_POINTER, CallSlotWithoutResult(*paylodge.Get(), GetParam()));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_P(SlotWithResult, NullOutParameterIsNotCheckedOnARefusedPage) {
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(paylodge.Get(), site);
    EXPECT_HRESULT(OnARefusedPage(GetParam()), CallSlotWithoutResult(*paylodge.Get(), GetParam()));
    EXPECT_THAT(host.calls, IsEmpty());
}

class Invoked : public Slot {};
INSTANTIATE_TEST_SUITE_P(Members, Invoked, ValuesIn(Members().begin(), Members().end()), kNameOfMember);

TEST_P(Invoked, ReturnsWhatItsSlotReturns) {
    const Outcome outcome = CallInvoke(*paylodge.Get(), GetParam());
    if (FAILED(GetParam().result)) {
        EXPECT_HRESULT(DISP_E_EXCEPTION, outcome.result);
        EXPECT_HRESULT(GetParam().result, outcome.exception);
    } else {
        // A page sees success and the result, whichever HRESULT of success it was.
        EXPECT_HRESULT(S_OK, outcome.result);
        EXPECT_HRESULT(S_OK, outcome.exception);
    }
    const std::string results = GetParam().results;
    EXPECT_EQ(results == "null" ? "\"\"" : results, outcome.results);
    ExpectRequest();
}

TEST_P(Invoked, RefusesTheWrongKindOfCall) {
    DISPPARAMS none{};
    const WORD wrong = GetParam().kind == Kind::kMethod ? DISPATCH_PROPERTYPUT : DISPATCH_PROPERTYPUTREF;
    EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, paylodge->Invoke(GetParam().id, IID_NULL, LOCALE_USER_DEFAULT, wrong, &none,
                                                           nullptr, nullptr, nullptr));
    EXPECT_THAT(host.calls, IsEmpty());
}

// What a page gets when the object leaves its out parameter alone.
[[nodiscard]] std::string EmptyResults(const Member& member) {
    std::string results;
    for (const Argument& argument : ArgumentsOf(member)) {
        if (!argument.IsIn()) {
            results += results.empty() ? "" : ", ";
            results += !argument.IsResult() ? "untouched" : argument.type == VT_BOOL ? "0" : "\"\"";
        }
    }
    return results;
}

TEST_P(Invoked, OnARefusedPageReturnsAnEmptyResult) {
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(paylodge.Get(), site);
    const Outcome outcome = CallInvoke(*paylodge.Get(), GetParam());
    const HRESULT code = OnARefusedPage(GetParam());
    EXPECT_HRESULT(FAILED(code) ? DISP_E_EXCEPTION : S_OK, outcome.result);
    EXPECT_HRESULT(code, outcome.exception);
    EXPECT_EQ(EmptyResults(GetParam()), outcome.results);
    EXPECT_THAT(host.calls, IsEmpty());
}

[[nodiscard]] bool IsMethodWithArguments(const Member& member) {
    return member.kind == Kind::kMethod && ArgumentsOf(member).front().IsIn();
}

class InvokedWithoutArguments : public ComponentMember {};
INSTANTIATE_TEST_SUITE_P(Members, InvokedWithoutArguments, ValuesIn(MembersThat(IsMethodWithArguments)), kNameOfMember);

TEST_P(InvokedWithoutArguments, IsRefused) {
    DISPPARAMS none{};
    EXPECT_HRESULT(DISP_E_BADPARAMCOUNT, paylodge->Invoke(GetParam().id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                                          &none, nullptr, nullptr, nullptr));
    EXPECT_THAT(host.calls, IsEmpty());
}

// A value that is put through one route is got through the other.
class Property : public ComponentMember {
  protected:
    [[nodiscard]] const Member& Getter() const { return FindMember(GetParam().name, Kind::kGet); }
    [[nodiscard]] std::string Value() const { return ArgumentsOf(GetParam())[0].type == VT_BOOL ? "-1" : "\"a&1\""; }
};

[[nodiscard]] bool IsPut(const Member& member) { return member.kind == Kind::kPut; }
INSTANTIATE_TEST_SUITE_P(Members, Property, ValuesIn(MembersThat(IsPut)), kNameOfMember);

TEST_P(Property, PutByNameIsGotThroughTheSlot) {
    EXPECT_HRESULT(S_OK, CallInvoke(*paylodge.Get(), GetParam()).result);
    const Outcome got = CallSlot(*paylodge.Get(), Getter());
    EXPECT_HRESULT(S_OK, got.result);
    EXPECT_EQ(Value(), got.results);
}

TEST_P(Property, PutThroughTheSlotIsGotByNameFromAnotherObject) {
    EXPECT_HRESULT(S_OK, CallSlot(*paylodge.Get(), GetParam()).result);
    const auto other = module.CreatePaylodge();
    const Outcome got = CallInvoke(*other.Get(), Getter());
    EXPECT_HRESULT(S_OK, got.result);
    EXPECT_EQ(Value(), got.results);
}

// A boolean as callers may push it: in a whole machine word, of which the lower half counts.
struct BooleanWord {
    ULONG_PTR word;
    bool is_true;
};

class Boolean : public Component, public ::testing::WithParamInterface<BooleanWord> {};
INSTANTIATE_TEST_SUITE_P(Words, Boolean,
                         ValuesIn({BooleanWord{0x0001FFFF, true}, BooleanWord{0xFFFFFFFF, true},
                                   BooleanWord{0xFFFF0001, false}, BooleanWord{0xFFFF0000, false}}));

TEST_P(Boolean, OfABatchIsItsLower16Bits) {
    constexpr std::wstring_view kResponse = L"<LHXML><LHXMLMsgsRs/></LHXML>";
    host.answers.push_back({.response = std::wstring(kResponse)});
    OwnedBstr result;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*paylodge.Get(), FindMember("CreateTxns").slot, MakeBstr(L"").Get(),
                                         GetParam().word, result.Receive()));
    EXPECT_EQ(GetParam().is_true ? kResponse : L"<LHXMLMsgsRs>\r\n</LHXMLMsgsRs>\r\n", View(result));
}

TEST_P(Boolean, OfAnActivationIsItsLower16Bits) {
    host.answers.push_back({.response = L"<AccountQueryRs><AccountRet><ListID>1</ListID><EditSequence>2</EditSequence>"
                                        L"</AccountRet></AccountQueryRs>"});
    host.answers.push_back({.response = L"<AccountModRs statusCode='0'/>"});
    EXPECT_HRESULT(S_OK, CallThroughSlot(*paylodge.Get(), FindMember("ActivateOrDeactivateAccount").slot,
                                         MakeBstr(L"Tips").Get(), GetParam().word));
    ASSERT_EQ(2U, host.requests.size());
    EXPECT_NE(std::wstring::npos,
              host.requests[1].find(GetParam().is_true ? L"<IsActive>true</IsActive>" : L"<IsActive>false</IsActive>"));
}

}  // namespace
}  // namespace paylodge::test
