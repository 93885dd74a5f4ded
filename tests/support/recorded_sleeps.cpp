#include "tests/support/recorded_sleeps.hpp"

#include "tests/support/import_slot.hpp"

namespace paylodge::test {
namespace {

RecordedSleeps* g_active = nullptr;

void WINAPI RecordSleep(DWORD milliseconds) {
    if (g_active == nullptr) {
        ::SleepEx(milliseconds, FALSE);
    } else {
        g_active->milliseconds.push_back(milliseconds);
    }
}

}  // namespace

RecordedSleeps::RecordedSleeps() noexcept { g_active = this; }

RecordedSleeps::~RecordedSleeps() { g_active = nullptr; }

}  // namespace paylodge::test

extern "C" {
extern decltype(&::Sleep) const import_of_sleep PAYLODGE_IMPORT_SLOT(Sleep, 4);
decltype(&::Sleep) const import_of_sleep = paylodge::test::RecordSleep;
}
