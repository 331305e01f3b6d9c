// A report as a page that needs nothing but itself: no script, and nothing that a browser would have to
// fetch.
#pragma once

#include "tools/zebdiag/report/Report.h"

#include <string>

namespace zebdiag
{
std::wstring HtmlReport(const CReport& report);
} // namespace zebdiag
