#include "tools/zebdiag/WmiValue.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Variant.h"

namespace zebdiag
{
namespace
{
CVariant Read(IWbemClassObject* object, const wchar_t* name)
{
    CVariant value;
    if (FAILED(object->Get(name, 0, value.Put(), nullptr, nullptr)))
        VariantClear(&value);
    return value;
}
} // namespace

std::optional<std::wstring> ReadText(IWbemClassObject* object, const wchar_t* name)
{
    const CVariant value = Read(object, name);
    if (value.vt != VT_BSTR)
        return std::nullopt;
    return std::wstring(value.bstrVal ? value.bstrVal : L"", SysStringLen(value.bstrVal));
}

std::optional<long> ReadNumber(IWbemClassObject* object, const wchar_t* name)
{
    const CVariant value = Read(object, name);
    switch (value.vt)
    {
    case VT_UI1:
        return value.bVal;
    case VT_I2:
        return value.iVal;
    case VT_I4:
        return value.lVal;
    default:
        return std::nullopt;
    }
}

std::optional<bool> ReadFlag(IWbemClassObject* object, const wchar_t* name)
{
    const CVariant value = Read(object, name);
    return value.vt == VT_BOOL ? std::optional<bool>(value.boolVal != VARIANT_FALSE) : std::nullopt;
}

std::vector<std::wstring> ReadTexts(IWbemClassObject* object, const wchar_t* name)
{
    const CVariant value = Read(object, name);
    std::vector<std::wstring> texts;
    if (value.vt != (VT_ARRAY | VT_BSTR))
        return texts;
    const CSafeArrayView<BSTR> view(value.parray, VT_BSTR);
    for (const BSTR text : view.Items())
        texts.emplace_back(text ? text : L"", SysStringLen(text));
    return texts;
}

std::vector<long> ReadNumbers(IWbemClassObject* object, const wchar_t* name)
{
    const CVariant value = Read(object, name);
    if (value.vt != (VT_ARRAY | VT_I4))
        return {};
    const CSafeArrayView<LONG> view(value.parray, VT_I4);
    return {view.Items().begin(), view.Items().end()};
}
} // namespace zebdiag
