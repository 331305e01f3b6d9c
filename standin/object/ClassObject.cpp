#include "standin/object/ClassObject.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimType.h"
#include "standin/object/SystemProperty.h"

namespace standin
{
namespace
{
bool IsName(const wchar_t* name)
{
    return iswalpha(*name) || *name == L'_';
}
} // namespace

CClassObject::CClassObject(ClassDefinition definition, std::shared_ptr<const CDecoration> decoration) noexcept
    : CManagementObject(std::move(definition))
{
    m_decoration = std::move(decoration);
}

STDMETHODIMP CClassObject::Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            const VARIANT& null = CVariant::Null();
            const VARIANT& given = value ? *value : null;
            if (EqualNoCaseAscii(name, L"__CLASS"))
                return Rename(given);
            if (FindSystemProperty(name))
                return static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY);
            const CExclusive lock(m_lock);
            CPropertyDefinition property;
            if (const CPropertyDefinition* present = m_definition->FindProperty(name))
                property = *present;
            else
            {
                property.Name = name;
                property.Type = type != CIM_EMPTY ? type : CimTypeOfVariant(given.vt);
                if (!IsName(name) || VariantTypeOf(property.Type) == VT_EMPTY)
                    return wmi::InvalidParameter;
            }
            if (type != CIM_EMPTY && type != property.Type)
                return wmi::TypeMismatch;
            const HRESULT hr = ToCimValue(given, property.Type, property.Default);
            if (FAILED(hr))
                return hr;
            if (m_definition->Properties().size() == CClassDefinition::kMaxProperties &&
                !m_definition->FindProperty(name))
                return static_cast<HRESULT>(WBEM_E_TOO_MANY_PROPERTIES);
            property.Local = true;
            OwnDefinition().SetProperty(std::move(property));
            return S_OK;
        });
}

HRESULT CClassObject::Rename(const VARIANT& name)
{
    if (name.vt != VT_BSTR)
        return wmi::TypeMismatch;
    if (!name.bstrVal || !IsName(name.bstrVal))
        return wmi::InvalidParameter;
    const CExclusive lock(m_lock);
    CClassDefinition& own = OwnDefinition();
    const std::wstring before = std::exchange(own.Name, name.bstrVal);
    for (size_t i = 0; i < own.Properties().size(); ++i)
        if (own.Properties()[i].Origin == before)
            own.PropertyAt(i).Origin = own.Name;
    for (size_t i = 0; i < own.Methods().size(); ++i)
        if (own.Methods()[i].Origin == before)
            own.MethodAt(i).Origin = own.Name;
    return S_OK;
}

STDMETHODIMP CClassObject::Delete(LPCWSTR name)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name)
                return wmi::InvalidParameter;
            if (FindSystemProperty(name))
                return static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY);
            const CExclusive lock(m_lock);
            const size_t index = m_definition->IndexOf(name);
            if (index == CClassDefinition::npos)
                return wmi::NotFound;
            // A redeclared property stays as it was redeclared: what the ancestor had is not known here.
            if (m_definition->Properties()[index].Origin != m_definition->Name)
                return static_cast<HRESULT>(WBEM_E_PROPAGATED_PROPERTY);
            OwnDefinition().RemoveProperty(index);
            return S_OK;
        });
}

STDMETHODIMP CClassObject::Clone(IWbemClassObject** copy)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!copy)
                return wmi::InvalidParameter;
            const CShared lock(m_lock);
            *copy = MakeCom<CClassObject>(m_definition, m_decoration).Detach();
            return S_OK;
        });
}

STDMETHODIMP CClassObject::SpawnDerivedClass(LONG flags, IWbemClassObject** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!out || flags != 0)
                return wmi::InvalidParameter;
            *out = nullptr;
            const ClassDefinition base = Definition();
            if (base->Name.empty())
                return static_cast<HRESULT>(WBEM_E_INCOMPLETE_CLASS);
            *out = MakeClassObject(std::make_shared<const CClassDefinition>(std::wstring(), *base)).Detach();
            return S_OK;
        });
}

STDMETHODIMP CClassObject::PutMethod(LPCWSTR name, LONG flags, IWbemClassObject* in, IWbemClassObject* out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || !IsName(name) || flags != 0)
                return wmi::InvalidParameter;
            CMethodDefinition method{name, DefinitionOf(in), DefinitionOf(out), {}, {}, true};
            if ((in && !method.In) || (out && !method.Out))
                return wmi::InvalidParameter;
            const CExclusive lock(m_lock);
            if (const CMethodDefinition* present = m_definition->FindMethod(name))
                method.Qualifiers = present->Qualifiers;
            OwnDefinition().SetMethod(std::move(method));
            return S_OK;
        });
}

STDMETHODIMP CClassObject::DeleteMethod(LPCWSTR name)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name)
                return wmi::InvalidParameter;
            const CExclusive lock(m_lock);
            const CMethodDefinition* method = m_definition->FindMethod(name);
            if (!method)
                return wmi::NotFound;
            if (method->Origin != m_definition->Name)
                return static_cast<HRESULT>(WBEM_E_PROPAGATED_METHOD);
            const auto index = static_cast<size_t>(method - m_definition->Methods().data());
            OwnDefinition().RemoveMethod(index);
            return S_OK;
        });
}

ComPtr<IWbemClassObject> MakeClassObject(ClassDefinition definition)
{
    return MakeCom<CClassObject>(std::move(definition));
}

ComPtr<IWbemClassObject> MakeEmptyClass()
{
    return MakeClassObject(std::make_shared<const CClassDefinition>(std::wstring()));
}
} // namespace standin
