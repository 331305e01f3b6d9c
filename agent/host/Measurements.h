// The measurements of an agent: one for each adapter and test that ever ran one, kept as long as the agent.
// Free-threaded. Adapter keys are compared without case, because the provider upper-cases them.
#pragma once

#include "agent/host/stamp/Measurement.h"

#include <map>
#include <string>
#include <utility>

class CMeasurements
{
  public:
    // A new one if need be. Throws std::bad_alloc.
    CMeasurement& Of(const std::wstring& adapterKey, ULONG testId);
    // Null if that test has not run on that adapter.
    const CMeasurement* Find(const std::wstring& adapterKey, ULONG testId) const;

  private:
    mutable std::mutex m_mutex;
    std::map<std::pair<std::wstring, ULONG>, CMeasurement> m_measurements;
};
