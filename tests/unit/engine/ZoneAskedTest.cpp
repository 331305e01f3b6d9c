// A time zone that changes while the provider runs counts from the next time that is converted.
#include "CDM/src/engine/results/CimDateTime.h"
#include "tests/support/ImportHook.h"

#include <gtest/gtest.h>
#include <string>

extern "C" decltype(&GetTimeZoneInformation) __imp_GetTimeZoneInformation;

namespace
{
LONG s_minutesEast = 0;

DWORD WINAPI NextZone(TIME_ZONE_INFORMATION* zone)
{
    *zone = {};
    zone->Bias = -++s_minutesEast;
    return TIME_ZONE_ID_UNKNOWN;
}

TEST(ZoneAskedTest, EveryTimeHasTheZoneOfItsMoment)
{
    const SYSTEMTIME time = {2024, 3, 0, 5, 6, 7, 8, 0};
    s_minutesEast = 0;
    const CImportHook zones(__imp_GetTimeZoneInformation, &NextZone);
    for (int i = 1; i <= 3; ++i)
    {
        CCoTaskMem<wchar_t> text;
        ASSERT_TRUE(ConvertSystemTimeToString(&time, text));
        EXPECT_EQ(L"20240305060708.000000+" + std::to_wstring(i), text.Get());
    }
    EXPECT_EQ(3, s_minutesEast);
}
} // namespace
