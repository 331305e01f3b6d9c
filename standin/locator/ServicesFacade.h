// What a client holds as its namespace. The service answers asynchronous calls only; here they become the
// synchronous and semi-synchronous forms, and failures become the error object of the calling thread.
#pragma once

#include "standin/locator/CallSink.h"
#include "standin/locator/SecuredObject.h"

namespace standin
{
class CServicesFacade : public CSecuredObject<IWbemServices>
{
  public:
    // `serviceProcess` is null where the service is in this process.
    CServicesFacade(ComPtr<IWbemServices> service, SharedHandle serviceProcess);

    STDMETHODIMP OpenNamespace(const BSTR nameSpace, long flags, IWbemContext* context,
                               IWbemServices** opened, IWbemCallResult** result) override;
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink* sink) override;
    STDMETHODIMP QueryObjectSink(long flags, IWbemObjectSink** sink) override;
    STDMETHODIMP GetObject(const BSTR path, long flags, IWbemContext* context, IWbemClassObject** object,
                           IWbemCallResult** result) override;
    STDMETHODIMP GetObjectAsync(const BSTR path, long flags, IWbemContext* context,
                                IWbemObjectSink* sink) override;
    STDMETHODIMP PutClass(IWbemClassObject* object, long flags, IWbemContext* context,
                          IWbemCallResult** result) override;
    STDMETHODIMP PutClassAsync(IWbemClassObject* object, long flags, IWbemContext* context,
                               IWbemObjectSink* sink) override;
    STDMETHODIMP DeleteClass(const BSTR name, long flags, IWbemContext* context,
                             IWbemCallResult** result) override;
    STDMETHODIMP DeleteClassAsync(const BSTR name, long flags, IWbemContext* context,
                                  IWbemObjectSink* sink) override;
    STDMETHODIMP CreateClassEnum(const BSTR superclass, long flags, IWbemContext* context,
                                 IEnumWbemClassObject** objects) override;
    STDMETHODIMP CreateClassEnumAsync(const BSTR superclass, long flags, IWbemContext* context,
                                      IWbemObjectSink* sink) override;
    STDMETHODIMP PutInstance(IWbemClassObject* object, long flags, IWbemContext* context,
                             IWbemCallResult** result) override;
    STDMETHODIMP PutInstanceAsync(IWbemClassObject* object, long flags, IWbemContext* context,
                                  IWbemObjectSink* sink) override;
    STDMETHODIMP DeleteInstance(const BSTR path, long flags, IWbemContext* context,
                                IWbemCallResult** result) override;
    STDMETHODIMP DeleteInstanceAsync(const BSTR path, long flags, IWbemContext* context,
                                     IWbemObjectSink* sink) override;
    STDMETHODIMP CreateInstanceEnum(const BSTR className, long flags, IWbemContext* context,
                                    IEnumWbemClassObject** objects) override;
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR className, long flags, IWbemContext* context,
                                         IWbemObjectSink* sink) override;
    STDMETHODIMP ExecQuery(const BSTR language, const BSTR query, long flags, IWbemContext* context,
                           IEnumWbemClassObject** objects) override;
    STDMETHODIMP ExecQueryAsync(const BSTR language, const BSTR query, long flags, IWbemContext* context,
                                IWbemObjectSink* sink) override;
    STDMETHODIMP ExecNotificationQuery(const BSTR language, const BSTR query, long flags,
                                       IWbemContext* context, IEnumWbemClassObject** objects) override;
    STDMETHODIMP ExecNotificationQueryAsync(const BSTR language, const BSTR query, long flags,
                                            IWbemContext* context, IWbemObjectSink* sink) override;
    STDMETHODIMP ExecMethod(const BSTR path, const BSTR method, long flags, IWbemContext* context,
                            IWbemClassObject* in, IWbemClassObject** out, IWbemCallResult** result) override;
    STDMETHODIMP ExecMethodAsync(const BSTR path, const BSTR method, long flags, IWbemContext* context,
                                 IWbemClassObject* in, IWbemObjectSink* sink) override;

  private:
    // `start` begins the asynchronous call with a sink. Both throw nothing but std::bad_alloc inside.
    template <class Start>
    HRESULT Call(long flags, IWbemClassObject** object, IWbemCallResult** result, Start start) noexcept;
    template <class Start>
    HRESULT Enumerate(long flags, IEnumWbemClassObject** objects, Start start) noexcept;

    const ComPtr<IWbemServices> m_service;
    const SharedHandle m_process;
};
} // namespace standin
