#include "refhost/oskerin/simulated_reader.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

#include "refhost/oskerin/json.hpp"
#include "refhost/oskerin/tlv.hpp"

namespace paylodge::refhost {
namespace {

// An amount in cents as twelve decimal digits, as tag 9F02 has it; nothing for a text that is no amount.
[[nodiscard]] std::optional<std::string> AmountDigits(std::string_view amount) {
    const size_t point = std::min(amount.find('.'), amount.size());
    std::string_view fraction = amount.substr(std::min(point + 1, amount.size()));
    if (point == 0 || point > 10 || fraction.size() > 2) {
        return std::nullopt;
    }
    std::string digits = std::string(amount.substr(0, point)).append(fraction).append(2 - fraction.size(), '0');
    if (!std::ranges::all_of(digits, [](char digit) { return digit >= '0' && digit <= '9'; })) {
        return std::nullopt;
    }
    return digits.insert(0, 12 - digits.size(), '0');
}

[[nodiscard]] std::string Hexadecimal(std::uint64_t value, int digits) {
    char buffer[24];
    std::snprintf(buffer, sizeof buffer, "%0*llX", digits, static_cast<unsigned long long>(value));
    return buffer;
}

// Stands in for the cryptogram that the card's key would make of the payment.
[[nodiscard]] std::string Cryptogram(std::string_view amount_digits, unsigned counter) {
    std::uint64_t hash = 0xCBF29CE484222325U + counter;
    for (const char digit : amount_digits) {
        hash = (hash ^ static_cast<unsigned char>(digit)) * 0x100000001B3U;
    }
    return Hexadecimal(hash, 16);
}

// What the card and the terminal say about a payment, whatever its outcome.
[[nodiscard]] std::vector<TlvItem> PaymentData(const std::string& amount_digits, unsigned counter) {
    return {
        {"4F", "F0000000010001"},                         // application
        {"50", "53494D554C415445442043415244"},           // its label: SIMULATED CARD
        {"5A", "0000000000001119"},                       // account number
        {"5F24", "301231"},                               // expiry date
        {"5F2A", "0840"},                                 // currency
        {"82", "1980"},                                   // application interchange profile
        {"84", "F0000000010001"},                         // dedicated file
        {"95", "0000008000"},                             // terminal verification results
        {"9A", "260115"},                                 // date
        {"9C", "00"},                                     // purchase
        {"9F02", amount_digits},                          // amount
        {"9F03", "000000000000"},                         // other amount
        {"9F1A", "0840"},                                 // terminal country
        {"9F33", "E0F8C8"},                               // terminal capabilities
        {"9F34", "1E0300"},                               // cardholder verification
        {"9F36", Hexadecimal(counter, 4)},                // application transaction counter
        {"9F37", Hexadecimal(0x5EED0000U + counter, 8)},  // unpredictable number
    };
}

}  // namespace

void CardReader::InitializeSession() { Enter(State::kIdle); }

void CardReader::ResetSession() { Enter(State::kNoSession); }

void CardReader::Connect() {
    if (state_ == State::kNoSession) {
        error_ = "ConnectDevice: there is no session; call InitializeSession first";
    } else {
        is_connected_ = true;
        error_.clear();
    }
}

void CardReader::Disconnect() {
    is_connected_ = false;
    Enter(state_ == State::kNoSession ? State::kNoSession : State::kIdle);
}

void CardReader::Start(std::string_view amount) {
    if (!Expect(State::kIdle, "StartEMV")) {
        return;
    }
    const auto digits = AmountDigits(amount);
    if (!digits) {
        error_ = "StartEMV: the amount is not a number with at most two decimals, such as 12.50";
        return;
    }
    amount_digits_ = *digits;
    ++transaction_counter_;
    Enter(State::kApplicationSelection);
}

void CardReader::SelectApplication() {
    if (Expect(State::kApplicationSelection, "HandleAidSelecttion")) {
        Enter(State::kOnlineAuthorization);
    }
}

void CardReader::SendOnlineResult(std::string_view result) {
    if (Expect(State::kOnlineAuthorization, "SendOnlineProcessResult")) {
        Enter(result == "00" || result == "APPROVED" ? State::kFinalConfirmation : State::kDeclined);
    }
}

void CardReader::Confirm() {
    if (Expect(State::kFinalConfirmation, "ShowFinalConfirmationWindow")) {
        Enter(State::kCompleted);
    }
}

void CardReader::Cancel() {
    if (state_ == State::kNoSession) {
        error_ = "CancelCheckCard: there is no session; call InitializeSession first";
    } else {
        Enter(State::kCancelled);
    }
}

std::string CardReader::TakeResult() {
    if (std::exchange(is_device_info_wanted_, false)) {
        return DeviceInfo();
    }
    return error_.empty() ? JsonObject().Add("state", NameOf(state_)).Add("message", NeedOf(state_)).Text()
                          : JsonObject().Add("state", "Error").Add("message", error_).Text();
}

std::string CardReader::CardParameters() const {
    if (state_ != State::kOnlineAuthorization && state_ != State::kFinalConfirmation && state_ != State::kCompleted &&
        state_ != State::kDeclined) {
        return {};
    }
    auto items = PaymentData(amount_digits_, transaction_counter_);
    items.push_back({"9F26", Cryptogram(amount_digits_, transaction_counter_)});
    items.push_back({"9F27", "80"});  // asks for an authorization
    return EncodeTlv(items);
}

std::string CardReader::BatchData() const {
    if (state_ != State::kCompleted) {
        return {};
    }
    auto items = PaymentData(amount_digits_, transaction_counter_);
    items.push_back({"8A", "3030"});  // authorization response: 00
    items.push_back({"9F26", Cryptogram(amount_digits_, transaction_counter_ + 0x10000U)});
    items.push_back({"9F27", "40"});  // approved
    return EncodeTlv(items);
}

std::string CardReader::DeviceInfo() const {
    return JsonObject()
        .Add("model", "Simulated card reader")
        .Add("serialNumber", "SIM-0001")
        .Add("connected", is_connected_ ? "true" : "false")
        .Text();
}

bool CardReader::Expect(State state, std::string_view step) {
    if (!is_connected_) {
        error_ = std::string(step) + ": no reader is connected; call ConnectDevice first";
    } else if (state_ != state) {
        error_ = std::string(step).append(": not now; the reader is in the state ").append(NameOf(state_));
    } else {
        error_.clear();
    }
    return error_.empty();
}

void CardReader::Enter(State state) {
    state_ = state;
    error_.clear();
}

std::string_view CardReader::NameOf(State state) noexcept {
    switch (state) {
        case State::kNoSession:
            return "NoSession";
        case State::kIdle:
            return "Idle";
        case State::kApplicationSelection:
            return "ApplicationSelection";
        case State::kOnlineAuthorization:
            return "OnlineAuthorization";
        case State::kFinalConfirmation:
            return "FinalConfirmation";
        case State::kCompleted:
            return "Completed";
        case State::kDeclined:
            return "Declined";
        case State::kCancelled:
            return "Cancelled";
    }
    return {};
}

std::string_view CardReader::NeedOf(State state) noexcept {
    switch (state) {
        case State::kNoSession:
            return "call InitializeSession";
        case State::kIdle:
            return "call ConnectDevice, then StartEMV with the amount";
        case State::kApplicationSelection:
            return "call HandleAidSelecttion to take the card's application";
        case State::kOnlineAuthorization:
            return "authorize with EMVGetCardParameters, then call SendOnlineProcessResult";
        case State::kFinalConfirmation:
            return "call ShowFinalConfirmationWindow";
        case State::kCompleted:
            return "take EMVGetBatchData, then call DisconnectDevice";
        case State::kDeclined:
        case State::kCancelled:
            return "call InitializeSession for the next payment";
    }
    return {};
}

}  // namespace paylodge::refhost
