// How objects travel by value: a 32-bit size, then the bytes.
#include "Common/src/com/CoTaskMem.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/ManagementObject.h"
#include "standin/object/MarshalStream.h"
#include "standin/object/ObjectBytes.h"
#include "standin/object/StandinIds.h"

namespace standin
{
std::vector<BYTE> CManagementObject::Bytes() const
{
    const CShared lock(m_lock);
    const CObjectView view = View();
    return EncodeObject(view, *m_definition->Bytes());
}

STDMETHODIMP CManagementObject::Encode(BYTE** bytes, ULONG* size)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const std::vector<BYTE> encoded = Bytes();
            *bytes = static_cast<BYTE*>(CoTaskMemAlloc(encoded.size()));
            if (!*bytes)
                return E_OUTOFMEMORY;
            memcpy(*bytes, encoded.data(), encoded.size());
            *size = static_cast<ULONG>(encoded.size());
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID* clsid)
{
    if (!clsid)
        return E_POINTER;
    *clsid = kObjectUnmarshaler;
    return S_OK;
}

STDMETHODIMP CManagementObject::GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD* size)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!size)
                return E_POINTER;
            *size = static_cast<DWORD>(Bytes().size() + sizeof(uint32_t));
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::MarshalInterface(IStream* stream, REFIID, void*, DWORD, void*, DWORD)
{
    return AtComBoundary([&] { return WriteCounted(stream, Bytes()); });
}

ClassDefinition DefinitionOf(IWbemClassObject* object)
{
    ComPtr<IStandinObject> ours;
    CCoTaskMem<BYTE> bytes;
    ULONG size = 0;
    if (!object || FAILED(object->QueryInterface(__uuidof(IStandinObject), ours.PutVoid())))
        return nullptr;
    if (FAILED(ours->Encode(bytes.Put(), &size)))
        throw std::bad_alloc();
    const ComPtr<IWbemClassObject> copy = DecodeObject({bytes.Get(), size}, kMaxNesting);
    return static_cast<CManagementObject*>(copy.Get())->Definition();
}
} // namespace standin
