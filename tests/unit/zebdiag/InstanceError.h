// The error object of a failed call as the management service leaves it: besides what every error object
// answers, it is an instance of the extended status.
#pragma once

#include "Common/src/com/ComObject.h"

#include <oleauto.h>
#include <wbemcli.h>

namespace zebdiag
{
class CInstanceError final : public CComObject<IErrorInfo>
{
  public:
    // A null instance makes an error object of another kind.
    explicit CInstanceError(ComPtr<IWbemClassObject> instance) : m_instance(std::move(instance)) {}

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override
    {
        if (m_instance && IsEqualIID(riid, IID_IWbemClassObject))
            return m_instance->QueryInterface(riid, out);
        return CComObject::QueryInterface(riid, out);
    }
    STDMETHODIMP GetGUID(GUID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetSource(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetDescription(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpFile(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpContext(DWORD*) override { return E_NOTIMPL; }

  private:
    ComPtr<IWbemClassObject> m_instance;
};
} // namespace zebdiag
