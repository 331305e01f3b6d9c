#include "standin/service/ProviderCall.h"

#include "Common/src/com/WmiStatus.h"
#include "standin/locator/RemoteFailure.h"

namespace standin
{
namespace
{
// How often a provider that owes its status is asked whether it still lives.
constexpr DWORD kLookMilliseconds = 1000;

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
HRESULT AwaitStatus(IWbemServices& provider, const CProviderSink& sink, const CRequest& request)
{
    const HANDLE handles[] = {sink.Ended(), request.Cancelled()};
    for (;;)
    {
        switch (WaitForMultipleObjects(2, handles, FALSE, kLookMilliseconds))
        {
        case WAIT_OBJECT_0:
            return wmi::NoError;
        case WAIT_TIMEOUT:
            if (!IsProviderAlive(&provider))
                return wmi::ProviderFailure;
            break;
        default:
            return wmi::CallCancelled;
        }
    }
}
} // namespace

COutcome CallProvider(CProviderPool& pool, const std::wstring& nameSpace,
                      const CProviderRegistration& registration, CRequest& request, ObjectConsumer consume,
                      const ProviderStart& start)
{
    CProviderPool::CLease lease;
    const HRESULT acquired = pool.Acquire(nameSpace, registration, lease);
    if (FAILED(acquired))
        return acquired;

    const ComPtr<CProviderSink> sink = MakeCom<CProviderSink>(std::move(consume));
    HRESULT result = wmi::NoError;
    {
        const CProviderScope scope(request, lease.Shared(), sink);
        result = CallProcess([&] { return start(*lease.Provider(), sink.Get()); });
        if (SUCCEEDED(result))
            result = AwaitStatus(*lease.Provider(), *sink, request);
    }
    if (std::optional<COutcome> told = sink->Close())
        return std::move(*told);
    return IsServerGone(result) ? wmi::ProviderFailure : result;
}
} // namespace standin
