#include "standin/object/ByValue.h"

#include "Common/src/com/Owned.h"

#include <algorithm>
#include <cstdint>
#include <wbemcli.h>

namespace standin
{
namespace
{
constexpr HRESULT kBadStream = static_cast<HRESULT>(WBEM_E_INVALID_STREAM);
constexpr ULONG kChunk = 0x10000;
} // namespace

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

HRESULT GiveBytes(const std::vector<BYTE>& from, BYTE** bytes, ULONG* size) noexcept
{
    *bytes = static_cast<BYTE*>(CoTaskMemAlloc(from.size()));
    if (!*bytes)
        return E_OUTOFMEMORY;
    std::ranges::copy(from, *bytes);
    *size = static_cast<ULONG>(from.size());
    return S_OK;
}

HRESULT WriteCounted(IStream* stream, const std::vector<BYTE>& bytes)
{
    const auto size = static_cast<uint32_t>(bytes.size());
    ULONG written = 0;
    HRESULT hr = stream->Write(&size, sizeof size, &written);
    if (SUCCEEDED(hr))
        hr = stream->Write(bytes.data(), size, &written);
    return SUCCEEDED(hr) && written != size ? STG_E_MEDIUMFULL : hr;
}

HRESULT ReadCounted(IStream* stream, std::vector<BYTE>& bytes)
{
    uint32_t size = 0;
    ULONG read = 0;
    if (FAILED(stream->Read(&size, sizeof size, &read)) || read != sizeof size)
        return kBadStream;
    bytes.clear();
    while (bytes.size() < size)
    {
        const size_t before = bytes.size();
        const auto wanted = std::min(kChunk, static_cast<ULONG>(size - before));
        bytes.resize(before + wanted);
        if (FAILED(stream->Read(bytes.data() + before, wanted, &read)) || read != wanted)
            return kBadStream;
    }
    return S_OK;
}
} // namespace standin
