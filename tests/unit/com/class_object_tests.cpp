#include "com/class_object.hpp"

#include <gtest/gtest.h>
#include <objidl.h>
#include <ocidl.h>

#include <array>
#include <limits>
#include <new>

#include "tests/support/hresult.hpp"

namespace paylodge {
namespace {

constexpr CLSID kExampleClass = {0x1B0B0A41, 0x7C1E, 0x4B0B, {0x9A, 0x0E, 0x3C, 0x52, 0x11, 0x6A, 0x71, 0x01}};
constexpr CLSID kOtherClass = {0x1B0B0A42, 0x7C1E, 0x4B0B, {0x9A, 0x0E, 0x3C, 0x52, 0x11, 0x6A, 0x71, 0x01}};

template <const CLSID* id>
class Example : public CComCoClass<Example<id>, id>, public IPersist {
  public:
    using Row = InterfaceRow<Example>;
    static constexpr std::array kInterfaces = {Row::template Of<IPersist>()};
    STDMETHODIMP GetClassID(CLSID* class_id) override {
        *class_id = *id;
        return S_OK;
    }

  protected:
    ~Example() = default;
};

class ClassObject : public ::testing::Test {
  protected:
    ~ClassObject() override {
        factory.Reset();
        EXPECT_EQ(0, Module::References());
    }

    [[nodiscard]] HRESULT Get(REFCLSID class_id, REFIID id, void** object) {
        return GetClassObject(classes_, class_id, id, object);
    }

    // The first class's, once a test asked for it.
    ComPtr<IClassFactory> factory;

  private:
    const std::array<ClassEntry, 2> classes_ = {MakeClassEntry<Example<&kExampleClass>>(),
                                                MakeClassEntry<Example<&kOtherClass>>()};
};

TEST_F(ClassObject, ComesForEachClassOfTheTable) {
    for (const CLSID& id : {kExampleClass, kOtherClass}) {
        ComPtr<IClassFactory> found;
        ASSERT_HRESULT(S_OK, Get(id, IID_IClassFactory, found.ReceiveVoid()));
        ComPtr<IPersist> object;
        ASSERT_HRESULT(S_OK, found->CreateInstance(nullptr, __uuidof(IPersist), object.ReceiveVoid()));
        CLSID class_id = CLSID_NULL;
        EXPECT_HRESULT(S_OK, object->GetClassID(&class_id));
        EXPECT_TRUE(IsEqualCLSID(id, class_id));
    }
}

TEST_F(ClassObject, UnknownClassIsNotAvailable) {
    void* found = &found;
    EXPECT_HRESULT(CLASS_E_CLASSNOTAVAILABLE, Get(CLSID_NULL, IID_IClassFactory, &found));
    EXPECT_EQ(nullptr, found);
}

TEST_F(ClassObject, UnknownInterfaceOfAKnownClassIsENoInterface) {
    void* found = &found;
    EXPECT_HRESULT(E_NOINTERFACE, Get(kExampleClass, IID_IDispatch, &found));
    EXPECT_EQ(nullptr, found);
}

TEST_F(ClassObject, WithoutASlotIsEPointer) {
    EXPECT_HRESULT(E_POINTER, Get(kExampleClass, IID_IClassFactory, nullptr));
    EXPECT_HRESULT(E_POINTER, Get(CLSID_NULL, IID_IClassFactory, nullptr));
}

TEST_F(ClassObject, HoldsTheModuleWhileItLives) {
    ASSERT_HRESULT(S_OK, Get(kExampleClass, IID_IUnknown, factory.ReceiveVoid()));
    EXPECT_EQ(1, Module::References());
    factory.Reset();
    EXPECT_EQ(0, Module::References());
}

TEST_F(ClassObject, ObjectsHoldTheModuleWithoutTheirClassObject) {
    ASSERT_HRESULT(S_OK, Get(kExampleClass, IID_IClassFactory, factory.ReceiveVoid()));
    ComPtr<IUnknown> object;
    ASSERT_HRESULT(S_OK, factory->CreateInstance(nullptr, IID_IUnknown, object.ReceiveVoid()));
    factory.Reset();
    EXPECT_EQ(1, Module::References());
    EXPECT_EQ(2U, object->AddRef());
    EXPECT_EQ(1U, object->Release());
}

TEST_F(ClassObject, LocksAreCounted) {
    ASSERT_HRESULT(S_OK, Get(kExampleClass, IID_IClassFactory, factory.ReceiveVoid()));
    EXPECT_HRESULT(S_OK, factory->LockServer(TRUE));
    EXPECT_HRESULT(S_OK, factory->LockServer(TRUE));
    EXPECT_EQ(3, Module::References());
    EXPECT_HRESULT(S_OK, factory->LockServer(FALSE));
    EXPECT_EQ(2, Module::References());
    EXPECT_HRESULT(S_OK, factory->LockServer(FALSE));
    EXPECT_EQ(1, Module::References());
}

TEST_F(ClassObject, CreationFailsWithANullResultAndNothingAlive) {
    ASSERT_HRESULT(S_OK, Get(kExampleClass, IID_IClassFactory, factory.ReceiveVoid()));
    void* found = &found;
    EXPECT_HRESULT(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IDispatch, &found));
    EXPECT_EQ(nullptr, found);
    found = &found;
    EXPECT_HRESULT(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.Get(), __uuidof(IPersist), &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_HRESULT(E_POINTER, factory->CreateInstance(nullptr, IID_IUnknown, nullptr));
    EXPECT_EQ(1, Module::References());
}

// There is never memory for an object of this class.
class TooLarge : public Example<&kExampleClass> {
  public:
    static void* operator new(size_t /*size*/, const std::nothrow_t& /*tag*/) noexcept { return nullptr; }
    static void operator delete(void* /*memory*/) noexcept {}
    static void operator delete(void* /*memory*/, const std::nothrow_t& /*tag*/) noexcept {}

