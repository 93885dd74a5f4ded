// Every test puts the process-wide state that it needs into place first, so that their order does not matter.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "tests/support/bstr_allocations.hpp"
#include "tests/support/fake_site.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/operations/exchange_members.hpp"

namespace paylodge::test {
namespace {

// All the values but -1 that a caller may put.
constexpr VARIANT_BOOL kNotTrue[] = {0, 1, 2, -2, 0xFF, 0x7FFF, -0x8000};

// An embedded NUL, the upper half of the code page, characters outside it, half a surrogate pair.
const std::wstring kAnyText = std::wstring(L"a\0b\u00e9\u20ac\u4e2d\xD83D", 7) + std::wstring(1, L'\0');

class ExchangeTest : public OperationTest {
  protected:
    ~ExchangeTest() override { EXPECT_TRUE(host_.calls.empty()); }

    // Whether the allocation failure is thrown by the call.
    template <class Call>
    [[nodiscard]] static bool RaisesWithoutMemory(int number, const Call& call) {
        const BstrAllocations allocations(number);
        try {
            static_cast<void>(call());
        } catch (const _com_error& error) {
            EXPECT_HRESULT(E_OUTOFMEMORY, error.Error());
            return true;
        }
        return false;
    }

    void Put(const TextProperty& property, std::wstring_view text) {
        EXPECT_EQ(Result{S_OK}, Do(object_, property.put, text)) << property.name;
    }
    void SetFlag(const FlagProperty& flag, VARIANT_BOOL value) {
        EXPECT_EQ(Result{S_OK}, Do(object_, flag.put, value)) << flag.name;
    }
    [[nodiscard]] Result FlagOf(const FlagProperty& flag) { return AskWhether(object_, flag.get); }
};

const Result kDone = {S_OK};
const Result kRefused = {E_FAIL};
const Result kYes = {S_OK, kTrue};
const Result kNo = {S_OK, kFalse};
const Result kEmptyMailbox = {S_FALSE, L""};

template <class Table>
[[nodiscard]] auto RowsOf(const Table& table) {
    return ::testing::ValuesIn(std::begin(table), std::end(table));
}
constexpr auto kRowName = [](const auto& row) { return row.param.name; };

class PlainProperty : public ExchangeTest, public ::testing::WithParamInterface<TextProperty> {
  protected:
    [[nodiscard]] Result Get() { return Ask(object_, GetParam().get); }
    template <class Text>
    [[nodiscard]] Result PutText(const Text& text) {
        return Do(object_, GetParam().put, text);
    }
};
INSTANTIATE_TEST_SUITE_P(, PlainProperty, RowsOf(kPlainProperties), kRowName);

TEST_P(PlainProperty, ReturnsWhatWasPutLast) {
    for (const std::wstring& text : {std::wstring(L"first"), kAnyText, std::wstring(), std::wstring(100'000, L'x')}) {
        EXPECT_EQ(kDone, PutText(text));
        EXPECT_EQ((Result{S_OK, text}), Get());
        EXPECT_EQ((Result{S_OK, text}), Get());
    }
}

TEST_P(PlainProperty, ReturnsNullForNull) {
    EXPECT_EQ(kDone, PutText(L"x"));
    EXPECT_EQ(kDone, PutText(nullptr));
    EXPECT_EQ((Result{S_OK, kNull}), Get());
    EXPECT_EQ(kDone, PutText(nullptr));
    EXPECT_EQ((Result{S_OK, kNull}), Get());
}

TEST_P(PlainProperty, KeepsAnOddNumberOfBytes) {
    const OwnedBstr odd(::SysAllocStringByteLen("abc", 3));
    EXPECT_HRESULT(S_OK, (object_.*GetParam().put)(odd.Get()));
    StringSink sink;
    EXPECT_HRESULT(S_OK, (object_.*GetParam().get)(sink.Slot()));
    ASSERT_EQ(3U, ::SysStringByteLen(sink.Get()));
    EXPECT_EQ(0, std::memcmp("abc", sink.Get(), 3));
}

TEST_P(PlainProperty, StoresAndReturnsCopies) {
    const OwnedBstr text = MakeBstr(L"abc");
    EXPECT_HRESULT(S_OK, (object_.*GetParam().put)(text.Get()));
    text.Get()[0] = L'x';
    StringSink first;
    EXPECT_HRESULT(S_OK, (object_.*GetParam().get)(first.Slot()));
    EXPECT_EQ(L"abc", first.Show());
    first.Get()[0] = L'y';
    EXPECT_EQ((Result{S_OK, L"abc"}), Get());
}

TEST_P(PlainProperty, DoesNothingForTheVeryStringThatItHolds) {
    const Argument text(L"held");
    BSTR held = nullptr;
    {
        const BstrAllocations allocations;
        EXPECT_HRESULT(S_OK, (object_.*GetParam().put)(text));
        EXPECT_EQ(1, allocations.Count());
        held = allocations.Last();
    }
    {
        const BstrAllocations allocations;
        EXPECT_HRESULT(S_OK, (object_.*GetParam().put)(held));
        EXPECT_EQ(0, allocations.Count());
    }
    EXPECT_EQ((Result{S_OK, L"held"}), Get());
}

TEST_P(PlainProperty, IsSharedByAllObjectsAndOutlivesThem) {
    {
        const auto other = ComObject<CPaylodge>::Create();
        EXPECT_EQ(kDone, Do(*other.Get(), GetParam().put, L"shared"));
        EXPECT_EQ((Result{S_OK, L"shared"}), Get());
    }
    EXPECT_EQ((Result{S_OK, L"shared"}), Get());
}

TEST_P(PlainProperty, ThrowsOnAFailedAllocationAndKeepsTheStoredString) {
    EXPECT_EQ(kDone, PutText(L"kept"));
    const Argument other(L"other");
    EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return (object_.*GetParam().put)(other); }));
    EXPECT_EQ((Result{S_OK, L"kept"}), Get());
    StringSink sink;
    EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return (object_.*GetParam().get)(sink.Slot()); }));
    EXPECT_EQ(kUntouched, sink.Show());
    EXPECT_EQ((Result{S_OK, L"kept"}), Get());
}

