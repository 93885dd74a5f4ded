// The status that each response element carries.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

namespace paylodge::refhost {

// The number is the status code as it stands in the response.
enum class Code {
    kOk = 0,
    // The document as a whole.
    kMalformedDocument = 1000,
    kUnknownVersion = 1010,
    kUnknownEnvelope = 1020,
    kUnknownOnError = 1030,
    // One request of it.
    kUnknownRequest = 1100,
    kNotProcessed = 1110,
    kMissingField = 2000,
    kUnknownField = 2010,
    kMisplacedField = 2015,
    kRepeatedField = 2020,
    kInvalidValue = 2030,
    kBeyondLimit = 2035,
    kUnknownReference = 2040,
    kUnfitAccount = 2045,
    kNotFound = 2050,
    kNameExists = 3100,
    kPaymentItemExists = 3180,
    kStaleEditSequence = 3200,
    kInactive = 3210,
    kBrokenRule = 3220,
    // The company file.
    kNoCompanyFile = 4000,
    kNotSaved = 4010,
    kReadOnly = 4020,
    kDiskFull = 4030,
    kDamaged = 4040,
};

struct Status {
    Code code = Code::kOk;
    std::string message = "Status OK";

    // "Info", "Warn" or "Error".
    [[nodiscard]] std::string_view Severity() const noexcept {
        return code == Code::kOk ? "Info" : code == Code::kNotFound ? "Warn" : "Error";
    }
    [[nodiscard]] bool IsError() const noexcept { return Severity() == "Error"; }
};

// A request that is refused with a status.
class RefusedRequest : public std::exception {
  public:
    RefusedRequest(Code code, std::string message) : status_{code, std::move(message)} {}

    [[nodiscard]] const Status& GetStatus() const noexcept { return status_; }
    [[nodiscard]] const char* what() const noexcept override { return status_.message.c_str(); }

  private:
    Status status_;
};

[[nodiscard]] inline std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

}  // namespace paylodge::refhost
