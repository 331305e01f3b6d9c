// The tests of a series as a table on a terminal, with a bar for all of them and the time left.
#pragma once

#include "tools/zebdiag/RunRows.h"
#include "tools/zebdiag/ScreenLine.h"

namespace zebdiag
{
struct CScreenSize
{
    unsigned Width = 0;
    unsigned Height = 0;
};

// False if a terminal is too small for anything that would still be a table.
bool HasRoomForRuns(CScreenSize size) noexcept;

// Every line leaves the terminal's last column free, and all lines leave its last line free. Tests that there
// is no room for are counted: what runs is shown first, then what went wrong, then what waits.
std::vector<CScreenLine> DrawRuns(const std::vector<CRunRow>& rows, Order order, CScreenSize size);

// The table at the end: all rows and no bar.
std::vector<CScreenLine> DrawEndedRuns(const std::vector<CRunRow>& rows, unsigned width);
} // namespace zebdiag
