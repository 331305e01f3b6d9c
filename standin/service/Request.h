// One call of a client while the service works on it. The work runs on a thread of its own and makes its
// calls to the provider one after another; the answers wait here until the client's connection sends them.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "standin/pipe/Messages.h"
#include "standin/service/ProviderPool.h"

namespace standin
{
class CRequest
{
  public:
    // `context` is what the provider gets: the client's own, or one with the connection's locale.
    CRequest(long flags, ComPtr<IWbemContext> context);

    long Flags() const noexcept { return m_flags; }
    IWbemContext* Context() const noexcept { return m_context.Get(); }

    // Answers with one object; WBEM_E_CALL_CANCELLED where the client wants no more.
    HRESULT Indicate(ComPtr<IWbemClassObject> object);
    void Finish(COutcome outcome);

    // Takes the answers that have gathered. Answered() is set while there are any.
    std::vector<CAnswer> TakeAnswers();
    HANDLE Answered() const noexcept { return m_answered.Get(); }

    // The client is gone or has taken the call back: the provider is asked to stop.
    void Cancel();
    HANDLE Cancelled() const noexcept { return m_cancelled.Get(); }

    // The call to a provider that is under way, so that it can be cancelled; false where the request has been
    // cancelled, and nothing is to be asked of a provider any more.
    bool EnterProvider(ProviderReference provider, ComPtr<IWbemObjectSink> sink);
    void LeaveProvider();

  private:
    const long m_flags;
    const ComPtr<IWbemContext> m_context;
    const CHandle m_answered;
    const CHandle m_cancelled;
    CCriticalSection m_lock;
    std::vector<CAnswer> m_answers;
    bool m_unwanted = false;
    ProviderReference m_provider;
    ComPtr<IWbemObjectSink> m_providerSink;
};
} // namespace standin
