// What objects and contexts have in common: they travel by value, through COM as a 32-bit size and the bytes.
#pragma once

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"

#include <objidl.h>
#include <vector>

namespace standin
{
// By which our objects give their marshalled form, in memory of the task allocator. They may have been made
// by another module of the process.
struct IByValue : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Encode(BYTE** bytes, ULONG* size) = 0;
};
} // namespace standin
__CRT_UUID_DECL(standin::IByValue, 0x1b6e07c7, 0x52d9, 0x4f0b, 0x8a, 0x41, 0x3c, 0x77, 0xd0, 0x5e, 0x92, 0x16)

namespace standin
{
// Asks for the bytes. None where the object is null or not one of ours; throws std::bad_alloc.
std::vector<BYTE> TakeBytes(IUnknown* object);
// Answers IByValue::Encode.
HRESULT GiveBytes(const std::vector<BYTE>& from, BYTE** bytes, ULONG* size) noexcept;

HRESULT WriteCounted(IStream* stream, const std::vector<BYTE>& bytes);
// WBEM_E_INVALID_STREAM where the stream ends early. No memory is taken for more than the stream has.
HRESULT ReadCounted(IStream* stream, std::vector<BYTE>& bytes);

template <class... Interfaces>
class CByValueObject : public CComObject<Interfaces..., IByValue, IMarshal>
{
  public:
    // The class that makes an object of the bytes.
    explicit CByValueObject(const CLSID& unmarshaler) noexcept : m_unmarshaler(unmarshaler) {}

    STDMETHODIMP Encode(BYTE** bytes, ULONG* size) override
    {
        return AtComBoundary([&] { return GiveBytes(Bytes(), bytes, size); });
    }
    STDMETHODIMP GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID* clsid) override
    {
        *clsid = m_unmarshaler;
        return S_OK;
    }
    STDMETHODIMP GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD* size) override
    {
        return AtComBoundary(
            [&]
            {
                *size = static_cast<DWORD>(sizeof(uint32_t) + Bytes().size());
                return S_OK;
            });
    }
    STDMETHODIMP MarshalInterface(IStream* stream, REFIID, void*, DWORD, void*, DWORD) override
    {
        return AtComBoundary([&] { return WriteCounted(stream, Bytes()); });
    }
    STDMETHODIMP UnmarshalInterface(IStream*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP ReleaseMarshalData(IStream*) override { return S_OK; }
    STDMETHODIMP DisconnectObject(DWORD) override { return S_OK; }

  protected:
    virtual std::vector<BYTE> Bytes() = 0;

  private:
    const CLSID& m_unmarshaler;
};
} // namespace standin
