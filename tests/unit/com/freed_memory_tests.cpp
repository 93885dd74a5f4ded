// What test programs find in memory that was freed: nothing that was there before.

#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "com/bstr.hpp"

namespace paylodge::test {
namespace {

// Reads what the compiler must not know to be freed.
[[nodiscard]] std::vector<unsigned char> ReadAt(std::uintptr_t address, size_t size) {
    std::vector<unsigned char> bytes(size);
    for (size_t index = 0; index < size; ++index) {
        bytes[index] = reinterpret_cast<const volatile unsigned char*>(address)[index];
    }
    return bytes;
}

TEST(FreedMemory, OfAnObjectIsFilledAndKept) {
    auto object = std::make_unique<std::vector<unsigned char>>(64, 1);
    const auto address = reinterpret_cast<std::uintptr_t>(object.get());
    const auto contents = reinterpret_cast<std::uintptr_t>(object->data());
    object.reset();
    const std::vector<unsigned char> other(64, 2);
    EXPECT_EQ(std::vector<unsigned char>(sizeof(std::vector<unsigned char>), 0xDD),
              ReadAt(address, sizeof(std::vector<unsigned char>)));
    EXPECT_EQ(std::vector<unsigned char>(64, 0xDD), ReadAt(contents, 64));
}

TEST(FreedMemory, OfAHeapIsFilledBeforeTheSystemHasIt) {
    const HANDLE heap = ::HeapCreate(0, 0, 0);
    void* const block = ::HeapAlloc(heap, 0, 4096);
    std::memset(block, 1, 4096);
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    EXPECT_TRUE(::HeapFree(heap, 0, block));
    // The heap keeps notes of its own at both ends.
    EXPECT_EQ(std::vector<unsigned char>(64, 0xDD), ReadAt(address + 2048, 64));
    ::HeapDestroy(heap);
}

TEST(FreedMemory, OfStringsAndTaskMemoryIsFilledBeforeTheSystemHasIt) {
    OwnedBstr text = MakeBstr(std::wstring(2048, L'x'));
    const auto text_address = reinterpret_cast<std::uintptr_t>(text.Get());
    text.Reset();
    EXPECT_EQ(std::vector<unsigned char>(64, 0xDD), ReadAt(text_address + 1024, 64));
    void* const block = ::CoTaskMemAlloc(4096);
    std::memset(block, 1, 4096);
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    ::CoTaskMemFree(block);
    EXPECT_EQ(std::vector<unsigned char>(64, 0xDD), ReadAt(address + 2048, 64));
}

}  // namespace
}  // namespace paylodge::test
