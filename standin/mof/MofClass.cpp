#include "standin/mof/MofClass.h"

#include "Common/src/com/Text.h"
#include "standin/mof/MofValue.h"
#include "standin/object/CimType.h"

#include <algorithm>

namespace standin
{
namespace
{
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
    };
    for (const CRow& row : kFlavors)
        if (EqualNoCaseAscii(row.Word, flavor.Text))
        {
            qualifier.Flavor = (qualifier.Flavor & ~row.Clear) | row.Set;
            return;
        }
    throw CMofProblem{flavor.Place, "unknown flavor " + Quoted(flavor.Text)};
}

CCimValue ReadQualifierValue(CMofReader& reader)
{
    if (reader.Is('{'))
        return ToQualifierValue(ReadMofList(reader, {}));
    if (!reader.Take('('))
        return CVariant::FromBool(true);
    CCimValue value = ToQualifierValue(ReadMofValue(reader, {}));
    reader.Expect(')');
    return value;
}

// An inherited qualifier that says so cannot be given another value.
void CheckOverrides(const CQualifiers& inherited, const CQualifiers& own, const CMofPlace& place)
{
    for (const CQualifier& qualifier : own.All())
    {
        const CQualifier* present = inherited.Find(qualifier.Name);
        if (present && (present->Flavor & WBEM_FLAVOR_NOT_OVERRIDABLE) &&
            (present->Flavor & WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS) &&
            !SameCimValue(present->Value, qualifier.Value))
            throw CMofProblem{place,
                              "the inherited qualifier " + Quoted(qualifier.Name) + " cannot be changed"};
    }
}

// What a property, a parameter and a method begin with.
struct CHead
{
    CQualifiers Qualifiers;
    CMofName Type; // a CIM type or the name of a class
    bool Reference = false;
    CMofName Name;
};

CHead ReadHead(CMofReader& reader)
{
    CHead head;
    head.Qualifiers = ReadQualifiers(reader);
    head.Type = reader.TakeName();
    const bool ref = reader.IsWord("ref");
    head.Name = reader.TakeName();
    if (ref && reader.Kind() == CMofReader::Word)
    {
        head.Reference = true;
        head.Name = reader.TakeName();
    }
    return head;
}

CPropertyDefinition ReadElement(CMofReader& reader, CHead head)
{
    CPropertyDefinition property;
    property.Name = std::move(head.Name.Text);
    property.Qualifiers = std::move(head.Qualifiers);
    const CCimType* known = FindCimType(head.Type.Text);
    if (known && (head.Reference || known->Type == CIM_REFERENCE))
        throw CMofProblem{head.Type.Place, "a reference needs the name of a class"};
    property.Type = known ? known->Type : head.Reference ? CIMTYPE{CIM_REFERENCE} : CIMTYPE{CIM_OBJECT};
    std::wstring cimType = FindCimType(property.Type)->Name;
    if (!known)
        cimType += L':' + head.Type.Text;
    property.Qualifiers.Set(MakeQualifier(L"CIMTYPE", CVariant::FromText(cimType.c_str())));
    if (reader.Take('['))
    {
        reader.Expect(']');
        property.Type |= CIM_FLAG_ARRAY;
    }
    return property;
}

void CheckProperty(const CPropertyDefinition& property, const CClassDefinition& base, const CMofPlace& place)
{
    const CPropertyDefinition* inherited = base.FindProperty(property.Name);
    if (inherited && inherited->Type != property.Type)
        throw CMofProblem{place, "the property " + Quoted(property.Name) + " has another type in class " +
                                     Quoted(base.Name)};
    if (inherited)
        CheckOverrides(inherited->Qualifiers, property.Qualifiers, place);
    const bool wasKey = inherited && inherited->Qualifiers.IsTrue(L"key");
    if (property.Qualifiers.IsTrue(L"key") && !wasKey && !base.Keys().empty())
        throw CMofProblem{place, "the key " + Quoted(property.Name) + " cannot be added: class " +
                                     Quoted(base.Name) + " has keys"};
}

// What has been declared of a class or a method.
class CDeclared
{
  public:
    void Add(const CMofName& name)
    {
        const auto same = [&](const std::wstring& other) { return EqualNoCaseAscii(other, name.Text); };
        if (std::ranges::any_of(m_names, same))
            throw CMofProblem{name.Place, Quoted(name.Text) + " is there twice"};
        m_names.push_back(name.Text);
    }

  private:
    std::vector<std::wstring> m_names;
};

