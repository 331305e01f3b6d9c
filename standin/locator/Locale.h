// Locales as clients name them: "MS_" and a language identifier in hexadecimal.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <windows.h>

namespace standin
{
// "MS_409" gives 0x409; nothing where the text is of another form.
std::optional<LCID> ParseLocale(std::wstring_view text) noexcept;
// The other way.
std::wstring LocaleText(LCID locale);
} // namespace standin
