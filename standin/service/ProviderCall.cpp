#include "standin/service/ProviderCall.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/service/Activation.h"

#include <optional>

namespace standin
{
namespace
{
// The sink that a provider answers to. Hands each object on at once and remembers how the call ended.
class CProviderSink : public CComObject<IWbemObjectSink>
{
  public:
    explicit CProviderSink(ObjectConsumer consume);

    STDMETHODIMP Indicate(long count, IWbemClassObject** objects) override;
    STDMETHODIMP SetStatus(long flags, HRESULT result, BSTR text, IWbemClassObject* object) override;

    // Set when the provider has given its status.
    HANDLE Ended() const noexcept { return m_ended.Get(); }
    // Takes what the provider said, if it has, and refuses everything from now on.
    std::optional<COutcome> Close();

  private:
    const CHandle m_ended;
    CCriticalSection m_lock;
    ObjectConsumer m_consume; // empty once closed
    std::optional<COutcome> m_outcome;
};

CProviderSink::CProviderSink(ObjectConsumer consume)
    : m_ended(CreateEventW(nullptr, TRUE, FALSE, nullptr)), m_consume(std::move(consume))
{
}

STDMETHODIMP CProviderSink::Indicate(long count, IWbemClassObject** objects)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (count < 0 || (count > 0 && !objects))
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            for (long i = 0; i < count; ++i)
            {
                if (!m_consume || m_outcome)
                    return wmi::CallCancelled;
                if (!objects[i])
                    return wmi::InvalidParameter;
                if (const HRESULT hr = m_consume(objects[i]); FAILED(hr))
                    return hr;
            }
            return wmi::NoError;
        });
}

STDMETHODIMP CProviderSink::SetStatus(long flags, HRESULT result, BSTR text, IWbemClassObject* object)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != WBEM_STATUS_COMPLETE)
                return wmi::NoError;
            COutcome outcome(result);
            if (text)
                outcome.Text = CBstr(std::wstring_view(text, SysStringLen(text)));
            outcome.Status = object;
            const CLockScope lock(m_lock);
            if (!m_outcome)
                m_outcome = std::move(outcome);
            SetEvent(m_ended.Get());
            return wmi::NoError;
        });
}

std::optional<COutcome> CProviderSink::Close()
{
    const CLockScope lock(m_lock);
    m_consume = nullptr;
    return m_outcome;
}

// For the request's time in the provider: who cancels the request finds the call here.
class CProviderScope
{
  public:
    CProviderScope(CRequest& request, const ProviderReference& provider, const ComPtr<CProviderSink>& sink)
        : m_request(request), m_entered(m_request.EnterProvider(provider, sink))
    {
    }
    ~CProviderScope() { m_request.LeaveProvider(); }
    CProviderScope(const CProviderScope&) = delete;
    CProviderScope& operator=(const CProviderScope&) = delete;

    // False where the request has been cancelled.
    bool Entered() const noexcept { return m_entered; }

  private:
    CRequest& m_request;
    const bool m_entered;
};

// Waits for the status of a call that the provider has taken on; gives the result where none comes.
HRESULT AwaitStatus(const CProvider& provider, const CProviderSink& sink, CRequest& request)
{
    const HANDLE handles[] = {sink.Ended(), request.Cancelled(), provider.Process.Get()};
    switch (WaitForMultipleObjects(3, handles, FALSE, INFINITE))
    {
    case WAIT_OBJECT_0:
        return wmi::NoError;
    case WAIT_OBJECT_0 + 2:
        return wmi::ProviderFailure;
    default:
        request.StopProvider();
        return wmi::CallCancelled;
    }
}
} // namespace

COutcome CallProvider(CProviderPool& pool, const std::wstring& nameSpace,
                      const CProviderRegistration& registration, CRequest& request, ObjectConsumer consume,
                      const ProviderStart& start)
{
    ProviderReference provider;
    const HRESULT acquired = pool.Acquire(nameSpace, registration, provider);
    if (FAILED(acquired))
        return acquired;

    const ComPtr<CProviderSink> sink = MakeCom<CProviderSink>(std::move(consume));
    HRESULT result = wmi::NoError;
    {
        const CProviderScope scope(request, provider, sink);
        result = scope.Entered() ? start(*provider->Services, sink.Get()) : wmi::CallCancelled;
        request.ProviderReturned();
        if (SUCCEEDED(result))
            result = AwaitStatus(*provider, *sink, request);
    }
    if (std::optional<COutcome> told = sink->Close())
        return std::move(*told);
    return IsServerGone(result) ? wmi::ProviderFailure : result;
}
} // namespace standin
