// Random sequences of puts and gets, on two objects of one process, against a model of the mailboxes. A failure names
// the seed of its sequence and the step.

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <random>

#include "tests/support/hresult.hpp"
#include "tests/unit/operations/exchange_members.hpp"

namespace paylodge::test {
namespace {

constexpr int kSteps = 1500;

// A string as a slot holds it: nothing is the null string.
using Text = std::optional<std::wstring>;

[[nodiscard]] Result Given(const Text& text) { return {S_OK, text.value_or(kNull)}; }

// A mailbox, as far as its flag goes.
struct Mailbox {
    bool is_full = false;

    [[nodiscard]] Result Read(const Text& value) const { return is_full ? Given(value) : Result{S_FALSE, L""}; }
};

struct Model {
    std::array<Text, std::size(kPlainProperties)> plain;
    std::array<Mailbox, std::size(kGuardedProperties)> guarded;
    std::array<Text, std::size(kGuardedProperties)> contents;
    Mailbox scan;
    std::array<Text, std::size(kScanTxnGetters)> scan_values;
    Mailbox payment;
    Text payment_data;
    Text start_date;
    bool is_default = true;
};

class ExchangeModel : public OperationTest, public ::testing::WithParamInterface<unsigned> {
  protected:
    // What earlier tests of the process left is put to a known state.
    ExchangeModel() {
        for (size_t i = 0; i < std::size(kPlainProperties); ++i) {
            PutPlain(i, L"");
        }
        for (size_t i = 0; i < std::size(kGuardedProperties); ++i) {
            PutGuardedFlag(i, VARIANT_FALSE);
        }
        PutScanFlag(VARIANT_FALSE);
        SetScan({L"1", L"2", L"3", L"4", L"5"});
        PutPaymentFlag(VARIANT_FALSE);
        SetPayment(L"data", L"date", VARIANT_TRUE);
    }

    [[nodiscard]] CPaylodge& Either() { return Below(2) == 0 ? object_ : *second_.Get(); }
    [[nodiscard]] size_t Below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random_); }
    [[nodiscard]] Text AnyText() {
        switch (Below(6)) {
            case 0:
                return std::nullopt;
            case 1:
                return L"";
            case 2:
                return std::wstring(L"a\0b", 3);
            default:
                return L"text " + std::to_wstring(Below(1000));
        }
    }
    [[nodiscard]] VARIANT_BOOL AnyBool() {
        static constexpr VARIANT_BOOL kValues[] = {VARIANT_TRUE, VARIANT_FALSE, VARIANT_TRUE, VARIANT_FALSE, 1, 2,
                                                   -2,           0x7FFF};
        return kValues[Below(std::size(kValues))];
    }
    [[nodiscard]] static OwnedBstr Passed(const Text& text) { return text ? MakeBstr(*text) : OwnedBstr(); }

    void PutPlain(size_t i, const Text& text) {
        const auto put = kPlainProperties[i].put;
        EXPECT_HRESULT(S_OK, (Either().*put)(Passed(text).Get()));
        model_.plain[i] = text;
    }
    void PutGuarded(size_t i, const Text& text) {
        const HRESULT expected = model_.guarded[i].is_full ? E_FAIL : S_OK;
        const auto put = kGuardedProperties[i].put;
        EXPECT_HRESULT(expected, (Either().*put)(Passed(text).Get())) << kGuardedProperties[i].name;
        if (expected == S_OK) {
            model_.guarded[i].is_full = true;
            model_.contents[i] = text;
        }
    }
    void PutGuardedFlag(size_t i, VARIANT_BOOL value) {
        const auto put = kGuardedProperties[i].flag.put;
        EXPECT_HRESULT(S_OK, (Either().*put)(value));
        model_.guarded[i].is_full = value == -1;
        if (value != -1) {
            model_.contents[i] = L"";
        }
    }
    void SetScan(const std::array<Text, 5>& texts) {
        const HRESULT expected = model_.scan.is_full ? E_FAIL : S_OK;
        EXPECT_EQ(expected,
                  Either().SetScanTxnInfo(Passed(texts[0]).Get(), Passed(texts[1]).Get(), Passed(texts[2]).Get(),
                                          Passed(texts[3]).Get(), Passed(texts[4]).Get()));
        if (expected == S_OK) {
            model_.scan.is_full = true;
            model_.scan_values = texts;
        }
    }
    // Name, invoices and amount stay.
    void PutScanFlag(VARIANT_BOOL value) {
        EXPECT_HRESULT(S_OK, Either().put_IsScanTxnCreated(value));
        model_.scan.is_full = value == -1;
        if (value != -1) {
            model_.scan_values[0] = L"";
            model_.scan_values[1] = L"";
        }
    }
    void SetPayment(const Text& data, const Text& date, VARIANT_BOOL is_default) {
        const HRESULT expected = model_.payment.is_full ? E_FAIL : S_OK;
        EXPECT_EQ(expected, Either().SetReconPaymentDataAndParams(Passed(data).Get(), Passed(date).Get(), is_default));
        if (expected == S_OK) {
            model_.payment.is_full = true;
            model_.payment_data = data;
            model_.start_date = date;
            model_.is_default = is_default == -1;
        }
    }
    // Date and default stay.
    void PutPaymentFlag(VARIANT_BOOL value) {
        EXPECT_HRESULT(S_OK, Either().put_IsReconPaymentDataReady(value));
        model_.payment.is_full = value == -1;
        if (value != -1) {
            model_.payment_data = L"";
        }
    }

