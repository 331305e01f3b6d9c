// The provider's two interfaces with every operation of IWbemServices refused. The provider overrides those
// that it serves; the rest share this one answer and leave no trace.
#pragma once

#include "Common/src/com/ComObject.h"
#include "Common/src/com/WmiStatus.h"

#include <wbemprov.h>

class CUnsupportedServices : public CComObject<IWbemProviderInit, IWbemServices>
{
  public:
    // clang-format off
    STDMETHODIMP OpenNamespace(const BSTR, long, IWbemContext*, IWbemServices**, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP QueryObjectSink(long, IWbemObjectSink**) override { return NotSupported(); }
    STDMETHODIMP GetObject(const BSTR, long, IWbemContext*, IWbemClassObject**, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP PutClass(IWbemClassObject*, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP PutClassAsync(IWbemClassObject*, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP DeleteClass(const BSTR, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP DeleteClassAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP CreateClassEnum(const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP CreateClassEnumAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP PutInstance(IWbemClassObject*, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP DeleteInstance(const BSTR, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP DeleteInstanceAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP CreateInstanceEnum(const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP ExecQuery(const BSTR, const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP ExecQueryAsync(const BSTR, const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP ExecNotificationQuery(const BSTR, const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP ExecNotificationQueryAsync(const BSTR, const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP ExecMethod(const BSTR, const BSTR, long, IWbemContext*, IWbemClassObject*, IWbemClassObject**, IWbemCallResult**) override { return NotSupported(); }
    // clang-format on

  private:
    static HRESULT NotSupported() noexcept { return wmi::NotSupported; }
};
