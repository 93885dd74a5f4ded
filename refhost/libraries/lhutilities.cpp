// LHUtilities.dll of the reference host: the host's way to an XML document object.

#include <windows.h>

#include <cstdlib>

#include "refhost/libraries/dom_document.hpp"

namespace {

// The HRESULT that LHUTILITIES_FAIL names, such as 0x80004005, for tests of a host that cannot make the document.
[[nodiscard]] HRESULT PlannedFailure() {
    char text[32] = {};
    const DWORD length = ::GetEnvironmentVariableA("LHUTILITIES_FAIL", text, sizeof text);
    return length == 0 || length >= sizeof text ? S_OK : static_cast<HRESULT>(std::strtoul(text, nullptr, 0));
}

}  // namespace

// Util::MSXML_XML::CreateDOMDocument; the definition file gives it the name that the host's compiler makes of that.
extern "C" HRESULT __cdecl CreateDOMDocument(IXMLDOMDocument2** document) {
    const HRESULT planned = PlannedFailure();
    return FAILED(planned) ? planned : paylodge::refhost::CreateDomDocument(document);
}