TEST_P(PlainProperty, NullOutParameterIsEPointer) { EXPECT_HRESULT(E_POINTER, (object_.*GetParam().get)(nullptr)); }

class PlainProperties : public ExchangeTest {};

TEST_F(PlainProperties, AreIndependentOfEachOther) {
    for (const TextProperty& property : kPlainProperties) {
        Put(property, std::wstring(property.name, property.name + std::strlen(property.name)));
    }
    for (const TextProperty& property : kPlainProperties) {
        const std::wstring name(property.name, property.name + std::strlen(property.name));
        EXPECT_EQ((Result{S_OK, name}), Ask(object_, property.get));
    }
}

class ExchangeOnARefusedPage : public ExchangeTest {};

TEST_F(ExchangeOnARefusedPage, ChangesAndReturnsNothing) {
    const auto page_object = ComObject<CPaylodge>::Create();
    FakeSite site(PageAt(kRefusedPage));
    CPaylodge& refused = *page_object.Get();
    const OnSite on_site(static_cast<IObjectWithSite*>(&refused), site);
    const Result nothing_told = {S_OK, kUntouched};
    for (const TextProperty& property : kPlainProperties) {
        Put(property, L"kept");
        EXPECT_EQ(kDone, Do(refused, property.put, L"refused")) << property.name;
        EXPECT_EQ(nothing_told, Ask(refused, property.get)) << property.name;
        EXPECT_EQ((Result{S_OK, L"kept"}), Ask(object_, property.get)) << property.name;
    }
    for (const FlagProperty& flag : kFlags) {
        SetFlag(flag, VARIANT_FALSE);
        EXPECT_EQ(kDone, Do(refused, flag.put, VARIANT_TRUE)) << flag.name;
        EXPECT_EQ(nothing_told, AskWhether(refused, flag.get)) << flag.name;
    }
    for (const GuardedProperty& property : kGuardedProperties) {
        EXPECT_EQ(kDone, Do(refused, property.put, L"refused")) << property.name;
        EXPECT_EQ(nothing_told, Ask(refused, property.get)) << property.name;
    }
    EXPECT_EQ(kDone, Do(refused, &CPaylodge::SetScanTxnInfo, L"", L"", L"", L"", L""));
    for (const TextGetter& getter : kScanTxnGetters) {
        EXPECT_EQ(nothing_told, Ask(refused, getter.get)) << getter.name;
    }
    EXPECT_EQ(kDone, Do(refused, &CPaylodge::SetReconPaymentDataAndParams, L"", L"", VARIANT_TRUE));
    EXPECT_EQ(nothing_told, Ask(refused, &CPaylodge::GetReconPaymentData));
    EXPECT_EQ((PaymentParams{S_OK, kUntouched, kUntouched}), AskPaymentParams(refused));
    for (const FlagProperty& flag : kFlags) {
        EXPECT_EQ(kNo, FlagOf(flag)) << flag.name;
    }
}

