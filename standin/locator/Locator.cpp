#include "standin/locator/Locator.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/ClientServices.h"
#include "standin/locator/Names.h"

namespace standin
{
namespace
{
bool IsGiven(const BSTR text)
{
    return SysStringLen(text) != 0;
}
} // namespace

STDMETHODIMP CLocator::ConnectServer(const BSTR networkResource, const BSTR user, const BSTR password,
                                     const BSTR locale, long securityFlags, const BSTR authority,
                                     IWbemContext*, IWbemServices** nameSpace)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!nameSpace)
                return wmi::InvalidParameter;
            *nameSpace = nullptr;
            if (!networkResource || (securityFlags & ~WBEM_FLAG_CONNECT_USE_MAX_WAIT) != 0)
                return wmi::InvalidParameter;
            const auto path = ParseNetworkPath(networkResource);
            if (!path)
                return wmi::InvalidNamespace;
            if (!IsThisComputer(path->Server))
                return HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
            if (IsGiven(user) || IsGiven(password) || IsGiven(authority))
                return static_cast<HRESULT>(WBEM_E_LOCAL_CREDENTIALS);
            if (IsGiven(locale) && !IsLocale(locale))
                return wmi::InvalidParameter;

            std::shared_ptr<CConnection> connection;
            const HRESULT hr = CConnection::Open(path->NameSpace, connection);
            if (FAILED(hr))
                return hr;
            *nameSpace = new CClientServices(std::move(connection));
            return wmi::NoError;
        });
}
} // namespace standin
