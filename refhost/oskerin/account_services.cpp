#include "refhost/oskerin/account_services.hpp"

#include <array>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "refhost/oskerin/json.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] std::string Digest(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char character : text) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
    }
    char buffer[24];
    std::snprintf(buffer, sizeof buffer, "%016llx", static_cast<unsigned long long>(hash));
    return buffer;
}

[[nodiscard]] std::string Error(std::string_view message) { return JsonObject().Add("error", message).Text(); }

}  // namespace

std::string UserData(std::string_view wanted) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kUserData = {{
        {"UserName", "Robin Vale"},
        // One letter within every Western code page, and one outside.
        {"CompanyName", "Caf\xC3\xA9 Riverside \xE2\x98\x86"},
        {"Email", "robin@riverside.example"},
        {"Locale", "en-US"},
    }};
    for (const auto& [name, value] : kUserData) {
        if (name == wanted) {
            return std::string(value);
        }
    }
    return Error("there is no user data of this name; UserName, CompanyName, Email and Locale are known");
}

std::string PaymentIdentityStatus() { return JsonObject().Add("status", "VERIFIED").Add("realm", "simulated").Text(); }

std::string AuthenticatedUrl(std::string_view url) {
    if (!url.starts_with("https://") && !url.starts_with("http://")) {
        return Error("only http and https addresses can be authenticated");
    }
    const char separator = url.find('?') == std::string_view::npos ? '?' : '&';
    return std::string(url).append(1, separator).append("ticket=").append(Digest(url));
}

std::string RealmMergeLinking() { return "true"; }

std::string CardBasedToken(bool uses_authorization, std::string_view header, std::string_view body) {
    if (body.empty()) {
        return Error("a token needs a body that describes the card");
    }
    const std::string seed = std::string(uses_authorization ? "1" : "0").append(header).append(1, '\n').append(body);
    return JsonObject().Add("token", "tok_" + Digest(seed)).Add("type", "simulated").Text();
}

}  // namespace paylodge::refhost
