#include "CDM/src/engine/catalogue/StopSignal.h"

#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/EngineStatus.h"

namespace
{
// Of the process, like the event.
CSharedLock s_lock;
ULONG s_requests = 0; // noted and not taken
ULONG s_inUse = 0;    // locked tests that have the event
} // namespace

bool CStopSignal::Create() noexcept
{
    m_event.Reset(CreateEventW(nullptr, TRUE, FALSE, L"SenderResponderEvent"));
    return static_cast<bool>(m_event);
}

bool CStopSignal::Lock() noexcept
{
    const CWriteScope held(s_lock);
    if (m_locked)
        return false;
    m_locked = true;
    if (m_event)
        ++s_inUse;
    return true;
}

bool CStopSignal::Unlock() noexcept
{
    const CWriteScope held(s_lock);
    if (!m_locked)
        return false;
    m_locked = false;
    Forget();
    if (m_event && --s_inUse == 0)
        ResetEvent(m_event.Get());
    return true;
}

HRESULT CStopSignal::Request() noexcept
{
    const CWriteScope held(s_lock);
    if (!m_locked)
        return engine::Stopped;
    if (!m_event || !SetEvent(m_event.Get()))
        return E_FAIL;
    if (!m_requested)
        ++s_requests;
    m_requested = true;
    return S_OK;
}

CStopSignal::Seen CStopSignal::Take() noexcept
{
    const CWriteScope held(s_lock);
    if (m_requested)
    {
        Forget();
        return Seen::Ours;
    }
    if (s_requests > 0)
        return Seen::Others;
    if (WaitForSingleObject(m_event.Get(), 0) != WAIT_OBJECT_0)
        return Seen::Gone;
    ResetEvent(m_event.Get());
    return Seen::Ours;
}

void CStopSignal::Forget() noexcept
{
    if (!m_requested)
        return;
    m_requested = false;
    if (--s_requests == 0)
        ResetEvent(m_event.Get());
}
