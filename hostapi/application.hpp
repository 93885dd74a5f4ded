// The host's component objects through which values are kept in the company file, and the folder for logs is found. The
// host publishes only some ids and slot numbers; every slot that is not named here is declared unused. Results are
// HRESULTs; a reference or string that comes out belongs to the caller.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace paylodge {

template <int number>
struct Slot;

struct HostInterface : public IUnknown {
  protected:
    ~HostInterface() = default;
    // Only for the names below to extend.
    void Unused() noexcept {}
};

// Extends Base, whose slots end before `first`, by the slots up to and including `last`, which nothing here calls.
template <class Base, int first, int last>
struct UnusedSlots : public UnusedSlots<Base, first, last - 1> {
    using UnusedSlots<Base, first, last - 1>::Unused;
    virtual HRESULT STDMETHODCALLTYPE Unused(Slot<last>* /*slot*/) { return E_NOTIMPL; }

  protected:
    ~UnusedSlots() = default;
};
template <class Base, int slot>
struct UnusedSlots<Base, slot, slot> : public Base {
    using Base::Unused;
    virtual HRESULT STDMETHODCALLTYPE Unused(Slot<slot>* /*slot*/) { return E_NOTIMPL; }

  protected:
    ~UnusedSlots() = default;
};

}  // namespace paylodge

struct IHostDataFileRecord;

// Named values of a record.
struct IHostPropertyBag : public paylodge::UnusedSlots<paylodge::HostInterface, 3, 8> {
    virtual HRESULT STDMETHODCALLTYPE Read(BSTR name, VARIANT* value) = 0;  // slot 9
    virtual HRESULT STDMETHODCALLTYPE Write(BSTR name, VARIANT value) = 0;  // slot 10

  protected:
    ~IHostPropertyBag() = default;
};

namespace paylodge {

struct DataFileRecordLock : public UnusedSlots<HostInterface, 3, 14> {
    virtual HRESULT STDMETHODCALLTYPE PutDataVersion(LONG version) = 0;   // slot 15
    virtual HRESULT STDMETHODCALLTYPE Lock(VARIANT_BOOL* is_locked) = 0;  // slot 16
    virtual HRESULT STDMETHODCALLTYPE Unlock() = 0;                       // slot 17

  protected:
    ~DataFileRecordLock() = default;
};

struct DataFileRecordStore : public UnusedSlots<DataFileRecordLock, 18, 18> {
    virtual HRESULT STDMETHODCALLTYPE Save() = 0;    // slot 19
    virtual HRESULT STDMETHODCALLTYPE Delete() = 0;  // slot 20

  protected:
    ~DataFileRecordStore() = default;
};

struct DataFileRecordLookup : public UnusedSlots<HostInterface, 3, 6> {
    virtual HRESULT STDMETHODCALLTYPE Item(LONG number, ::IHostDataFileRecord** record) = 0;  // slot 7

  protected:
    ~DataFileRecordLookup() = default;
};

}  // namespace paylodge

// A numbered record of a category.
struct IHostDataFileRecord : public paylodge::UnusedSlots<paylodge::DataFileRecordStore, 21, 24> {
    virtual HRESULT STDMETHODCALLTYPE GetPropertyBag(IHostPropertyBag** bag) = 0;  // slot 25

  protected:
    ~IHostDataFileRecord() = default;
};

// The records of one category.
struct IHostDataFileRecords : public paylodge::UnusedSlots<paylodge::DataFileRecordLookup, 8, 11> {
    virtual HRESULT STDMETHODCALLTYPE Exists(LONG number, VARIANT_BOOL* exists) = 0;       // slot 12
    virtual HRESULT STDMETHODCALLTYPE Add(LONG number, IHostDataFileRecord** record) = 0;  // slot 13

  protected:
    ~IHostDataFileRecords() = default;
};

struct IHostCompany : public paylodge::UnusedSlots<paylodge::HostInterface, 3, 11> {
    virtual HRESULT STDMETHODCALLTYPE GetDataFileRecords(BSTR category, IHostDataFileRecords** records) = 0;  // slot 12

  protected:
    ~IHostCompany() = default;
};

struct IHostAddInGoodies : public paylodge::UnusedSlots<paylodge::HostInterface, 3, 8> {
    virtual HRESULT STDMETHODCALLTYPE AttachToCurrentCompany(IHostCompany** company) = 0;  // slot 9

  protected:
    ~IHostAddInGoodies() = default;
};

struct IHostApplication : public paylodge::UnusedSlots<paylodge::HostInterface, 3, 16> {
    virtual HRESULT STDMETHODCALLTYPE GetAddInGoodies(IHostAddInGoodies** goodies) = 0;  // slot 17

  protected:
    ~IHostApplication() = default;
};
__CRT_UUID_DECL(IHostApplication, 0xFAC93D43, 0xFFC2, 0x11D1, 0x9D, 0xEB, 0x00, 0x08, 0xC7, 0xA0, 0x8E, 0xBA)

// Another interface of the application.
struct IHostFolders : public paylodge::UnusedSlots<paylodge::HostInterface, 3, 43> {
    virtual HRESULT STDMETHODCALLTYPE GetFolder(LONG kind, BSTR* path) = 0;  // slot 44

  protected:
    ~IHostFolders() = default;
};
__CRT_UUID_DECL(IHostFolders, 0x8823FEDE, 0xF890, 0x457C, 0x99, 0x2F, 0xD4, 0x27, 0xA9, 0xB5, 0x52, 0x40)

struct IHostApplicationLocator : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetRunningApplication(IUnknown** application) = 0;  // slot 3

  protected:
    ~IHostApplicationLocator() = default;
};
__CRT_UUID_DECL(IHostApplicationLocator, 0x32C6D5BB, 0xF041, 0x4ACE, 0x9F, 0x38, 0x88, 0x1E, 0xF1, 0x6F, 0xD3, 0x3B)

namespace paylodge {

// {1143B0F7-C473-41E6-A3D3-5BE6747C4BF2}
inline constexpr CLSID kHostApplicationLocatorClass = {
    0x1143B0F7, 0xC473, 0x41E6, {0xA3, 0xD3, 0x5B, 0xE6, 0x74, 0x7C, 0x4B, 0xF2}};

// The kind of folder in which the host wants logs.
inline constexpr LONG kLogFolderKind = 2;

}  // namespace paylodge
