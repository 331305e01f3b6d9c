#include "standin/service/Associations.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/service/PathKeys.h"

#include <set>

namespace standin
{
namespace
{
bool Is(const std::wstring& limit, std::wstring_view name)
{
    return limit.empty() || EqualNoCaseAscii(limit, name);
}

// The class that a reference property points at; empty for other properties.
std::wstring TargetClass(const CPropertyDefinition& property)
{
    constexpr std::wstring_view prefix = L"ref:";
    const wchar_t* type = property.Type == CIM_REFERENCE ? property.Qualifiers.Text(L"CIMTYPE") : nullptr;
    return type && EqualNoCaseAscii(std::wstring_view(type).substr(0, prefix.size()), prefix)
               ? std::wstring(type + prefix.size())
               : std::wstring();
}

// What one query goes through, and what it has delivered already.
class CWalk
{
  public:
    CWalk(const CAssociationQuery& query, CInstanceSource& source, const ObjectConsumer& consume)
        : m_query(query), m_source(source), m_consume(consume), m_object(Identity(query.Object))
    {
    }

    // The associations whose instances may answer the query.
    std::vector<ClassDefinition> Associations() const
    {
        const std::wstring& limit = m_query.References ? m_query.ResultClass : m_query.AssocClass;
        std::vector<ClassDefinition> found;
        for (ClassDefinition& definition : m_source.Definitions())
            if (definition->Qualifiers.IsTrue(L"association") &&
                (limit.empty() || definition->InheritsFrom(limit)) && RefersToObject(*definition))
                found.push_back(std::move(definition));
        return found;
    }

    COutcome Follow(const CClassDefinition& association)
    {
        // The ends are fetched when the provider has delivered the associations, not from inside its call.
        std::vector<ComPtr<IWbemClassObject>> instances;
        COutcome outcome = m_source.Enumerate(association.Name, false,
                                              [&](IWbemClassObject* instance)
                                              {
                                                  instances.push_back(instance);
                                                  return wmi::NoError;
                                              });
        for (size_t i = 0; !outcome.Failed() && i < instances.size(); ++i)
            outcome = FollowInstance(association, instances[i].Get());
        return outcome;
    }

  private:
    bool RefersToObject(const CClassDefinition& association) const
    {
        const ClassDefinition object = m_source.Definition(m_query.Object.ClassName);
        for (const CPropertyDefinition& property : association.Properties())
        {
            const std::wstring target = TargetClass(property);
            if (target.empty() || !Is(m_query.Role, property.Name))
                continue;
            const ClassDefinition end = m_source.Definition(target);
            if (!object || !end || object->InheritsFrom(end->Name) || end->InheritsFrom(object->Name))
                return true;
        }
        return false;
    }

    std::optional<CObjectPath> End(IWbemClassObject* instance, const CPropertyDefinition& property) const
    {
        CVariant value;
        if (TargetClass(property).empty() ||
            FAILED(instance->Get(property.Name.c_str(), 0, value.Put(), nullptr, nullptr)) ||
            value.vt != VT_BSTR)
            return std::nullopt;
        return ParseObjectPath({value.bstrVal, SysStringLen(value.bstrVal)});
    }

    std::wstring Identity(const CObjectPath& path) const
    {
        return PathIdentity(m_source.Definition(path.ClassName).get(), path);
    }

    COutcome FollowInstance(const CClassDefinition& association, IWbemClassObject* instance)
    {
        for (const CPropertyDefinition& here : association.Properties())
        {
            const std::optional<CObjectPath> hereEnd = End(instance, here);
            if (!hereEnd || !Is(m_query.Role, here.Name) || Identity(*hereEnd) != m_object)
                continue;
            if (m_query.References)
                return m_consume(instance);
            for (const CPropertyDefinition& there : association.Properties())
            {
                const std::optional<CObjectPath> thereEnd = End(instance, there);
                if (!thereEnd || &there == &here || !Is(m_query.ResultRole, there.Name))
                    continue;
                if (COutcome outcome = DeliverEnd(*thereEnd); outcome.Failed())
                    return outcome;
            }
        }
        return wmi::NoError;
    }

    COutcome DeliverEnd(const CObjectPath& end)
    {
        const ClassDefinition definition = m_source.Definition(end.ClassName);
        if (!definition || (!m_query.ResultClass.empty() && !definition->InheritsFrom(m_query.ResultClass)) ||
            !m_delivered.insert(Identity(end)).second)
            return wmi::NoError;
        const COutcome outcome = m_source.Get(end);
        return outcome.Failed() ? wmi::NoError : m_consume(outcome.Object.Get());
    }

    const CAssociationQuery& m_query;
    CInstanceSource& m_source;
    const ObjectConsumer& m_consume;
    const std::wstring m_object;
    std::set<std::wstring> m_delivered;
};
} // namespace

COutcome FollowAssociations(const CAssociationQuery& query, CInstanceSource& source,
                            const ObjectConsumer& consume)
{
    if (!query.Object.IsInstance)
        return wmi::NotSupported;
    if (!source.Definition(query.Object.ClassName))
        return wmi::NotFound;
    for (const std::wstring* limit : {&query.AssocClass, &query.ResultClass})
        if (!limit->empty() && !source.Definition(*limit))
            return wmi::InvalidClass;
    CWalk walk(query, source, consume);
    for (const ClassDefinition& association : walk.Associations())
        if (COutcome outcome = walk.Follow(*association); outcome.Failed())
            return outcome;
    return wmi::NoError;
}
} // namespace standin
