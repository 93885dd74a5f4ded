#include "workbench/server/log_entries.hpp"

#include <windows.h>

#include <array>
#include <cstdio>
#include <utility>

#include "workbench/server/replies.hpp"

namespace paylodge::workbench {

std::string LocalTime() {
    SYSTEMTIME time = {};
    ::GetLocalTime(&time);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02u.%03u", time.wYear, time.wMonth, time.wDay,
                  time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text.data();
}

Json ValuesOf(const std::vector<Value>& arguments) {
    Json values = Json::array();
    for (const Value& argument : arguments) {
        values.push_back(argument.value.is_discarded() ? Json({{"type", "empty"}}) : argument.value);
    }
    return values;
}

Json TrafficOf(std::vector<ProcessedRequest> processed) {
    Json traffic = Json::array();
    for (ProcessedRequest& one : processed) {
        traffic.push_back({{"request", std::move(one.request)}, {"response", std::move(one.response)}});
    }
    return traffic;
}

void AddOutcome(Json& entry, const Outcome& outcome, const Stopwatch& watch) {
    entry["hresult"] = ResultText(outcome.result);
    entry["hresultName"] = NameOf(outcome.result);
    entry["microseconds"] = watch.Microseconds();
    if (SUCCEEDED(outcome.result)) {
        entry["result"] = outcome.value;
    } else if (!outcome.description.empty()) {
        entry["error"] = outcome.description;
    }
    if (!outcome.out.empty()) {
        entry["out"] = OutOf(outcome);
    }
}

}  // namespace paylodge::workbench
