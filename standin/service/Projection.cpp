#include "standin/service/Projection.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <algorithm>

namespace standin
{
ClassDefinition CProjection::Reduced(const std::wstring& className)
{
    ClassDefinition& reduced = m_reduced[className];
    if (reduced)
        return reduced;
    const ClassDefinition full = m_source.Definition(className);
    if (!full)
        return nullptr;
    auto copy = std::make_shared<CClassDefinition>(*full);
    for (const CPropertyDefinition& property : full->Properties())
    {
        const bool selected =
            std::any_of(m_properties.begin(), m_properties.end(),
                        [&](const std::wstring& name) { return EqualNoCaseAscii(name, property.Name); });
        if (!selected && !(m_source.WantsLocatable() && property.Qualifiers.IsTrue(L"key")))
            copy->RemoveProperty(copy->IndexOf(property.Name));
    }
    return reduced = std::move(copy);
}

HRESULT CProjection::Apply(IWbemClassObject* object, ComPtr<IWbemClassObject>& projected)
{
    projected = object;
    CVariant className;
    if (m_properties.empty() || FAILED(object->Get(L"__CLASS", 0, className.Put(), nullptr, nullptr)) ||
        className.vt != VT_BSTR)
        return wmi::NoError;
    const ClassDefinition definition = Reduced(className.bstrVal);
    if (!definition)
        return wmi::NoError;
    projected = MakeInstance(definition);
    for (const CPropertyDefinition& property : definition->Properties())
    {
        CVariant value;
        HRESULT hr = object->Get(property.Name.c_str(), 0, value.Put(), nullptr, nullptr);
        if (SUCCEEDED(hr))
            hr = projected->Put(property.Name.c_str(), 0, &value, 0);
        if (FAILED(hr))
            return hr;
    }
    m_source.Mark(projected.Get());
    return wmi::NoError;
}
} // namespace standin
