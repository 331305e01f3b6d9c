// Work on a thread of its own, inside the multithreaded apartment.
#pragma once

#include <functional>

namespace standin
{
// Starts the work; where the system has no thread left, it runs at once on this one. An exception ends it
// quietly. Throws std::bad_alloc.
//
// Not the system's thread pool: incoming COM calls run there too, and under Wine a call may then wait for a
// request that takes as long as a diagnostic does.
void RunOnWorker(std::function<void()> work);
} // namespace standin
