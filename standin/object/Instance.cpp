#include "standin/object/Instance.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/SystemProperty.h"

namespace standin
{
CInstance::CInstance(ClassDefinition definition, std::vector<CCimValue> values,
                     std::shared_ptr<const CDecoration> decoration)
    : CManagementObject(std::move(definition)), m_values(std::move(values))
{
    m_decoration = std::move(decoration);
    // One more than there are properties, so that an instance without any is still told from a class.
    m_values.resize(m_definition->Properties().size() + 1);
}

STDMETHODIMP CInstance::Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            if (FindSystemProperty(name))
                return static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY);
            // The place and type of a property never change. The value is converted without the lock, because
            // it may
            // be an object, even this one, that is asked for a copy.
            size_t index = 0;
            CIMTYPE own = CIM_EMPTY;
            {
                const CShared lock(m_lock);
                index = m_definition->IndexOf(name);
                if (index == CClassDefinition::npos)
                    return wmi::NotFound;
                own = m_definition->Properties()[index].Type;
            }
            if (type != CIM_EMPTY && type != own)
                return wmi::TypeMismatch;
            CCimValue stored = CVariant::Null();
            const HRESULT hr = value ? ToCimValue(*value, own, stored) : S_OK;
            if (SUCCEEDED(hr))
            {
                const CExclusive lock(m_lock);
                std::swap(m_values[index], stored);
            }
            return hr;
        });
}

STDMETHODIMP CInstance::Delete(LPCWSTR name)
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
            m_values[index] = CCimValue();
            return WBEM_S_RESET_TO_DEFAULT;
        });
}

STDMETHODIMP CInstance::Clone(IWbemClassObject** copy)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!copy)
                return wmi::InvalidParameter;
            const CShared lock(m_lock);
            *copy = MakeCom<CInstance>(m_definition, m_values, m_decoration).Detach();
            return S_OK;
        });
}

STDMETHODIMP CInstance::SpawnDerivedClass(LONG, IWbemClassObject** out)
{
    if (out)
        *out = nullptr;
    return static_cast<HRESULT>(WBEM_E_ILLEGAL_OPERATION);
}

STDMETHODIMP CInstance::PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*)
{
    return static_cast<HRESULT>(WBEM_E_ILLEGAL_OPERATION);
}

STDMETHODIMP CInstance::DeleteMethod(LPCWSTR)
{
    return static_cast<HRESULT>(WBEM_E_ILLEGAL_OPERATION);
}

ComPtr<IWbemClassObject> MakeInstance(const ClassDefinition& definition)
{
    return MakeCom<CInstance>(definition->ForInstances());
}
} // namespace standin
