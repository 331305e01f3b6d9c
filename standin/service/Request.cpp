#include "standin/service/Request.h"

namespace standin
{
CRequest::CRequest(CServiceLife::CUse use, ComPtr<IWbemObjectSink> client, long flags,
                   ComPtr<IWbemContext> context)
    : m_flags(flags), m_context(std::move(context)),
      m_outbox(std::make_shared<COutbox>(std::move(use), std::move(client))),
      m_cancelled(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
}

void CRequest::Cancel()
{
    m_outbox->Cancel();
    StopProvider();
}

void CRequest::Abandon()
{
    m_outbox->Abandon();
    StopProvider();
}

bool CRequest::AnswersTo(IUnknown* sink) const
{
    ComPtr<IUnknown> mine;
    ComPtr<IUnknown> other;
    return SUCCEEDED(m_outbox->Client().As(mine)) && SUCCEEDED(ComPtr<IUnknown>(sink).As(other)) &&
           mine.Get() == other.Get();
}

void CRequest::EnterProvider(ComPtr<IWbemServices> provider, ComPtr<IWbemObjectSink> sink)
{
    const CLockScope lock(m_lock);
    m_provider = std::move(provider);
    m_providerSink = std::move(sink);
}

void CRequest::LeaveProvider()
{
    EnterProvider(nullptr, nullptr);
}

void CRequest::StopProvider()
{
    SetEvent(m_cancelled.Get());
    ComPtr<IWbemServices> provider;
    ComPtr<IWbemObjectSink> sink;
    {
        const CLockScope lock(m_lock);
        provider = m_provider;
        sink = m_providerSink;
    }
    // Providers need not support it: whatever they go on to send is refused.
    if (provider)
        provider->CancelAsyncCall(sink.Get());
}
} // namespace standin
