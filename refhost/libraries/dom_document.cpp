#include "refhost/libraries/dom_document.hpp"

namespace paylodge::refhost {
namespace {

// Neither is in the compiler's libraries.
// {88D96A05-F192-11D4-A65F-0040963251E5}
constexpr CLSID kDomDocument60 = {0x88D96A05, 0xF192, 0x11D4, {0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5}};
// {2933BF95-7B36-11D2-B20E-00C04F983E60}
constexpr IID kDomDocument2Interface = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

}  // namespace

HRESULT CreateDomDocument(IXMLDOMDocument2** document) noexcept {
    if (document == nullptr) {
        return E_POINTER;
    }
    *document = nullptr;
    const HRESULT result = ::CoCreateInstance(kDomDocument60, nullptr, CLSCTX_INPROC_SERVER, kDomDocument2Interface,
                                              reinterpret_cast<void**>(document));
    if (SUCCEEDED(result)) {
        (*document)->put_async(VARIANT_FALSE);
        (*document)->put_validateOnParse(VARIANT_FALSE);
        (*document)->put_resolveExternals(VARIANT_FALSE);
    }
    return result;
}

}  // namespace paylodge::refhost
