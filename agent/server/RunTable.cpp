#include "agent/server/RunTable.h"

#include "Common/src/com/Text.h"

#include <new>

CRunTable::CRun::CRun(CRunTable& table, Name name)
    : m_table(table), m_name(std::move(name)), m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (!m_stop)
        throw std::bad_alloc();
}

CRunTable::CRun::~CRun()
{
    const std::lock_guard lock(m_table.m_mutex);
    const auto entry = m_table.m_stopEvents.find(m_name);
    // A run that lost the race for its place ends without having been entered.
    if (entry != m_table.m_stopEvents.end() && entry->second == m_stop.Get())
        m_table.m_stopEvents.erase(entry);
}

std::unique_ptr<CRunTable::CRun> CRunTable::Begin(std::wstring_view adapterKey, ULONG testId)
{
    std::unique_ptr<CRun> run(new CRun(*this, {UpperCaseAnsi(adapterKey), testId}));
    bool entered = false;
    {
        const std::lock_guard lock(m_mutex);
        entered = m_stopEvents.emplace(run->m_name, run->StopEvent()).second;
    }
    return entered ? std::move(run) : nullptr;
}

bool CRunTable::Stop(std::wstring_view adapterKey, ULONG testId)
{
    const CRun::Name name(UpperCaseAnsi(adapterKey), testId);
    const std::lock_guard lock(m_mutex);
    const auto entry = m_stopEvents.find(name);
    return entry != m_stopEvents.end() && SetEvent(entry->second);
}