TEST_F(ExchangeOnARefusedPage, ChecksThePageBeforeTheOutParameter) {
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(static_cast<IObjectWithSite*>(&object_), site);
    for (const TextProperty& property : kPlainProperties) {
        EXPECT_HRESULT(S_OK, (object_.*property.get)(nullptr)) << property.name;
    }
    for (const FlagProperty& flag : kFlags) {
        EXPECT_HRESULT(S_OK, (object_.*flag.get)(nullptr)) << flag.name;
    }
    for (const GuardedProperty& property : kGuardedProperties) {
        EXPECT_HRESULT(S_OK, (object_.*property.get)(nullptr)) << property.name;
    }
    for (const TextGetter& getter : kScanTxnGetters) {
        EXPECT_HRESULT(S_OK, (object_.*getter.get)(nullptr)) << getter.name;
    }
    EXPECT_HRESULT(S_OK, object_.GetReconPaymentData(nullptr));
    EXPECT_HRESULT(S_OK, object_.GetReconPaymentParams(nullptr, nullptr));
}

TEST_F(ExchangeOnARefusedPage, DoesNotRevealThatAMailboxIsFull) {
    for (const FlagProperty& flag : kFlags) {
        SetFlag(flag, VARIANT_TRUE);
    }
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(static_cast<IObjectWithSite*>(&object_), site);
    for (const GuardedProperty& property : kGuardedProperties) {
        EXPECT_EQ(kDone, Do(object_, property.put, L"refused")) << property.name;
    }
    EXPECT_EQ(kDone, Do(object_, &CPaylodge::SetScanTxnInfo, L"", L"", L"", L"", L""));
    EXPECT_EQ(kDone, Do(object_, &CPaylodge::SetReconPaymentDataAndParams, L"", L"", VARIANT_TRUE));
}

class Flag : public ExchangeTest, public ::testing::WithParamInterface<FlagProperty> {};
INSTANTIATE_TEST_SUITE_P(, Flag, RowsOf(kFlags), kRowName);

TEST_P(Flag, IsTrueForMinusOneAlone) {
    for (const VARIANT_BOOL value : kNotTrue) {
        SetFlag(GetParam(), VARIANT_TRUE);
        EXPECT_EQ(kYes, FlagOf(GetParam()));
        SetFlag(GetParam(), value);
        EXPECT_EQ(kNo, FlagOf(GetParam())) << value;
        SetFlag(GetParam(), value);
        EXPECT_EQ(kNo, FlagOf(GetParam())) << value;
    }
}

TEST_P(Flag, IsSharedByAllObjectsAndIndependentOfTheOthers) {
    for (const FlagProperty& flag : kFlags) {
        SetFlag(flag, VARIANT_FALSE);
    }
    EXPECT_EQ(kDone, Do(*ComObject<CPaylodge>::Create().Get(), GetParam().put, VARIANT_TRUE));
    for (const FlagProperty& flag : kFlags) {
        EXPECT_EQ(flag.get == GetParam().get ? kYes : kNo, FlagOf(flag)) << flag.name;
    }
}

