// What a report shows: everything that the provider knows of a computer at one moment.
#pragma once

#include "tools/zebdiag/Model.h"

#include <map>
#include <string>
#include <vector>

namespace zebdiag
{
struct CReport
{
    std::wstring Computer; // as the provider gives it
    std::wstring Namespace;
    std::wstring Made;              // local time, in the form of the provider's times
    std::vector<CAdapter> Adapters; // those that were asked for
    std::vector<unsigned long> Processes;
    std::map<std::wstring, CResult> Results;         // by the key of the test
    std::map<std::wstring, CSettingValues> Settings; // of the tests that have any

    // Null where the test has none.
    const CResult* ResultOf(const CTest& test) const;
    const CSettingValues* SettingOf(const CTest& test) const;
};

// A number that a sender or a responder counted or measured.
struct CCounter
{
    std::wstring Name; // in the language of the result
    unsigned long Value;
};

// The numbers of a result in the provider's order; empty for a result that holds words.
std::vector<CCounter> CountersOf(const CTest& test, const CResult& result);
} // namespace zebdiag
