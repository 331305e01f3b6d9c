#include "standin/object/ObjectState.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimType.h"

#include <algorithm>

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

CVariant Genus(const CObjectState& object)
{
    return CVariant::FromLong(object.IsClass ? WBEM_GENUS_CLASS : WBEM_GENUS_INSTANCE);
}

CVariant Class(const CObjectState& object)
{
    return TextOrNull(object.Definition->Name);
}

CVariant Superclass(const CObjectState& object)
{
    const auto& derivation = object.Definition->Derivation;
    return derivation.empty() ? CVariant::Null() : Text(derivation.front());
}

CVariant Dynasty(const CObjectState& object)
{
    const auto& derivation = object.Definition->Derivation;
    return derivation.empty() ? Class(object) : Text(derivation.back());
}

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

// Class name and keys; the name alone for a class. Empty where the class has no keys or
// one of them has no value.
std::wstring RelativePath(const CObjectState& object)
{
    const CClassDefinition& definition = *object.Definition;
    std::wstring path = definition.Name;
    if (object.IsClass)
        return path;
    const std::vector<size_t> keys = definition.Keys();
    wchar_t separator = L'.';
    for (const size_t key : keys)
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
    return keys.empty() ? std::wstring() : path;
}

CVariant Relpath(const CObjectState& object)
{
    return TextOrNull(RelativePath(object));
}

CVariant PropertyCount(const CObjectState& object)
{
    return CVariant::FromLong(static_cast<LONG>(object.Definition->Properties().size()));
}

CVariant Derivation(const CObjectState& object)
{
    const auto& derivation = object.Definition->Derivation;
    CSafeArray names(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(derivation.size())));
    if (!names)
        throw std::bad_alloc();
    std::ranges::transform(derivation, CSafeArrayView<BSTR>(names.Get(), VT_BSTR).Items().begin(),
                           [](const std::wstring& name) { return CBstr(std::wstring_view(name)).Detach(); });
    return CVariant::FromArray(names.Detach(), VT_BSTR);
}

CVariant Server(const CObjectState& object)
{
    return object.Decoration ? Text(object.Decoration->Server) : CVariant::Null();
}

CVariant Namespace(const CObjectState& object)
{
    return object.Decoration ? Text(object.Decoration->Namespace) : CVariant::Null();
}

CVariant Path(const CObjectState& object)
{
    const std::wstring relative = RelativePath(object);
    if (!object.Decoration || relative.empty())
        return CVariant::Null();
    return Text(L"\\\\" + object.Decoration->Server + L"\\" + object.Decoration->Namespace + L":" + relative);
}

struct CSystemProperty
{
    const wchar_t* Name;
    CIMTYPE Type;
    CVariant (*Read)(const CObjectState& object);
};

// In the order in which the management service enumerates them.
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

const CSystemProperty* FindSystemProperty(std::wstring_view name) noexcept
{
    for (const CSystemProperty& property : kProperties)
        if (EqualNoCaseAscii(property.Name, name))
            return &property;
    return nullptr;
}
} // namespace

bool IsSystemProperty(std::wstring_view name) noexcept
{
    return FindSystemProperty(name) != nullptr;
}

HRESULT ReadProperty(const CObjectState& object, std::wstring_view name, VARIANT* value, CIMTYPE* type,
                     LONG* flavor)
{
    const size_t index = object.Definition->IndexOf(name);
    const bool own = index != CClassDefinition::npos;
    const CSystemProperty* system = own ? nullptr : FindSystemProperty(name);
    if (!own && !system)
        return wmi::NotFound;
    if (value)
    {
        const HRESULT hr =
            own ? CopyCimValue(object.Value(index), value) : CopyCimValue(system->Read(object), value);
        if (FAILED(hr))
            return hr;
    }
    if (type)
        *type = own ? object.Definition->Properties()[index].Type : system->Type;
    if (flavor)
        *flavor = !own                    ? WBEM_FLAVOR_ORIGIN_SYSTEM
                  : object.IsLocal(index) ? WBEM_FLAVOR_ORIGIN_LOCAL
                                          : WBEM_FLAVOR_ORIGIN_PROPAGATED;
    return S_OK;
}

HRESULT SelectNames(const CObjectState& object, long flags, std::vector<std::wstring>& names)
{
    if (flags & ~WBEM_MASK_CONDITION_ORIGIN)
        return wmi::InvalidParameter;
    if (flags == 0 || flags == WBEM_FLAG_SYSTEM_ONLY)
        for (const CSystemProperty& property : kProperties)
            names.emplace_back(property.Name);
    if (flags == WBEM_FLAG_SYSTEM_ONLY)
        return S_OK;
    for (const size_t index : object.Definition->Order())
        if ((flags != WBEM_FLAG_LOCAL_ONLY || object.IsLocal(index)) &&
            (flags != WBEM_FLAG_PROPAGATED_ONLY || !object.IsLocal(index)))
            names.push_back(object.Definition->Properties()[index].Name);
    return S_OK;
}
} // namespace standin
