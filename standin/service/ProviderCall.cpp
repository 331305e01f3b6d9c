#include "standin/service/ProviderCall.h"

#include "Common/src/com/WmiStatus.h"
#include "standin/service/Activation.h"

namespace standin
{
namespace
{
// For the request's time in the provider: who cancels the request finds the call here.
class CProviderScope
{
  public:
    CProviderScope(CRequest& request, const ComPtr<IWbemServices>& provider,
                   const ComPtr<CProviderSink>& sink)
        : m_request(request)
    {
        m_request.EnterProvider(provider, sink);
    }
    ~CProviderScope() { m_request.LeaveProvider(); }
    CProviderScope(const CProviderScope&) = delete;
    CProviderScope& operator=(const CProviderScope&) = delete;

  private:
    CRequest& m_request;
};

// Waits for the status of a call that the provider has taken on; gives the result where none comes.
HRESULT AwaitStatus(const CProvider& provider, const CProviderSink& sink, const CRequest& request)
{
    const HANDLE handles[] = {sink.Ended(), request.Cancelled(), provider.Process.Get()};
    switch (WaitForMultipleObjects(3, handles, FALSE, INFINITE))
    {
    case WAIT_OBJECT_0:
        return wmi::NoError;
    case WAIT_OBJECT_0 + 2:
        return wmi::ProviderFailure;
    default:
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
        const CProviderScope scope(request, provider->Services, sink);
        result = start(*provider->Services, sink.Get());
        if (SUCCEEDED(result))
            result = AwaitStatus(*provider, *sink, request);
    }
    if (std::optional<COutcome> told = sink->Close())
        return std::move(*told);
    return IsServerGone(result) ? wmi::ProviderFailure : result;
}
} // namespace standin
