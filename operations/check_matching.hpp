// Which open invoices a scanned check pays.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace paylodge {

// The amount in whole cents, through a single-precision float: amounts of more than about seven digits round as that
// does. 0 for a text that is not a number.
[[nodiscard]] std::int32_t CentsFromText(const std::string& amount) noexcept;

// The text without spaces at its ends; other white space stays.
[[nodiscard]] std::string_view TrimSpaces(std::string_view text) noexcept;

// Matches a check to a customer's open invoices, which are shown to it in the order of the response.
class CheckMatcher {
  public:
    // The amount has to be at least one cent for anything to match.
    explicit CheckMatcher(const std::string& check_amount) noexcept;

    // Whether showing another invoice can no longer change the result.
    [[nodiscard]] bool IsDecided() const noexcept;

    // An invoice by its reference number, which may be empty, and its remaining balance.
    void AddInvoice(std::string_view reference, const std::string& balance);

    // The number of the first invoice with exactly this balance; else the numbers of all invoices, joined by ", ", when
    // they come to the amount together; else empty.
    [[nodiscard]] std::string Result() const;

  private:
    std::int32_t check_cents_;
    bool is_matched_ = false;
    std::string matched_reference_;
    std::string references_;
    // Wraps around as the 32-bit sum of the balances does.
    std::uint32_t sum_of_others_ = 0;
};

}  // namespace paylodge
