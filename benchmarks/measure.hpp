// Times beside their floors: what cannot be avoided, measured in the same run.
#pragma once

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge::bench {

// How long one comparison goes on.
struct Limits {
    int least_runs;
    // Of calls with many records.
    int least_long_runs;
    double most_seconds;
};
inline constexpr Limits kThorough = {40, 16, 60};
inline constexpr Limits kQuick = {8, 6, 5};
// Two halves of the runs that differ by more than this go on being measured, as long as there is time.
inline constexpr double kAgreement = 0.03;
inline constexpr int kFewestRuns = 6;
inline constexpr double kMicroseconds = 1e6;

struct Row {
    std::string name;
    // How many records; 0 where there are none.
    int size = 0;
    // In microseconds of one call.
    double time = 0;
    double floor = 0;
    double ratio = 0;
    // How far the ratios of one half of the runs are from those of the other half.
    double disagreement = 0;
    int runs = 0;
};

[[nodiscard]] inline double Median(std::vector<double> values) {
    std::ranges::sort(values);
    const size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

template <class Action>
[[nodiscard]] double SecondsOf(const Action& action, int repeats) {
    const auto start = std::chrono::steady_clock::now();
    for (int repeat = 0; repeat < repeats; ++repeat) {
        action();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// What the process has used of the processors. Counts in steps of 10 ms under Wine.
[[nodiscard]] inline double ProcessorSeconds() {
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    ::GetProcessTimes(::GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        constexpr double kSteps = 1e7;
        return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / kSteps;
    };
    return seconds(kernel) + seconds(user);
}

// Both sides of a comparison, run by run.
struct Samples {
    std::vector<double> times;
    std::vector<double> floors;

    // Of the sums, so that the steps of a coarse clock even out.
    [[nodiscard]] double RatioOfSums(size_t first = 0, size_t step = 1) const {
        double time = 0;
        double floor = 0;
        for (size_t run = first; run < times.size(); run += step) {
            time += times[run];
            floor += floors[run];
        }
        return time / floor;
    }
};

// How often an action has to be repeated to take about a fifth of a millisecond: long enough for the clock, and short
// enough that most runs are not interrupted.
template <class Action>
[[nodiscard]] int RepeatsFor(const Action& action) {
    constexpr double kLongEnough = 0.0002;
    constexpr int kMost = 4096;
    int repeats = 1;
    while (repeats < kMost && SecondsOf(action, repeats) < kLongEnough) {
        repeats *= 2;
    }
    return repeats;
}

// The ratios of every second run against those of the others.
[[nodiscard]] inline double DisagreementOf(const std::vector<double>& ratios) {
    std::vector<double> halves[2];
    for (size_t run = 0; run < ratios.size(); ++run) {
        halves[run % 2].push_back(ratios[run]);
    }
    return std::abs(Median(halves[0]) / Median(halves[1]) - 1);
}

// Runs both in turn, each `repeats` times, until the two halves of the runs agree or the time is up.
template <class Clock, class Action, class Floor, class Disagreement>
[[nodiscard]] Samples Take(const Limits& limits, const Clock& clock, const Action& action, const Floor& floor,
                           const Disagreement& disagreement_of) {
    Samples samples;
    const auto seconds_of = [&clock](const auto& work) {
        const double start = clock();
        work();
        return clock() - start;
    };
    const auto start = std::chrono::steady_clock::now();
    const auto is_time_up = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() > limits.most_seconds;
    };
    const auto runs = [&samples] { return static_cast<int>(samples.times.size()); };
    while (runs() < limits.least_runs || disagreement_of(samples) > kAgreement) {
        if (runs() >= kFewestRuns && is_time_up()) {
            break;
        }
        // Which comes first changes, too.
        const bool is_floor_first = runs() / 2 % 2 != 0;
        double floor_time = is_floor_first ? seconds_of(floor) : 0;
        samples.times.push_back(seconds_of(action));
        if (!is_floor_first) {
            floor_time = seconds_of(floor);
        }
        samples.floors.push_back(floor_time);
    }
    return samples;
}

template <class Work>
[[nodiscard]] auto Repeated(const Work& work, int repeats) {
    return [repeats, &work] {
        for (int repeat = 0; repeat < repeats; ++repeat) {
            work();
        }
    };
}

// Calls with fewer records are repeated until the coarse clock of the processor time can see them.
inline constexpr int kLong = 20'000;

// Calls with many records are measured in processor time: on a busy machine each run would be interrupted many times.
template <class Action, class Floor>
[[nodiscard]] Row CompareLong(std::string_view name, int size, const Limits& limits, const Action& action,
                              const Floor& floor) {
    const auto disagreement_of = [](const Samples& samples) {
        return std::abs(samples.RatioOfSums(0, 2) / samples.RatioOfSums(1, 2) - 1);
    };
    const int repeats = std::max(1, 2 * kLong / size);
    const Limits few = {limits.least_long_runs, limits.least_long_runs, limits.most_seconds};
    const Samples samples =
        Take(few, ProcessorSeconds, Repeated(action, repeats), Repeated(floor, repeats), disagreement_of);
    const auto mean = [](const std::vector<double>& values) {
        double sum = 0;
        for (const double value : values) {
            sum += value;
        }
        return sum / static_cast<double>(values.size());
    };
    return {std::string(name),
            size,
            mean(samples.times) * kMicroseconds / repeats,
            mean(samples.floors) * kMicroseconds / repeats,
            samples.RatioOfSums(),
            disagreement_of(samples),
            static_cast<int>(samples.times.size())};
}

// Short ones by the clock, of which the median knows nothing of the few runs that were interrupted.
template <class Action, class Floor>
[[nodiscard]] Row CompareShort(std::string_view name, int size, const Limits& limits, const Action& action,
                               const Floor& floor) {
    const int repeats = std::max(RepeatsFor(action), RepeatsFor(floor));
    const auto clock = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    const auto ratios_of = [](const Samples& samples) {
        std::vector<double> ratios;
        ratios.reserve(samples.times.size());
        for (size_t run = 0; run < samples.times.size(); ++run) {
            ratios.push_back(samples.times[run] / samples.floors[run]);
        }
        return ratios;
    };
    const Samples samples = Take(limits, clock, Repeated(action, repeats), Repeated(floor, repeats),
                                 [&](const Samples& so_far) { return DisagreementOf(ratios_of(so_far)); });
    return {std::string(name),
            size,
            Median(samples.times) * kMicroseconds / repeats,
            Median(samples.floors) * kMicroseconds / repeats,
            Median(ratios_of(samples)),
            DisagreementOf(ratios_of(samples)),
            static_cast<int>(samples.times.size())};
}

template <class Action, class Floor>
[[nodiscard]] Row Compare(std::string_view name, int size, const Limits& limits, const Action& action,
                          const Floor& floor) {
    constexpr int kFewRecords = 10;
    return size < kFewRecords ? CompareShort(name, size, limits, action, floor)
                              : CompareLong(name, size, limits, action, floor);
}

inline void PrintHeading() {
    std::printf("%-34s %8s %14s %14s %7s %9s %5s\n", "", "records", "us", "floor us", "ratio", "agreement", "runs");
}

inline void Print(const Row& row) {
    std::printf("%-34s %8d %14.2f %14.2f %7.3f %8.1f%% %5d\n", row.name.c_str(), row.size, row.time, row.floor,
                row.ratio, row.disagreement * 100, row.runs);
    std::fflush(stdout);
}

inline void WriteJson(const char* file_name, const std::vector<Row>& rows) {
    std::ofstream file(file_name);
    file << "[\n";
    for (const Row& row : rows) {
        file << R"(  {"name": ")" << row.name << R"(", "records": )" << row.size << R"(, "microseconds": )" << row.time
             << R"(, "floor_microseconds": )" << row.floor << R"(, "ratio": )" << row.ratio << R"(, "disagreement": )"
             << row.disagreement << R"(, "runs": )" << row.runs << "}" << (&row == &rows.back() ? "\n" : ",\n");
    }
    file << "]\n";
}

}  // namespace paylodge::bench
