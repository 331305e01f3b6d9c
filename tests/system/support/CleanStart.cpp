// Before the first test of a program, nothing runs that an earlier program left, as one that was killed does.
#include "tests/system/support/Process.h"

#include <gtest/gtest.h>

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
    }
};

const testing::Environment* const g_cleanStart = testing::AddGlobalTestEnvironment(new CCleanStart);
} // namespace
