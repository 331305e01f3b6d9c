// The sink that every enumeration of the benchmark delivers to, the provider's and the bare one's alike: it
// counts the objects and remembers how the request ended. Any thread may call it.
#pragma once

#include "Common/src/com/ComObject.h"

#include <atomic>
#include <wbemcli.h>

class CCountingSink final : public CComObject<IWbemObjectSink>
{
  public:
    STDMETHODIMP Indicate(LONG count, IWbemClassObject**) override
    {
        m_count.fetch_add(count, std::memory_order_relaxed);
        return WBEM_S_NO_ERROR;
    }
    STDMETHODIMP SetStatus(LONG, HRESULT result, BSTR, IWbemClassObject*) override
    {
        m_result = result;
        return WBEM_S_NO_ERROR;
    }

    // How many objects came since the last question.
    long TakeCount() noexcept { return m_count.exchange(0); }
    HRESULT Result() const noexcept { return m_result; }

  private:
    std::atomic<long> m_count{0};
    std::atomic<HRESULT> m_result{E_PENDING};
};
