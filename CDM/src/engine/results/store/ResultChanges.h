// Which of two states of a stored result is the newer one. Provider objects can overlap: each has results of
// its own in memory, and one that ends later may hold an older state of a result than the file. Changes are
// numbered through the whole process. Any thread may ask.
#pragma once

#include <string>
#include <windows.h>

namespace ResultChanges
{
// Greater than every number before it.
ULONGLONG Next() noexcept;

// Whether a change may go to the file at `path` under this name: nothing newer has gone there. It then is the
// newest. Throws std::bad_alloc.
bool Claim(const std::wstring& path, const wchar_t* resultId, ULONGLONG change);
} // namespace ResultChanges
