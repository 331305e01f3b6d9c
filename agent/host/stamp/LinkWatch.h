// Watches, on a thread of its own, whether an adapter keeps its link.
#pragma once

#include "Common/src/com/Owned.h"

#include <functional>
#include <thread>

class CLinkWatch
{
  public:
    // `isUp` is asked once every `interval` milliseconds until it says no, on the watch's thread.
    CLinkWatch(std::function<bool()> isUp, DWORD interval);
    ~CLinkWatch();
    CLinkWatch(const CLinkWatch&) = delete;
    CLinkWatch& operator=(const CLinkWatch&) = delete;

    // Signalled once the link is gone.
    HANDLE Gone() const noexcept { return m_gone.Get(); }

  private:
    const std::function<bool()> m_isUp;
    const CHandle m_gone;
    const CHandle m_end;
    std::thread m_thread;
};
