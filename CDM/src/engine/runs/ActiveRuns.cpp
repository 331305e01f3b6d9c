#include "CDM/src/engine/runs/ActiveRuns.h"

#include <algorithm>

bool CActiveRuns::Enter(std::shared_ptr<CDiagTest> test)
{
    const CWriteScope held(m_lock);
    if (m_closed)
        return false;
    m_tests.push_back(std::move(test));
    ResetEvent(m_idle.Get());
    return true;
}

void CActiveRuns::Leave(const CDiagTest* test) noexcept
{
    std::shared_ptr<CDiagTest> left; // dies after the lock is given up
    const CWriteScope held(m_lock);
    const auto found = std::find_if(m_tests.begin(), m_tests.end(),
                                    [&](const auto& running) { return running.get() == test; });
    left = std::move(*found);
    m_tests.erase(found);
    if (m_tests.empty())
        SetEvent(m_idle.Get());
}
