// Before the first test of a program, nothing runs that an earlier program left, as one that was killed does.
// After the last one, it is told how often the stand-in had to do something again.
#include "tests/system/support/Process.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <windows.h>

namespace
{
class CCleanStart : public testing::Environment
{
  public:
    void SetUp() override
    {
        // Clients first, lest they start servers again.
        KillServers({L"zebdiag.exe", L"cscript.exe", L"WmiStandin.exe", L"Drevok.EXE", L"VorlProxy.exe",
                     L"StandinTestProvider.exe"});
        for (const wchar_t* count : kCounts)
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, count);
    }
    void TearDown() override
    {
        for (const wchar_t* count : kCounts)
        {
            DWORD number = 0;
            DWORD size = sizeof number;
            RegGetValueW(HKEY_LOCAL_MACHINE, kKey, count, RRF_RT_REG_DWORD, nullptr, &number, &size);
            std::printf("Stand-in: %ls %lu\n", count, number);
        }
    }

  private:
    static constexpr wchar_t kKey[] = L"SOFTWARE\\WMI stand-in";
    static constexpr const wchar_t* kCounts[] = {L"StartsRepeated", L"DeadServersForgotten"};
};

const testing::Environment* const g_cleanStart = testing::AddGlobalTestEnvironment(new CCleanStart);
} // namespace
