#include "standin/object/SystemProperty.h"

#include "Common/src/com/Text.h"
#include "standin/object/CimType.h"
#include "standin/object/NameArray.h"

namespace standin
{
namespace
{
CVariant Text(std::wstring_view text)
{
    return CVariant::FromBstr(CBstr(text).Detach());
}

CVariant TextOrNull(std::wstring_view text)
{
    return text.empty() ? CVariant::Null() : Text(text);
}

CVariant Genus(const CObjectView& object)
{
    return CVariant::FromLong(object.IsClass() ? WBEM_GENUS_CLASS : WBEM_GENUS_INSTANCE);
}

CVariant Class(const CObjectView& object)
{
    return TextOrNull(object.Definition.Name);
}

CVariant Superclass(const CObjectView& object)
{
    const auto& derivation = object.Definition.Derivation;
    return derivation.empty() ? CVariant::Null() : Text(derivation.front());
}

CVariant Dynasty(const CObjectView& object)
{
    const auto& derivation = object.Definition.Derivation;
    return derivation.empty() ? Class(object) : Text(derivation.back());
}

CVariant Relpath(const CObjectView& object)
{
    return TextOrNull(RelativePath(object));
}

CVariant PropertyCount(const CObjectView& object)
{
    return CVariant::FromLong(static_cast<LONG>(object.Definition.Properties().size()));
}

CVariant Derivation(const CObjectView& object)
{
    const auto& derivation = object.Definition.Derivation;
    CSafeArray names = NameArray({derivation.begin(), derivation.end()});
    return CVariant::FromArray(names.Detach(), VT_BSTR);
}

CVariant Server(const CObjectView& object)
{
    return object.Decoration ? Text(object.Decoration->Server) : CVariant::Null();
}

CVariant Namespace(const CObjectView& object)
{
    return object.Decoration ? Text(object.Decoration->Namespace) : CVariant::Null();
}

CVariant Path(const CObjectView& object)
{
    const std::wstring relative = RelativePath(object);
    if (!object.Decoration || relative.empty())
        return CVariant::Null();
    return Text(L"\\\\" + object.Decoration->Server + L"\\" + object.Decoration->Namespace + L":" + relative);
}

constexpr CSystemProperty kProperties[] = {
    {L"__GENUS", CIM_SINT32, Genus},
    {L"__CLASS", CIM_STRING, Class},
    {L"__SUPERCLASS", CIM_STRING, Superclass},
    {L"__DYNASTY", CIM_STRING, Dynasty},
    {L"__RELPATH", CIM_STRING, Relpath},
    {L"__PROPERTY_COUNT", CIM_SINT32, PropertyCount},
    {L"__DERIVATION", CIM_STRING | CIM_FLAG_ARRAY, Derivation},
    {L"__SERVER", CIM_STRING, Server},
    {L"__NAMESPACE", CIM_STRING, Namespace},
    {L"__PATH", CIM_STRING, Path},
};

// Quotes and backslashes are written with a backslash before them.
void AppendQuoted(std::wstring& path, std::wstring_view text)
{
    path += L'"';
    for (const wchar_t c : text)
    {
        if (c == L'"' || c == L'\\')
            path += L'\\';
        path += c;
    }
    path += L'"';
}

void AppendKey(std::wstring& path, const VARIANT& value, CIMTYPE type)
{
    switch (value.vt)
    {
    case VT_BSTR:
    {
        const std::wstring_view text(value.bstrVal, SysStringLen(value.bstrVal));
        if (type == CIM_SINT64 || type == CIM_UINT64)
            path += text;
        else
            AppendQuoted(path, text);
        break;
    }
    case VT_BOOL:
        path += value.boolVal ? L"TRUE" : L"FALSE";
        break;
    case VT_UI1:
        path += std::to_wstring(value.bVal);
        break;
    case VT_I2:
        path += std::to_wstring(value.iVal);
        break;
    case VT_I4:
        path += type == CIM_UINT32 ? std::to_wstring(value.ulVal) : std::to_wstring(value.lVal);
        break;
    }
}
} // namespace

std::span<const CSystemProperty> SystemProperties() noexcept
{
    return kProperties;
}

const CSystemProperty* FindSystemProperty(std::wstring_view name) noexcept
{
    if (!name.starts_with(L"__"))
        return nullptr;
    for (const CSystemProperty& property : kProperties)
        if (EqualNoCaseAscii(property.Name, name))
            return &property;
    return nullptr;
}

HRESULT ReadProperty(const CObjectView& object, const CSystemProperty& property, VARIANT* value,
                     CIMTYPE* type, LONG* flavor)
{
    if (value)
    {
        CVariant read = property.Read(object);
        *value = read;
        read.vt = VT_EMPTY; // the caller's now
    }
    if (type)
        *type = property.Type;
    if (flavor)
        *flavor = WBEM_FLAVOR_ORIGIN_SYSTEM;
    return S_OK;
}

HRESULT ReadProperty(const CObjectView& object, size_t index, VARIANT* value, CIMTYPE* type, LONG* flavor)
{
    if (value)
    {
        const HRESULT hr = CopyCimValue(object.Value(index), value);
        if (FAILED(hr))
            return hr;
    }
    if (type)
        *type = object.Definition.Properties()[index].Type;
    if (flavor)
        *flavor = object.Flavor(index);
    return S_OK;
}

std::wstring RelativePath(const CObjectView& object)
{
    const CClassDefinition& definition = object.Definition;
    if (object.IsClass())
        return definition.Name;
    std::wstring path = definition.Name;
    if (definition.Qualifiers.IsTrue(L"singleton"))
        return path += L"=@";
    const auto keys = definition.Keys();
    wchar_t separator = L'.';
    for (const size_t key : *keys)
    {
        const CPropertyDefinition& property = definition.Properties()[key];
        const VARIANT& value = object.Value(key);
        if (value.vt == VT_NULL)
            return {};
        path += separator;
        path += property.Name;
        path += L'=';
        AppendKey(path, value, property.Type);
        separator = L',';
    }
    return keys->empty() ? std::wstring() : path;
}
} // namespace standin