  protected:
    ~TooLarge() = default;
};

TEST(ClassFactory, ReturnsThatThereIsNoMemory) {
    const auto too_large = ComObject<ClassFactory<TooLarge>>::Create();
    void* found = &found;
    EXPECT_HRESULT(E_OUTOFMEMORY, too_large->CreateInstance(nullptr, IID_IUnknown, &found));
    EXPECT_EQ(nullptr, found);
}

// An object that another one is part of: it has all interfaces, its own and the part's.
class Outer : public IOleWindow {
  public:
    using Row = InterfaceRow<Outer>;
    static constexpr std::array kInterfaces = {Row::Of<IOleWindow>()};
    STDMETHODIMP GetWindow(HWND*) override { return E_NOTIMPL; }
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }

    // The part's inner IUnknown.
    ComPtr<IUnknown> part;

  protected:
    ~Outer() = default;
};

class OuterObject final : public Outer {
  public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        const HRESULT result = QueryInterfaceOf(static_cast<Outer*>(this), id, object);
        return result == E_NOINTERFACE && part ? part->QueryInterface(id, object) : result;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }

    ULONG references = 1;
};

class Aggregation : public ClassObject {
  protected:
    Aggregation() {
        EXPECT_HRESULT(S_OK, Get(kExampleClass, IID_IClassFactory, factory.ReceiveVoid()));
        EXPECT_HRESULT(S_OK, factory->CreateInstance(&outer, IID_IUnknown, outer.part.ReceiveVoid()));
        factory.Reset();
    }
    ~Aggregation() override {
        EXPECT_EQ(1U, outer.references);
        outer.part.Reset();
    }

    OuterObject outer;
};

TEST_F(Aggregation, ReturnsTheInnerUnknownWithOneReference) {
    ASSERT_TRUE(outer.part);
    EXPECT_EQ(2U, outer.part->AddRef());
    EXPECT_EQ(1U, outer.part->Release());
    EXPECT_EQ(1U, outer.references) << "a part holds no reference to the whole";
    ComPtr<IUnknown> inner;
    EXPECT_HRESULT(S_OK, outer.part.As(inner));
    EXPECT_EQ(outer.part.Get(), inner.Get());
}

TEST_F(Aggregation, InterfacesOfThePartCountAndAnswerAsTheWhole) {
    ComPtr<IPersist> persist;
    ASSERT_HRESULT(S_OK, outer.QueryInterface(__uuidof(IPersist), persist.ReceiveVoid()));
    EXPECT_EQ(2U, outer.references);
    EXPECT_EQ(3U, persist->AddRef());
    EXPECT_EQ(2U, persist->Release());
    EXPECT_EQ(2U, outer.part->AddRef()) << "the inner count has not moved";
    outer.part->Release();

    ComPtr<IUnknown> identity;
    ASSERT_HRESULT(S_OK, persist.As(identity));
    EXPECT_EQ(static_cast<IUnknown*>(&outer), identity.Get());
    ComPtr<IOleWindow> window;
    EXPECT_HRESULT(S_OK, persist.As(window));
    ComPtr<IDispatch> none;
    EXPECT_HRESULT(E_NOINTERFACE, persist.As(none));
}

TEST_F(Aggregation, InnerUnknownAnswersForThePartAlone) {
    void* found = &found;
    EXPECT_HRESULT(E_NOINTERFACE, outer.part->QueryInterface(__uuidof(IOleWindow), &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_HRESULT(E_POINTER, outer.part->QueryInterface(IID_IUnknown, nullptr));
    EXPECT_HRESULT(E_POINTER, outer.part->QueryInterface(__uuidof(IPersist), nullptr));
}

TEST_F(Aggregation, PartHoldsTheModule) {
    EXPECT_EQ(1, Module::References());
    outer.part.Reset();
    EXPECT_EQ(0, Module::References());
}

TEST_F(Aggregation, PartWorks) {
    ComPtr<IPersist> persist;
    ASSERT_HRESULT(S_OK, outer.QueryInterface(__uuidof(IPersist), persist.ReceiveVoid()));
    CLSID class_id = CLSID_NULL;
    EXPECT_HRESULT(S_OK, persist->GetClassID(&class_id));
    EXPECT_TRUE(IsEqualCLSID(kExampleClass, class_id));
}

TEST(Module, ThrowsAComErrorForEveryAllocationThatFails) {
    EXPECT_EQ(0, Module::References());
    volatile size_t impossible = std::numeric_limits<size_t>::max() / 2;
    EXPECT_THROW(static_cast<void>(::operator new(impossible)), std::bad_alloc);
    try {
        ::operator delete(::operator new(impossible));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const _com_error& error) {
        EXPECT_HRESULT(E_OUTOFMEMORY, error.Error());
    }
    void* const nothing = ::operator new(impossible, std::nothrow);
    EXPECT_EQ(nullptr, nothing);
    ::operator delete(nothing);
}

TEST(Module, HasNoFewerLocksThanNone) {
    Module::Unlock();
    Module::Lock();
    EXPECT_EQ(1, Module::References());
    Module::Unlock();
    Module::Unlock();
    EXPECT_EQ(0, Module::References());
}

}  // namespace
}  // namespace paylodge
