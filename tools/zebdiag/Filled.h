// Sentences with values in them.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace zebdiag
{
// The text with "{1}", "{2}" and so on replaced by the values. A place that has no value stays as it is.
std::wstring Filled(std::wstring_view text, std::initializer_list<std::wstring> values);
} // namespace zebdiag
