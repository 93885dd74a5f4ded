// The platform's enumerators over a list that was taken when the enumerator was asked for.
#pragma once

#include <windows.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "com/object_root.hpp"

namespace paylodge {

// Traits name the enumerator's Interface, the Item that is held, the Given structure or pointer that Next hands out,
// and Give, which makes one from the other, with references that the caller owns.
template <class Traits>
class SnapshotEnumerator : public Traits::Interface {
  public:
    using Row = InterfaceRow<SnapshotEnumerator>;
    static constexpr std::array kInterfaces = {Row::template Of<typename Traits::Interface>()};
    using Item = typename Traits::Item;
    using Items = std::shared_ptr<const std::vector<Item>>;

    // S_FALSE when fewer than `count` are left. E_POINTER; `fetched` may be null only for a count of 1.
    STDMETHODIMP Next(ULONG count, typename Traits::Given* given, ULONG* fetched) override {
        if (fetched != nullptr) {
            *fetched = 0;
        }
        if (given == nullptr || (fetched == nullptr && count != 1)) {
            return E_POINTER;
        }
        const ULONG number = std::min(count, Left());
        for (ULONG index = 0; index < number; ++index) {
            given[index] = Traits::Give((*items_)[position_ + index]);
        }
        position_ += number;
        if (fetched != nullptr) {
            *fetched = number;
        }
        return number == count ? S_OK : S_FALSE;
    }

    STDMETHODIMP Skip(ULONG count) override {
        const ULONG number = std::min(count, Left());
        position_ += number;
        return number == count ? S_OK : S_FALSE;
    }

    STDMETHODIMP Reset() override {
        position_ = 0;
        return S_OK;
    }

    // E_POINTER, E_OUTOFMEMORY.
    STDMETHODIMP Clone(typename Traits::Interface** copy) override { return CreateAt(items_, position_, copy); }

    // A new enumerator in *created, which must not be null. E_OUTOFMEMORY.
    [[nodiscard]] static HRESULT Create(std::vector<Item> items, typename Traits::Interface** created) {
        return CreateAt(std::make_shared<const std::vector<Item>>(std::move(items)), 0, created);
    }

    // The items may be sinks of others, whose release calls out.
    void FinalRelease() noexcept { items_.reset(); }

    SnapshotEnumerator(Items items, ULONG position) noexcept : items_(std::move(items)), position_(position) {}

  protected:
    ~SnapshotEnumerator() = default;

  private:
    [[nodiscard]] ULONG Left() const noexcept { return static_cast<ULONG>(items_->size()) - position_; }

    [[nodiscard]] static HRESULT CreateAt(Items items, ULONG position, typename Traits::Interface** created) {
        if (created == nullptr) {
            return E_POINTER;
        }
        *created = ComObject<SnapshotEnumerator>::Create(std::move(items), position).Detach();
        return *created == nullptr ? E_OUTOFMEMORY : S_OK;
    }

    Items items_;
    ULONG position_;
};

}  // namespace paylodge
