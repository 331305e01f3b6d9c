// What is built where the system does not tell what it is asked for. The computer's name is asked for once
// per process, so that this is a program of its own.
#include "CDM/src/engine/CimDateTime.h"
#include "CDM/src/engine/References.h"
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

DWORD WINAPI RefuseZone(TIME_ZONE_INFORMATION*)
{
    return TIME_ZONE_ID_INVALID;
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

TEST(RefusingHostTest, AZoneThatWasRefusedIsAskedForAgain)
{
    TIME_ZONE_INFORMATION expected{};
    const DWORD result = GetTimeZoneInformation(&expected);
    TIME_ZONE_INFORMATION zone{};
    {
        const CImportHook refused(__imp_GetTimeZoneInformation, &RefuseZone);
        EXPECT_EQ(TIME_ZONE_ID_INVALID, ReadTimeZone(&zone));
    }
    EXPECT_EQ(result, ReadTimeZone(&zone));
    EXPECT_EQ(expected.Bias, zone.Bias);
}
} // namespace
