#include "standin/service/Request.h"

#include "Common/src/com/WmiStatus.h"

namespace standin
{
CRequest::CRequest(long flags, ComPtr<IWbemContext> context, DWORD moment)
    : m_moment(moment), m_flags(flags), m_context(std::move(context)),
      m_answered(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_cancelled(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_returned(CreateEventW(nullptr, TRUE, TRUE, nullptr))
{
}

HRESULT CRequest::Indicate(ComPtr<IWbemClassObject> object)
{
    const CLockScope lock(m_lock);
    if (m_unwanted)
        return wmi::CallCancelled;
    m_answers.emplace_back(std::move(object));
    SetEvent(m_answered.Get());
    return wmi::NoError;
}

void CRequest::Finish(COutcome outcome)
{
    const CLockScope lock(m_lock);
    m_answers.emplace_back(std::move(outcome));
    SetEvent(m_answered.Get());
}

std::vector<CAnswer> CRequest::TakeAnswers()
{
    const CLockScope lock(m_lock);
    ResetEvent(m_answered.Get());
    return std::exchange(m_answers, {});
}

void CRequest::Cancel()
{
    {
        const CLockScope lock(m_lock);
        m_unwanted = true;
    }
    SetEvent(m_cancelled.Get());
    if (WaitForSingleObject(m_returned.Get(), m_moment) == WAIT_TIMEOUT)
        StopProvider();
}

void CRequest::StopProvider()
{
    ProviderReference provider;
    ComPtr<IWbemObjectSink> sink;
    {
        const CLockScope lock(m_lock);
        if (m_told)
            return;
        provider = m_provider;
        sink = m_providerSink;
        m_told = provider != nullptr;
    }
    // Providers need not support it: whatever they go on to send is refused.
    if (provider)
        provider->Services->CancelAsyncCall(sink.Get());
}

bool CRequest::EnterProvider(ProviderReference provider, ComPtr<IWbemObjectSink> sink)
{
    const CLockScope lock(m_lock);
    if (m_unwanted)
        return false;
    ResetEvent(m_returned.Get());
    m_provider = std::move(provider);
    m_providerSink = std::move(sink);
    return true;
}

void CRequest::LeaveProvider()
{
    ProviderReturned();
    const CLockScope lock(m_lock);
    m_provider.reset();
    m_providerSink.Reset();
}
} // namespace standin
