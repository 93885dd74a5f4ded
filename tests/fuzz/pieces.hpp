// Inputs that are made of several texts: form feeds stand between them, so that a seed reads as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge::fuzz {

[[nodiscard]] inline std::string_view AsText(const std::uint8_t* data, std::size_t size) noexcept {
    return {reinterpret_cast<const char*>(data), size};
}

// One piece more than there are form feeds.
[[nodiscard]] inline std::vector<std::string> Pieces(std::string_view input) {
    std::vector<std::string> pieces(1);
    for (const char character : input) {
        if (character == '\f') {
            pieces.emplace_back();
        } else {
            pieces.back() += character;
        }
    }
    return pieces;
}

// Ends the run, for the fuzzer to keep the input, when two texts that have to be the same are not.
inline void ExpectSame(std::string_view expected, std::string_view actual, const char* what) {
    if (expected != actual) {
        std::printf("%s\n  expected: %.*s\n  actual:   %.*s\n", what, static_cast<int>(expected.size()),
                    expected.data(), static_cast<int>(actual.size()), actual.data());
        std::abort();
    }
}

inline void ExpectTrue(bool is_true, const char* what) {
    if (!is_true) {
        std::puts(what);
        std::abort();
    }
}

}  // namespace paylodge::fuzz
