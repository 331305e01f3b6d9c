#include "tools/zebdiag/LocaleName.h"

#include "Common/src/com/Text.h"

#include <cwchar>
#include <windows.h>

namespace zebdiag
{
namespace
{
// The language of a hexadecimal number; 0 where the text is none or names no language.
LCID LocaleOfNumber(std::wstring_view digits)
{
    if (digits.empty() || digits.size() > 8 ||
        digits.find_first_not_of(L"0123456789abcdefABCDEF") != std::wstring_view::npos)
        return 0;
    return std::wcstoul(std::wstring(digits).c_str(), nullptr, 16);
}

LCID LocaleOf(std::wstring_view text)
{
    for (const std::wstring_view prefix : {std::wstring_view(L"MS_"), std::wstring_view(L"0x")})
        if (text.size() > prefix.size() && EqualNoCaseAscii(text.substr(0, prefix.size()), prefix))
            return LocaleOfNumber(text.substr(prefix.size()));
    if (text.empty())
        return 0;
    // A bare number begins with a digit: "de" is a language.
    if (text.front() >= L'0' && text.front() <= L'9')
        return LocaleOfNumber(text);
    const LCID named = LocaleNameToLCID(std::wstring(text).c_str(), 0);
    // What has no number of its own cannot be asked for.
    return named == LOCALE_CUSTOM_UNSPECIFIED ? 0 : named;
}

std::wstring NameOf(LCID locale)
{
    wchar_t name[16] = {};
    _snwprintf(name, 15, L"MS_%lx", locale);
    return name;
}
} // namespace

std::wstring LocaleArgument(std::wstring_view text)
{
    const LCID locale = LocaleOf(text);
    return locale == 0 ? std::wstring() : NameOf(locale);
}

std::wstring CallerLocale(const std::wstring& given)
{
    return given.empty() ? NameOf(GetUserDefaultUILanguage()) : given;
}

unsigned long NumberOfLocale(const std::wstring& locale)
{
    return LocaleOf(locale);
}
} // namespace zebdiag
