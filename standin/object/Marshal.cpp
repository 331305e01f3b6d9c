// How objects travel by value: a 32-bit size, then the bytes.
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
    return AtComBoundary([&] { return GiveBytes(Bytes(), bytes, size); });
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
    const ComPtr<IWbemClassObject> copy = ObjectFrom(BytesOf(object));
    return copy ? static_cast<CManagementObject*>(copy.Get())->Definition() : nullptr;
}
} // namespace standin
