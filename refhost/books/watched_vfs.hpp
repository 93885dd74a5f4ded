// SQLite's access to files, with a watch on the steps that can fail or during which a process can die.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace paylodge::refhost {

enum class FileStep {
    // Opening the company file or its journal.
    kOpen,
    // Writing one page or journal record.
    kWrite,
    // Waiting until what was written is on the disk.
    kSync,
    // Ending the journal, which is the moment from which a change is there.
    kCommit,
};

// Called before each step; an HRESULT that it returns is the failure of that step.
using StepWatch = std::function<std::optional<std::int32_t>(FileStep step)>;

// The name under which sqlite3_open_v2 finds this access to files. Registers it on first use.
[[nodiscard]] const char* WatchedVfs();

// One watch for the whole process; an empty one ends it.
void WatchSteps(StepWatch watch);

struct PlannedFailure {
    FileStep step;
    std::int32_t result;
};

// The failure that the watch planned since this was asked last.
[[nodiscard]] std::optional<PlannedFailure> TakePlannedFailure() noexcept;

// "CompanyFile.Write" and so on, as plans and messages name the steps.
[[nodiscard]] std::string_view NameOf(FileStep step) noexcept;
// Nothing for a name that is none.
[[nodiscard]] std::optional<FileStep> FileStepOf(std::string_view name) noexcept;

}  // namespace paylodge::refhost
