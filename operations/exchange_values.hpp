// What the exchange properties are made of: stored strings, and mailboxes that guard them.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "com/bstr.hpp"

namespace paylodge {

// Only VARIANT_TRUE counts as true; a 1 does not.
[[nodiscard]] constexpr bool IsTrue(VARIANT_BOOL value) noexcept { return value == VARIANT_TRUE; }
[[nodiscard]] constexpr VARIANT_BOOL ToVariantBool(bool value) noexcept { return value ? VARIANT_TRUE : VARIANT_FALSE; }

// One stored string, null until something is put. All throw E_OUTOFMEMORY with the stored string kept.
class StringSlot {
  public:
    void Put(BSTR text) {
        if (text == nullptr || text != text_.Get()) {
            text_ = CopyBstr(text);
        }
    }
    // For a copy that has been made before.
    void Put(OwnedBstr text) noexcept { text_ = std::move(text); }
    void MakeEmpty() { text_ = MakeBstr({}); }

    // A copy that the caller owns; null when nothing was stored.
    [[nodiscard]] BSTR Get() const { return CopyBstr(text_.Get()).Detach(); }

  private:
    OwnedBstr text_;
};

// A one-slot mailbox: filled only when empty, read only when full, emptied by whoever consumed it.
class Mailbox {
  public:
    // store() puts the contents. E_FAIL when the mailbox is full already.
    template <class Store>
    [[nodiscard]] HRESULT Fill(const Store& store) {
        if (is_full_) {
            return E_FAIL;
        }
        store();
        is_full_ = true;
        return S_OK;
    }

    // A copy of the contents with S_OK, or a new empty string with S_FALSE when the mailbox is empty.
    [[nodiscard]] HRESULT Read(const StringSlot& contents, BSTR* text) const {
        *text = is_full_ ? contents.Get() : MakeBstr({}).Detach();
        return is_full_ ? S_OK : S_FALSE;
    }

    [[nodiscard]] bool IsFull() const noexcept { return is_full_; }

    // Marks the mailbox full or empty; becoming empty makes these of its contents empty strings.
    template <class... Slots>
    void SetFull(bool is_full, Slots&... contents) {
        is_full_ = is_full;
        if (!is_full) {
            (contents.MakeEmpty(), ...);
        }
    }

  private:
    bool is_full_ = false;
};

}  // namespace paylodge
