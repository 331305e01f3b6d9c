// States, settings and findings in the words that are shown.
#pragma once

#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/Model.h"

#include <string>
#include <vector>

namespace zebdiag
{
// "Passed", "In progress" and so on; "Unknown" for a number that has no meaning.
const wchar_t* StateInWords(TestState state) noexcept;
// How a run ended: "passed", "could not run".
const wchar_t* OutcomeInWords(ExitCode code) noexcept;
// For JSON documents: "passed", "in_progress".
const char* StateName(TestState state) noexcept;

// What a result found: of each line what follows its time stamp and the name of the test. Counters are shown
// as the unsigned numbers that they are; the lines have those from 2^31 on as negative ones.
std::vector<std::wstring> Findings(const CResult& result);

// Ends a message about what the provider alone knows.
inline constexpr wchar_t kTraceTells[] = L"Its trace tells why; \"zebdiag doctor\" says where it is.";

// "1 test", "3 tests": the word must take an s.
std::wstring Count(size_t count, const wchar_t* word);
} // namespace zebdiag
