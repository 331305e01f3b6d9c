// One call of a client while the service works on it. The work runs on a thread of its own and makes its
// calls to the provider one after another; the answers go through the outbox.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "standin/service/Outbox.h"

namespace standin
{
class CRequest
{
  public:
    // `context` is what the provider gets: the client's own, or one with the connection's locale.
    CRequest(CServiceLife::CUse use, ComPtr<IWbemObjectSink> client, long flags,
             ComPtr<IWbemContext> context);

    long Flags() const noexcept { return m_flags; }
    IWbemContext* Context() const noexcept { return m_context.Get(); }

    // Hands one object to the client; WBEM_E_CALL_CANCELLED where it wants no more.
    HRESULT Indicate(ComPtr<IWbemClassObject> object) { return m_outbox->Indicate(std::move(object)); }
    void Finish(COutcome outcome) { m_outbox->Finish(std::move(outcome)); }

    // The client has lost interest: it is told so at once, and the provider is asked to stop.
    void Cancel();
    // The client is gone.
    void Abandon();
    // Set by either.
    HANDLE Cancelled() const noexcept { return m_cancelled.Get(); }

    // Whether the sink is the one that the client gave with this call.
    bool AnswersTo(IUnknown* sink) const;

    // The call to a provider that is under way, so that it can be cancelled.
    void EnterProvider(ComPtr<IWbemServices> provider, ComPtr<IWbemObjectSink> sink);
    void LeaveProvider();

  private:
    void StopProvider();

    const long m_flags;
    const ComPtr<IWbemContext> m_context;
    const std::shared_ptr<COutbox> m_outbox;
    const CHandle m_cancelled;
    CCriticalSection m_lock;
    ComPtr<IWbemServices> m_provider;
    ComPtr<IWbemObjectSink> m_providerSink;
};
} // namespace standin
