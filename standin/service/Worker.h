// Work on another thread of the process, inside the multithreaded apartment.
#pragma once

#include <functional>

namespace standin
{
// Runs the work soon; where the system has no thread left, at once on this one. The work throws nothing that
// matters: an exception ends it quietly. Throws std::bad_alloc.
void RunOnWorker(std::function<void()> work);
} // namespace standin
