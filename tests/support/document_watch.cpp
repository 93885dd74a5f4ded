#include "tests/support/document_watch.hpp"

#include <gtest/gtest.h>

#include <utility>

#include "com/object_root.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

// {88D96A05-F192-11D4-A65F-0040963251E5}
constexpr CLSID kDomDocument60 = {0x88D96A05, 0xF192, 0x11D4, {0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5}};

}  // namespace

class DocumentWatch::ClassObject : public IClassFactory {
  public:
    using Row = InterfaceRow<ClassObject>;
    static constexpr std::array kInterfaces = {Row::Of<IClassFactory>()};

    ClassObject(DocumentWatch& watch, ComPtr<IClassFactory> original) : watch_(watch), original_(std::move(original)) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        const HRESULT result = original_->CreateInstance(outer, id, object);
        if (SUCCEEDED(result)) {
            watch_.documents_.emplace_back(static_cast<IUnknown*>(*object));
        }
        return result;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  protected:
    ~ClassObject() = default;

  private:
    DocumentWatch& watch_;
    ComPtr<IClassFactory> original_;
};

DocumentWatch::DocumentWatch() {
    ComPtr<IClassFactory> original;
    EXPECT_HRESULT(S_OK, ::CoGetClassObject(kDomDocument60, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                            original.ReceiveVoid()));
    class_object_ = ComPtr<IClassFactory>(ComObject<ClassObject>::Create(*this, original).Get());
    EXPECT_HRESULT(S_OK, ::CoRegisterClassObject(kDomDocument60, class_object_.Get(), CLSCTX_INPROC_SERVER,
                                                 REGCLS_MULTIPLEUSE, &registration_));
}

DocumentWatch::~DocumentWatch() { EXPECT_HRESULT(S_OK, ::CoRevokeClassObject(registration_)); }

std::vector<ULONG> DocumentWatch::References() const {
    std::vector<ULONG> references;
    for (const auto& document : documents_) {
        document->AddRef();
        references.push_back(document->Release() - 1);
    }
    return references;
}

}  // namespace paylodge::test
