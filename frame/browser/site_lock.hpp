// The site lock: an object serves only pages from approved sites.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <span>

#include "com/object_safety_id.hpp"
#include "frame/browser/site_table.hpp"

// IObjectSafety, extended by two queries about the lock.
struct IObjectSafetySiteLock : public IObjectSafety {
    // *value: in 0 asks for the lock's version and options, in 1 for further options. E_POINTER, E_NOTIMPL.
    virtual HRESULT STDMETHODCALLTYPE GetSiteLockCapability(DWORD* value) = 0;
    // The table stays the object's own. E_POINTER.
    virtual HRESULT STDMETHODCALLTYPE GetApprovedSiteList(const paylodge::SiteEntry** entries, DWORD* count) = 0;

  protected:
    ~IObjectSafetySiteLock() = default;
};
__CRT_UUID_DECL(IObjectSafetySiteLock, 0x7FEB54AE, 0xE3F9, 0x40FC, 0xAB, 0x5A, 0x28, 0xA5, 0x45, 0xC0, 0xF1, 0x94)

namespace paylodge {

// Whether the page behind the site comes from a site of the table. False when the site has no browser to ask.
[[nodiscard]] bool IsPageApproved(IObjectWithSite& object, std::span<const SiteEntry> table);

// Whether there is a browser behind the site whose page has a URL and a security zone.
[[nodiscard]] bool HasPage(IObjectWithSite& object);

// The check that each member of a locked class begins with. Class has IObjectWithSite and names its table with a static
// SiteTable().
template <class Class>
class CSiteLock {
  public:
    // True for a page from an approved site, and for an object that no page hosts, such as one that the host made.
    [[nodiscard]] bool IsSiteAllowed() {
        auto& object = static_cast<Class&>(*this);
        return IsPageApproved(object, Class::SiteTable()) || !HasPage(object);
    }
};

// The object safety of a locked class; supported_options are the INTERFACESAFE_ bits that it knows.
template <class Class, DWORD supported_options>
class IObjectSafetySiteLockImpl : public IObjectSafetySiteLock {
  public:
    // E_POINTER; for an interface that the object lacks both out parameters become 0 and the HRESULT is that of its
    // QueryInterface.
    STDMETHODIMP GetInterfaceSafetyOptions(REFIID id, DWORD* supported, DWORD* enabled) override {
        if (supported == nullptr || enabled == nullptr) {
            return E_POINTER;
        }
        const HRESULT result = FindInterface(id);
        *supported = SUCCEEDED(result) ? supported_options : 0;
        *enabled = SUCCEEDED(result) ? enabled_options_ : 0;
        return SUCCEEDED(result) ? S_OK : result;
    }

    // E_NOINTERFACE for an interface that the object lacks, E_FAIL for options that it does not know.
    STDMETHODIMP SetInterfaceSafetyOptions(REFIID id, DWORD option_set_mask, DWORD enabled_options) override {
        if (FAILED(FindInterface(id))) {
            return E_NOINTERFACE;
        }
        if ((option_set_mask & ~supported_options) != 0) {
            return E_FAIL;
        }
        // Mask and options are in each other's place here; pages have come to rely on it.
        enabled_options_ = (enabled_options_ & ~enabled_options) | option_set_mask;
        return S_OK;
    }

    STDMETHODIMP GetSiteLockCapability(DWORD* value) override {
        constexpr DWORD kCapabilities = 0x10004;
        if (value == nullptr) {
            return E_POINTER;
        }
        const DWORD question = *value;
        *value = question == 0 ? kCapabilities : 0;
        return question <= 1 ? S_OK : E_NOTIMPL;
    }

    STDMETHODIMP GetApprovedSiteList(const SiteEntry** entries, DWORD* count) override {
        if (entries == nullptr || count == nullptr) {
            return E_POINTER;
        }
        const std::span<const SiteEntry> table = Class::SiteTable();
        *entries = table.data();
        *count = static_cast<DWORD>(table.size());
        return S_OK;
    }

  private:
    [[nodiscard]] HRESULT FindInterface(REFIID id) {
        IUnknown* found = nullptr;
        const HRESULT result = this->QueryInterface(id, reinterpret_cast<void**>(&found));
        if (found != nullptr) {
            found->Release();
        }
        return result;
    }

    DWORD enabled_options_ = 0;
};

}  // namespace paylodge
