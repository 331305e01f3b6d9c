// A namespace as the service offers it to one connection: the asynchronous operations, each of which starts a
// request and returns. What is wrong with the arguments themselves is told at once; everything else is the
// status of the request.
#pragma once

#include "standin/service/Connection.h"
#include "standin/service/InstanceSource.h"
#include "standin/service/UnsupportedServices.h"

namespace standin
{
class CNamespaceServices : public CUnsupportedServices
{
  public:
    CNamespaceServices(CService& service, std::shared_ptr<CConnection> connection) noexcept
        : m_service(service), m_connection(std::move(connection))
    {
    }

    STDMETHODIMP OpenNamespace(const BSTR nameSpace, long flags, IWbemContext* context,
                               IWbemServices** opened, IWbemCallResult** result) override;
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink* sink) override;
    STDMETHODIMP GetObjectAsync(const BSTR path, long flags, IWbemContext* context,
                                IWbemObjectSink* sink) override;
    STDMETHODIMP CreateClassEnumAsync(const BSTR superclass, long flags, IWbemContext* context,
                                      IWbemObjectSink* sink) override;
    STDMETHODIMP PutInstanceAsync(IWbemClassObject* object, long flags, IWbemContext* context,
                                  IWbemObjectSink* sink) override;
    STDMETHODIMP DeleteInstanceAsync(const BSTR path, long flags, IWbemContext* context,
                                     IWbemObjectSink* sink) override;
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR className, long flags, IWbemContext* context,
                                         IWbemObjectSink* sink) override;
    STDMETHODIMP ExecQueryAsync(const BSTR language, const BSTR query, long flags, IWbemContext* context,
                                IWbemObjectSink* sink) override;
    STDMETHODIMP ExecMethodAsync(const BSTR path, const BSTR method, long flags, IWbemContext* context,
                                 IWbemClassObject* in, IWbemObjectSink* sink) override;

  private:
    // Starts a request whose `work` runs on a thread of its own with a CInstanceSource& and a CRequest&.
    // `place` is the namespace that the call's path names, empty for the connection's.
    template <class Work>
    HRESULT Begin(const std::wstring& place, long flags, long allowedFlags, IWbemContext* context,
                  IWbemObjectSink* sink, Work work) noexcept;

    CService& m_service;
    const std::shared_ptr<CConnection> m_connection;
};
} // namespace standin
