// What a page says of one test.
#pragma once

#include "tools/zebdiag/report/Html.h"
#include "tools/zebdiag/report/Report.h"

#include <string>

namespace zebdiag
{
// What the result found, in words: cause and next step of a failure.
void AddFindings(CHtml& html, const CResult& result);

// `id` is that of the element on the page.
void AddTestCard(CHtml& html, const CReport& report, const CTest& test, const std::wstring& id);
} // namespace zebdiag
