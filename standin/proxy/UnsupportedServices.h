// A namespace that supports nothing: a class that serves some operations derives from it and overrides those.
#pragma once

#include "Common/src/com/ComObject.h"
#include "Common/src/com/WmiStatus.h"

namespace standin
{
// clang-format off
template <class Base = CComObject<IWbemServices>>
class CUnsupportedServices : public Base
{
  public:
    STDMETHODIMP OpenNamespace(const BSTR, long, IWbemContext*, IWbemServices**, IWbemCallResult**) override { return wmi::NotSupported; }
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP QueryObjectSink(long, IWbemObjectSink**) override { return wmi::NotSupported; }
    STDMETHODIMP GetObject(const BSTR, long, IWbemContext*, IWbemClassObject**, IWbemCallResult**) override { return wmi::NotSupported; }
    STDMETHODIMP GetObjectAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP PutClass(IWbemClassObject*, long, IWbemContext*, IWbemCallResult**) override { return wmi::NotSupported; }
    STDMETHODIMP PutClassAsync(IWbemClassObject*, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP DeleteClass(const BSTR, long, IWbemContext*, IWbemCallResult**) override { return wmi::NotSupported; }
    STDMETHODIMP DeleteClassAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP CreateClassEnum(const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return wmi::NotSupported; }
    STDMETHODIMP CreateClassEnumAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP PutInstance(IWbemClassObject*, long, IWbemContext*, IWbemCallResult**) override { return wmi::NotSupported; }
    STDMETHODIMP PutInstanceAsync(IWbemClassObject*, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP DeleteInstance(const BSTR, long, IWbemContext*, IWbemCallResult**) override { return wmi::NotSupported; }
    STDMETHODIMP DeleteInstanceAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP CreateInstanceEnum(const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return wmi::NotSupported; }
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP ExecQuery(const BSTR, const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return wmi::NotSupported; }
    STDMETHODIMP ExecQueryAsync(const BSTR, const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP ExecNotificationQuery(const BSTR, const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return wmi::NotSupported; }
    STDMETHODIMP ExecNotificationQueryAsync(const BSTR, const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP ExecMethod(const BSTR, const BSTR, long, IWbemContext*, IWbemClassObject*, IWbemClassObject**, IWbemCallResult**) override { return wmi::NotSupported; }
    STDMETHODIMP ExecMethodAsync(const BSTR, const BSTR, long, IWbemContext*, IWbemClassObject*, IWbemObjectSink*) override { return wmi::NotSupported; }
};
// clang-format on
} // namespace standin
