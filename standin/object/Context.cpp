#include "standin/object/Context.h"

#include "Common/src/com/Text.h"
#include "standin/object/CimType.h"
#include "standin/object/StandinIds.h"

namespace standin
{
namespace
{
constexpr uint32_t kMark = 0x3143575A; // "ZWC1"
}

CContext::CContext(std::vector<CNamedValue> values) noexcept
    : CByValueObject(kContextUnmarshaler), m_values(std::move(values))
{
}

CContext::CNamedValue* CContext::Find(const wchar_t* name) noexcept
{
    for (CNamedValue& value : m_values)
        if (EqualNoCaseAscii(value.Name, name))
            return &value;
    return nullptr;
}

STDMETHODIMP CContext::Clone(IWbemContext** copy)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!copy)
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            *copy = MakeCom<CContext>(m_values).Detach();
            return S_OK;
        });
}

STDMETHODIMP CContext::BeginEnumeration(LONG flags)
{
    if (flags != 0)
        return wmi::InvalidParameter;
    const CLockScope lock(m_lock);
    m_next = 0;
    return S_OK;
}

STDMETHODIMP CContext::Next(LONG flags, BSTR* name, VARIANT* value)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0)
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            if (m_next == kNoEnumeration)
                return static_cast<HRESULT>(WBEM_E_UNEXPECTED);
            if (m_next >= m_values.size())
                return WBEM_S_NO_MORE_DATA;
            const CNamedValue& current = m_values[m_next];
            CBstr copy(current.Name);
            if (value)
            {
                const HRESULT hr = CopyCimValue(current.Value, value);
                if (FAILED(hr))
                    return hr;
            }
            if (name)
                *name = copy.Detach();
            ++m_next;
            return S_OK;
        });
}

STDMETHODIMP CContext::EndEnumeration()
{
    const CLockScope lock(m_lock);
    m_next = kNoEnumeration;
    return S_OK;
}

STDMETHODIMP CContext::SetValue(LPCWSTR name, LONG flags, VARIANT* value)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || !value || flags != 0)
                return wmi::InvalidParameter;
            CNamedValue added{name, {}};
            const CIMTYPE type =
                value->vt == VT_NULL ? CIMTYPE{CIM_STRING} : CimTypeOfVariant(value->vt & ~VT_BYREF);
            if (type == CIM_ILLEGAL || FAILED(ToCimValue(*value, type, added.Value)))
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            if (CNamedValue* present = Find(name))
                present->Value = std::move(added.Value);
            else
                m_values.push_back(std::move(added));
            return S_OK;
        });
}

STDMETHODIMP CContext::GetValue(LPCWSTR name, LONG flags, VARIANT* value)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || !value || flags != 0)
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            const CNamedValue* present = Find(name);
            return present ? CopyCimValue(present->Value, value) : wmi::NotFound;
        });
}

std::vector<BYTE> CContext::Bytes()
{
    const CLockScope lock(m_lock);
    std::vector<BYTE> bytes;
    CByteWriter out(bytes);
    out.Number(kMark);
    out.Number(static_cast<uint32_t>(m_values.size()));
    for (const CNamedValue& value : m_values)
    {
        out.Text(value.Name);
        WriteValue(out, value.Value);
    }
    return bytes;
}

ComPtr<IWbemContext> CContext::Decode(std::span<const BYTE> bytes)
{
    CByteReader in(bytes, kMaxNesting);
    if (in.Number<uint32_t>() != kMark)
        throw CBadBytes();
    std::vector<CNamedValue> values;
    for (uint32_t left = in.Count(); left > 0; --left)
    {
        std::wstring name = in.Text();
        values.push_back({std::move(name), ReadValue(in)});
    }
    if (!in.AtEnd())
        throw CBadBytes();
    return MakeCom<CContext>(std::move(values));
}
} // namespace standin
