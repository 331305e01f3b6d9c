// The form of a date-time's text.
#pragma once

#include <string_view>

namespace standin
{
// 25 characters with numbers in their ranges: yyyymmddHHMMSS.mmmmmmsUUU for a moment, s being + or - and UUU
// minutes; ddddddddHHMMSS.mmmmmm:000 for an interval. Asterisks for what is not known are refused.
// `anyOffset`: the offset may be a number of any length, which may have a sign of its own ("-0", "+60",
// "--60").
bool IsDateTime(std::wstring_view text, bool anyOffset) noexcept;
} // namespace standin
