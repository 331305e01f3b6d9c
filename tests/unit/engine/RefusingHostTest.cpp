// What is built where the system does not tell what it is asked for, or tells something else each time. The
// computer's name is asked for once per process, so that this is a program of its own.
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/results/CimDateTime.h"
#include "tests/support/ImportHook.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

ZEB_HOOKED_IMPORT("kernel32", GetComputerNameA)
ZEB_HOOKED_IMPORT("kernel32", GetTimeZoneInformation)

namespace
{
BOOL WINAPI RefuseName(char*, DWORD*)
{
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

// The next answer of the system; a null pointer is a refusal.
const LONG* s_bias;
DWORD WINAPI ZoneOfBias(TIME_ZONE_INFORMATION* zone)
{
    if (!s_bias)
        return TIME_ZONE_ID_INVALID;
    *zone = {};
    zone->Bias = *s_bias;
    return TIME_ZONE_ID_UNKNOWN;
}

TEST(RefusingHostTest, EveryPathNamesTheSystemError)
{
    const CTraceCapture trace;
    {
        const CImportHook name(__imp_GetComputerNameA, &RefuseName);
        EXPECT_STREQ(
            L"Tolva_DiagTest.Name=\"1@K\",CreationClassName=\"Tolva_DiagTest\",SystemCreationClassName="
            L"\"Win32_ComputerSystem\",SystemName=\"error\"",
            CreateTestReference(L"1@K", false).Text());
    }
    // The system would tell by now, but is not asked again.
    EXPECT_STREQ(L"Tolva_DiagResult.DiagnosticCreationClassName=\"Tolva_DiagTest\",DiagnosticName=\"1@K\","
                 L"ExecutionID=\"K\",DiagSystemCreationClassName=\"Win32_ComputerSystem\",DiagSystemName="
                 L"\"error\"",
                 CreateResultReference(L"1@K").Text());
    EXPECT_STREQ(L"Tolva_EthernetAdapter.DeviceID=\"K\",CreationClassName=\"Tolva_EthernetAdapter\","
                 L"SystemCreationClassName=\"Win32_ComputerSystem\",SystemName=\"error\"",
                 CreateSysElemReference(L"K", false).Text());
    EXPECT_EQ(1u, trace.Count("Get computer name failed with 50"));
}

TEST(RefusingHostTest, EveryConversionAsksForTheZone)
{
    constexpr SYSTEMTIME kTime = {2024, 3, 2, 5, 6, 7, 8, 999};
    constexpr LONG kEast = -60;
    constexpr LONG kWest = 300;
    const CImportHook zone(__imp_GetTimeZoneInformation, &ZoneOfBias);
    CCoTaskMem<wchar_t> text;
    EXPECT_FALSE(ConvertSystemTimeToString(&kTime, text));
    s_bias = &kEast;
    ASSERT_TRUE(ConvertSystemTimeToString(&kTime, text));
    EXPECT_STREQ(L"20240305060708.000000+60", text.Get());
    s_bias = &kWest;
    ASSERT_TRUE(ConvertSystemTimeToString(&kTime, text));
    EXPECT_STREQ(L"20240305060708.000000-300", text.Get());
    s_bias = nullptr;
    EXPECT_FALSE(ConvertSystemTimeToString(&kTime, text));
}
} // namespace
