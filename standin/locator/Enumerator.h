// The result set of an enumeration or a query. Objects arrive by themselves in batches; reading one is a
// local call.
#pragma once

#include "standin/locator/CallSink.h"
#include "standin/locator/SecuredObject.h"

namespace standin
{
class CEnumerator : public CSecuredObject<IEnumWbemClassObject>
{
  public:
    // `service` is where the call runs: dropping the last enumerator of an unfinished call cancels it there.
    CEnumerator(ComPtr<IWbemServices> service, ComPtr<CCallSink> sink, bool forwardOnly);

    STDMETHODIMP Reset() override;
    STDMETHODIMP Next(long timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override;
    STDMETHODIMP NextAsync(ULONG count, IWbemObjectSink* sink) override;
    STDMETHODIMP Clone(IEnumWbemClassObject** copy) override;
    STDMETHODIMP Skip(long timeout, ULONG count) override;

  private:
    class CCall;

    CEnumerator(std::shared_ptr<CCall> call, size_t position);
    HRESULT Read(long timeout, ULONG count, std::vector<ComPtr<IWbemClassObject>>& objects);

    const std::shared_ptr<CCall> m_call;
    CCriticalSection m_lock;
    size_t m_position = 0;
};
} // namespace standin
