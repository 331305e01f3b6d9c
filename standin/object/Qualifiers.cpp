#include "standin/object/Qualifiers.h"

#include "Common/src/com/ComObject.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <algorithm>

namespace standin
{
namespace
{
class CQualifierSet : public CComObject<IWbemQualifierSet>
{
  public:
    explicit CQualifierSet(std::shared_ptr<const CQualifiers> qualifiers) noexcept
        : m_qualifiers(std::move(qualifiers))
    {
    }

    STDMETHODIMP Get(LPCWSTR name, LONG flags, VARIANT* value, LONG* flavor) override
    {
        if (!name || flags != 0)
            return wmi::InvalidParameter;
        const CQualifier* qualifier = m_qualifiers->Find(name);
        if (!qualifier)
            return wmi::NotFound;
        if (flavor)
            *flavor = qualifier->Flavor;
        return value ? CopyCimValue(qualifier->Value, value) : S_OK;
    }
    STDMETHODIMP Put(LPCWSTR, VARIANT*, LONG) override { return wmi::NotSupported; }
    STDMETHODIMP Delete(LPCWSTR) override { return wmi::NotSupported; }
    STDMETHODIMP GetNames(LONG, SAFEARRAY**) override { return wmi::NotSupported; }
    STDMETHODIMP BeginEnumeration(LONG) override { return wmi::NotSupported; }
    STDMETHODIMP Next(LONG, BSTR*, VARIANT*, LONG*) override { return wmi::NotSupported; }
    STDMETHODIMP EndEnumeration() override { return wmi::NotSupported; }

  private:
    const std::shared_ptr<const CQualifiers> m_qualifiers;
};
} // namespace

const CQualifier* CQualifiers::Find(std::wstring_view name) const noexcept
{
    for (const CQualifier& qualifier : m_all)
        if (EqualNoCaseAscii(qualifier.Name, name))
            return &qualifier;
    return nullptr;
}

bool CQualifiers::IsTrue(std::wstring_view name) const noexcept
{
    const CQualifier* qualifier = Find(name);
    return qualifier && qualifier->Value.vt == VT_BOOL && qualifier->Value.boolVal != VARIANT_FALSE;
}

const wchar_t* CQualifiers::Text(std::wstring_view name) const noexcept
{
    const CQualifier* qualifier = Find(name);
    return qualifier && qualifier->Value.vt == VT_BSTR ? qualifier->Value.bstrVal : nullptr;
}

void CQualifiers::Set(CQualifier qualifier)
{
    if (const CQualifier* present = Find(qualifier.Name))
        m_all[static_cast<size_t>(present - m_all.data())] = std::move(qualifier);
    else
        m_all.push_back(std::move(qualifier));
}

bool CQualifiers::Remove(std::wstring_view name) noexcept
{
    return std::erase_if(m_all, [&](const CQualifier& q) { return EqualNoCaseAscii(q.Name, name); }) != 0;
}

CQualifiers CQualifiers::Propagated(long flag) const
{
    CQualifiers result;
    for (const CQualifier& qualifier : m_all)
        if (qualifier.Flavor & flag)
        {
            result.m_all.push_back(qualifier);
            long& flavor = result.m_all.back().Flavor;
            flavor = (flavor & ~WBEM_FLAVOR_MASK_ORIGIN) | WBEM_FLAVOR_ORIGIN_PROPAGATED;
        }
    return result;
}

CQualifier MakeQualifier(std::wstring_view name, CVariant value)
{
    constexpr long kEverywhere =
        WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE | WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS;
    struct CRow
    {
        const wchar_t* Name;
        long Flavor;
    };
    constexpr CRow kKnown[] = {
        {L"key", kEverywhere | WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"association", kEverywhere | WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"CIMTYPE", kEverywhere},
        {L"in", kEverywhere},
        {L"out", kEverywhere},
        {L"ID", kEverywhere | WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"dynamic", WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE},
        {L"provider", WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE},
    };
    CQualifier qualifier{std::wstring(name), CCimValue(std::move(value)), 0};
    for (const CRow& row : kKnown)
        if (EqualNoCaseAscii(row.Name, name))
            qualifier.Flavor = row.Flavor;
    return qualifier;
}

ComPtr<IWbemQualifierSet> MakeQualifierSet(std::shared_ptr<const CQualifiers> qualifiers)
{
    return MakeCom<CQualifierSet>(std::move(qualifiers));
}
} // namespace standin
