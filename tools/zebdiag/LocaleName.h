// Languages as people write them and as the management service wants them.
#pragma once

#include <string>
#include <string_view>

namespace zebdiag
{
// "MS_407" for "MS_407", "ms_407", "407", "0x407" and "de-DE"; empty for what names no language.
std::wstring LocaleArgument(std::wstring_view text);
} // namespace zebdiag
