#include "standin/mof/ClassBuilder.h"

#include "Common/src/com/Text.h"
#include "standin/mof/MofValue.h"
#include "standin/object/CimType.h"

#include <algorithm>

namespace standin
{
namespace
{
std::string Quoted(const std::wstring& name)
{
    return '"' + Utf8Text(name) + '"';
}

void ApplyFlavor(CQualifier& qualifier, const CMofName& flavor)
{
    struct CRow
    {
        const wchar_t* Word;
        long Set;
        long Clear;
    };
    constexpr long kInstance = WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE;
    constexpr long kDerived = WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS;
    constexpr CRow kFlavors[] = {
        {L"ToInstance", kInstance, 0},
        {L"NotToInstance", 0, kInstance},
        {L"ToSubclass", kDerived, 0},
        {L"NotToSubclass", 0, kDerived},
        {L"Restricted", 0, kInstance | kDerived},
        {L"DisableOverride", WBEM_FLAVOR_NOT_OVERRIDABLE, 0},
        {L"EnableOverride", 0, WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"Amended", WBEM_FLAVOR_AMENDED, 0},
        {L"Translatable", 0, 0},
    };
    for (const CRow& row : kFlavors)
        if (EqualNoCaseAscii(row.Word, flavor.Text))
        {
            qualifier.Flavor = (qualifier.Flavor & ~row.Clear) | row.Set;
            return;
        }
    throw CMofProblem{flavor.Place, "unknown flavor " + Quoted(flavor.Text)};
}

CQualifiers BuildQualifiers(const std::vector<CMofQualifier>& declarations)
{
    CQualifiers qualifiers;
    for (const CMofQualifier& declaration : declarations)
    {
        if (qualifiers.Find(declaration.Name.Text))
            throw CMofProblem{declaration.Name.Place,
                              "the qualifier " + Quoted(declaration.Name.Text) + " is there twice"};
        CQualifier qualifier = MakeQualifier(declaration.Name.Text, ToQualifierValue(declaration.Value));
        for (const CMofName& flavor : declaration.Flavors)
            ApplyFlavor(qualifier, flavor);
        qualifiers.Set(std::move(qualifier));
    }
    return qualifiers;
}

// An inherited qualifier that says so cannot be given another value.
void CheckOverrides(const CQualifiers& inherited, const CQualifiers& own, const CMofPlace& place)
{
    for (const CQualifier& qualifier : own.All())
    {
        const CQualifier* present = inherited.Find(qualifier.Name);
        if (present && (present->Flavor & WBEM_FLAVOR_NOT_OVERRIDABLE) &&
            (present->Flavor & WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS) &&
            !SameCimValue(present->Value, qualifier.Value, false))
            throw CMofProblem{place,
                              "the inherited qualifier " + Quoted(qualifier.Name) + " cannot be changed"};
    }
}

CPropertyDefinition BuildElement(const CMofElement& element)
{
    CPropertyDefinition property;
    property.Name = element.Name.Text;
    property.Qualifiers = BuildQualifiers(element.Qualifiers);
    const CIMTYPE known = CimTypeFromName(element.Type.Text);
    const bool named = known == CIM_ILLEGAL; // a class
    if (element.Reference && !named && known != CIM_OBJECT)
        throw CMofProblem{element.Type.Place,
                          "a reference to " + Quoted(element.Type.Text) + ", which is no class"};
    if (!element.Reference && known == CIM_REFERENCE)
        throw CMofProblem{element.Type.Place, "a reference without a class"};
    property.Type = element.Reference ? CIMTYPE{CIM_REFERENCE} : named ? CIMTYPE{CIM_OBJECT} : known;
    std::wstring cimType = CimTypeName(property.Type);
    if (named)
        cimType += L':' + element.Type.Text;
    property.Qualifiers.Set(MakeQualifier(L"CIMTYPE", CVariant::FromText(cimType.c_str())));
    if (element.Array)
        property.Type |= CIM_FLAG_ARRAY;
    if (element.Value)
        property.Default = ToCimValue(*element.Value, property.Type, {});
    return property;
}

void CheckRedeclaration(const CPropertyDefinition& property, const CClassDefinition& base,
                        const CMofName& name)
{
    const CPropertyDefinition* inherited = base.FindProperty(property.Name);
    if (inherited)
    {
        if (inherited->Type != property.Type)
            throw CMofProblem{name.Place, "the property " + Quoted(name.Text) +
                                              " has another type in class " + Quoted(base.Name)};
        CheckOverrides(inherited->Qualifiers, property.Qualifiers, name.Place);
    }
    const bool wasKey = inherited && inherited->Qualifiers.IsTrue(L"key");
    if (property.Qualifiers.IsTrue(L"key") && !wasKey && !base.Keys()->empty())
        throw CMofProblem{name.Place, "the key " + Quoted(name.Text) + " cannot be added: class " +
                                          Quoted(base.Name) + " has keys"};
}

CQualifier True(const wchar_t* name)
{
    return MakeQualifier(name, CVariant::FromBool(true));
}

ClassDefinition Signature(const std::vector<CPropertyDefinition>& parameters)
{
    if (parameters.empty())
        return nullptr;
    auto signature = std::make_shared<CClassDefinition>(L"__PARAMETERS");
    for (const CPropertyDefinition& parameter : parameters)
        signature->SetProperty(parameter);
    return signature;
}

CMethodDefinition BuildMethod(const CMofMethod& declaration)
{
    std::vector<CPropertyDefinition> in;
    std::vector<CPropertyDefinition> out;
    for (size_t i = 0; i < declaration.Parameters.size(); ++i)
    {
        CPropertyDefinition parameter = BuildElement(declaration.Parameters[i]);
        if (!parameter.Qualifiers.Find(L"ID"))
            parameter.Qualifiers.Set(MakeQualifier(L"ID", CVariant::FromLong(static_cast<LONG>(i))));
        const bool isOut = parameter.Qualifiers.IsTrue(L"out");
        const bool isIn = parameter.Qualifiers.IsTrue(L"in");
        if (!isIn && !isOut)
            throw CMofProblem{declaration.Parameters[i].Name.Place,
                              "the parameter " + Quoted(parameter.Name) + " is neither \"in\" nor \"out\""};
        if (isIn)
            in.push_back(parameter);
        if (isOut)
            out.push_back(std::move(parameter));
    }
    if (!EqualNoCaseAscii(declaration.Type.Text, L"void"))
    {
        CMofElement result;
        result.Type = declaration.Type;
        result.Name.Text = L"ReturnValue";
        CPropertyDefinition property = BuildElement(result);
        property.Qualifiers.Set(True(L"out"));
        out.push_back(std::move(property));
    }
    CMethodDefinition method;
    method.Name = declaration.Name.Text;
    method.Qualifiers = BuildQualifiers(declaration.Qualifiers);
    method.In = Signature(in);
    method.Out = Signature(out);
    return method;
}

bool SameSignature(const ClassDefinition& a, const ClassDefinition& b)
{
    if (!a || !b)
        return a == b;
    const auto same = [&](const CPropertyDefinition& parameter)
    {
        const CPropertyDefinition* other = b->FindProperty(parameter.Name);
        return other && other->Type == parameter.Type;
    };
    return a->Properties().size() == b->Properties().size() && std::ranges::all_of(a->Properties(), same);
}

void CheckRedeclaration(const CMethodDefinition& method, const CClassDefinition& base, const CMofName& name)
{
    const CMethodDefinition* inherited = base.FindMethod(method.Name);
    if (inherited && (!SameSignature(inherited->In, method.In) || !SameSignature(inherited->Out, method.Out)))
        throw CMofProblem{name.Place, "the method " + Quoted(name.Text) + " has other parameters in class " +
                                          Quoted(base.Name)};
}

template <class Elements>
void CheckNoTwice(const Elements& elements)
{
    for (size_t i = 0; i < elements.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (EqualNoCaseAscii(elements[i].Name.Text, elements[j].Name.Text))
                throw CMofProblem{elements[i].Name.Place, Quoted(elements[i].Name.Text) + " is there twice"};
}
} // namespace

ClassDefinition BuildClass(const CMofClass& declaration, const CClassDefinition* base)
{
    auto definition = base ? std::make_shared<CClassDefinition>(declaration.Name.Text, *base)
                           : std::make_shared<CClassDefinition>(declaration.Name.Text);
    const CQualifiers qualifiers = BuildQualifiers(declaration.Qualifiers);
    if (base)
        CheckOverrides(base->Qualifiers, qualifiers, declaration.Name.Place);
    for (const CQualifier& qualifier : qualifiers.All())
        definition->Qualifiers.Set(qualifier);
    CheckNoTwice(declaration.Properties);
    for (const CMofElement& element : declaration.Properties)
    {
        if (definition->Properties().size() >= CClassDefinition::kMaxProperties)
            throw CMofProblem{element.Name.Place, "a class cannot have more properties"};
        CPropertyDefinition property = BuildElement(element);
        if (base)
            CheckRedeclaration(property, *base, element.Name);
        definition->SetProperty(std::move(property));
    }
    CheckNoTwice(declaration.Methods);
    for (const CMofMethod& method : declaration.Methods)
    {
        CheckNoTwice(method.Parameters);
        CMethodDefinition built = BuildMethod(method);
        if (base)
            CheckRedeclaration(built, *base, method.Name);
        definition->SetMethod(std::move(built));
    }
    definition->Changed();
    return definition;
}
} // namespace standin
