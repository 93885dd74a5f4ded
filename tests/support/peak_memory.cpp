#include "tests/support/peak_memory.hpp"

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>

#include "tests/support/automation_function.hpp"
#include "tests/support/import_slot.hpp"

namespace paylodge::test {
namespace {

// Before each block of the heap; keeps the block aligned for everything.
struct alignas(std::max_align_t) BlockHeader {
    size_t size;
    // The count that it belongs to.
    unsigned count;
};

struct StringBlock {
    BSTR text;
    size_t size;
};

// Far more strings than any code holds at a time.
constexpr size_t kMostStrings = 4096;

struct Counter {
    bool is_counting = false;
    unsigned count = 0;
    size_t held = 0;
    size_t peak = 0;
    std::array<StringBlock, kMostStrings> strings{};
    size_t string_count = 0;

    void Add(size_t size) noexcept {
        held += size;
        peak = std::max(peak, held);
    }
};

Counter g_counter;

// Allocations until the one that fails, that one included; 0 or less: none fails any more.
int g_allocations_to_failure = 0;
bool g_is_failing_planned = false;

[[nodiscard]] void* Allocate(size_t size) noexcept {
    if (g_is_failing_planned && --g_allocations_to_failure == 0) {
        return nullptr;
    }
    auto* const header = static_cast<BlockHeader*>(std::malloc(sizeof(BlockHeader) + size));
    if (header == nullptr) {
        return nullptr;
    }
    *header = {size, g_counter.is_counting ? g_counter.count : 0};
    if (header->count != 0) {
        g_counter.Add(size);
    }
    return header + 1;
}

void Free(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    BlockHeader* const header = static_cast<BlockHeader*>(block) - 1;
    if (g_counter.is_counting && header->count == g_counter.count) {
        g_counter.held -= header->size;
    }
    std::free(header);
}

[[nodiscard]] BSTR Count(BSTR text) noexcept {
    if (g_counter.is_counting && text != nullptr) {
        if (g_counter.string_count == kMostStrings) {
            std::abort();
        }
        const size_t size = ::SysStringByteLen(text);
        g_counter.strings[g_counter.string_count++] = {text, size};
        g_counter.Add(size);
    }
    return text;
}

BSTR WINAPI AllocateByLength(const OLECHAR* text, UINT length) {
    static auto* const allocate = FindInAutomation<decltype(AllocateByLength)>("SysAllocStringLen");
    return Count(allocate(text, length));
}

BSTR WINAPI AllocateByByteLength(LPCSTR bytes, UINT length) {
    static auto* const allocate = FindInAutomation<decltype(AllocateByByteLength)>("SysAllocStringByteLen");
    return Count(allocate(bytes, length));
}

void WINAPI FreeString(BSTR text) {
    static auto* const free_string = FindInAutomation<decltype(FreeString)>("SysFreeString");
    const auto end = g_counter.strings.begin() + static_cast<std::ptrdiff_t>(g_counter.string_count);
    const auto found =
        std::find_if(g_counter.strings.begin(), end, [text](const StringBlock& block) { return block.text == text; });
    if (text != nullptr && found != end) {
        g_counter.held -= found->size;
        *found = g_counter.strings[--g_counter.string_count];
    }
    free_string(text);
}

}  // namespace

PeakMemory::PeakMemory() noexcept {
    ++g_counter.count;
    g_counter.held = 0;
    g_counter.peak = 0;
    g_counter.string_count = 0;
    g_counter.is_counting = true;
}

PeakMemory::~PeakMemory() {
    g_counter.is_counting = false;
    g_counter.string_count = 0;
}

size_t PeakMemory::Bytes() const noexcept { return g_counter.peak; }

FailingAllocation::FailingAllocation(int number) noexcept {
    g_allocations_to_failure = number;
    g_is_failing_planned = true;
}

FailingAllocation::~FailingAllocation() { g_is_failing_planned = false; }

bool FailingAllocation::HasFailed() const noexcept { return g_allocations_to_failure <= 0; }

}  // namespace paylodge::test

// The linker takes these slots for those of the import library, so that calls arrive here.
extern "C" {
extern BSTR(WINAPI* const import_of_alloc_string_len)(const OLECHAR*, UINT) PAYLODGE_IMPORT_SLOT(SysAllocStringLen, 8);
extern BSTR(WINAPI* const import_of_alloc_string_byte_len)(LPCSTR, UINT) PAYLODGE_IMPORT_SLOT(SysAllocStringByteLen, 8);
extern void(WINAPI* const import_of_free_string)(BSTR) PAYLODGE_IMPORT_SLOT(SysFreeString, 4);
BSTR(WINAPI* const import_of_alloc_string_len)(const OLECHAR*, UINT) = paylodge::test::AllocateByLength;
BSTR(WINAPI* const import_of_alloc_string_byte_len)(LPCSTR, UINT) = paylodge::test::AllocateByByteLength;
void(WINAPI* const import_of_free_string)(BSTR) = paylodge::test::FreeString;
}

void* operator new(size_t size) {
    for (;;) {
        if (void* const block = paylodge::test::Allocate(size)) {
            return block;
        }
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) {
            throw std::bad_alloc();
        }
        handler();
    }
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return paylodge::test::Allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return paylodge::test::Allocate(size); }
void operator delete(void* block) noexcept { paylodge::test::Free(block); }
void operator delete[](void* block) noexcept { paylodge::test::Free(block); }
void operator delete(void* block, size_t) noexcept { paylodge::test::Free(block); }
void operator delete[](void* block, size_t) noexcept { paylodge::test::Free(block); }
