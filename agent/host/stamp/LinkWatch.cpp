#include "agent/host/stamp/LinkWatch.h"

#include "Common/src/com/ComBoundary.h"

CLinkWatch::CLinkWatch(std::function<bool()> isUp, DWORD interval)
    : m_isUp(std::move(isUp)), m_gone(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_end(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (!m_gone || !m_end)
        throw std::bad_alloc();
    m_thread = std::thread(
        [this, interval]
        {
            bool up = true;
            while (up && WaitForSingleObject(m_end.Get(), interval) == WAIT_TIMEOUT)
                // What cannot be asked for want of memory is asked again.
                AtComBoundary(
                    [&]() -> HRESULT
                    {
                        up = m_isUp();
                        return S_OK;
                    });
            if (!up)
                SetEvent(m_gone.Get());
        });
}

CLinkWatch::~CLinkWatch()
{
    SetEvent(m_end.Get());
    m_thread.join();
}
