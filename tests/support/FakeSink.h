// A response sink that remembers what it was given. Any thread may call it.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/CriticalSection.h"
#include "tests/support/Allocations.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include <wbemcli.h>

class CFakeSink final : public CComObject<IWbemObjectSink>
{
  public:
    struct CStatus
    {
        long Flags;
        HRESULT Result;
        std::optional<std::wstring> Parameter;
        ComPtr<IWbemClassObject> Object;
    };

    // The n-th Indicate from now on (counted from 1) answers `code` and keeps nothing.
    void FailIndicate(int n, HRESULT code)
    {
        CLockScope lock(m_section);
        m_failIn = n;
        m_failure = code;
    }
    // Called with every SetStatus, before it is kept.
    std::function<void()> OnStatus;
    // The next SetStatus answers `code`; what it was given is kept all the same.
    void FailSetStatus(HRESULT code)
    {
        CLockScope lock(m_section);
        m_statusFailure = code;
    }
    std::vector<ComPtr<IWbemClassObject>> Objects() const
    {
        CLockScope lock(m_section);
        return m_objects;
    }
    // The number of objects in each Indicate that arrived, failed ones included.
    std::vector<long> Indications() const
    {
        CLockScope lock(m_section);
        return m_indications;
    }
    std::vector<CStatus> Statuses() const
    {
        CLockScope lock(m_section);
        return m_statuses;
    }

    STDMETHODIMP Indicate(LONG count, IWbemClassObject** objects) override
    {
        const CSparedAllocations spared;
        CLockScope lock(m_section);
        m_indications.push_back(count);
        if (m_failIn > 0 && --m_failIn == 0)
            return m_failure;
        for (LONG i = 0; i < count; ++i)
            m_objects.emplace_back(objects[i]);
        return WBEM_S_NO_ERROR;
    }
    STDMETHODIMP SetStatus(LONG flags, HRESULT result, BSTR parameter, IWbemClassObject* object) override
    {
        const CSparedAllocations spared;
        if (OnStatus)
            OnStatus();
        CLockScope lock(m_section);
        m_statuses.push_back({flags, result,
                              parameter ? std::optional<std::wstring>(parameter) : std::nullopt,
                              ComPtr<IWbemClassObject>(object)});
        return std::exchange(m_statusFailure, static_cast<HRESULT>(WBEM_S_NO_ERROR));
    }

  private:
    mutable CCriticalSection m_section;
    std::vector<ComPtr<IWbemClassObject>> m_objects;
    std::vector<long> m_indications;
    std::vector<CStatus> m_statuses;
    int m_failIn = 0;
    HRESULT m_failure = S_OK;
    HRESULT m_statusFailure = WBEM_S_NO_ERROR;
};
