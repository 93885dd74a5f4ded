// Simulated account services of the host.
#pragma once

#include <string>
#include <string_view>

namespace paylodge::refhost {

// What the host knows about its user, by the name of the wanted data: "UserName", "CompanyName", "Email", "Locale"; a
// JSON object with "error" for other names.
[[nodiscard]] std::string UserData(std::string_view wanted);

[[nodiscard]] std::string PaymentIdentityStatus();

// The URL with a ticket that signs the user in. A text that is no http or https URL returns a JSON object with "error".
[[nodiscard]] std::string AuthenticatedUrl(std::string_view url);

[[nodiscard]] std::string RealmMergeLinking();

// A token for a card that is described by the body; the same header and body have the same token.
[[nodiscard]] std::string CardBasedToken(bool uses_authorization, std::string_view header, std::string_view body);

}  // namespace paylodge::refhost
