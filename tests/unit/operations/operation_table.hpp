// Every operation that asks the host, with arguments for it.
#pragma once

#include <optional>
#include <ostream>
#include <span>

#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {

// The elements of a response that each operation finds what it looks for in, so that it runs to its end.
extern const wchar_t* const kAnswerToAll;

// One operation, called with arguments that make it send `sends` requests when all goes well.
struct Operation {
    const char* name;
    size_t sends;
    Result (*call)(CPaylodge& object);
    // The HRESULT for a send that fails, when it is not the processor's own.
    std::optional<HRESULT> send_failure = std::nullopt;
    // What S_OK without a response becomes.
    Result without_response = {S_OK, L""};
    // Whether another HRESULT of success that comes without a response is returned.
    bool hands_success_on = true;
    bool reads_documents = true;
    // The one send whose failure is the operation's; without one, that of every send is.
    std::optional<size_t> deciding_send = std::nullopt;
    // The result when another one fails; without one, that of an operation that succeeds.
    std::optional<Result> when_another_fails = std::nullopt;
};

inline std::ostream& operator<<(std::ostream& stream, const Operation& operation) { return stream << operation.name; }

[[nodiscard]] std::span<const Operation> Operations() noexcept;

}  // namespace paylodge::test
