// Languages as people write them and as the management service wants them.
#pragma once

#include <string>
#include <string_view>

namespace zebdiag
{
// "MS_407" for "MS_407", "ms_407", "407", "0x407" and "de-DE"; empty for what names no language.
std::wstring LocaleArgument(std::wstring_view text);

// The language that a call asks for, in that form: the given one, or that of the user's own programs.
std::wstring CallerLocale(const std::wstring& given);
// The number of a language in that form.
unsigned long NumberOfLocale(const std::wstring& locale);
} // namespace zebdiag
