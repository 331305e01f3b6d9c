#include "standin/object/Bytes.h"

#include "Common/src/com/CoTaskMem.h"
#include "Common/src/com/SafeArray.h"
#include "standin/object/ManagementObject.h"
#include "standin/object/ObjectBytes.h"

namespace standin
{
namespace
{
// Bytes of one element as it is in memory; 0 for texts and objects, which are written as such, and for what
// is never stored.
size_t PlainSize(VARTYPE type)
{
    switch (type)
    {
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_R4:
        return 4;
    case VT_R8:
        return 8;
    }
    return 0;
}

} // namespace

HRESULT GiveBytes(const std::vector<BYTE>& from, BYTE** bytes, ULONG* size) noexcept
{
    *bytes = static_cast<BYTE*>(CoTaskMemAlloc(from.size()));
    if (!*bytes)
        return E_OUTOFMEMORY;
    memcpy(*bytes, from.data(), from.size());
    *size = static_cast<ULONG>(from.size());
    return S_OK;
}

std::vector<BYTE> TakeBytes(IUnknown* object)
{
    ComPtr<IByValue> ours;
    CCoTaskMem<BYTE> bytes;
    ULONG size = 0;
    if (!object || FAILED(object->QueryInterface(__uuidof(IByValue), ours.PutVoid())))
        return {};
    if (FAILED(ours->Encode(bytes.Put(), &size)))
        throw std::bad_alloc();
    return {bytes.Get(), bytes.Get() + size};
}

void CByteWriter::Text(std::wstring_view text)
{
    Number(static_cast<uint32_t>(text.size()));
    Raw(text.data(), text.size() * sizeof(wchar_t));
}

void CByteWriter::Element(VARTYPE type, const void* data, size_t size)
{
    if (type == VT_BSTR)
    {
        const BSTR text = *static_cast<const BSTR*>(data);
        Text({text ? text : L"", SysStringLen(text)});
    }
    else if (type == VT_UNKNOWN)
    {
        const std::vector<BYTE> bytes = TakeBytes(*static_cast<IUnknown* const*>(data));
        Number(static_cast<uint32_t>(bytes.size()));
        Raw(bytes.data(), bytes.size());
    }
    else
        Raw(data, size);
}

void CByteWriter::Value(const VARIANT& value)
{
    Number(value.vt);
    const VARTYPE type = value.vt & VT_TYPEMASK;
    const size_t size = PlainSize(type);
    if (!(value.vt & VT_ARRAY))
    {
        if (type != VT_EMPTY && type != VT_NULL)
            Element(type, &value.llVal, size);
        return;
    }
    const CSafeArrayView<BYTE> items(value.parray, type);
    const auto count = static_cast<uint32_t>(items.Items().size());
    Number(count);
    const size_t step = SafeArrayGetElemsize(value.parray);
    for (uint32_t i = 0; i < count; ++i)
        Element(type, items.Items().data() + i * step, size);
}

uint32_t CByteReader::Count(size_t least)
{
    const auto count = Number<uint32_t>();
    if (count > m_left.size() / least)
        throw CBadBytes();
    return count;
}

std::wstring CByteReader::Text()
{
    const uint32_t length = Count(sizeof(wchar_t));
    std::wstring text(length, L'\0');
    memcpy(text.data(), Raw(length * sizeof(wchar_t)).data(), length * sizeof(wchar_t));
    return text;
}

CBstr CByteReader::Bstr()
{
    const uint32_t length = Count(sizeof(wchar_t));
    const auto bytes = Raw(length * sizeof(wchar_t));
    CBstr text = CBstr::Attach(SysAllocStringLen(nullptr, length));
    if (!text)
        throw std::bad_alloc();
    memcpy(text.Get(), bytes.data(), bytes.size());
    return text;
}

int CByteReader::Nested() const
{
    if (m_nesting == 0)
        throw CBadBytes();
    return m_nesting - 1;
}

CVariant CByteReader::Element(VARTYPE type)
{
    if (type == VT_BSTR)
        return CVariant::FromBstr(Bstr().Detach());
    CVariant value;
    if (type == VT_UNKNOWN)
    {
        const uint32_t size = Count();
        value.punkVal = DecodeObject(Raw(size), Nested()).Detach();
        value.vt = VT_UNKNOWN;
        return value;
    }
    const size_t size = PlainSize(type);
    if (size == 0)
        throw CBadBytes();
    memcpy(&value.llVal, Raw(size).data(), size);
    value.vt = type;
    return value;
}

CCimValue CByteReader::Value()
{
    const auto given = Number<VARTYPE>();
    if (given == VT_EMPTY)
        return {};
    if (given == VT_NULL)
        return CVariant::Null();
    const VARTYPE type = given & VT_TYPEMASK;
    if (given == type)
        return Element(type);
    const size_t size = PlainSize(type);
    if (given != (VT_ARRAY | type) || (size == 0 && type != VT_BSTR && type != VT_UNKNOWN))
        throw CBadBytes();
    const uint32_t count = Count(size ? size : sizeof(uint32_t));
    CSafeArray array(SafeArrayCreateVector(type, 0, count));
    if (!array)
        throw std::bad_alloc();
    {
        const CSafeArrayView<BYTE> items(array.Get(), type);
        if (size)
            memcpy(items.Items().data(), Raw(size * count).data(), size * count);
        else
            for (uint32_t i = 0; i < count; ++i)
            {
                CVariant element = Element(type);
                memcpy(items.Items().data() + i * sizeof(void*), &element.punkVal, sizeof(void*));
                element.vt = VT_EMPTY; // the array's now
            }
    }
    return CVariant::FromArray(array.Detach(), type);
}
} // namespace standin
