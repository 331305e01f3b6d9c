#include "standin/object/MofText.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "standin/object/CimType.h"

#include <algorithm>

namespace standin
{
namespace
{
void AppendString(std::wstring& text, BSTR value)
{
    text += L'"';
    for (const wchar_t c : std::wstring_view(value ? value : L"", SysStringLen(value)))
        switch (c)
        {
        case L'"':
            text += L"\\\"";
            break;
        case L'\\':
            text += L"\\\\";
            break;
        case L'\n':
            text += L"\\n";
            break;
        case L'\r':
            text += L"\\r";
            break;
        case L'\t':
            text += L"\\t";
            break;
        default:
            text += c;
        }
    text += L'"';
}

void AppendValue(std::wstring& text, const VARIANT& value, CIMTYPE type);

template <class T, class Append>
void AppendList(std::wstring& text, SAFEARRAY* array, VARTYPE type, Append&& append)
{
    const CSafeArrayView<T> items(array, type);
    text += L'{';
    bool first = true;
    for (const T& item : items.Items())
    {
        text += first ? L"" : L", ";
        first = false;
        append(item);
    }
    text += L'}';
}

void AppendReal(std::wstring& text, double value)
{
    wchar_t digits[64];
    _snwprintf(digits, std::size(digits), L"%.17g", value);
    digits[std::size(digits) - 1] = L'\0';
    text += digits;
}

// Embedded objects are instances in braces after "instance of".
void AppendObject(std::wstring& text, IUnknown* object)
{
    ComPtr<IWbemClassObject> embedded;
    CBstr body;
    if (object && SUCCEEDED(object->QueryInterface(IID_IWbemClassObject, embedded.PutVoid())) &&
        SUCCEEDED(embedded->GetObjectText(0, body.Put())))
    {
        std::wstring_view inner = body.View();
        while (!inner.empty() && (inner.back() == L'\n' || inner.back() == L';'))
            inner.remove_suffix(1);
        text += inner;
    }
    else
        text += L"NULL";
}

void AppendInteger(std::wstring& text, LONG value, CIMTYPE type)
{
    text += type == CIM_UINT32 ? std::to_wstring(static_cast<ULONG>(value)) : std::to_wstring(value);
}

void AppendArray(std::wstring& text, const VARIANT& value, CIMTYPE type)
{
    SAFEARRAY* array = value.parray;
    switch (value.vt & VT_TYPEMASK)
    {
    case VT_BSTR:
        return AppendList<BSTR>(text, array, VT_BSTR,
                                [&](BSTR item)
                                {
                                    if (type == CIM_SINT64 || type == CIM_UINT64)
                                        text += item;
                                    else
                                        AppendString(text, item);
                                });
    case VT_BOOL:
        return AppendList<VARIANT_BOOL>(text, array, VT_BOOL,
                                        [&](VARIANT_BOOL item) { text += item ? L"TRUE" : L"FALSE"; });
    case VT_UI1:
        return AppendList<BYTE>(text, array, VT_UI1, [&](BYTE item) { text += std::to_wstring(item); });
    case VT_I2:
        return AppendList<SHORT>(text, array, VT_I2, [&](SHORT item) { text += std::to_wstring(item); });
    case VT_I4:
        return AppendList<LONG>(text, array, VT_I4, [&](LONG item) { AppendInteger(text, item, type); });
    case VT_R4:
        return AppendList<float>(text, array, VT_R4, [&](float item) { AppendReal(text, item); });
    case VT_R8:
        return AppendList<double>(text, array, VT_R8, [&](double item) { AppendReal(text, item); });
    case VT_UNKNOWN:
        return AppendList<IUnknown*>(text, array, VT_UNKNOWN,
                                     [&](IUnknown* item) { AppendObject(text, item); });
    }
}

void AppendValue(std::wstring& text, const VARIANT& value, CIMTYPE type)
{
    if (value.vt & VT_ARRAY)
        return AppendArray(text, value, ElementType(type));
    switch (value.vt)
    {
    case VT_BSTR:
        if (type == CIM_SINT64 || type == CIM_UINT64)
            text += value.bstrVal;
        else
            AppendString(text, value.bstrVal);
        break;
    case VT_BOOL:
        text += value.boolVal ? L"TRUE" : L"FALSE";
        break;
    case VT_UI1:
        text += std::to_wstring(value.bVal);
        break;
    case VT_I2:
        text += std::to_wstring(value.iVal);
        break;
    case VT_I4:
        AppendInteger(text, value.lVal, type);
        break;
    case VT_R4:
        AppendReal(text, value.fltVal);
        break;
    case VT_R8:
        AppendReal(text, value.dblVal);
        break;
    case VT_UNKNOWN:
        AppendObject(text, value.punkVal);
        break;
    default:
        text += L"NULL";
    }
}

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
            AppendValue(text, qualifier.Value, CIM_EMPTY);
        else if (qualifier.Value.vt != VT_BOOL || !qualifier.Value.boolVal)
        {
            text += L'(';
            AppendValue(text, qualifier.Value, CIM_EMPTY);
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
            AppendValue(text, property.Default, property.Type);
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
        AppendValue(text, value, property.Type);
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
