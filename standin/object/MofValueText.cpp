#include "standin/object/MofValueText.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/SafeArray.h"
#include "standin/object/CimType.h"

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
} // namespace

void AppendMofValue(std::wstring& text, const VARIANT& value, CIMTYPE type)
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
} // namespace standin
