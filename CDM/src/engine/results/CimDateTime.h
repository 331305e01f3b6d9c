// Local times as CIM DATETIME text and back.
#pragma once

#include "Common/src/com/Owned.h"

#include <windows.h>

// How the time zone is asked for; tests put their own in.
using TimeZoneReader = DWORD(WINAPI*)(TIME_ZONE_INFORMATION*);

// "yyyymmddHHMMSS.000000" and the zone's offset, which is asked for each time. False with a null text for a
// null time; false with `text` untouched if the zone cannot be read.
bool ConvertSystemTimeToString(const SYSTEMTIME* time, CCoTaskMem<wchar_t>& text,
                               TimeZoneReader readZone = &GetTimeZoneInformation) noexcept;

// Reads the first fourteen digits; fraction and offset are ignored. False if they are not all there.
bool ConvertStringToSystemTime(const wchar_t* text, SYSTEMTIME& time) noexcept;
