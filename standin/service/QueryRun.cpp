#include "standin/service/QueryRun.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/service/Associations.h"

#include <algorithm>
#include <map>

namespace standin
{
namespace
{
// Leaves of objects what a query selects.
class CProjection
{
  public:
    // An empty list leaves objects as they are.
    CProjection(const CInstanceSource& source, std::vector<std::wstring> properties)
        : m_source(source), m_properties(std::move(properties))
    {
    }

    // An instance of the object's class that has the selected properties only and, where the client wants its
    // objects locatable, the keys.
    HRESULT Apply(IWbemClassObject* object, ComPtr<IWbemClassObject>& projected);

  private:
    ClassDefinition Reduced(const std::wstring& className);

    const CInstanceSource& m_source;
    const std::vector<std::wstring> m_properties;
    std::map<std::wstring, ClassDefinition> m_reduced; // by class
};

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

bool HasProperty(const CClassDefinition& definition, const std::wstring& name)
{
    return name.starts_with(L"__") || definition.FindProperty(name);
}

COutcome Run(const CSelectQuery& query, CInstanceSource& source, const ObjectConsumer& consume)
{
    const ClassDefinition definition = source.Definition(query.ClassName);
    if (!definition)
        return wmi::InvalidClass;
    if (!std::all_of(query.Properties.begin(), query.Properties.end(),
                     [&](const std::wstring& name) { return HasProperty(*definition, name); }) ||
        !std::all_of(query.Where.begin(), query.Where.end(),
                     [&](const CComparison& comparison)
                     { return HasProperty(*definition, comparison.Property); }))
        return wmi::InvalidQuery;
    CProjection projection(source, query.Properties);
    return source.Enumerate(query.ClassName, true,
                            [&](IWbemClassObject* object) -> HRESULT
                            {
                                if (!query.Selects(object))
                                    return wmi::NoError;
                                ComPtr<IWbemClassObject> projected;
                                const HRESULT hr = projection.Apply(object, projected);
                                return FAILED(hr) ? hr : consume(projected.Get());
                            });
}

COutcome Run(const CAssociationQuery& query, CInstanceSource& source, const ObjectConsumer& consume)
{
    return FollowAssociations(query, source, consume);
}
} // namespace

COutcome RunQuery(const CQuery& query, CInstanceSource& source, const ObjectConsumer& consume)
{
    return std::visit([&](const auto& kind) { return Run(kind, source, consume); }, query);
}
} // namespace standin
