// The numbers of a sender or responder: its packets as bars on one scale, in the order of their way, and the
// rest as plain values.
#pragma once

#include "tools/zebdiag/report/Html.h"
#include "tools/zebdiag/report/Report.h"

#include <vector>

namespace zebdiag
{
// How long a bar is on a scale that ends with `most`, in thousandths of its room. What is not nothing can be
// seen.
unsigned BarLength(unsigned long value, unsigned long most) noexcept;

// Where the provider gives other numbers than those of its own agent, all are plain values.
void AddCounters(CHtml& html, const std::vector<CCounter>& counters);
} // namespace zebdiag
