#include "standin/locator/Locale.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"

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

LCID AmendedLocale(long flags, IWbemContext* context)
{
    if (!(flags & WBEM_FLAG_USE_AMENDED_QUALIFIERS))
        return 0;
    CVariant value;
    if (!context || FAILED(context->GetValue(L"LocaleID", 0, value.Put())) || value.vt != VT_BSTR)
        return GetUserDefaultLCID();
    return ParseLocale({value.bstrVal, SysStringLen(value.bstrVal)}).value_or(GetUserDefaultLCID());
}
} // namespace standin
