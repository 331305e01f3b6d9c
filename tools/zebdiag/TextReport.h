// What the commands show, as text. `width` is that of the terminal; 0 leaves lines whole.
#pragma once

#include "tools/zebdiag/JsonReport.h"
#include "tools/zebdiag/Model.h"
#include "tools/zebdiag/NameMatch.h"
#include "tools/zebdiag/Profiles.h"

#include <map>
#include <string>
#include <vector>

namespace zebdiag
{
// "Ethernet 2 (Vendor Gigabit Controller)".
std::wstring AdapterTitle(const CAdapter& adapter);
// "Link on Ethernet 2".
std::wstring TestTitle(const CTestChoice& choice);

// "Passed", "In progress, 45 %".
std::wstring StateCell(const CResult& result);
// Coverage, quick and report; a dash for one that does not apply.
std::vector<std::wstring> SettingCells(const CSettingValues& values);
// What those three mean.
std::wstring SettingsExplained();

// The tests of these adapters, one table for each adapter, and a summary that names the processes.
std::wstring RenderList(const CInventory& inventory, const std::vector<const CAdapter*>& adapters,
                        const std::vector<unsigned long>& processes, unsigned width);

// The results that these tests have, one table for each adapter, and a summary.
std::wstring RenderResults(const std::vector<CTestChoice>& tests,
                           const std::map<std::wstring, CResult>& results, unsigned width);

// The settings of these tests, of those that have any.
std::wstring RenderSettings(const std::vector<CTestChoice>& tests,
                            const std::map<std::wstring, CSetting>& settings, unsigned width);

std::wstring RenderProfiles(const Profiles& profiles, unsigned width);

// A line for each test and what became of it.
std::wstring EffectsInWords(const std::vector<CTestEffect>& effects);

// The findings of a result, indented; empty where it has none.
std::wstring RenderFindings(const CResult& result, unsigned width);
} // namespace zebdiag