TEST_P(Flag, NullOutParameterIsEPointer) { EXPECT_HRESULT(E_POINTER, (object_.*GetParam().get)(nullptr)); }

class GuardedText : public ExchangeTest, public ::testing::WithParamInterface<GuardedProperty> {
  protected:
    [[nodiscard]] Result Get() { return Ask(object_, GetParam().get); }
    template <class Text>
    [[nodiscard]] Result PutText(const Text& text) {
        return Do(object_, GetParam().put, text);
    }
    [[nodiscard]] Result IsReady() { return FlagOf(GetParam().flag); }
    void SetReady(VARIANT_BOOL value) { SetFlag(GetParam().flag, value); }
};
INSTANTIATE_TEST_SUITE_P(, GuardedText, RowsOf(kGuardedProperties), kRowName);

TEST_P(GuardedText, IsAnEmptyStringWithSFalseWhileTheFlagIsFalse) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kEmptyMailbox, Get());
    EXPECT_EQ(kNo, IsReady());
}

TEST_P(GuardedText, IsFilledByAPut) {
    for (const std::wstring& text : {std::wstring(L"data"), kAnyText, std::wstring()}) {
        SetReady(VARIANT_FALSE);
        EXPECT_EQ(kDone, PutText(text));
        EXPECT_EQ(kYes, IsReady());
        EXPECT_EQ((Result{S_OK, text}), Get());
        EXPECT_EQ((Result{S_OK, text}), Get());
        EXPECT_EQ(kYes, IsReady());
    }
}

TEST_P(GuardedText, IsFilledByNullToo) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, PutText(nullptr));
    EXPECT_EQ(kYes, IsReady());
    EXPECT_EQ((Result{S_OK, kNull}), Get());
}

TEST_P(GuardedText, RefusesASecondPutAndKeepsTheFirstValue) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, PutText(L"first"));
    EXPECT_EQ(kRefused, PutText(L"second"));
    EXPECT_EQ(kRefused, PutText(nullptr));
    EXPECT_EQ((Result{S_OK, L"first"}), Get());
    EXPECT_EQ(kYes, IsReady());
}

TEST_P(GuardedText, RefusesAPutByAnotherObjectAndIsReadByIt) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, PutText(L"first"));
    const auto other = ComObject<CPaylodge>::Create();
    EXPECT_EQ(kRefused, Do(*other.Get(), GetParam().put, L"second"));
    EXPECT_EQ((Result{S_OK, L"first"}), Ask(*other.Get(), GetParam().get));
}

TEST_P(GuardedText, IsEmptiedByTheFlag) {
    for (const VARIANT_BOOL value : kNotTrue) {
        SetReady(VARIANT_FALSE);
        EXPECT_EQ(kDone, PutText(L"data"));
        SetReady(value);
        EXPECT_EQ(kEmptyMailbox, Get());
        SetReady(VARIANT_TRUE);
        EXPECT_EQ((Result{S_OK, L""}), Get()) << "the value is an empty string, not null";
    }
}

TEST_P(GuardedText, KeepsItsValueWhenTheFlagIsPutToTrueAgain) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, PutText(L"data"));
    SetReady(VARIANT_TRUE);
    EXPECT_EQ((Result{S_OK, L"data"}), Get());
}

TEST_P(GuardedText, RefusesAPutAfterTheFlagAloneWasPutToTrue) {
    SetReady(VARIANT_FALSE);
    SetReady(VARIANT_TRUE);
    EXPECT_EQ(kRefused, PutText(L"data"));
    EXPECT_EQ((Result{S_OK, L""}), Get());
}

TEST_P(GuardedText, ThrowsOnAFailedAllocationAndStaysAsItWas) {
    SetReady(VARIANT_FALSE);
    const Argument text(L"data");
    EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return (object_.*GetParam().put)(text); }));
    EXPECT_EQ(kEmptyMailbox, Get());
    StringSink sink;
    EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return (object_.*GetParam().get)(sink.Slot()); }));
    EXPECT_EQ(kDone, PutText(L"data"));
    EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return (object_.*GetParam().get)(sink.Slot()); }));
    EXPECT_EQ(kUntouched, sink.Show());
    EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return (object_.*GetParam().flag.put)(VARIANT_FALSE); }));
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kEmptyMailbox, Get());
}

