#include "tests/support/bstr_allocations.hpp"

#include "tests/support/automation_function.hpp"
#include "tests/support/import_slot.hpp"

namespace paylodge::test {
namespace {

BstrAllocations* g_active = nullptr;

BSTR WINAPI AllocateByLength(const OLECHAR* text, UINT length) {
    static auto* const allocate = FindInAutomation<decltype(AllocateByLength)>("SysAllocStringLen");
    return BstrAllocations::Run([=] { return allocate(text, length); });
}

BSTR WINAPI AllocateByByteLength(LPCSTR bytes, UINT length) {
    static auto* const allocate = FindInAutomation<decltype(AllocateByByteLength)>("SysAllocStringByteLen");
    return BstrAllocations::Run([=] { return allocate(bytes, length); });
}

}  // namespace

BstrAllocations::BstrAllocations(int number_to_fail) noexcept : number_to_fail_(number_to_fail) { g_active = this; }

BstrAllocations::~BstrAllocations() { g_active = nullptr; }

template <class Allocate>
BSTR BstrAllocations::Run(const Allocate& allocate) {
    if (g_active == nullptr || g_active->is_paused_) {
        return allocate();
    }
    ++g_active->count_;
    g_active->last_ = g_active->count_ == g_active->number_to_fail_ ? nullptr : allocate();
    return g_active->last_;
}

}  // namespace paylodge::test

// The linker takes these slots for those of the import library, so that calls arrive here.
extern "C" {
extern BSTR(WINAPI* const import_of_alloc_string_len)(const OLECHAR*, UINT) PAYLODGE_IMPORT_SLOT(SysAllocStringLen, 8);
extern BSTR(WINAPI* const import_of_alloc_string_byte_len)(LPCSTR, UINT) PAYLODGE_IMPORT_SLOT(SysAllocStringByteLen, 8);
BSTR(WINAPI* const import_of_alloc_string_len)(const OLECHAR*, UINT) = paylodge::test::AllocateByLength;
BSTR(WINAPI* const import_of_alloc_string_byte_len)(LPCSTR, UINT) = paylodge::test::AllocateByByteLength;
}
