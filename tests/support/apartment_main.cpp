// Runs the tests in a single-threaded apartment, as the host's user-interface thread does.

#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return 1;
    }
    const int result = RUN_ALL_TESTS();
    ::CoUninitialize();
    return result;
}
