// The entry point of every test program: one multithreaded apartment, as in the provider's process.
#include <gtest/gtest.h>
#include <objbase.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))
        return 2;
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
