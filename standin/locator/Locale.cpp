#include "standin/locator/Locale.h"

#include "Common/src/com/Text.h"

#include <cwchar>

namespace standin
{
std::optional<LCID> ParseLocale(std::wstring_view text) noexcept
{
    constexpr std::wstring_view prefix = L"MS_";
    if (text.size() <= prefix.size() || text.size() > prefix.size() + 8 ||
        !EqualNoCaseAscii(text.substr(0, prefix.size()), prefix))
        return std::nullopt;
    LCID locale = 0;
    for (const wchar_t c : text.substr(prefix.size()))
    {
        const unsigned digit = c >= L'0' && c <= L'9'   ? c - L'0'
                               : c >= L'a' && c <= L'f' ? c - L'a' + 10
                               : c >= L'A' && c <= L'F' ? c - L'A' + 10
                                                        : 16;
        if (digit == 16)
            return std::nullopt;
        locale = locale * 16 + digit;
    }
    return locale;
}

std::wstring LocaleText(LCID locale)
{
    wchar_t text[16] = {};
    _snwprintf(text, std::size(text) - 1, L"MS_%lX", locale);
    return text;
}
} // namespace standin
