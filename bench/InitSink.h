// Where a provider tells how its initialisation went.
#pragma once

#include "Common/src/com/ComObject.h"

#include <atomic>
#include <wbemprov.h>

class CInitSink final : public CComObject<IWbemProviderInitSink>
{
  public:
    STDMETHODIMP SetStatus(LONG status, LONG) override
    {
        m_status = status;
        return WBEM_S_NO_ERROR;
    }
    HRESULT Status() const noexcept { return m_status; }

  private:
    std::atomic<HRESULT> m_status{E_PENDING};
};