TEST_P(GuardedText, NullOutParameterIsEPointer) {
    for (const VARIANT_BOOL value : {VARIANT_FALSE, VARIANT_TRUE}) {
        SetReady(value);
        EXPECT_HRESULT(E_POINTER, (object_.*GetParam().get)(nullptr));
    }
}

class ScanTxn : public ExchangeTest {
  protected:
    [[nodiscard]] Result SetInfo(const std::array<const wchar_t*, 5>& info) {
        return Do(object_, &CPaylodge::SetScanTxnInfo, info[0], info[1], info[2], info[3], info[4]);
    }
    void SetCreated(VARIANT_BOOL value) { SetFlag(kIsScanTxnCreated, value); }
    void ExpectInfo(HRESULT code, const std::array<const wchar_t*, 5>& info) {
        for (size_t i = 0; i < info.size(); ++i) {
            EXPECT_EQ((Result{code, info[i]}), Ask(object_, kScanTxnGetters[i].get)) << kScanTxnGetters[i].name;
        }
    }
};

constexpr std::array<const wchar_t*, 5> kInfo = {L"T-1", L"C-1", L"Smith \u4e2d", L"1001, 1002", L"12.50"};
constexpr std::array<const wchar_t*, 5> kOtherInfo = {L"T-2", L"C-2", L"Jones", L"7", L"1.00"};
constexpr std::array<const wchar_t*, 5> kNoInfo = {L"", L"", L"", L"", L""};

TEST_F(ScanTxn, HoldsWhatWasSet) {
    SetCreated(VARIANT_FALSE);
    ExpectInfo(S_FALSE, kNoInfo);
    EXPECT_EQ(kDone, SetInfo(kInfo));
    EXPECT_EQ(kYes, FlagOf(kIsScanTxnCreated));
    ExpectInfo(S_OK, kInfo);
    ExpectInfo(S_OK, kInfo);
}

TEST_F(ScanTxn, IsSetOnceUntilItIsCleared) {
    SetCreated(VARIANT_FALSE);
    EXPECT_EQ(kDone, SetInfo(kInfo));
    EXPECT_EQ(kRefused, SetInfo(kOtherInfo));
    EXPECT_EQ(kRefused, Do(*ComObject<CPaylodge>::Create().Get(), &CPaylodge::SetScanTxnInfo, L"", L"", L"", L"", L""));
    ExpectInfo(S_OK, kInfo);
    SetCreated(VARIANT_FALSE);
    EXPECT_EQ(kDone, SetInfo(kOtherInfo));
    ExpectInfo(S_OK, kOtherInfo);
}

TEST_F(ScanTxn, LosesOnlyItsIDsWhenItIsCleared) {
    for (const VARIANT_BOOL value : kNotTrue) {
        SetCreated(VARIANT_FALSE);
        EXPECT_EQ(kDone, SetInfo(kInfo));
        SetCreated(value);
        ExpectInfo(S_FALSE, kNoInfo);
        SetCreated(VARIANT_TRUE);
        ExpectInfo(S_OK, {L"", L"", kInfo[2], kInfo[3], kInfo[4]});
    }
}

TEST_F(ScanTxn, HoldsNullStrings) {
    SetCreated(VARIANT_FALSE);
    EXPECT_EQ(kDone, SetInfo({}));
    ExpectInfo(S_OK, {kNull, kNull, kNull, kNull, kNull});
}

TEST_F(ScanTxn, HoldsEmbeddedNuls) {
    SetCreated(VARIANT_FALSE);
    EXPECT_EQ(kDone, Do(object_, &CPaylodge::SetScanTxnInfo, kAnyText, kAnyText, kAnyText, kAnyText, kAnyText));
    for (const TextGetter& getter : kScanTxnGetters) {
        EXPECT_EQ((Result{S_OK, kAnyText}), Ask(object_, getter.get)) << getter.name;
    }
}

