#include "lhxml/number_text.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "lhxml/big_integer.hpp"

namespace paylodge {
namespace {

// The compiler's library converts with tables of 200 KB; amounts need no more than the little arithmetic here.

[[nodiscard]] constexpr bool IsDigit(char character) noexcept { return character >= '0' && character <= '9'; }

[[nodiscard]] size_t CountDigits(std::string_view text, size_t start) noexcept {
    const auto* const first = text.begin() + static_cast<std::ptrdiff_t>(std::min(start, text.size()));
    return static_cast<size_t>(std::find_if_not(first, text.end(), IsDigit) - first);
}

// A number as it is written, without its sign.
struct Written {
    // Digits, perhaps with a point among them; empty when there is no number.
    std::string_view mantissa;
    std::int64_t exponent = 0;
    size_t length = 0;
};

// Reads the exponent behind a mantissa, where there is one.
void ReadExponent(std::string_view text, Written& number) noexcept {
    size_t start = number.length;
    if (start >= text.size() || (text[start] != 'e' && text[start] != 'E')) {
        return;
    }
    ++start;
    const bool is_negative = text.substr(start).starts_with('-');
    if (is_negative || text.substr(start).starts_with('+')) {
        ++start;
    }
    const size_t count = CountDigits(text, start);
    if (count == 0) {
        return;
    }
    // Beyond all ranges, whatever the mantissa is.
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max() / 16;
    for (const char digit : text.substr(start, count)) {
        number.exponent = std::min(number.exponent * 10 + (digit - '0'), kLargest);
    }
    if (is_negative) {
        number.exponent = -number.exponent;
    }
    number.length = start + count;
}

[[nodiscard]] Written ReadWritten(std::string_view text) noexcept {
    const size_t before_point = CountDigits(text, 0);
    const bool has_point = text.substr(before_point).starts_with('.');
    const size_t after_point = has_point ? CountDigits(text, before_point + 1) : 0;
    if (before_point + after_point == 0) {
        return {};
    }
    Written number;
    number.length = before_point + (has_point ? 1 : 0) + after_point;
    number.mantissa = text.substr(0, number.length);
    ReadExponent(text, number);
    return number;
}

// The same number as significant digits and the power of ten of the last of them.
struct Decimal {
    // A number halfway between two others has no more digits than this. Of all that follow it only counts whether they
    // come to more than nothing; then one digit more stands for them.
    static constexpr size_t kMostDigits = 770;

    std::array<char, kMostDigits + 1> digits;
    size_t count = 0;
    std::int64_t exponent = 0;

