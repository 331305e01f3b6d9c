// A file that others read at any moment.
#pragma once

#include <string>
#include <string_view>

namespace zebdiag
{
// Replaces the file in one step: a reader finds the former contents or the new ones, never a part. The new
// ones are first written beside it, under the name with ".new" behind. A reader that holds the file for a
// moment is waited for. Throws CFailure; then the former contents are left.
void WriteWholeFile(const std::wstring& file, std::string_view bytes);
} // namespace zebdiag
