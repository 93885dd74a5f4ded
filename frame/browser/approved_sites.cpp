#include "frame/browser/approved_sites.hpp"

#include <array>

namespace paylodge {
namespace {

constexpr std::uint32_t kAllow = 0;

// Names that end in .example cannot be registered: as shipped, the table lets in no real site.
constexpr std::array<SiteEntry, 10> kApprovedSites = {{
    {kAllow, L"https", L"terminal.paylodge.example"},
    {kAllow, L"https", L"accounts.paylodge.example"},
    {kAllow, L"https", L"merchant.ledgerhall.example"},
    {kAllow, L"https", L"payments.ledgerhall.example"},
    {kAllow, L"https", L"services.ledgerhall.example"},
    {kAllow, L"http", L"merchant.ledgerhall.example"},
    {kAllow, L"http", L"payments.ledgerhall.example"},
    {kAllow, L"http", L"services.ledgerhall.example"},
    {kAllow, L"http", L"qa.ledgerhall.example"},
    {kAllow, L"http", L"dev.ledgerhall.example"},
}};

}  // namespace

std::span<const SiteEntry> ApprovedSites() noexcept { return kApprovedSites; }

}  // namespace paylodge
