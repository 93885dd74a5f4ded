// Owning types for the platform's resources: one template, one alias for each kind.
#pragma once

#include <windows.h>

#include <cassert>
#include <utility>

namespace paylodge {

// Owns one resource of the kind that Traits describes: its Type, the value None that stands for nothing, and Free.
template <class Traits>
class Owner {
  public:
    using Type = typename Traits::Type;

    Owner() noexcept = default;
    explicit Owner(Type resource) noexcept : resource_(resource) {}
    Owner(Owner&& other) noexcept : resource_(other.Detach()) {}
    Owner& operator=(Owner&& other) noexcept {
        Reset(other.Detach());
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { Reset(); }

    [[nodiscard]] Type Get() const noexcept { return resource_; }
    explicit operator bool() const noexcept { return resource_ != Traits::None(); }

    // Gives the resource away; the owner is empty afterwards.
    [[nodiscard]] Type Detach() noexcept { return std::exchange(resource_, Traits::None()); }

    // The slot for a function that hands out a resource. The owner has to be empty.
    [[nodiscard]] Type* Receive() noexcept {
        assert(!*this);
        return &resource_;
    }

    void Reset(Type resource = Traits::None()) noexcept {
        const Type old = std::exchange(resource_, resource);
        if (old != Traits::None()) {
            Traits::Free(old);
        }
    }

    // Two owners never own the same resource, and comparing handles or addresses for their contents is a mistake.
    bool operator==(const Owner&) const = delete;

  private:
    Type resource_ = Traits::None();
};

struct ModuleHandleTraits {
    using Type = HMODULE;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type module) noexcept { ::FreeLibrary(module); }
};
using ModuleHandle = Owner<ModuleHandleTraits>;

// An event, a job, a process, a thread, a pipe: the calls that make one return null when they fail.
struct HandleTraits {
    using Type = HANDLE;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type handle) noexcept { ::CloseHandle(handle); }
};
using Handle = Owner<HandleTraits>;

// A file: CreateFile returns INVALID_HANDLE_VALUE when it fails.
struct FileHandleTraits : HandleTraits {
    static Type None() noexcept { return INVALID_HANDLE_VALUE; }
};
using FileHandle = Owner<FileHandleTraits>;

}  // namespace paylodge
