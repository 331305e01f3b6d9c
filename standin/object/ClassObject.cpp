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
            CIMTYPE own = TypeOf(name);
            if (own == CIM_EMPTY)
            {
                own = type != CIM_EMPTY ? type : CimTypeOfVariant(given.vt);
                if (!IsName(name) || VariantTypeOf(own) == VT_EMPTY)
                    return wmi::InvalidParameter;
            }
            if (type != CIM_EMPTY && type != own)
                return wmi::TypeMismatch;
            CCimValue stored;
            const HRESULT hr = ToCimValue(given, own, stored);
            return SUCCEEDED(hr) ? SetDefault(name, own, std::move(stored)) : hr;
        });
}

CIMTYPE CClassObject::TypeOf(const wchar_t* name) const
{
    const CShared lock(m_lock);
    const CPropertyDefinition* property = m_definition->FindProperty(name);
    return property ? property->Type : CIMTYPE{CIM_EMPTY};
}

HRESULT CClassObject::SetDefault(const wchar_t* name, CIMTYPE type, CCimValue value)
{
    const CExclusive lock(m_lock);
    const size_t index = m_definition->IndexOf(name);
    if (index == CClassDefinition::npos)
    {
        if (m_definition->Properties().size() == CClassDefinition::kMaxProperties)
            return static_cast<HRESULT>(WBEM_E_TOO_MANY_PROPERTIES);
        OwnDefinition().SetProperty({name, type, std::move(value), {}, {}, true});
        return S_OK;
    }
    // Removed and added again by another thread meanwhile.
    if (m_definition->Properties()[index].Type != type)
        return wmi::TypeMismatch;
    CPropertyDefinition& property = OwnDefinition().PropertyAt(index);
    property.Default = std::move(value);
    property.Local = true;
    return S_OK;
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
            *out = MakeClassObject(std::make_shared<CClassDefinition>(std::wstring(), *base)).Detach();
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
    return MakeClassObject(std::make_shared<CClassDefinition>(std::wstring()));
}
} // namespace standin
