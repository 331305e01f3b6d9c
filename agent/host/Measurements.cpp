#include "agent/host/Measurements.h"

#include "Common/src/com/Text.h"

CMeasurement& CMeasurements::Of(const std::wstring& adapterKey, ULONG testId)
{
    const std::pair name(UpperCaseAnsi(adapterKey), testId);
    const std::lock_guard lock(m_mutex);
    return m_measurements[name];
}

const CMeasurement* CMeasurements::Find(const std::wstring& adapterKey, ULONG testId) const
{
    const std::pair name(UpperCaseAnsi(adapterKey), testId);
    const std::lock_guard lock(m_mutex);
    const auto found = m_measurements.find(name);
    return found == m_measurements.end() ? nullptr : &found->second;
}
