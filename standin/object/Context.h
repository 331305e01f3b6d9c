// The named values that a client sends along with a call.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/ByValue.h"
#include "standin/object/CimValue.h"

namespace standin
{
class CContext : public CByValueObject<IWbemContext>
{
  public:
    struct CNamedValue
    {
        std::wstring Name;
        CCimValue Value;
    };

    explicit CContext(std::vector<CNamedValue> values = {}) noexcept;
    // Throws CBadBytes.
    static ComPtr<IWbemContext> Decode(std::span<const BYTE> bytes);

    STDMETHODIMP Clone(IWbemContext** copy) override;
    STDMETHODIMP BeginEnumeration(LONG flags) override;
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value) override;
    STDMETHODIMP EndEnumeration() override;
    STDMETHODIMP SetValue(LPCWSTR name, LONG flags, VARIANT* value) override;
    STDMETHODIMP GetValue(LPCWSTR name, LONG flags, VARIANT* value) override;

    // Nobody here asks for these.
    STDMETHODIMP GetNames(LONG, SAFEARRAY**) override { return wmi::NotSupported; }
    STDMETHODIMP DeleteValue(LPCWSTR, LONG) override { return wmi::NotSupported; }
    STDMETHODIMP DeleteAll() override { return wmi::NotSupported; }

  protected:
    std::vector<BYTE> Bytes() override;

  private:
    static constexpr size_t kNoEnumeration = static_cast<size_t>(-1);

    CNamedValue* Find(const wchar_t* name) noexcept;

    CCriticalSection m_lock;
    std::vector<CNamedValue> m_values;
    size_t m_next = kNoEnumeration;
};
} // namespace standin
