#include "standin/mof/Amendment.h"

#include <algorithm>

namespace standin
{
namespace
{
bool HasAmended(const CQualifiers& qualifiers)
{
    return std::ranges::any_of(qualifiers.All(),
                               [](const CQualifier& q) { return q.Flavor & WBEM_FLAVOR_AMENDED; });
}

bool HasAmended(const CClassDefinition& definition);

bool HasAmended(const ClassDefinition& signature)
{
    return signature && HasAmended(*signature);
}

bool HasAmended(const CClassDefinition& definition)
{
    const auto property = [](const auto& element) { return HasAmended(element.Qualifiers); };
    const auto method = [](const CMethodDefinition& m)
    { return HasAmended(m.Qualifiers) || HasAmended(m.In) || HasAmended(m.Out); };
    return HasAmended(definition.Qualifiers) || std::ranges::any_of(definition.Properties(), property) ||
           std::ranges::any_of(definition.Methods(), method);
}

void Strip(CQualifiers& qualifiers)
{
    CQualifiers kept;
    for (const CQualifier& qualifier : qualifiers.All())
        if (!(qualifier.Flavor & WBEM_FLAVOR_AMENDED))
            kept.Set(qualifier);
    qualifiers = std::move(kept);
}

// `inherited`: the overlay is that of an ancestor. It brings what it propagates, and never replaces what the
// class says itself.
void Lay(CQualifiers& qualifiers, const CQualifiers& overlay, bool inherited)
{
    for (CQualifier qualifier : overlay.All())
    {
        const CQualifier* present = qualifiers.Find(qualifier.Name);
        const bool own = present && !(present->Flavor & WBEM_FLAVOR_ORIGIN_PROPAGATED);
        if (!(qualifier.Flavor & WBEM_FLAVOR_AMENDED) ||
            (inherited && (own || !(qualifier.Flavor & WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS))))
            continue;
        if (inherited)
            qualifier.Flavor |= WBEM_FLAVOR_ORIGIN_PROPAGATED;
        qualifiers.Set(std::move(qualifier));
    }
}

void LayProperties(CClassDefinition& target, const CClassDefinition& overlay, bool inherited)
{
    for (const CPropertyDefinition& property : overlay.Properties())
    {
        const size_t index = target.IndexOf(property.Name);
        if (property.Local && index != CClassDefinition::npos)
            Lay(target.PropertyAt(index).Qualifiers, property.Qualifiers, inherited);
    }
    target.Changed();
}

void LaySignature(ClassDefinition& signature, const ClassDefinition& overlay, bool inherited)
{
    if (!signature || !overlay)
        return;
    auto copy = std::make_shared<CClassDefinition>(*signature);
    LayProperties(*copy, *overlay, inherited);
    signature = std::move(copy);
}

void LayClass(CClassDefinition& target, const CClassDefinition& overlay, bool inherited)
{
    Lay(target.Qualifiers, overlay.Qualifiers, inherited);
    LayProperties(target, overlay, inherited);
    for (size_t i = 0; i < target.Methods().size(); ++i)
    {
        CMethodDefinition& method = target.MethodAt(i);
        const CMethodDefinition* other = overlay.FindMethod(method.Name);
        if (!other || !other->Local)
            continue;
        Lay(method.Qualifiers, other->Qualifiers, inherited);
        LaySignature(method.In, other->In, inherited);
        LaySignature(method.Out, other->Out, inherited);
    }
}
} // namespace

ClassDefinition WithoutAmended(const ClassDefinition& definition)
{
    if (!HasAmended(definition))
        return definition;
    auto stripped = std::make_shared<CClassDefinition>(*definition);
    Strip(stripped->Qualifiers);
    for (size_t i = 0; i < stripped->Properties().size(); ++i)
        Strip(stripped->PropertyAt(i).Qualifiers);
    for (size_t i = 0; i < stripped->Methods().size(); ++i)
    {
        CMethodDefinition& method = stripped->MethodAt(i);
        Strip(method.Qualifiers);
        if (method.In)
            method.In = WithoutAmended(method.In);
        if (method.Out)
            method.Out = WithoutAmended(method.Out);
    }
    stripped->Changed();
    return stripped;
}

ClassDefinition Amended(const ClassDefinition& definition, const CNamespace& language)
{
    auto amended = std::make_shared<CClassDefinition>(*definition);
    const auto lay = [&](const std::wstring& name, bool inherited)
    {
        const auto found = language.Classes.find(FoldName(name));
        if (found != language.Classes.end())
            LayClass(*amended, *found->second.Definition, inherited);
    };
    // The farthest ancestor first, so that the nearer ones win.
    for (size_t i = definition->Derivation.size(); i > 0; --i)
        lay(definition->Derivation[i - 1], true);
    lay(definition->Name, false);
    amended->Changed();
    return amended;
}
} // namespace standin
