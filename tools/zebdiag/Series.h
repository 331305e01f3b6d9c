// Several tests: those of one adapter one after the other, those of different adapters side by side.
#pragma once

#include "tools/zebdiag/NameMatch.h"
#include "tools/zebdiag/RunView.h"

#include <functional>
#include <optional>
#include <vector>

namespace zebdiag
{
enum class Order
{
    SideBySide, // one at a time for each adapter
    OneByOne
};

// Runs one test. Called on a thread of the adapter's own, which is in the multithreaded apartment.
using RunFunction = std::function<CRunOutcome(const CTestChoice&, const CRunObserver&)>;

// The tests by their places in the list: each lane is worked off by a thread of its own.
std::vector<std::vector<size_t>> LanesOf(const std::vector<CTestChoice>& tests, Order order);

// Comes back when all lanes have ended. An outcome is absent if the test was not begun: because `stop` was
// set, or because a run was interrupted, which ends the whole series. If a run or the view throws, no other
// test is begun, the others come to their end, and the exception goes on to the caller.
std::vector<std::optional<CRunOutcome>> RunSeries(const std::vector<CTestChoice>& tests, Order order,
                                                  HANDLE stop, const RunFunction& run, IRunView& view);
} // namespace zebdiag