void AddParameter(ClassDefinition& signature, CPropertyDefinition parameter)
{
    auto longer = signature ? std::make_shared<CClassDefinition>(*signature)
                            : std::make_shared<CClassDefinition>(L"__PARAMETERS");
    longer->SetProperty(std::move(parameter));
    signature = std::move(longer);
}

CMethodDefinition ReadMethod(CMofReader& reader, CHead head)
{
    CMethodDefinition method;
    method.Name = head.Name.Text;
    method.Qualifiers = std::move(head.Qualifiers);
    CDeclared declared;
    for (LONG id = 0; !reader.Take(')'); ++id)
    {
        if (id > 0)
            reader.Expect(',');
        CHead parameterHead = ReadHead(reader);
        const CMofName name = parameterHead.Name;
        declared.Add(name);
        CPropertyDefinition parameter = ReadElement(reader, std::move(parameterHead));
        parameter.Qualifiers.Set(MakeQualifier(L"ID", CVariant::FromLong(id)));
        const bool isOut = parameter.Qualifiers.IsTrue(L"out");
        const bool isIn = parameter.Qualifiers.IsTrue(L"in");
        if (!isIn && !isOut)
            throw CMofProblem{name.Place,
                              "the parameter " + Quoted(name.Text) + " is neither \"in\" nor \"out\""};
        if (isIn)
            AddParameter(method.In, parameter);
        if (isOut)
            AddParameter(method.Out, std::move(parameter));
    }
    if (!EqualNoCaseAscii(head.Type.Text, L"void"))
    {
        CPropertyDefinition result =
            ReadElement(reader, {{}, head.Type, head.Reference, {L"ReturnValue", {}}});
        result.Qualifiers.Set(MakeQualifier(L"out", CVariant::FromBool(true)));
        AddParameter(method.Out, std::move(result));
    }
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

void CheckMethod(const CMethodDefinition& method, const CClassDefinition& base, const CMofPlace& place)
{
    const CMethodDefinition* inherited = base.FindMethod(method.Name);
    if (inherited && (!SameSignature(inherited->In, method.In) || !SameSignature(inherited->Out, method.Out)))
        throw CMofProblem{place, "the method " + Quoted(method.Name) + " has other parameters in class " +
                                     Quoted(base.Name)};
}
} // namespace

CQualifiers ReadQualifiers(CMofReader& reader)
{
    CQualifiers qualifiers;
    if (!reader.Take('['))
        return qualifiers;
    do
    {
        const CMofName name = reader.TakeName();
        if (qualifiers.Find(name.Text))
            throw CMofProblem{name.Place, "the qualifier " + Quoted(name.Text) + " is there twice"};
        CQualifier qualifier = MakeQualifier(name.Text, ReadQualifierValue(reader));
        if (reader.Take(':'))
            do
                ApplyFlavor(qualifier, reader.TakeName("a flavor"));
            while (reader.Kind() == CMofReader::Word);
        qualifiers.Set(std::move(qualifier));
    } while (reader.Take(','));
    reader.Expect(']');
    return qualifiers;
}

ClassDefinition ReadClass(CMofReader& reader, const CQualifiers& qualifiers, const FindBase& findBase)
{
    const CMofName name = reader.TakeName();
    ClassDefinition base;
    if (reader.Take(':'))
    {
        const CMofName baseName = reader.TakeName("the name of the superclass");
        base = findBase(baseName);
        if (base->InheritsFrom(name.Text))
            throw CMofProblem{baseName.Place, "class " + Quoted(name.Text) + " would derive from itself"};
        CheckOverrides(base->Qualifiers, qualifiers, name.Place);
    }
    auto definition = base ? std::make_shared<CClassDefinition>(name.Text, *base)
                           : std::make_shared<CClassDefinition>(name.Text);
    for (const CQualifier& qualifier : qualifiers.All())
        definition->Qualifiers.Set(qualifier);
    CDeclared properties;
    CDeclared methods;
    reader.Expect('{');
    while (!reader.Take('}'))
    {
        CHead head = ReadHead(reader);
        const CMofName element = head.Name;
        if (reader.Take('('))
        {
            methods.Add(element);
            CMethodDefinition method = ReadMethod(reader, std::move(head));
            if (base)
                CheckMethod(method, *base, element.Place);
            definition->SetMethod(std::move(method));
        }
        else
        {
            properties.Add(element);
            CPropertyDefinition property = ReadElement(reader, std::move(head));
            if (reader.Take('='))
                property.Default = ToCimValue(ReadMofValue(reader, {}), property.Type);
            if (base)
                CheckProperty(property, *base, element.Place);
            definition->SetProperty(std::move(property));
        }
        reader.Expect(';');
    }
    reader.Expect(';');
    return definition;
}
} // namespace standin
