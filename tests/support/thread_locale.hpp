// Another code page for the calling thread than the system's.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

namespace paylodge::test {

// The calling thread's locale, and with it its code page, for a while.
class ThreadLocale {
  public:
    explicit ThreadLocale(LANGID language) { EXPECT_TRUE(::SetThreadLocale(MAKELCID(language, SORT_DEFAULT))); }
    ~ThreadLocale() { EXPECT_TRUE(::SetThreadLocale(before_)); }
    ThreadLocale(const ThreadLocale&) = delete;
    ThreadLocale& operator=(const ThreadLocale&) = delete;

  private:
    LCID before_ = ::GetThreadLocale();
};

inline constexpr LANGID kGreek = MAKELANGID(LANG_GREEK, SUBLANG_DEFAULT);

}  // namespace paylodge::test