TEST_F(ScanTxn, StoresAndReturnsCopies) {
    SetCreated(VARIANT_FALSE);
    const Argument text(L"abc");
    EXPECT_HRESULT(S_OK, object_.SetScanTxnInfo(text, text, text, text, text));
    static_cast<BSTR>(text)[0] = L'x';
    ExpectInfo(S_OK, {L"abc", L"abc", L"abc", L"abc", L"abc"});
}

TEST_F(ScanTxn, StaysUnsetWhenAnyAllocationFails) {
    const Argument text(L"x");
    for (int number = 1; number <= 5; ++number) {
        SetCreated(VARIANT_FALSE);
        EXPECT_EQ(kDone, SetInfo(kInfo));
        SetCreated(VARIANT_FALSE);
        EXPECT_TRUE(RaisesWithoutMemory(number, [&] { return object_.SetScanTxnInfo(text, text, text, text, text); }));
        EXPECT_EQ(kNo, FlagOf(kIsScanTxnCreated));
        ExpectInfo(S_FALSE, kNoInfo);
    }
}

TEST_F(ScanTxn, ThrowsOnAFailedAllocationOnReadingAndClearing) {
    SetCreated(VARIANT_FALSE);
    EXPECT_EQ(kDone, SetInfo(kInfo));
    for (const TextGetter& getter : kScanTxnGetters) {
        StringSink sink;
        EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return (object_.*getter.get)(sink.Slot()); })) << getter.name;
        EXPECT_EQ(kUntouched, sink.Show()) << getter.name;
    }
    for (const int number : {1, 2}) {
        EXPECT_TRUE(RaisesWithoutMemory(number, [&] { return object_.put_IsScanTxnCreated(VARIANT_FALSE); }));
    }
}

TEST_F(ScanTxn, NullOutParameterIsEPointer) {
    for (const TextGetter& getter : kScanTxnGetters) {
        EXPECT_HRESULT(E_POINTER, (object_.*getter.get)(nullptr)) << getter.name;
    }
}

class ReconPayment : public ExchangeTest {
  protected:
    template <class Data>
    [[nodiscard]] Result Set(const Data& data, const Data& date, VARIANT_BOOL is_default) {
        return Do(object_, &CPaylodge::SetReconPaymentDataAndParams, data, date, is_default);
    }
    [[nodiscard]] Result Data() { return Ask(object_, &CPaylodge::GetReconPaymentData); }
    void SetReady(VARIANT_BOOL value) { SetFlag(kIsReconPaymentDataReady, value); }
    // An empty mailbox in which these were the last contents.
    void EmptyAfter(const wchar_t* data, const wchar_t* date, VARIANT_BOOL is_default) {
        SetReady(VARIANT_FALSE);
        EXPECT_EQ(kDone, Set(data, date, is_default));
        SetReady(VARIANT_FALSE);
    }
};

TEST_F(ReconPayment, HoldsWhatWasSet) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, Set(kAnyText, std::wstring(L"2024-01-01\0x", 12), VARIANT_FALSE));
    EXPECT_EQ(kYes, FlagOf(kIsReconPaymentDataReady));
    EXPECT_EQ((Result{S_OK, kAnyText}), Data());
    EXPECT_EQ((PaymentParams{S_OK, kFalse, std::wstring(L"2024-01-01\0x", 12)}), AskPaymentParams(object_));
}

TEST_F(ReconPayment, HasTheDefaultAccountForMinusOneAlone) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, Set(L"d", L"s", VARIANT_TRUE));
    EXPECT_EQ((PaymentParams{S_OK, kTrue, L"s"}), AskPaymentParams(object_));
    for (const VARIANT_BOOL value : kNotTrue) {
        SetReady(VARIANT_FALSE);
        EXPECT_EQ(kDone, Set(L"d", L"s", value));
        EXPECT_EQ((PaymentParams{S_OK, kFalse, L"s"}), AskPaymentParams(object_)) << value;
    }
}

