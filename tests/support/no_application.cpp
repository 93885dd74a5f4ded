#include "tests/support/no_application.hpp"

#include <gtest/gtest.h>

#include "com/object_root.hpp"
#include "hostapi/application.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

class MissingClassObject : public IClassFactory {
  public:
    using Row = InterfaceRow<MissingClassObject>;
    static constexpr std::array kInterfaces = {Row::Of<IClassFactory>()};

    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void** object) override {
        *object = nullptr;
        return REGDB_E_CLASSNOTREG;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  protected:
    ~MissingClassObject() = default;
};

}  // namespace

NoApplication::NoApplication() : class_object_(ComObject<MissingClassObject>::Create().Get()) {
    EXPECT_HRESULT(S_OK, ::CoRegisterClassObject(kHostApplicationLocatorClass, class_object_.Get(),
                                                 CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_));
}

NoApplication::~NoApplication() { EXPECT_HRESULT(S_OK, ::CoRevokeClassObject(registration_)); }

}  // namespace paylodge::test
