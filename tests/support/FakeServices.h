// A name space whose GetObject answers from a source of classes, counts its calls and can fail. Any thread
// may call it; it is prepared before.
#pragma once

#include "Common/src/com/ComObject.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/Allocations.h"

#include <functional>
#include <string>
#include <vector>
#include <wbemcli.h>

class CFakeServices : public CComObject<IWbemServices>
{
  public:
    struct CGetCall
    {
        std::wstring Path;
        long Flags;
        IWbemContext* Context;
    };
    using Source = std::function<ComPtr<IWbemClassObject>(const std::wstring& path)>;

    // `source` gives the object under a path, or a null pointer, which becomes WBEM_E_NOT_FOUND.
    explicit CFakeServices(Source source) : m_source(std::move(source)) {}

    // The n-th GetObject from now on (counted from 1) answers `code`.
    void FailGetObject(int n, HRESULT code)
    {
        CLockScope lock(m_section);
        m_failIn = n;
        m_failure = code;
        m_failed = false;
    }
    // Whether the planned failure has come true.
    bool Failed() const
    {
        CLockScope lock(m_section);
        return m_failed;
    }
    // Of the calls so far.
    void Forget()
    {
        CLockScope lock(m_section);
        m_calls.clear();
    }
    std::vector<CGetCall> GetCalls() const
    {
        CLockScope lock(m_section);
        return m_calls;
    }

    STDMETHODIMP GetObject(const BSTR path, LONG flags, IWbemContext* context, IWbemClassObject** object,
                           IWbemCallResult**) override
    {
        const CSparedAllocations spared;
        const std::wstring name = path ? path : L"";
        {
            CLockScope lock(m_section);
            m_calls.push_back({name, flags, context});
            if (m_failIn > 0 && --m_failIn == 0)
            {
                m_failed = true;
                return m_failure;
            }
        }
        *object = m_source(name).Detach();
        return *object ? wmi::NoError : wmi::NotFound;
    }

    // The rest of the interface is not served.
    STDMETHODIMP OpenNamespace(const BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP QueryObjectSink(LONG, IWbemObjectSink**) override { return wmi::NotSupported; }
    STDMETHODIMP GetObjectAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP PutClassAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP DeleteClass(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP DeleteClassAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP CreateClassEnum(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP CreateClassEnumAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP PutInstance(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP DeleteInstance(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP DeleteInstanceAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP CreateInstanceEnum(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP ExecQuery(const BSTR, const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP ExecQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP ExecNotificationQuery(const BSTR, const BSTR, LONG, IWbemContext*,
                                       IEnumWbemClassObject**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP ExecNotificationQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*,
                                            IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP ExecMethod(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*,
                            IWbemClassObject**, IWbemCallResult**) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP ExecMethodAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*,
                                 IWbemObjectSink*) override
    {
        return wmi::NotSupported;
    }

  private:
    Source m_source;
    mutable CCriticalSection m_section;
    std::vector<CGetCall> m_calls;
    int m_failIn = 0;
    HRESULT m_failure = S_OK;
    bool m_failed = false;
};
