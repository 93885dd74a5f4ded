// Whole numbers of up to 4096 bits, for exact conversions between decimal and binary numbers.
#pragma once

#include <array>
#include <bit>
#include <cassert>
#include <compare>
#include <cstddef>
#include <cstdint>

namespace paylodge {

// Not negative. Every result has to fit.
class BigInteger {
  public:
    explicit BigInteger(std::uint64_t number = 0) noexcept {
        for (; number != 0; number >>= kWordBits) {
            Append(static_cast<Word>(number));
        }
    }

    [[nodiscard]] bool IsZero() const noexcept { return size_ == 0; }
    [[nodiscard]] size_t BitLength() const noexcept {
        return IsZero() ? 0 : size_ * kWordBits - static_cast<size_t>(std::countl_zero(words_[size_ - 1]));
    }
    [[nodiscard]] std::strong_ordering operator<=>(const BigInteger& other) const noexcept {
        if (size_ != other.size_) {
            return size_ <=> other.size_;
        }
        for (size_t index = size_; index-- > 0;) {
            if (words_[index] != other.words_[index]) {
                return words_[index] <=> other.words_[index];
            }
        }
        return std::strong_ordering::equal;
    }

    void MultiplyAndAdd(std::uint32_t factor, std::uint32_t addend = 0) noexcept {
        std::uint64_t carry = addend;
        for (size_t index = 0; index < size_; ++index) {
            carry += std::uint64_t{words_[index]} * factor;
            words_[index] = static_cast<Word>(carry);
            carry >>= kWordBits;
        }
        if (carry != 0) {
            Append(static_cast<Word>(carry));
        }
        DropLeadingZeros();
    }

    // Returns the remainder.
    std::uint32_t DivideBy(std::uint32_t divisor) noexcept {
        std::uint64_t remainder = 0;
        for (size_t index = size_; index-- > 0;) {
            remainder = remainder << kWordBits | words_[index];
            words_[index] = static_cast<Word>(remainder / divisor);
            remainder %= divisor;
        }
        DropLeadingZeros();
        return static_cast<std::uint32_t>(remainder);
    }

    // `other` is not larger.
    void Subtract(const BigInteger& other) noexcept {
        assert(other <= *this);
        std::uint64_t borrow = 0;
        for (size_t index = 0; index < size_; ++index) {
            const std::uint64_t difference =
                std::uint64_t{words_[index]} - (index < other.size_ ? other.words_[index] : 0) - borrow;
            words_[index] = static_cast<Word>(difference);
            borrow = difference >> 63;
        }
        DropLeadingZeros();
    }

    void ShiftLeft(size_t bits) noexcept {
        if (IsZero()) {
            return;
        }
        const size_t shift = bits % kWordBits;
        if (shift != 0) {
            MultiplyAndAdd(Word{1} << shift);
        }
        const size_t added = bits / kWordBits;
        assert(size_ + added <= words_.size());
        for (size_t index = size_; index-- > 0 && added > 0;) {
            words_[index + added] = words_[index];
        }
        for (size_t index = 0; index < added; ++index) {
            words_[index] = 0;
        }
        size_ += added;
    }

    // Divides by a power of two and rounds to the nearest number, from the middle to the even one.
    void ShiftRightAndRound(size_t bits) noexcept {
        if (bits == 0 || IsZero()) {
            return;
        }
        const bool is_half_or_more = Bit(bits - 1);
        const bool is_half_at_most = !HasBitsBelow(bits - 1);
        const size_t dropped = bits / kWordBits;
        for (size_t index = dropped; index < size_; ++index) {
            words_[index - dropped] = words_[index];
        }
        size_ = dropped < size_ ? size_ - dropped : 0;
        DivideBy(Word{1} << bits % kWordBits);
        if (is_half_or_more && (!is_half_at_most || Bit(0))) {
            MultiplyAndAdd(1, 1);
        }
    }

  private:
    using Word = std::uint32_t;
    static constexpr size_t kWordBits = 32;

    void Append(Word word) noexcept {
        assert(size_ < words_.size());
        words_[size_++] = word;
    }
    void DropLeadingZeros() noexcept {
        while (size_ > 0 && words_[size_ - 1] == 0) {
            --size_;
        }
    }
    [[nodiscard]] bool Bit(size_t position) const noexcept {
        const size_t index = position / kWordBits;
        return index < size_ && (words_[index] >> position % kWordBits & 1) != 0;
    }
    [[nodiscard]] bool HasBitsBelow(size_t position) const noexcept {
        size_t bit = 0;
        while (bit < position && bit < size_ * kWordBits && !Bit(bit)) {
            ++bit;
        }
        return bit < position && bit < size_ * kWordBits;
    }

    // The lowest first; the highest of those that count is not 0.
    std::array<Word, 128> words_{};
    size_t size_ = 0;
};

}  // namespace paylodge
