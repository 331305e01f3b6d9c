#include "standin/locator/ErrorObject.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/Variant.h"

namespace standin
{
namespace
{
class CErrorObject : public CComObject<IErrorInfo>
{
  public:
    explicit CErrorObject(ComPtr<IWbemClassObject> status) noexcept : m_status(std::move(status)) {}

    // The status object answers for itself, as it is: clients ask for it once and read it.
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override
    {
        if (out && IsEqualIID(riid, __uuidof(IWbemClassObject)))
            return m_status->QueryInterface(riid, out);
        return CComObject::QueryInterface(riid, out);
    }

    STDMETHODIMP GetGUID(GUID* guid) override { return Nothing(guid); }
    STDMETHODIMP GetSource(BSTR* source) override { return Text(L"ProviderName", source); }
    STDMETHODIMP GetDescription(BSTR* description) override { return Text(L"Description", description); }
    STDMETHODIMP GetHelpFile(BSTR* helpFile) override { return Nothing(helpFile); }
    STDMETHODIMP GetHelpContext(DWORD* helpContext) override { return Nothing(helpContext); }

  private:
    template <class T>
    static HRESULT Nothing(T* out) noexcept
    {
        if (!out)
            return E_POINTER;
        *out = {};
        return S_OK;
    }

    HRESULT Text(const wchar_t* property, BSTR* text) noexcept
    {
        if (const HRESULT hr = Nothing(text); FAILED(hr))
            return hr;
        CVariant value;
        if (SUCCEEDED(m_status->Get(property, 0, value.Put(), nullptr, nullptr)) && value.vt == VT_BSTR)
            *text = CBstr::CopyOrNull(value.bstrVal);
        return S_OK;
    }

    const ComPtr<IWbemClassObject> m_status;
};
} // namespace

void SetErrorObject(const ComPtr<IWbemClassObject>& status) noexcept
{
    AtComBoundary([&] { return SetErrorInfo(0, MakeCom<CErrorObject>(status).Get()); });
}

void ClearErrorObject() noexcept
{
    SetErrorInfo(0, nullptr);
}
} // namespace standin
