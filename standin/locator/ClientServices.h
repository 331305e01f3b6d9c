// What a client holds as its namespace: the synchronous and semi-synchronous operations, as calls to the
// service. Failures become the error object of the calling thread.
#pragma once

#include "standin/locator/Connection.h"
#include "standin/locator/SecuredObject.h"
#include "standin/proxy/UnsupportedServices.h"

namespace standin
{
class CClientServices : public CUnsupportedServices<CSecuredObject<IWbemServices>>
{
  public:
    explicit CClientServices(std::shared_ptr<CConnection> connection) noexcept
        : m_connection(std::move(connection))
    {
    }

    STDMETHODIMP GetObject(const BSTR path, long flags, IWbemContext* context, IWbemClassObject** object,
                           IWbemCallResult** result) override;
    STDMETHODIMP PutInstance(IWbemClassObject* object, long flags, IWbemContext* context,
                             IWbemCallResult** result) override;
    STDMETHODIMP CreateInstanceEnum(const BSTR className, long flags, IWbemContext* context,
                                    IEnumWbemClassObject** objects) override;
    STDMETHODIMP ExecQuery(const BSTR language, const BSTR query, long flags, IWbemContext* context,
                           IEnumWbemClassObject** objects) override;
    STDMETHODIMP ExecMethod(const BSTR path, const BSTR method, long flags, IWbemContext* context,
                            IWbemClassObject* in, IWbemClassObject** out, IWbemCallResult** result) override;

  private:
    HRESULT Call(CCallMessage message, IWbemClassObject** object, IWbemCallResult** result);
    HRESULT Enumerate(CCallMessage message, IEnumWbemClassObject** objects);

    const std::shared_ptr<CConnection> m_connection;
};
} // namespace standin
