// Reads what the provider offers. Everything here throws CFailure where a request fails.
#pragma once

#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/Model.h"
#include "tools/zebdiag/WmiSession.h"

#include <map>
#include <string>

namespace zebdiag
{
// All tests, grouped by adapter. Fails with WBEM_S_TIMEDOUT if nothing comes for that long.
CInventory LoadInventory(const CWmiSession& session, const AdapterNames& names,
                         LONG patienceMilliseconds = WBEM_INFINITE);

// One test read anew; absent where the provider does not have it any more.
std::optional<CTest> LoadTest(const CWmiSession& session, const CTest& test);

// By the key of the test.
std::map<std::wstring, CResult> LoadResults(const CWmiSession& session,
                                            LONG patienceMilliseconds = WBEM_INFINITE);
std::map<std::wstring, CSetting> LoadSettings(const CWmiSession& session);

std::optional<CResult> LoadResult(const CWmiSession& session, const CTest& test);
std::optional<CSetting> LoadSetting(const CWmiSession& session, const CTest& test);

// Writes those of the values that are given; the others stay as they are.
void StoreSetting(const CWmiSession& session, const CTest& test, const CSettingValues& values);
} // namespace zebdiag