    void Write() {
        switch (Below(7)) {
            case 0:
                return PutPlain(Below(std::size(kPlainProperties)), AnyText());
            case 1:
                return PutGuarded(Below(std::size(kGuardedProperties)), AnyText());
            case 2:
                return PutGuardedFlag(Below(std::size(kGuardedProperties)), AnyBool());
            case 3:
                return SetScan({AnyText(), AnyText(), AnyText(), AnyText(), AnyText()});
            case 4:
                return PutScanFlag(AnyBool());
            case 5:
                return SetPayment(AnyText(), AnyText(), AnyBool());
            default:
                return PutPaymentFlag(AnyBool());
        }
    }

    void ExpectFlag(const FlagProperty& flag, const Mailbox& mailbox) {
        EXPECT_EQ((Result{S_OK, mailbox.is_full ? kTrue : kFalse}), AskWhether(Either(), flag.get)) << flag.name;
    }

    void ReadEverything() {
        for (size_t i = 0; i < std::size(kPlainProperties); ++i) {
            EXPECT_EQ(Given(model_.plain[i]), Ask(Either(), kPlainProperties[i].get)) << kPlainProperties[i].name;
        }
        for (size_t i = 0; i < std::size(kGuardedProperties); ++i) {
            EXPECT_EQ(model_.guarded[i].Read(model_.contents[i]), Ask(Either(), kGuardedProperties[i].get))
                << kGuardedProperties[i].name;
            ExpectFlag(kGuardedProperties[i].flag, model_.guarded[i]);
        }
        for (size_t i = 0; i < std::size(kScanTxnGetters); ++i) {
            EXPECT_EQ(model_.scan.Read(model_.scan_values[i]), Ask(Either(), kScanTxnGetters[i].get))
                << kScanTxnGetters[i].name;
        }
        ExpectFlag(kIsScanTxnCreated, model_.scan);
        EXPECT_EQ(model_.payment.Read(model_.payment_data), Ask(Either(), &CPaylodge::GetReconPaymentData));
        ExpectFlag(kIsReconPaymentDataReady, model_.payment);
        const Result date = model_.payment.Read(model_.start_date);
        const bool is_default = !model_.payment.is_full || model_.is_default;
        EXPECT_EQ((PaymentParams{date.code, is_default ? kTrue : kFalse, date.text}), AskPaymentParams(Either()));
    }

    Model model_;
    std::mt19937 random_{GetParam()};
    ComPtr<ComObject<CPaylodge>> second_ = ComObject<CPaylodge>::Create();
};

TEST_P(ExchangeModel, AgreesAfterEveryStep) {
    for (int step = 0; step < kSteps && !HasFailure(); ++step) {
        Write();
        ReadEverything();
        EXPECT_FALSE(HasFailure()) << "seed " << GetParam() << ", step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(, ExchangeModel, ::testing::Values(1U, 2U, 3U));

}  // namespace
}  // namespace paylodge::test