TEST_F(ReconPayment, ReturnsDefaultsWhileItIsEmpty) {
    EmptyAfter(L"d", L"s", VARIANT_FALSE);
    EXPECT_EQ(kEmptyMailbox, Data());
    EXPECT_EQ((PaymentParams{S_FALSE, kTrue, L""}), AskPaymentParams(object_));
}

TEST_F(ReconPayment, LosesOnlyItsDataWhenItIsEmptied) {
    for (const VARIANT_BOOL is_default : {VARIANT_TRUE, VARIANT_FALSE}) {
        EmptyAfter(L"d", L"s", is_default);
        SetReady(VARIANT_TRUE);
        EXPECT_EQ((Result{S_OK, L""}), Data());
        EXPECT_EQ((PaymentParams{S_OK, is_default == VARIANT_TRUE ? kTrue : kFalse, L"s"}), AskPaymentParams(object_));
    }
}

TEST_F(ReconPayment, IsSetOnceUntilItIsEmptied) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, Set(L"d", L"s", VARIANT_FALSE));
    EXPECT_EQ(kRefused, Set(L"d2", L"s2", VARIANT_TRUE));
    EXPECT_EQ((Result{S_OK, L"d"}), Data());
    EXPECT_EQ((PaymentParams{S_OK, kFalse, L"s"}), AskPaymentParams(object_));
}

TEST_F(ReconPayment, HoldsNullStrings) {
    SetReady(VARIANT_FALSE);
    EXPECT_EQ(kDone, Set(nullptr, nullptr, VARIANT_TRUE));
    EXPECT_EQ((Result{S_OK, kNull}), Data());
    EXPECT_EQ((PaymentParams{S_OK, kTrue, kNull}), AskPaymentParams(object_));
}

TEST_F(ReconPayment, StaysAsItWasWhenAnyAllocationFails) {
    const Argument data(L"d2");
    const Argument date(L"s2");
    for (const int number : {1, 2}) {
        EmptyAfter(L"d", L"s", VARIANT_FALSE);
        EXPECT_TRUE(RaisesWithoutMemory(
            number, [&] { return object_.SetReconPaymentDataAndParams(data, date, VARIANT_TRUE); }));
        EXPECT_EQ(kNo, FlagOf(kIsReconPaymentDataReady));
        SetReady(VARIANT_TRUE);
        EXPECT_EQ((PaymentParams{S_OK, kFalse, L"s"}), AskPaymentParams(object_));
    }
}

TEST_F(ReconPayment, ThrowsOnAFailedAllocationOnReadingAndEmptying) {
    for (const VARIANT_BOOL value : {VARIANT_TRUE, VARIANT_FALSE}) {
        EmptyAfter(L"d", L"s", VARIANT_FALSE);
        SetReady(value);
        StringSink text;
        BoolSink is_default;
        EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return object_.GetReconPaymentData(text.Slot()); }));
        EXPECT_TRUE(
            RaisesWithoutMemory(1, [&] { return object_.GetReconPaymentParams(is_default.Slot(), text.Slot()); }));
        EXPECT_EQ(kUntouched, text.Show());
    }
    EXPECT_TRUE(RaisesWithoutMemory(1, [&] { return object_.put_IsReconPaymentDataReady(VARIANT_FALSE); }));
}

TEST_F(ReconPayment, EachNullOutParameterIsEPointer) {
    for (const VARIANT_BOOL value : {VARIANT_FALSE, VARIANT_TRUE}) {
        SetReady(value);
        StringSink text;
        BoolSink is_default;
        EXPECT_HRESULT(E_POINTER, object_.GetReconPaymentData(nullptr));
        EXPECT_HRESULT(E_POINTER, object_.GetReconPaymentParams(nullptr, text.Slot()));
        EXPECT_HRESULT(E_POINTER, object_.GetReconPaymentParams(is_default.Slot(), nullptr));
        EXPECT_EQ(kUntouched, text.Show());
        EXPECT_EQ(kUntouched, is_default.Show());
    }
}

}  // namespace
}  // namespace paylodge::test
