// Which pages a table of sites lets in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace paylodge {

// One entry, as callers of the site list see it.
struct SiteEntry {
    std::uint32_t category;  // 0 allows a matching page, any other value denies it
    const wchar_t* scheme;   // compared exactly
    const wchar_t* domain;   // a pattern, a marker below, or null for a page without a domain
};

// The domain patterns: "=name" matches that domain alone, "*.name" its subdomains alone, "name" both.

// Stand in the domain field in place of a pattern.
inline const auto* const kIntranetOrTrustedZone = reinterpret_cast<const wchar_t*>(~std::uintptr_t{0});
inline const auto* const kLocalMachineZone = reinterpret_cast<const wchar_t*>(~std::uintptr_t{0} - 1);
inline const auto* const kTrustedZone = reinterpret_cast<const wchar_t*>(~std::uintptr_t{0} - 2);

// Where a page comes from; the zone is the security manager's number.
struct PageOrigin {
    std::wstring_view scheme;
    std::wstring_view domain;
    std::uint32_t zone;
};

// Whether the first entry that matches the page allows it; false when none matches.
[[nodiscard]] bool IsApproved(std::span<const SiteEntry> table, const PageOrigin& page) noexcept;

}  // namespace paylodge
