// The stand-in's WMI locator: the object that clients create as CLSID_WbemLocator.
#pragma once

#include "Common/src/com/ComObject.h"

#include <wbemcli.h>

namespace standin
{
class CLocator : public CComObject<IWbemLocator>
{
  public:
    // Starts the service process where none runs and opens the namespace in it. This computer only and as
    // the user who calls; the codes for anything else are those of the management service.
    STDMETHODIMP ConnectServer(const BSTR networkResource, const BSTR user, const BSTR password,
                               const BSTR locale, long securityFlags, const BSTR authority,
                               IWbemContext* context, IWbemServices** nameSpace) override;
};
} // namespace standin
