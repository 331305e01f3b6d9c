#include "standin/object/ManagementObject.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/Compare.h"
#include "standin/object/Instance.h"
#include "standin/object/MofText.h"
#include "standin/object/NameArray.h"
#include "standin/object/PropertySelection.h"
#include "standin/object/QualifierSet.h"
#include "standin/object/SystemProperty.h"

namespace standin
{
const CQualifiers* CQualifierPlace::In(const CClassDefinition& definition) const noexcept
{
    switch (Kind)
    {
    case Property:
    {
        const CPropertyDefinition* property = definition.FindProperty(Name);
        return property ? &property->Qualifiers : nullptr;
    }
    case Method:
    {
        const CMethodDefinition* method = definition.FindMethod(Name);
        return method ? &method->Qualifiers : nullptr;
    }
    default:
        return &definition.Qualifiers;
    }
}

CQualifiers* CQualifierPlace::In(CClassDefinition& definition) const noexcept
{
    return const_cast<CQualifiers*>(In(std::as_const(definition)));
}

ClassDefinition CManagementObject::Definition() const
{
    const CShared lock(m_lock);
    return m_definition;
}

CClassDefinition& CManagementObject::OwnDefinition()
{
    // Others take their share of the definition under our lock only, so that a count of one stays one.
    if (m_definition.use_count() != 1)
        m_definition = std::make_shared<CClassDefinition>(*m_definition);
    auto& own = const_cast<CClassDefinition&>(*m_definition);
    own.Changed();
    return own;
}

HRESULT CManagementObject::OpenQualifiers(CQualifierPlace place, IWbemQualifierSet** out)
{
    if (!out)
        return wmi::InvalidParameter;
    *out = nullptr;
    if (!place.In(*Definition()))
        return wmi::NotFound;
    *out = MakeCom<CQualifierSet>(ComPtr<CManagementObject>(this), std::move(place)).Detach();
    return S_OK;
}

STDMETHODIMP CManagementObject::GetQualifierSet(IWbemQualifierSet** out)
{
    return AtComBoundary([&] { return OpenQualifiers({}, out); });
}

STDMETHODIMP CManagementObject::GetPropertyQualifierSet(LPCWSTR property, IWbemQualifierSet** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!property)
                return wmi::InvalidParameter;
            if (FindSystemProperty(property))
                return static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY);
            return OpenQualifiers({CQualifierPlace::Property, property}, out);
        });
}

STDMETHODIMP CManagementObject::GetMethodQualifierSet(LPCWSTR method, IWbemQualifierSet** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!method)
                return wmi::InvalidParameter;
            return OpenQualifiers({CQualifierPlace::Method, method}, out);
        });
}

STDMETHODIMP CManagementObject::Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            const CShared lock(m_lock);
            const CObjectView view = View();
            const size_t index = m_definition->IndexOf(name);
            if (index != CClassDefinition::npos)
                return ReadProperty(view, index, value, type, flavor);
            const CSystemProperty* property = FindSystemProperty(name);
            return property ? ReadProperty(view, *property, value, type, flavor) : wmi::NotFound;
        });
}

STDMETHODIMP CManagementObject::GetNames(LPCWSTR qualifier, LONG flags, VARIANT* qualifierValue,
                                         SAFEARRAY** names)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!names)
                return wmi::InvalidParameter;
            *names = nullptr;
            const CShared lock(m_lock);
            const CObjectView view = View();
            std::vector<uint16_t> selected;
            const HRESULT hr = SelectProperties(
                view, flags, {flags & WBEM_MASK_PRIMARY_CONDITION, qualifier, qualifierValue}, selected);
            if (FAILED(hr))
                return hr;
            std::vector<std::wstring_view> found;
            for (const uint16_t item : selected)
                found.push_back(ItemName(*m_definition, item));
            *names = NameArray(found).Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::BeginEnumeration(LONG flags)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const CExclusive lock(m_lock);
            auto enumeration = std::make_unique<CEnumeration>();
            enumeration->Definition = m_definition;
            const HRESULT hr = SelectProperties(View(), flags, {}, enumeration->Items);
            if (SUCCEEDED(hr))
                m_properties = std::move(enumeration);
            return hr;
        });
}

STDMETHODIMP CManagementObject::Next(LONG flags, BSTR* name, VARIANT* value, CIMTYPE* type, LONG* flavor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0)
                return wmi::InvalidParameter;
            const CExclusive lock(m_lock);
            if (!m_properties)
                return static_cast<HRESULT>(WBEM_E_UNEXPECTED);
            CEnumeration& enumeration = *m_properties;
            while (enumeration.Next < enumeration.Items.size())
            {
                const uint16_t item = enumeration.Items[enumeration.Next++];
                const std::wstring_view itemName = ItemName(*enumeration.Definition, item);
                const CSystemProperty* system = item & kSystemItem ? FindSystemProperty(itemName) : nullptr;
                // The class may have changed since; a property that is gone is passed over.
                const size_t index =
                    enumeration.Definition == m_definition ? item : m_definition->IndexOf(itemName);
                if (!system && index == CClassDefinition::npos)
                    continue;
                CBstr copy(itemName);
                const HRESULT hr = system ? ReadProperty(View(), *system, value, type, flavor)
                                          : ReadProperty(View(), index, value, type, flavor);
                if (SUCCEEDED(hr) && name)
                    *name = copy.Detach();
                return hr;
            }
            return WBEM_S_NO_MORE_DATA;
        });
}

STDMETHODIMP CManagementObject::EndEnumeration()
{
    const CExclusive lock(m_lock);
    m_properties.reset();
    return S_OK;
}

STDMETHODIMP CManagementObject::GetObjectText(LONG flags, BSTR* text)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!text || (flags & ~WBEM_FLAG_NO_FLAVORS))
                return wmi::InvalidParameter;
            const CShared lock(m_lock);
            *text = CBstr(MofText(View(), (flags & WBEM_FLAG_NO_FLAVORS) == 0)).Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::SpawnInstance(LONG flags, IWbemClassObject** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!out || flags != 0)
                return wmi::InvalidParameter;
            *out = nullptr;
            const ClassDefinition definition = Definition();
            if (definition->Name.empty() || definition->Qualifiers.IsTrue(L"abstract"))
                return static_cast<HRESULT>(WBEM_E_INCOMPLETE_CLASS);
            *out = MakeInstance(definition).Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::CompareTo(LONG flags, IWbemClassObject* other)
{
    return AtComBoundary([&]() -> HRESULT { return CompareObjects(*this, other, flags); });
}

STDMETHODIMP CManagementObject::GetPropertyOrigin(LPCWSTR name, BSTR* className)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || !className)
                return wmi::InvalidParameter;
            const ClassDefinition definition = Definition();
            if (FindSystemProperty(name))
                *className = CBstr(L"___SYSTEM").Detach();
            else if (const CPropertyDefinition* property = definition->FindProperty(name))
                *className = CBstr(property->Origin).Detach();
            else
                return wmi::NotFound;
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::InheritsFrom(LPCWSTR ancestor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!ancestor)
                return wmi::InvalidParameter;
            return Definition()->InheritsFrom(ancestor) ? S_OK : S_FALSE; // WBEM_S_FALSE
        });
}

STDMETHODIMP CManagementObject::Decorate(const wchar_t* server, const wchar_t* nameSpace)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            std::shared_ptr<const CDecoration> decoration;
            if (server && nameSpace)
                decoration = std::make_shared<const CDecoration>(CDecoration{server, nameSpace});
            const CExclusive lock(m_lock);
            m_decoration = std::move(decoration);
            return S_OK;
        });
}
} // namespace standin
