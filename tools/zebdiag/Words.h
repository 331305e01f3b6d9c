// States, settings and findings in the words that are shown.
#pragma once

#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/Model.h"

#include <string>

namespace zebdiag
{
// "Passed", "In progress" and so on; "Unknown" for a number that has no meaning.
const wchar_t* StateInWords(TestState state) noexcept;
// For JSON documents: "passed", "in_progress".
const char* StateName(TestState state) noexcept;

// What a line of a result found: what follows its time stamp and the name of the test.
std::wstring Finding(const std::wstring& line);

// "1 test", "3 tests": the word must take an s.
std::wstring Count(size_t count, const wchar_t* word);
} // namespace zebdiag
