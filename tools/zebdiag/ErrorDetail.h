// What the provider said about a call that failed: its extended status, which arrives as the calling
// thread's error object.
#pragma once

#include <string>

namespace zebdiag
{
// Forgets what an earlier call left, so that it is not taken for the next one's.
void ClearErrorDetail() noexcept;

// Takes the thread's error object and puts it into words; empty where there is none. Call it on the thread of
// the failed call, right after it.
std::wstring TakeErrorDetail();
} // namespace zebdiag