    explicit Decimal(const Written& written) noexcept : exponent(written.exponent) {
        bool is_behind_point = false;
        bool is_more = false;
        for (const char character : written.mantissa) {
            if (character == '.') {
                is_behind_point = true;
                continue;
            }
            const bool is_leading_zero = count == 0 && character == '0';
            if (is_behind_point && (is_leading_zero || count < kMostDigits)) {
                --exponent;
            } else if (!is_behind_point && count == kMostDigits) {
                ++exponent;
            }
            if (count < kMostDigits && !is_leading_zero) {
                digits[count++] = static_cast<char>(character - '0');
            } else {
                is_more = is_more || character != '0';
            }
        }
        if (is_more) {
            digits[count++] = 1;
            --exponent;
        }
    }
};

// The nearest Number to numerator / denominator, which are not 0; from the middle the one with the even last bit.
template <class Number>
[[nodiscard]] Number Quotient(BigInteger numerator, BigInteger denominator) noexcept {
    using Limits = std::numeric_limits<Number>;
    const auto scale = [](BigInteger& up, BigInteger& down, std::int64_t bits) {
        bits > 0 ? up.ShiftLeft(static_cast<size_t>(bits)) : down.ShiftLeft(static_cast<size_t>(-bits));
    };
    // The quotient is below 2 to the power of `top` and above a quarter of that.
    const std::int64_t top =
        static_cast<std::int64_t>(numerator.BitLength()) - static_cast<std::int64_t>(denominator.BitLength()) + 1;
    // The power of two of the quotient's last bit.
    std::int64_t exponent = std::max<std::int64_t>(top - Limits::digits, Limits::min_exponent - Limits::digits);
    scale(denominator, numerator, exponent);
    // Divided bit by bit from the highest on, which a quotient that is no subnormal number has.
    denominator.ShiftLeft(Limits::digits - 1);
    if (numerator < denominator && exponent > Limits::min_exponent - Limits::digits) {
        --exponent;
        numerator.ShiftLeft(1);
    }
    std::uint64_t quotient = 0;
    for (int bit = 0; bit < Limits::digits; ++bit) {
        const bool is_set = numerator >= denominator;
        if (is_set) {
            numerator.Subtract(denominator);
        }
        quotient = quotient << 1 | (is_set ? 1 : 0);
        numerator.ShiftLeft(1);
    }
    const auto rest = numerator <=> denominator;
    if (rest > 0 || (rest == 0 && quotient % 2 != 0)) {
        ++quotient;
    }
    const double number = std::ldexp(static_cast<double>(quotient), static_cast<int>(exponent));
    return number > static_cast<double>(Limits::max()) ? Limits::infinity() : static_cast<Number>(number);
}

// Where the digits and the power of ten have no more bits than a Number, one operation gives the nearest one.
template <class Number>
[[nodiscard]] bool ConvertExactly(const Decimal& decimal, Number& number) noexcept {
    constexpr int kBits = std::numeric_limits<Number>::digits;
    // 10 to this power has no more bits than that, without the zeros at its end.
    constexpr std::int64_t kLargestPower = kBits * 43 / 100;
    if (decimal.count > static_cast<size_t>(std::numeric_limits<std::uint64_t>::digits10) ||
        std::abs(decimal.exponent) > kLargestPower) {
        return false;
    }
    std::uint64_t digits = 0;
    for (size_t index = 0; index < decimal.count; ++index) {
        digits = digits * 10 + static_cast<std::uint64_t>(decimal.digits[index]);
    }
    if (digits > std::uint64_t{1} << kBits) {
        return false;
    }
    Number power = 1;
    for (std::int64_t left = std::abs(decimal.exponent); left > 0; --left) {
        power *= 10;
    }
    number = static_cast<Number>(digits);
    number = decimal.exponent < 0 ? number / power : number * power;
    return true;
}

template <class Number>
[[nodiscard]] Number Convert(const Decimal& decimal) noexcept {
    Number number = 0;
    if (ConvertExactly(decimal, number)) {
        return number;
    }
    // Beyond these powers of ten there are no numbers of either size.
    constexpr std::int64_t kTooLarge = 310;
    constexpr std::int64_t kTooSmall = -330;
    const std::int64_t magnitude = decimal.exponent + static_cast<std::int64_t>(decimal.count);
    if (decimal.count == 0 || magnitude < kTooSmall) {
        return 0;
    }
    if (magnitude > kTooLarge) {
        return std::numeric_limits<Number>::infinity();
    }
    BigInteger numerator;
    BigInteger denominator(1);
    for (size_t index = 0; index < decimal.count; ++index) {
        numerator.MultiplyAndAdd(10, static_cast<std::uint32_t>(decimal.digits[index]));
    }
    BigInteger& scaled = decimal.exponent < 0 ? denominator : numerator;
    for (std::int64_t left = std::abs(decimal.exponent); left > 0; --left) {
        scaled.MultiplyAndAdd(10);
    }
    return Quotient<Number>(numerator, denominator);
}

// The decimal number that a text begins with, and how many characters that takes: none when it begins with none.
template <class Number>
struct Leading {
    Number number = 0;
    size_t length = 0;
    bool is_in_range = true;
};

template <class Number>
[[nodiscard]] Leading<Number> ReadLeading(std::string_view text) noexcept {
    size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const bool is_negative = text.substr(start).starts_with('-');
    if (is_negative || text.substr(start).starts_with('+')) {
        ++start;
    }
    const Written written = ReadWritten(text.substr(start));
    if (written.length == 0) {
        return {};
    }
    const Decimal decimal(written);
    const auto number = Convert<Number>(decimal);
    const bool is_in_range = std::isfinite(number) && (number != 0 || decimal.count == 0);
    return {is_negative ? -number : number, start + written.length, is_in_range};
}

}  // namespace

bool ParseDouble(const std::string& text, double& number) {
    const auto leading = ReadLeading<double>(text);
    number = leading.number;
    return leading.length > 0 && leading.length == text.size() && leading.is_in_range;
}

void FormatAmount(double number, std::string& text, int decimals) {
    const int places = decimals == 2 ? 2 : 5;
    text.clear();
    if (std::isfinite(number)) {
        // A whole number of 53 bits times a power of two.
        int exponent = 0;
        const double fraction = std::frexp(std::abs(number), &exponent);
        exponent -= std::numeric_limits<double>::digits;
        BigInteger scaled(static_cast<std::uint64_t>(std::ldexp(fraction, std::numeric_limits<double>::digits)));
        for (int place = 0; place < places; ++place) {
            scaled.MultiplyAndAdd(10);
        }
        exponent > 0 ? scaled.ShiftLeft(static_cast<size_t>(exponent))
                     : scaled.ShiftRightAndRound(static_cast<size_t>(-exponent));
        // From the last digit to the first.
        for (int place = 0; place <= places || !scaled.IsZero(); ++place) {
            if (place == places) {
                text.push_back('.');
            }
            text.push_back(static_cast<char>('0' + scaled.DivideBy(10)));
        }
    } else {
        // "inf", backwards as the digits.
        text = std::isnan(number) ? "nan" : "fni";
    }
    if (std::signbit(number)) {
        text.push_back('-');
    }
    std::ranges::reverse(text);
}

template <class Number>
Number LeadingDecimal(std::string_view text) noexcept {
    return ReadLeading<Number>(text).number;
}
template double LeadingDecimal<double>(std::string_view text) noexcept;
template float LeadingDecimal<float>(std::string_view text) noexcept;

std::optional<std::string> AmountWithTwoDecimals(const std::string& text) {
    constexpr size_t kTooLong = 30;
    if (text.size() >= kTooLong) {
        return std::nullopt;
    }
    double number = 0;
    // What is not a number is 0.
    static_cast<void>(ParseDouble(text, number));
    std::string amount;
    FormatAmount(number, amount, 2);
    return amount;
}

}  // namespace paylodge
