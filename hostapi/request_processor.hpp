// The host's component interfaces through which a request document reaches the company file. The host publishes only
// their ids and slots; both sides are built from this one declaration.
#pragma once

#include <windows.h>

#include <oaidl.h>

// Creates the host's objects.
struct IHostObjectBroker : public IDispatch {
    // class_id: the id in registry form with braces; *object: a reference that the caller owns.
    virtual HRESULT STDMETHODCALLTYPE CreateObjectFromClassId(BSTR class_id, IUnknown** object) = 0;

  protected:
    ~IHostObjectBroker() = default;
};
__CRT_UUID_DECL(IHostObjectBroker, 0x79B4435F, 0x6D87, 0x4240, 0x93, 0xA2, 0x04, 0x82, 0x49, 0x4B, 0x44, 0xA9)

// Processes request documents against the company file that the host has open.
struct IRequestProcessor : public IDispatch {
    // *response: a string that the caller owns; may stay null.
    virtual HRESULT STDMETHODCALLTYPE ProcessRequest(BSTR ticket, BSTR request, BSTR* response) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenConnection(BSTR application_id, BSTR application_name) = 0;
    virtual HRESULT STDMETHODCALLTYPE CloseConnection() = 0;
    // An empty file name asks for the company file that is open. *ticket: a string that the caller owns.
    virtual HRESULT STDMETHODCALLTYPE BeginSession(BSTR company_file_name, LONG file_mode, BSTR* ticket) = 0;
    virtual HRESULT STDMETHODCALLTYPE EndSession(BSTR ticket) = 0;

  protected:
    ~IRequestProcessor() = default;
};
__CRT_UUID_DECL(IRequestProcessor, 0x3B635BF7, 0x6DA9, 0x46C8, 0xA1, 0xF6, 0xF0, 0xC9, 0x3F, 0x10, 0xD5, 0x2F)

namespace paylodge {

// {E53C85D6-E6D9-4BCF-A623-72062A99AA7F}
inline constexpr CLSID kHostObjectBrokerClass = {
    0xE53C85D6, 0xE6D9, 0x4BCF, {0xA6, 0x23, 0x72, 0x06, 0x2A, 0x99, 0xAA, 0x7F}};
// {45F5708E-3B43-4FA8-BE7E-A5F1849214CB}
inline constexpr CLSID kRequestProcessorClass = {
    0x45F5708E, 0x3B43, 0x4FA8, {0xBE, 0x7E, 0xA5, 0xF1, 0x84, 0x92, 0x14, 0xCB}};

}  // namespace paylodge
