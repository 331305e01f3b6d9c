// Where threads wait for each other. Not std::latch, whose waiters can sleep for ever in this toolchain.
#pragma once

#include "Common/src/com/Owned.h"

#include <atomic>
#include <gtest/gtest.h>

namespace zebdiag
{
class CGate
{
  public:
    // Opens when so many have arrived.
    explicit CGate(int count) : m_missing(count) {}

    void Arrive()
    {
        if (--m_missing == 0)
            SetEvent(m_open.Get());
    }
    // A gate that stays shut is a failure, and lets all go on.
    void Wait()
    {
        constexpr DWORD kLongest = 60000;
        if (WaitForSingleObject(m_open.Get(), kLongest) != WAIT_OBJECT_0)
        {
            ADD_FAILURE() << "those that were waited for did not come";
            SetEvent(m_open.Get());
        }
    }
    void ArriveAndWait()
    {
        Arrive();
        Wait();
    }

  private:
    std::atomic<int> m_missing;
    const CHandle m_open{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};
} // namespace zebdiag
