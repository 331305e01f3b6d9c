#include "standin/locator/SharedReference.h"

#include <atomic>
#include <iterator>

namespace standin
{
// All zero when new.
struct CSharedReference::CRoom
{
    std::atomic<ULONG> Size; // set last
    BYTE Bytes[4000];
};

bool CSharedReference::Create(const wchar_t* name) noexcept
{
    m_section.Reset(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(CRoom), name));
    m_room.Reset(static_cast<CRoom*>(MapViewOfFile(m_section.Get(), FILE_MAP_WRITE, 0, 0, sizeof(CRoom))));
    return m_room.Get() != nullptr;
}

bool CSharedReference::Open(const wchar_t* name) noexcept
{
    m_section.Reset(OpenFileMappingW(FILE_MAP_WRITE, FALSE, name));
    m_room.Reset(static_cast<CRoom*>(MapViewOfFile(m_section.Get(), FILE_MAP_WRITE, 0, 0, sizeof(CRoom))));
    return m_room.Get() != nullptr;
}

HRESULT CSharedReference::Leave(REFIID riid, IUnknown* object, DWORD marshalFlags) noexcept
{
    CRoom& room = *m_room.Get();
    ComPtr<IStream> stream;
    HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    if (SUCCEEDED(hr))
        hr = CoMarshalInterface(stream.Get(), riid, object, MSHCTX_LOCAL, nullptr, marshalFlags);
    if (SUCCEEDED(hr))
        hr = stream->Seek({}, STREAM_SEEK_SET, nullptr);
    ULONG size = 0;
    Withdraw();
    if (SUCCEEDED(hr))
        hr = stream->Read(room.Bytes, static_cast<ULONG>(std::size(room.Bytes)), &size);
    if (SUCCEEDED(hr))
        room.Size = size;
    return hr;
}

void CSharedReference::Withdraw() noexcept
{
    m_room.Get()->Size = 0;
}

bool CSharedReference::Empty() const noexcept
{
    return m_room.Get()->Size == 0;
}

HRESULT CSharedReference::Take(REFIID riid, void** out) const noexcept
{
    *out = nullptr;
    const CRoom& room = *m_room.Get();
    const ULONG size = room.Size;
    if (size == 0 || size > std::size(room.Bytes))
        return HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    ComPtr<IStream> stream;
    HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    if (SUCCEEDED(hr))
        hr = stream->Write(room.Bytes, size, nullptr);
    if (SUCCEEDED(hr))
        hr = stream->Seek({}, STREAM_SEEK_SET, nullptr);
    return FAILED(hr) ? hr : CoUnmarshalInterface(stream.Get(), riid, out);
}
} // namespace standin
