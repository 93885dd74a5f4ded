#include "workbench/server/secrets.hpp"

#include <windows.h>

#include <ntsecapi.h>

#include <array>
#include <stdexcept>

namespace paylodge::workbench {

std::string MakeSecret() {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::array<unsigned char, 16> bytes{};
    if (::RtlGenRandom(bytes.data(), bytes.size()) == FALSE) {
        throw std::runtime_error("the system has no random numbers");
    }
    std::string text;
    for (const unsigned char byte : bytes) {
        text.append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xFU]);
    }
    return text;
}

}  // namespace paylodge::workbench
