#include "standin/object/MofText.h"

#include "Common/src/com/Text.h"
#include "standin/object/CimType.h"
#include "standin/object/MofValueText.h"

#include <algorithm>

namespace standin
{
namespace
{
void AppendFlavor(std::wstring& text, long flavor)
{
    struct CRow
    {
        long Bit;
        const wchar_t* Word;
    };
    constexpr CRow kWords[] = {{WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE, L" ToInstance"},
                               {WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS, L" ToSubclass"},
                               {WBEM_FLAVOR_NOT_OVERRIDABLE, L" DisableOverride"},
                               {WBEM_FLAVOR_AMENDED, L" Amended"}};
    bool first = true;
    for (const CRow& row : kWords)
        if (flavor & row.Bit)
        {
            text += first ? L":" : L"";
            text += row.Word;
            first = false;
        }
}

// Those of the element itself; "CIMTYPE" is what the declaration says anyway.
void AppendQualifiers(std::wstring& text, const CQualifiers& qualifiers, bool withFlavors,
                      const wchar_t* indent, const wchar_t* end)
{
    bool any = false;
    for (const CQualifier& qualifier : qualifiers.All())
    {
        if (EqualNoCaseAscii(qualifier.Name, L"CIMTYPE") ||
            (qualifier.Flavor & WBEM_FLAVOR_MASK_ORIGIN) == WBEM_FLAVOR_ORIGIN_PROPAGATED)
            continue;
        text += any ? L", " : std::wstring(indent) + L'[';
        any = true;
        text += qualifier.Name;
        if (qualifier.Value.vt & VT_ARRAY)
            AppendMofValue(text, qualifier.Value, CIM_EMPTY);
        else if (qualifier.Value.vt != VT_BOOL || !qualifier.Value.boolVal)
        {
            text += L'(';
            AppendMofValue(text, qualifier.Value, CIM_EMPTY);
            text += L')';
        }
        if (withFlavors)
            AppendFlavor(text, qualifier.Flavor);
    }
    if (any)
        text += std::wstring(L"]") + end;
}

// "uint16", "Tolva_DiagTest ref" or, for embedded objects, the class.
std::wstring TypeWords(const CPropertyDefinition& property)
{
    const CIMTYPE type = ElementType(property.Type);
    const wchar_t* cimType = property.Qualifiers.Text(L"CIMTYPE");
    const std::wstring_view words = cimType ? cimType : L"";
    const size_t colon = words.find(L':');
    const std::wstring target(colon == std::wstring_view::npos ? L"object" : words.substr(colon + 1));
    if (type == CIM_REFERENCE)
        return target + L" ref";
    return type == CIM_OBJECT ? target : CimTypeName(type);
}

std::wstring Declaration(const CPropertyDefinition& property)
{
    return TypeWords(property) + L' ' + property.Name + (IsArray(property.Type) ? L"[]" : L"");
}

// The ID of a parameter tells its place.
LONG IdOf(const CPropertyDefinition& parameter)
{
    const CQualifier* id = parameter.Qualifiers.Find(L"ID");
    return id && id->Value.vt == VT_I4 ? id->Value.lVal : MAXLONG;
}

void AppendMethod(std::wstring& text, const CMethodDefinition& method, bool withFlavors)
{
    std::vector<CPropertyDefinition> parameters;
    std::wstring result = L"void";
    for (const ClassDefinition& signature : {method.In, method.Out})
        if (signature)
            for (const CPropertyDefinition& parameter : signature->Properties())
            {
                const auto same = [&](const auto& p) { return EqualNoCaseAscii(p.Name, parameter.Name); };
                if (EqualNoCaseAscii(parameter.Name, L"ReturnValue"))
                    result = TypeWords(parameter);
                else if (const auto known = std::ranges::find_if(parameters, same); known != parameters.end())
                    known->Qualifiers.Set(MakeQualifier(L"out", CVariant::FromBool(true)));
                else
                    parameters.push_back(parameter);
            }
    std::ranges::stable_sort(parameters, {}, IdOf);
    AppendQualifiers(text, method.Qualifiers, withFlavors, L"\t", L" ");
    text += (text.ends_with(L"] ") ? L"" : L"\t") + result + L' ' + method.Name + L'(';
    for (size_t i = 0; i < parameters.size(); ++i)
    {
        text += i ? L", " : L"";
        AppendQualifiers(text, parameters[i].Qualifiers, withFlavors, L"", L" ");
        text += Declaration(parameters[i]);
    }
    text += L");\n";
}

void AppendClass(std::wstring& text, const CClassDefinition& definition, bool withFlavors)
{
    AppendQualifiers(text, definition.Qualifiers, withFlavors, L"", L"\n");
    text += L"class " + definition.Name;
    if (!definition.Derivation.empty())
        text += L" : " + definition.Derivation.front();
    text += L"\n{\n";
    for (const CPropertyDefinition& property : definition.Properties())
    {
        if (!property.Local)
            continue;
        AppendQualifiers(text, property.Qualifiers, withFlavors, L"\t", L" ");
        text += (text.ends_with(L"] ") ? L"" : L"\t") + Declaration(property);
        if (property.Default.vt != VT_NULL)
        {
            text += L" = ";
            AppendMofValue(text, property.Default, property.Type);
        }
        text += L";\n";
    }
    for (const CMethodDefinition& method : definition.Methods())
        if (method.Local)
            AppendMethod(text, method, withFlavors);
    text += L"};\n";
}

void AppendInstance(std::wstring& text, const CObjectView& object)
{
    text += L"instance of " + object.Definition.Name + L"\n{\n";
    for (const size_t index : *object.Definition.Order())
    {
        const VARIANT& value = object.Value(index);
        if (value.vt == VT_NULL)
            continue;
        const CPropertyDefinition& property = object.Definition.Properties()[index];
        text += L'\t' + property.Name + L" = ";
        AppendMofValue(text, value, property.Type);
        text += L";\n";
    }
    text += L"};\n";
}
} // namespace

std::wstring MofText(const CObjectView& object, bool withFlavors)
{
    std::wstring text = L"\n";
    if (object.IsClass())
        AppendClass(text, object.Definition, withFlavors);
    else
        AppendInstance(text, object);
    return text;
}
} // namespace standin
