#include "standin/service/QueryRun.h"

#include "Common/src/com/WmiStatus.h"
#include "standin/service/Associations.h"
#include "standin/service/Projection.h"

#include <algorithm>

namespace standin
{
namespace
{
bool HasProperty(const CClassDefinition& definition, const std::wstring& name)
{
    return name.starts_with(L"__") || definition.FindProperty(name);
}

bool HasProperties(const CClassDefinition& definition, const CCondition& condition)
{
    return condition.Type == CCondition::Kind::Compare
               ? HasProperty(definition, condition.Property)
               : std::all_of(condition.Operands.begin(), condition.Operands.end(),
                             [&](const CCondition& operand) { return HasProperties(definition, operand); });
}

COutcome Run(const CSelectQuery& query, CInstanceSource& source, const ObjectConsumer& consume)
{
    const ClassDefinition definition = source.Definition(query.ClassName);
    if (!definition)
        return wmi::InvalidClass;
    if (!std::all_of(query.Properties.begin(), query.Properties.end(),
                     [&](const std::wstring& name) { return HasProperty(*definition, name); }) ||
        (query.Where && !HasProperties(*definition, *query.Where)))
        return wmi::InvalidQuery;
    CProjection projection(source, query.Properties);
    return source.Enumerate(query.ClassName, true,
                            [&](IWbemClassObject* object) -> HRESULT
                            {
                                if (query.Where && !Meets(object, *query.Where))
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
    return std::visit([&](const auto& kind) { return Run(kind, source, consume); }, query.Kind);
}
} // namespace standin
