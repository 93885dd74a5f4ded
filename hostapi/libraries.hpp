// The host's libraries: their file names, and their functions under the names by which they are looked up. They are
// loaded at run time, so that the module itself loads on a machine without the host.
#pragma once

#include <windows.h>

#include <msxml2.h>

namespace paylodge {

// Util::MSXML_XML::CreateDOMDocument: a new document whose reference the caller owns.
inline constexpr const wchar_t* kUtilityLibrary = L"LHUtilities.dll";
using CreateDOMDocumentFunction = HRESULT __cdecl(IXMLDOMDocument2** document);

// Kesto::KestoAccess::GetFeatureParamAsBool: a feature flag; the default value may be null.
inline constexpr const wchar_t* kFeatureFlagLibrary = L"Kesto.dll";
using GetFeatureParamAsBoolFunction = bool __cdecl(const char* section, const char* name, const char* default_value);

// The host's C++ functions carry the names that its compiler makes of them.
#ifdef _WIN64
inline constexpr const char* kCreateDOMDocument = "?CreateDOMDocument@MSXML_XML@Util@@YAJPEAPEAUIXMLDOMDocument2@@@Z";
inline constexpr const char* kGetFeatureParamAsBool = "?GetFeatureParamAsBool@KestoAccess@Kesto@@SA_NPEBD00@Z";
#else
inline constexpr const char* kCreateDOMDocument = "?CreateDOMDocument@MSXML_XML@Util@@YAJPAPAUIXMLDOMDocument2@@@Z";
inline constexpr const char* kGetFeatureParamAsBool = "?GetFeatureParamAsBool@KestoAccess@Kesto@@SA_NPBD00@Z";
#endif

// Runs a script in the page of a browser instance. Both texts are in the system's ANSI code page and stay the caller's.
inline constexpr const char* kBridgeLibrary = "Oskerin.dll";
inline constexpr const char* kExecuteJavaScript = "ExecuteJavaScript";
using ExecuteJavaScriptFunction = void __cdecl(const char* browser_instance, const char* script);

}  // namespace paylodge
