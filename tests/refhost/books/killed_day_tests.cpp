// Processes that are killed at random moments of a day leave a company file that is whole, with everything that they
// had committed. PAYLODGE_KILLS in the environment says how many; there are fewer under Windows, where starting a
// process takes longer.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>

#include "refhost/books/audit.hpp"
#include "tests/refhost/books/killable_process.hpp"
#include "tests/refhost/books/sample_books.hpp"
#include "tests/refhost/books/temporary_company.hpp"

namespace paylodge::refhost {
namespace {

#ifdef _WIN32
constexpr int kUsualKills = 15;
constexpr int kLongestDelay = 400;
#else
constexpr int kUsualKills = 200;
constexpr int kLongestDelay = 60;
#endif

[[nodiscard]] int Kills() {
    const char* const wanted = std::getenv("PAYLODGE_KILLS");
    return wanted == nullptr ? kUsualKills : std::atoi(wanted);
}

// The number of the last document that a process knew to be committed.
[[nodiscard]] int LastProgress(const std::string& path) {
    std::ifstream file(path);
    int last = 0;
    for (int number = 0; file >> number;) {
        last = number;
    }
    return last;
}

// Until a process has committed something, however busy the machine is.
void WaitForProgress(const std::string& path, int last) {
    constexpr int kLongestWait = 30'000;
    constexpr int kPause = 5;
    for (int waited = 0; LastProgress(path) == last && waited < kLongestWait; waited += kPause) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kPause));
    }
}

TEST(KilledDay, LeavesTheFileWholeWithEverythingThatWasCommitted) {
    const TemporaryCompany file;
    const std::string progress = TemporaryPath(".progress");
    std::mt19937 random(20260115);
    std::uniform_int_distribution<int> delay(0, kLongestDelay);
    size_t recorded = 0;
    for (int kill = 0; kill < Kills(); ++kill) {
        {
            const int last = LastProgress(progress);
            const KillableProcess process("day_writer", {file.Path(), progress});
            // One in four is killed at work for certain; the others also while they start.
            if (kill % 4 == 0) {
                WaitForProgress(progress, last);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(delay(random)));
        }
        const auto company = file.Open();
        ASSERT_THAT(Audit(*company), ::testing::IsEmpty()) << "after kill " << kill;
        const size_t before = recorded;
        recorded = company->Records(kSalesReceipts).size();
        ASSERT_GE(recorded, before) << "after kill " << kill;
        // A document is there as a whole.
        ASSERT_EQ(company->Records(kCreditMemos).size(), recorded) << "after kill " << kill;
        ASSERT_EQ(company->Records(kDeposits).size(), recorded) << "after kill " << kill;
        ASSERT_GE(recorded, static_cast<size_t>(LastProgress(progress))) << "after kill " << kill;
    }
    EXPECT_GT(recorded, 0U) << "no process lived long enough to record anything";
    std::filesystem::remove(progress);
}

}  // namespace
}  // namespace paylodge::refhost
