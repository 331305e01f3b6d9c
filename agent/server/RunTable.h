// The runs that an agent has in progress: at most one per adapter and test, each with the event that stops
// it. Free-threaded. Adapter keys are compared without case, because the provider upper-cases them.
#pragma once

#include "Common/src/com/Owned.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

class CRunTable
{
  public:
    // A run in progress, ended by its destructor. Does not outlive its table.
    class CRun
    {
      public:
        ~CRun();
        CRun(const CRun&) = delete;
        CRun& operator=(const CRun&) = delete;

        // Signalled once somebody asked for the run to be stopped.
        HANDLE StopEvent() const noexcept { return m_stop.Get(); }
        // Waits for the stop request; true if it came within the time.
        bool WaitForStop(DWORD milliseconds) const noexcept
        {
            return WaitForSingleObject(m_stop.Get(), milliseconds) == WAIT_OBJECT_0;
        }

      private:
        friend class CRunTable;
        using Name = std::pair<std::wstring, ULONG>;
        CRun(CRunTable& table, Name name);

        CRunTable& m_table;
        Name m_name;
        CHandle m_stop;
    };

    // Null if that test already runs on that adapter. Throws std::bad_alloc.
    std::unique_ptr<CRun> Begin(std::wstring_view adapterKey, ULONG testId);
    // False if that test does not run on that adapter.
    bool Stop(std::wstring_view adapterKey, ULONG testId);

  private:
    std::mutex m_mutex;
    std::map<CRun::Name, HANDLE> m_stopEvents;
};
