#include "standin/object/QualifierSet.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimType.h"
#include "standin/object/NameArray.h"

namespace standin
{
namespace
{
constexpr long kSettableFlavor = WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE |
                                 WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS | WBEM_FLAVOR_NOT_OVERRIDABLE |
                                 WBEM_FLAVOR_AMENDED;

// Qualifiers have few types.
CIMTYPE QualifierType(VARTYPE type)
{
    switch (type & ~VT_ARRAY)
    {
    case VT_BOOL:
    case VT_I4:
    case VT_R8:
    case VT_BSTR:
        return CimTypeOfVariant(type);
    }
    return CIM_ILLEGAL;
}

bool HasOrigin(const CQualifier& qualifier, long flags)
{
    const bool propagated = (qualifier.Flavor & WBEM_FLAVOR_MASK_ORIGIN) == WBEM_FLAVOR_ORIGIN_PROPAGATED;
    return flags == 0 || propagated == (flags == WBEM_FLAG_PROPAGATED_ONLY);
}

bool AreOriginFlags(long flags)
{
    return flags == 0 || flags == WBEM_FLAG_LOCAL_ONLY || flags == WBEM_FLAG_PROPAGATED_ONLY;
}

bool IsPropagated(const CQualifier& qualifier)
{
    return !HasOrigin(qualifier, WBEM_FLAG_LOCAL_ONLY);
}

HRESULT CopyOut(const CQualifier& qualifier, VARIANT* value, LONG* flavor)
{
    if (flavor)
        *flavor = qualifier.Flavor;
    return value ? CopyCimValue(qualifier.Value, value) : S_OK;
}
} // namespace

STDMETHODIMP CQualifierSet::Get(LPCWSTR name, LONG flags, VARIANT* value, LONG* flavor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            const ClassDefinition definition = m_owner->Definition();
            const CQualifiers* qualifiers = m_place.In(*definition);
            const CQualifier* qualifier = qualifiers ? qualifiers->Find(name) : nullptr;
            return qualifier ? CopyOut(*qualifier, value, flavor) : wmi::NotFound;
        });
}

STDMETHODIMP CQualifierSet::Put(LPCWSTR name, VARIANT* value, LONG flavor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || !*name || !value || (flavor & ~kSettableFlavor))
                return wmi::InvalidParameter;
            const CIMTYPE type = QualifierType(value->vt);
            CQualifier qualifier{name, {}, flavor};
            if (type == CIM_ILLEGAL || FAILED(ToCimValue(*value, type, qualifier.Value)))
                return static_cast<HRESULT>(WBEM_E_INVALID_QUALIFIER_TYPE);
            return m_owner->ChangeDefinition(
                [&](CClassDefinition& definition) -> HRESULT
                {
                    CQualifiers* qualifiers = m_place.In(definition);
                    if (!qualifiers)
                        return wmi::NotFound;
                    const CQualifier* present = qualifiers->Find(name);
                    if (present && IsPropagated(*present) && (present->Flavor & WBEM_FLAVOR_NOT_OVERRIDABLE))
                        return static_cast<HRESULT>(WBEM_E_OVERRIDE_NOT_ALLOWED);
                    qualifiers->Set(std::move(qualifier));
                    return S_OK;
                });
        });
}

STDMETHODIMP CQualifierSet::Delete(LPCWSTR name)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name)
                return wmi::InvalidParameter;
            return m_owner->ChangeDefinition(
                [&](CClassDefinition& definition) -> HRESULT
                {
                    CQualifiers* qualifiers = m_place.In(definition);
                    const CQualifier* present = qualifiers ? qualifiers->Find(name) : nullptr;
                    if (!present)
                        return wmi::NotFound;
                    if (IsPropagated(*present))
                        return static_cast<HRESULT>(WBEM_E_PROPAGATED_QUALIFIER);
                    qualifiers->Remove(name);
                    return S_OK;
                });
        });
}

STDMETHODIMP CQualifierSet::GetNames(LONG flags, SAFEARRAY** names)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!names || !AreOriginFlags(flags))
                return wmi::InvalidParameter;
            const ClassDefinition definition = m_owner->Definition();
            std::vector<std::wstring_view> found;
            if (const CQualifiers* qualifiers = m_place.In(*definition))
                for (const CQualifier& qualifier : qualifiers->All())
                    if (HasOrigin(qualifier, flags))
                        found.push_back(qualifier.Name);
            *names = NameArray(found).Detach();
            return S_OK;
        });
}

STDMETHODIMP CQualifierSet::BeginEnumeration(LONG flags)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!AreOriginFlags(flags))
                return wmi::InvalidParameter;
            const ClassDefinition definition = m_owner->Definition();
            auto enumeration = std::make_unique<CEnumeration>();
            if (const CQualifiers* qualifiers = m_place.In(*definition))
                for (const CQualifier& qualifier : qualifiers->All())
                    if (HasOrigin(qualifier, flags))
                        enumeration->Items.push_back(qualifier);
            const CExclusive lock(m_lock);
            m_enumeration = std::move(enumeration);
            return S_OK;
        });
}

STDMETHODIMP CQualifierSet::Next(LONG flags, BSTR* name, VARIANT* value, LONG* flavor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0)
                return wmi::InvalidParameter;
            const CExclusive lock(m_lock);
            if (!m_enumeration)
                return static_cast<HRESULT>(WBEM_E_UNEXPECTED);
            if (m_enumeration->Next == m_enumeration->Items.size())
                return WBEM_S_NO_MORE_DATA;
            const CQualifier& qualifier = m_enumeration->Items[m_enumeration->Next];
            CBstr nameCopy(qualifier.Name);
            const HRESULT hr = CopyOut(qualifier, value, flavor);
            if (FAILED(hr))
                return hr;
            if (name)
                *name = nameCopy.Detach();
            ++m_enumeration->Next;
            return S_OK;
        });
}

STDMETHODIMP CQualifierSet::EndEnumeration()
{
    const CExclusive lock(m_lock);
    m_enumeration.reset();
    return S_OK;
}
} // namespace standin
