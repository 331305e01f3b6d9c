#include "CDM/src/engine/CimDateTime.h"

#include "CDM/src/ZebDebug.h"

#include <cstdio>
#include <cwchar>

bool ConvertSystemTimeToString(const SYSTEMTIME* time, CCoTaskMem<wchar_t>& text,
                               TimeZoneReader readZone) noexcept
{
    if (!time)
    {
        text.Reset();
        return false;
    }
    TIME_ZONE_INFORMATION zone{};
    if (readZone(&zone) == TIME_ZONE_ID_INVALID)
    {
        ZebDebug().Write("ConvertSystemTimeToString: GetTimeZoneInformation failed.");
        return false;
    }
    // Clients know these texts: a zone with a daylight rule counts as being in daylight time all year, the
    // sign comes from the bias alone, and the number is not padded.
    LONG offset = zone.Bias;
    if (zone.DaylightDate.wMonth != 0)
        offset += zone.DaylightBias;
    const bool east = zone.Bias < 0;

    wchar_t buffer[64];
    const int length = _snwprintf(buffer, std::size(buffer), L"%04u%02u%02u%02u%02u%02u.000000%c%ld",
                                  time->wYear, time->wMonth, time->wDay, time->wHour, time->wMinute,
                                  time->wSecond, east ? L'+' : L'-', east ? -offset : offset);
    wchar_t* const copy = static_cast<wchar_t*>(CoTaskMemAlloc((length + 1) * sizeof(wchar_t)));
    if (!copy)
        return false;
    wmemcpy(copy, buffer, length + 1);
    text.Reset(copy);
    return true;
}

bool ConvertStringToSystemTime(const wchar_t* text, SYSTEMTIME& time) noexcept
{
    unsigned year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    if (!text ||
        swscanf(text, L"%04u%02u%02u%02u%02u%02u", &year, &month, &day, &hour, &minute, &second) != 6)
        return false;
    time = {};
    time.wYear = static_cast<WORD>(year);
    time.wMonth = static_cast<WORD>(month);
    time.wDay = static_cast<WORD>(day);
    time.wHour = static_cast<WORD>(hour);
    time.wMinute = static_cast<WORD>(minute);
    time.wSecond = static_cast<WORD>(second);
    return true;
}
