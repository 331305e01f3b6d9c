// States, settings and findings in the words that are shown.
#pragma once

#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/Model.h"

#include <string>
#include <vector>

namespace zebdiag
{
// "Passed", "In progress" and so on; "Unknown" for a number that has no meaning.
std::wstring StateInWords(TestState state);
// How a run ended: "passed", "could not run".
std::wstring OutcomeInWords(ExitCode code);
// For JSON documents: "passed", "in_progress".
const char* StateName(TestState state) noexcept;

// What a result found: of each line what follows its time stamp and the name of the test. Counters are shown
// as the unsigned numbers that they are; the lines have those from 2^31 on as negative ones.
std::vector<std::wstring> Findings(const CResult& result);

// "1 test", "3 tests" and so on.
std::wstring Tests(size_t count);
std::wstring Adapters(size_t count);
std::wstring Results(size_t count);

// "45 %".
std::wstring Percent(long value);

// Goes behind a message about what the provider alone knows.
std::wstring TraceTells();
} // namespace zebdiag
