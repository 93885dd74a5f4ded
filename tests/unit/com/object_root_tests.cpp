#include "com/object_root.hpp"

#include <gtest/gtest.h>
#include <objidl.h>
#include <ocidl.h>

#include "tests/support/hresult.hpp"

namespace paylodge {
namespace {

int g_destroyed = 0;

// Three interfaces, one of them through another that extends it.
class Example : public IPersistStream, public IOleWindow {
  public:
    using Row = InterfaceRow<Example>;
    static constexpr std::array kInterfaces = {Row::Of<IPersistStream>(), Row::Of<IPersist, IPersistStream>(),
                                               Row::Of<IOleWindow>()};

    STDMETHODIMP GetClassID(CLSID*) override { return S_OK; }
    STDMETHODIMP IsDirty() override { return S_OK; }
    STDMETHODIMP Load(IStream*) override { return S_OK; }
    STDMETHODIMP Save(IStream*, BOOL) override { return S_OK; }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER*) override { return S_OK; }
    STDMETHODIMP GetWindow(HWND*) override { return S_OK; }
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }

  protected:
    ~Example() { ++g_destroyed; }
};

class ObjectRoot : public ::testing::Test {
  protected:
    ObjectRoot() { g_destroyed = 0; }
    ~ObjectRoot() override { EXPECT_EQ(0, Module::References()); }
};

TEST_F(ObjectRoot, NewObjectHasOneReferenceAndHoldsTheModule) {
    auto object = ComObject<Example>::Create();
    ASSERT_TRUE(static_cast<bool>(object));
    EXPECT_EQ(1, Module::References());
    EXPECT_EQ(2U, object->AddRef());
    EXPECT_EQ(1U, object->Release());
    const auto second = ComObject<Example>::Create();
    EXPECT_EQ(2, Module::References());
}

TEST_F(ObjectRoot, LastReleaseDestroysTheObjectOnce) {
    IPersistStream* const object = ComObject<Example>::Create().Detach();
    EXPECT_EQ(2U, object->AddRef());
    EXPECT_EQ(1U, object->Release());
    EXPECT_EQ(0, g_destroyed);
    EXPECT_EQ(0U, object->Release());
    EXPECT_EQ(1, g_destroyed);
}

TEST_F(ObjectRoot, AnswersForEveryInterfaceOfItsTable) {
    const auto object = ComObject<Example>::Create();
    for (const IID& id : {__uuidof(IPersistStream), __uuidof(IPersist), __uuidof(IOleWindow), IID_IUnknown}) {
        ComPtr<IUnknown> found;
        EXPECT_HRESULT(S_OK, object->QueryInterface(id, found.ReceiveVoid()));
        EXPECT_EQ(3U, found->AddRef());
        EXPECT_EQ(2U, found->Release());
    }
}

TEST_F(ObjectRoot, InterfacesAreTheBasesOfTheObject) {
    const auto object = ComObject<Example>::Create();
    ComPtr<IPersist> persist;
    ComPtr<IOleWindow> window;
    ASSERT_HRESULT(S_OK, object.As(persist));
    ASSERT_HRESULT(S_OK, object.As(window));
    EXPECT_EQ(static_cast<IPersist*>(object.Get()), persist.Get());
    EXPECT_EQ(static_cast<IOleWindow*>(object.Get()), window.Get());
}

TEST_F(ObjectRoot, IdentityIsTheSameThroughEveryInterface) {
    const auto object = ComObject<Example>::Create();
    ComPtr<IOleWindow> window;
    ASSERT_HRESULT(S_OK, object.As(window));
    ComPtr<IUnknown> from_object;
    ComPtr<IUnknown> from_window;
    ASSERT_HRESULT(S_OK, object.As(from_object));
    ASSERT_HRESULT(S_OK, window.As(from_window));
    EXPECT_EQ(from_object.Get(), from_window.Get());
}

TEST_F(ObjectRoot, UnknownInterfaceReturnsNullAndNoReference) {
    const auto object = ComObject<Example>::Create();
    void* found = &found;
    EXPECT_HRESULT(E_NOINTERFACE, object->QueryInterface(IID_IDispatch, &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_EQ(2U, object->AddRef());
    EXPECT_EQ(1U, object->Release());
}

TEST_F(ObjectRoot, QueryWithoutASlotIsEPointer) {
    const auto object = ComObject<Example>::Create();
    EXPECT_HRESULT(E_POINTER, object->QueryInterface(IID_IUnknown, nullptr));
    EXPECT_HRESULT(E_POINTER, object->QueryInterface(IID_IDispatch, nullptr));
}

// What an object does at the end of its life is noted here, with the references to the module at that moment.
struct EndOfLife {
    LONG in_final_release = 0;
    LONG in_destructor = 0;
    ULONG left_by_caller = 0;
};
EndOfLife g_end;

// Somebody whom the object holds, and who calls it back when it is released.
class Neighbour {
  public:
    void Release(IPersistStream& object) {
        object.AddRef();
        ComPtr<IPersist> persist;
        EXPECT_HRESULT(S_OK, object.QueryInterface(__uuidof(IPersist), persist.ReceiveVoid()));
        CLSID id;
        EXPECT_HRESULT(S_OK, persist->GetClassID(&id));
        persist.Reset();
        g_end.left_by_caller = object.Release();
    }
};

class Careful : public Example {
  public:
    void FinalRelease() {
        g_end.in_final_release = Module::References();
        Neighbour().Release(*this);
    }

  protected:
    ~Careful() { g_end.in_destructor = Module::References(); }
};

TEST_F(ObjectRoot, ObjectIsWholeAndHoldsTheModuleWhileItsLastReferenceGoes) {
    g_end = {};
    EXPECT_EQ(0U, ComObject<Careful>::Create().Detach()->Release());
    EXPECT_EQ(1, g_destroyed) << "not a second time, by the neighbour's release";
    EXPECT_GE(g_end.in_final_release, 1);
    EXPECT_EQ(1U, g_end.left_by_caller);
}

TEST_F(ObjectRoot, HoldsTheModuleUntilItsDestructorHasRunToTheEnd) {
    g_end = {};
    EXPECT_EQ(0U, ComObject<Careful>::Create().Detach()->Release());
    EXPECT_GE(g_end.in_destructor, 1);
    EXPECT_EQ(0, Module::References());
}

}  // namespace
}  // namespace paylodge
