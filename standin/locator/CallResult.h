// The outcome of a call that returned at once: the client asks for it when it likes.
#pragma once

#include "standin/locator/CallSink.h"

namespace standin
{
class CCallResult : public CComObject<IWbemCallResult>
{
  public:
    explicit CCallResult(ComPtr<CCallSink> sink, ComPtr<IWbemServices> services = {}) noexcept
        : m_sink(std::move(sink)), m_services(std::move(services))
    {
    }

    // Each waits up to `timeout` milliseconds (WBEM_INFINITE: as long as it takes) and answers
    // WBEM_S_TIMEDOUT where the call has not ended by then, and the failure of a call that failed.
    STDMETHODIMP GetResultObject(long timeout, IWbemClassObject** object) override;
    STDMETHODIMP GetResultString(long timeout, BSTR* text) override;
    STDMETHODIMP GetResultServices(long timeout, IWbemServices** services) override;
    // The call's own status; the method succeeds also where the call failed.
    STDMETHODIMP GetCallStatus(long timeout, long* status) override;

  private:
    const ComPtr<CCallSink> m_sink;
    const ComPtr<IWbemServices> m_services;
};
} // namespace standin
