#include "CDM/src/engine/results/CimDateTime.h"

#include "CDM/src/ZebDebug.h"

#include <cwchar>

namespace
{
wchar_t* PutNumber(wchar_t* to, LONGLONG number, int width) noexcept
{
    if (number < 0)
    {
        *to++ = L'-';
        number = -number;
    }
    wchar_t digits[24];
    int count = 0;
    do
        digits[count++] = static_cast<wchar_t>(L'0' + number % 10);
    while ((number /= 10) != 0 || count < width);
    while (count > 0)
        *to++ = digits[--count];
    return to;
}

// Fills in a format whose fields are "%04u", "%02u", "%c" and "%ld". The C runtime's formatter takes twenty
// times as long.
wchar_t* Fill(wchar_t* to, const wchar_t* format, const LONGLONG* value) noexcept
{
    for (; *format; ++format)
    {
        if (*format != L'%')
        {
            *to++ = *format;
            continue;
        }
        int width = 0;
        while (*++format >= L'0' && *format <= L'9')
            width = width * 10 + (*format - L'0');
        if (*format == L'l')
            ++format;
        if (*format == L'c')
            *to++ = static_cast<wchar_t>(*value++);
        else
            to = PutNumber(to, *value++, width);
    }
    return to;
}
} // namespace

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

    const LONGLONG values[] = {time->wYear,   time->wMonth,  time->wDay,         time->wHour,
                               time->wMinute, time->wSecond, east ? L'+' : L'-', east ? -offset : offset};
    wchar_t buffer[64];
    wchar_t* const end = Fill(buffer, L"%04u%02u%02u%02u%02u%02u.000000%c%ld", values);
    *end = L'\0';
    const size_t length = end - buffer;
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
