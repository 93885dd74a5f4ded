// What the log says of a call.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/server/host_process.hpp"
#include "workbench/server/messages.hpp"
#include "workbench/server/scripted_object.hpp"

namespace paylodge::workbench {

// "2026-01-15T09:30:00.125", on the user's clock.
[[nodiscard]] std::string LocalTime();

// `undefined` is {"type": "empty"}.
[[nodiscard]] Json ValuesOf(const std::vector<Value>& arguments);
[[nodiscard]] Json TrafficOf(std::vector<ProcessedRequest> processed);

class Stopwatch {
  public:
    [[nodiscard]] std::int64_t Microseconds() const {
        return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin_).count();
    }

  private:
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

// Adds the HRESULT of a call, how long it took, and what it returned or its error.
void AddOutcome(Json& entry, const Outcome& outcome, const Stopwatch& watch);

}  // namespace paylodge::workbench
