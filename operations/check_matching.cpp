#include "operations/check_matching.hpp"

#include <limits>

#include "lhxml/number_text.hpp"

namespace paylodge {

std::int32_t CentsFromText(const std::string& amount) noexcept {
    const double cents = static_cast<double>(LeadingDecimal<float>(amount)) * 100.0 + 0.5;
    constexpr double kBelowRange = -2147483649.0;
    constexpr double kAboveRange = 2147483648.0;
    const bool is_in_range = cents > kBelowRange && cents < kAboveRange;
    // What the processor's own conversion makes of a number that does not fit.
    return is_in_range ? static_cast<std::int32_t>(cents) : std::numeric_limits<std::int32_t>::min();
}

std::string_view TrimSpaces(std::string_view text) noexcept {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

CheckMatcher::CheckMatcher(const std::string& check_amount) noexcept : check_cents_(CentsFromText(check_amount)) {}

bool CheckMatcher::IsDecided() const noexcept { return is_matched_ || check_cents_ < 1; }

void CheckMatcher::AddInvoice(std::string_view reference, const std::string& balance) {
    if (IsDecided()) {
        return;
    }
    if (!reference.empty()) {
        references_.append(references_.empty() ? "" : ", ").append(reference);
    }
    const std::int32_t cents = CentsFromText(balance);
    if (cents == check_cents_) {
        is_matched_ = true;
        matched_reference_ = reference;
    } else {
        sum_of_others_ += static_cast<std::uint32_t>(cents);
    }
}

std::string CheckMatcher::Result() const {
    if (is_matched_) {
        return matched_reference_;
    }
    const bool pays_all = check_cents_ >= 1 && sum_of_others_ == static_cast<std::uint32_t>(check_cents_);
    return pays_all ? references_ : std::string();
}

}  // namespace paylodge
