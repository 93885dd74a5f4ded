#include <gtest/gtest.h>

#include "tests/component/control_under_test.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

constexpr CLSID kPaylodgeClass = {0xF8A9E1FD, 0x7DCD, 0x4BE8, {0xB5, 0x10, 0x7C, 0xBB, 0x84, 0x93, 0x64, 0xAB}};

class ClassObjects : public ::testing::Test {
  protected:
    [[nodiscard]] ComPtr<IClassFactory> Factory() {
        ComPtr<IClassFactory> factory;
        EXPECT_HRESULT(S_OK, module.GetClassObject(kPaylodgeClass, IID_IClassFactory, factory.ReceiveVoid()));
        return factory;
    }

    ModuleUnderTest module;
};

TEST_F(ClassObjects, FreshModuleCanBeUnloaded) { EXPECT_HRESULT(S_OK, module.CanUnloadNow()); }

TEST_F(ClassObjects, BothClassesAreServed) {
    for (const CLSID& id : {kPaylodgeClass, kControlClass}) {
        {
            ComPtr<IClassFactory> factory;
            ASSERT_HRESULT(S_OK, module.GetClassObject(id, IID_IClassFactory, factory.ReceiveVoid()));
            ComPtr<IDispatch> object;
            EXPECT_HRESULT(S_OK, factory->CreateInstance(nullptr, IID_IDispatch, object.ReceiveVoid()));
            EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
        }
        EXPECT_HRESULT(S_OK, module.CanUnloadNow());
    }
}

TEST_F(ClassObjects, ClassObjectKeepsTheModule) {
    auto factory = Factory();
    EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
    factory.Reset();
    EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(ClassObjects, EachObjectKeepsTheModule) {
    auto first = module.CreatePaylodge();
    auto second = module.CreatePaylodge();
    EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
    first.Reset();
    EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
    second.Reset();
    EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(ClassObjects, EachLockKeepsTheModule) {
    EXPECT_HRESULT(S_OK, Factory()->LockServer(TRUE));
    EXPECT_HRESULT(S_OK, Factory()->LockServer(TRUE));
    EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
    EXPECT_HRESULT(S_OK, Factory()->LockServer(FALSE));
    EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
    EXPECT_HRESULT(S_OK, Factory()->LockServer(FALSE));
    EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(ClassObjects, UnlockingWhatIsNotLockedUnlocksNoObject) {
    const auto object = module.CreatePaylodge();
    EXPECT_HRESULT(S_OK, Factory()->LockServer(FALSE));
    EXPECT_HRESULT(S_OK, Factory()->LockServer(FALSE));
    EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
}

TEST_F(ClassObjects, UnknownClassIsNotAvailable) {
    for (const CLSID& id : {CLSID_NULL, IID_IPaylodge8, LIBID_PAYLODGELib}) {
        void* object = &object;
        EXPECT_HRESULT(CLASS_E_CLASSNOTAVAILABLE, module.GetClassObject(id, IID_IClassFactory, &object));
        EXPECT_EQ(nullptr, object);
    }
}

TEST_F(ClassObjects, UnknownInterfaceOfTheClassObjectIsRefused) {
    void* object = &object;
    EXPECT_HRESULT(E_NOINTERFACE, module.GetClassObject(kPaylodgeClass, IID_IPaylodge8, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(ClassObjects, MissingSlotIsEPointer) {
    EXPECT_HRESULT(E_POINTER, module.GetClassObject(kPaylodgeClass, IID_IClassFactory, nullptr));
    EXPECT_HRESULT(E_POINTER, Factory()->CreateInstance(nullptr, IID_IPaylodge8, nullptr));
}

TEST_F(ClassObjects, FailedCreationLeavesNothingAlive) {
    const auto factory = Factory();
    void* object = &object;
    EXPECT_HRESULT(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IPersistStreamInit, &object));
    EXPECT_EQ(nullptr, object);
    object = &object;
    EXPECT_HRESULT(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.Get(), IID_IDispatch, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(ClassObjects, ObjectsAreNotShared) {
    EXPECT_NE(module.CreatePaylodge().Get(), nullptr);
    const auto first = module.CreatePaylodge();
    const auto second = module.CreatePaylodge();
    EXPECT_NE(first.Get(), second.Get());
}

}  // namespace
}  // namespace paylodge::test
