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
    // `context` is the client's, which the provider gets; it may be null. `moment`: see Cancel.
    CRequest(long flags, ComPtr<IWbemContext> context, DWORD moment = 200);

    long Flags() const noexcept { return m_flags; }
    IWbemContext* Context() const noexcept { return m_context.Get(); }

    // Answers with one object; WBEM_E_CALL_CANCELLED where the client wants no more.
    HRESULT Indicate(ComPtr<IWbemClassObject> object);
    void Finish(COutcome outcome);

    // Takes the answers that have gathered. Answered() is set while there are any.
    std::vector<CAnswer> TakeAnswers();
    HANDLE Answered() const noexcept { return m_answered.Get(); }

    // The client is gone or has taken the call back: the provider is asked to stop. A call that has just
    // begun may still be on its way to the provider, which knows nothing yet that it could stop: so whoever
    // made the call tells it once the call has returned, and this one only after a moment (milliseconds),
    // because a call may take as long as a diagnostic does.
    void Cancel();
    HANDLE Cancelled() const noexcept { return m_cancelled.Get(); }

    // The call to a provider that is under way, so that it can be cancelled; false where the request has been
    // cancelled, and nothing is to be asked of a provider any more.
    bool EnterProvider(ProviderReference provider, ComPtr<IWbemObjectSink> sink);
    // The call to the provider has returned: it has taken the work on, or has carried it out.
    void ProviderReturned() noexcept { SetEvent(m_returned.Get()); }
    // Tells the provider to stop, once.
    void StopProvider();
    void LeaveProvider();

  private:
    const DWORD m_moment;
    const long m_flags;
    const ComPtr<IWbemContext> m_context;
    const CHandle m_answered;
    const CHandle m_cancelled;
    const CHandle m_returned; // set while no call to a provider is under way
    CCriticalSection m_lock;
    std::vector<CAnswer> m_answers;
    bool m_unwanted = false;
    bool m_told = false; // a provider, to stop
    ProviderReference m_provider;
    ComPtr<IWbemObjectSink> m_providerSink;
};
} // namespace standin
