#include "com/object_with_site.hpp"

#include <gtest/gtest.h>
#include <servprov.h>

#include "com/object_root.hpp"
#include "tests/support/fake_site.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

class Example : public IObjectWithSiteImpl<Example> {
  public:
    using Row = InterfaceRow<Example>;
    static constexpr std::array kInterfaces = {Row::Of<IObjectWithSite>()};

  protected:
    ~Example() = default;
};

class ObjectWithSite : public ::testing::Test {
  protected:
    // Declared first: they have to outlive the object.
    FakeSite first_site;
    FakeSite second_site;
    ComPtr<ComObject<Example>> object = ComObject<Example>::Create();
};

TEST_F(ObjectWithSite, HasNoneAtFirst) {
    void* found = &found;
    EXPECT_HRESULT(E_FAIL, object->GetSite(IID_IUnknown, &found));
    EXPECT_EQ(nullptr, found);
}

TEST_F(ObjectWithSite, HandsOutTheInterfacesOfItsSite) {
    ASSERT_HRESULT(S_OK, object->SetSite(first_site.Get()));
    ComPtr<IServiceProvider> services;
    EXPECT_HRESULT(S_OK, object->GetSite(__uuidof(IServiceProvider), services.ReceiveVoid()));
    EXPECT_EQ(first_site.Get(), services.Get());
    EXPECT_EQ(2, first_site.references);
}

TEST_F(ObjectWithSite, PassesTheSitesRefusalOn) {
    ASSERT_HRESULT(S_OK, object->SetSite(first_site.Get()));
    first_site.page.services_result = E_ACCESSDENIED;
    void* found = &found;
    EXPECT_HRESULT(E_ACCESSDENIED, object->GetSite(__uuidof(IServiceProvider), &found));
    EXPECT_EQ(nullptr, found);
}

TEST_F(ObjectWithSite, GetWithoutASlotIsEPointer) {
    EXPECT_HRESULT(E_POINTER, object->GetSite(IID_IUnknown, nullptr));
    ASSERT_HRESULT(S_OK, object->SetSite(first_site.Get()));
    EXPECT_HRESULT(E_POINTER, object->GetSite(IID_IUnknown, nullptr));
}

TEST_F(ObjectWithSite, HoldsOneReferenceOnTheLatestSite) {
    ASSERT_HRESULT(S_OK, object->SetSite(first_site.Get()));
    EXPECT_EQ(1, first_site.references);
    ASSERT_HRESULT(S_OK, object->SetSite(first_site.Get()));
    EXPECT_EQ(1, first_site.references);
    ASSERT_HRESULT(S_OK, object->SetSite(second_site.Get()));
    EXPECT_EQ(0, first_site.references);
    EXPECT_EQ(1, second_site.references);
    ASSERT_HRESULT(S_OK, object->SetSite(nullptr));
    EXPECT_EQ(0, second_site.references);
    ASSERT_HRESULT(S_OK, object->SetSite(nullptr));
}

TEST_F(ObjectWithSite, ReleasesTheSiteWithTheObject) {
    ASSERT_HRESULT(S_OK, object->SetSite(first_site.Get()));
    object.Reset();
    EXPECT_EQ(0, first_site.references);
}

}  // namespace
}  // namespace paylodge::test
