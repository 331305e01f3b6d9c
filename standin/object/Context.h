// The named values that a client sends along with a call.
#pragma once

#include "Common/src/com/ComObject.h"
#include "standin/object/Bytes.h"

#include <memory>
#include <span>
#include <string>
#include <vector>
#include <wbemcli.h>

namespace standin
{
class CContext : public CComObject<IWbemContext, IByValue, IMarshal>
{
  public:
    struct CNamedValue
    {
        std::wstring Name;
        CCimValue Value;
    };

    explicit CContext(std::vector<CNamedValue> values = {}) noexcept : m_values(std::move(values)) {}
    // Throws CBadBytes.
    static ComPtr<IWbemContext> Decode(std::span<const BYTE> bytes);

    STDMETHODIMP Clone(IWbemContext** copy) override;
    STDMETHODIMP GetNames(LONG flags, SAFEARRAY** names) override;
    STDMETHODIMP BeginEnumeration(LONG flags) override;
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value) override;
    STDMETHODIMP EndEnumeration() override;
    STDMETHODIMP SetValue(LPCWSTR name, LONG flags, VARIANT* value) override;
    STDMETHODIMP GetValue(LPCWSTR name, LONG flags, VARIANT* value) override;
    STDMETHODIMP DeleteValue(LPCWSTR name, LONG flags) override;
    STDMETHODIMP DeleteAll() override;

    STDMETHODIMP Encode(BYTE** bytes, ULONG* size) override;

    STDMETHODIMP GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID* clsid) override;
    STDMETHODIMP GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD* size) override;
    STDMETHODIMP MarshalInterface(IStream* stream, REFIID, void*, DWORD, void*, DWORD) override;
    STDMETHODIMP UnmarshalInterface(IStream*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP ReleaseMarshalData(IStream*) override { return S_OK; }
    STDMETHODIMP DisconnectObject(DWORD) override { return S_OK; }

  private:
    static constexpr size_t kNoEnumeration = static_cast<size_t>(-1);

    CNamedValue* Find(const wchar_t* name) noexcept;
    std::vector<BYTE> Bytes();

    SRWLOCK m_lock = SRWLOCK_INIT;
    std::vector<CNamedValue> m_values;
    size_t m_next = kNoEnumeration;
};
} // namespace standin
