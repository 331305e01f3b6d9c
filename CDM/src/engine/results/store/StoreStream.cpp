#include "CDM/src/engine/results/store/StoreStream.h"

#include "CDM/src/ZebDebug.h"
#include "Common/src/com/ComPtr.h"

#include <cstring>

namespace
{
constexpr ULONG kFirstRead = 512;    // more than almost every value takes
constexpr ULONG kMost = 1024 * 1024; // no value that is stored takes as much

bool ReadUpTo(IStream& stream, void* to, ULONG size, ULONG& read)
{
    read = 0;
    return SUCCEEDED(stream.Read(to, size, &read));
}

// Whether the stream has as many bytes as its count promises.
bool Holds(IStream& stream, ULONGLONG size)
{
    STATSTG stat{};
    return SUCCEEDED(stream.Stat(&stat, STATFLAG_NONAME)) && stat.cbSize.QuadPart >= size;
}
} // namespace

HRESULT WriteStreamText(IStorage& storage, const wchar_t* name, std::wstring_view text, bool& created)
{
    const ULONG count = static_cast<ULONG>((text.size() + 1) * sizeof(wchar_t));
    std::string bytes(sizeof(count) + count, '\0');
    std::memcpy(bytes.data(), &count, sizeof(count));
    std::memcpy(bytes.data() + sizeof(count), text.data(), text.size() * sizeof(wchar_t));

    ComPtr<IStream> stream;
    HRESULT hr =
        storage.CreateStream(name, STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE, 0, 0, stream.Put());
    created = SUCCEEDED(hr);
    if (!created)
        return hr;
    ULONG written = 0;
    hr = stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
    return SUCCEEDED(hr) && written != bytes.size() ? STG_E_MEDIUMFULL : hr;
}

StreamRead ReadStreamText(IStorage& storage, const wchar_t* name, std::wstring& text)
{
    ComPtr<IStream> stream;
    const HRESULT hr = storage.OpenStream(name, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.Put());
    if (FAILED(hr))
    {
        ZebDebug().Write("CResultsStore::Get Exception:OpenStream");
        return hr == STG_E_FILENOTFOUND ? StreamRead::Missing : StreamRead::Refused;
    }
    std::string bytes(kFirstRead, '\0');
    ULONG have = 0;
    if (!ReadUpTo(*stream.Get(), bytes.data(), kFirstRead, have))
        return StreamRead::Refused;
    ULONG count = 0;
    if (have < sizeof(count))
        return StreamRead::Damaged;
    std::memcpy(&count, bytes.data(), sizeof(count));
    if (count < sizeof(wchar_t) || count % sizeof(wchar_t) != 0 || count > kMost)
        return StreamRead::Damaged;

    const ULONG size = sizeof(count) + count;
    if (size > have)
    {
        if (have < kFirstRead || !Holds(*stream.Get(), size))
            return StreamRead::Damaged;
        bytes.resize(size);
        const ULONG rest = size - have;
        ULONG more = 0;
        if (!ReadUpTo(*stream.Get(), bytes.data() + have, rest, more))
            return StreamRead::Refused;
        if (more != rest)
            return StreamRead::Damaged;
    }
    text.resize(count / sizeof(wchar_t));
    std::memcpy(text.data(), bytes.data() + sizeof(count), count);
    // Exactly one NUL, at the end.
    if (text.find(L'\0') != text.size() - 1)
        return StreamRead::Damaged;
    text.pop_back();
    return StreamRead::Done;
}
