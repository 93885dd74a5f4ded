#include "tests/support/live_allocations.hpp"

#include <gtest/gtest.h>
#include <objbase.h>

#include "com/object_root.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {

// Sees every block of the task allocator; `is_counted` is false for blocks that are older than the spy.
class LiveAllocations::Spy : public IMallocSpy {
  public:
    using Row = InterfaceRow<Spy>;
    static constexpr std::array kInterfaces = {Row::Of<IMallocSpy>()};

    explicit Spy(int& count) : count_(count) {}

    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) override { return size; }
    STDMETHODIMP_(void*) PostAlloc(void* block) override {
        count_ += block == nullptr ? 0 : 1;
        return block;
    }
    STDMETHODIMP_(void*) PreFree(void* block, BOOL is_counted) override {
        count_ -= is_counted && block != nullptr ? 1 : 0;
        return block;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* block, SIZE_T size, void** new_block, BOOL) override {
        *new_block = block;
        return size;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, BOOL) override { return size; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int answer) override { return answer; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}

  protected:
    ~Spy() = default;

  private:
    int& count_;
};

LiveAllocations::LiveAllocations() {
    spy_ = ComPtr<IMallocSpy>(ComObject<Spy>::Create(count_).Get());
    EXPECT_HRESULT(S_OK, ::CoRegisterMallocSpy(spy_.Get()));
    // Wine's allocator cannot free an older block before it has handed out a counted one.
    ::CoTaskMemFree(::CoTaskMemAlloc(1));
}

LiveAllocations::~LiveAllocations() { EXPECT_HRESULT(S_OK, ::CoRevokeMallocSpy()); }

bool LiveAllocations::CanCountStrings() noexcept { return ::GetEnvironmentVariableW(L"OANOCACHE", nullptr, 0) != 0; }

}  // namespace paylodge::test
