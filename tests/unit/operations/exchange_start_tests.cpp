// What the exchange properties hold when a process starts. The tests do not depend on their order: each changes only
// what no other looks at.
#include <gtest/gtest.h>

#include "tests/unit/operations/exchange_members.hpp"

namespace paylodge::test {
namespace {

class ExchangeStart : public OperationTest {};

TEST_F(ExchangeStart, PlainPropertiesAreNull) {
    for (const TextProperty& property : kPlainProperties) {
        EXPECT_EQ((Result{S_OK, kNull}), Ask(object_, property.get)) << property.name;
    }
}

TEST_F(ExchangeStart, GuardedPropertiesAreEmptyAndNullWhenDeclaredReadyWithoutData) {
    for (const GuardedProperty& property : kGuardedProperties) {
        EXPECT_EQ((Result{S_OK, kFalse}), AskWhether(object_, property.flag.get)) << property.name;
        EXPECT_EQ((Result{S_FALSE, L""}), Ask(object_, property.get)) << property.name;
        EXPECT_EQ(Result{S_OK}, Do(object_, property.flag.put, VARIANT_TRUE)) << property.name;
        EXPECT_EQ((Result{S_OK, kNull}), Ask(object_, property.get)) << property.name;
    }
}

TEST_F(ExchangeStart, ScanTxnIsEmptyAndNullWhenDeclaredCreatedWithoutInfo) {
    EXPECT_EQ((Result{S_OK, kFalse}), AskWhether(object_, &CPaylodge::get_IsScanTxnCreated));
    for (const TextGetter& getter : kScanTxnGetters) {
        EXPECT_EQ((Result{S_FALSE, L""}), Ask(object_, getter.get)) << getter.name;
    }
    EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::put_IsScanTxnCreated, VARIANT_TRUE));
    for (const TextGetter& getter : kScanTxnGetters) {
        EXPECT_EQ((Result{S_OK, kNull}), Ask(object_, getter.get)) << getter.name;
    }
}

TEST_F(ExchangeStart, ReconPaymentIsEmptyWithTheDefaultAccountAndNullWhenDeclaredReadyWithoutData) {
    EXPECT_EQ((Result{S_OK, kFalse}), AskWhether(object_, &CPaylodge::get_IsReconPaymentDataReady));
    EXPECT_EQ((Result{S_FALSE, L""}), Ask(object_, &CPaylodge::GetReconPaymentData));
    EXPECT_EQ((PaymentParams{S_FALSE, kTrue, L""}), AskPaymentParams(object_));
    EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::put_IsReconPaymentDataReady, VARIANT_TRUE));
    EXPECT_EQ((Result{S_OK, kNull}), Ask(object_, &CPaylodge::GetReconPaymentData));
    EXPECT_EQ((PaymentParams{S_OK, kTrue, kNull}), AskPaymentParams(object_));
}

}  // namespace
}  // namespace paylodge::test
