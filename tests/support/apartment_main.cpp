// Runs the tests in a single-threaded apartment, as the host's user-interface thread does.

#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

#include <cstdio>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (const HRESULT entered = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); FAILED(entered)) {
        std::fprintf(stderr, "the thread could not enter an apartment: 0x%08lx\n", static_cast<unsigned long>(entered));
        return 1;
    }
    const int result = RUN_ALL_TESTS();
    ::CoUninitialize();
    return result;
}
