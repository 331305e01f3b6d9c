#include "CDM/src/engine/results/store/ResultStreams.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/results/store/ResultFields.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/WmiStatus.h"

#include <cstring>

namespace
{
// Files of another version are dropped: give the layout a new identifier whenever it changes.
constexpr wchar_t kVersion[] = L"{5C0E7B1E-8F1B-4B6C-9F0A-6D8C2B7E4A31}";
// "vg", "nt", "ag" and the fields; the messages come on top.
constexpr ULONG kSingleValues = 21;
// More than any test gives. The count in a damaged file can be anything.
constexpr ULONG kMostMessages = 65536;

constexpr ULONG kFirstRead = 512;    // more than almost every value takes
constexpr ULONG kMost = 1024 * 1024; // no value that is stored takes as much

std::string BytesOf(const std::wstring& text)
{
    const ULONG count = static_cast<ULONG>((text.size() + 1) * sizeof(wchar_t));
    std::string bytes(sizeof(count) + count, '\0');
    std::memcpy(bytes.data(), &count, sizeof(count));
    std::memcpy(bytes.data() + sizeof(count), text.data(), text.size() * sizeof(wchar_t));
    return bytes;
}

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

HRESULT CResultStreams::Write(const CResultData& data, const std::wstring& adapterKey)
{
    HRESULT hr = WriteText(Name(L"vg"), kVersion);
    if (SUCCEEDED(hr))
        hr = WriteText(Name(L"nt"), NumberText(kSingleValues));
    if (SUCCEEDED(hr))
        hr = WriteText(Name(L"ag"), adapterKey);
    for (const CResultField& field : ResultFields())
        if (SUCCEEDED(hr))
            hr = WriteText(Name(field.Prefix), field.Text(data));
    return SUCCEEDED(hr) ? WriteMessages(data) : hr;
}

HRESULT CResultStreams::WriteMessages(const CResultData& data)
{
    HRESULT hr = S_OK;
    for (ULONG i = 0; i < data.MessageCount && SUCCEEDED(hr); ++i)
    {
        const std::wstring index = std::to_wstring(i);
        hr = WriteText(Name(L"tidb") + index, NumberText(data.StringIDs[i]));
        if (SUCCEEDED(hr))
            hr = WriteText(Name(L"tmb") + index, NumberText(data.TestMessages[i]));
    }
    return SUCCEEDED(hr) ? WriteText(Name(L"tmc"), NumberText(data.MessageCount)) : hr;
}

HRESULT CResultStreams::WriteText(const std::wstring& name, const std::wstring& text)
{
    const std::string bytes = BytesOf(text);
    ComPtr<IStream> stream;
    HRESULT hr = m_storage.CreateStream(name.c_str(), STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE, 0,
                                        0, stream.Put());
    if (Failed(hr, "CResultsStore::StoreResult:CreateStream failed <%x>"))
        return S_OK;
    ULONG written = 0;
    hr = stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
    return SUCCEEDED(hr) && written != bytes.size() ? STG_E_MEDIUMFULL : hr;
}

CResultStreams::Owner CResultStreams::ReadOwner(const std::wstring& adapterKey)
{
    std::wstring storedKey; // empty if the result has none, and so is the version: neither is ours
    std::wstring version;
    const Found keyFound = ReadText(Name(L"ag"), storedKey);
    const Found versionFound = ReadText(Name(L"vg"), version);
    if (versionFound == Found::Refused)
        return Illegible(L"vg");
    if (versionFound == Found::Damaged || version != kVersion)
        return Owner::OtherVersion;
    if (keyFound == Found::Refused || keyFound == Found::Damaged)
        return Illegible(L"ag");
    return storedKey == adapterKey ? Owner::ThisAdapter : Owner::OtherAdapter;
}

CResultStreams::Owner CResultStreams::Illegible(const wchar_t* prefix) const
{
    Damaged(Name(prefix));
    return Owner::Illegible;
}

HRESULT CResultStreams::Read(CResultData& data)
{
    const std::wstring key = data.ResultID.Text();
    for (const CResultField& field : ResultFields())
    {
        const std::wstring name = Name(field.Prefix);
        std::wstring text;
        const Found found = ReadText(name, text);
        if (found != Found::Missing && (found != Found::Yes || !field.Take(text, data)))
            return Damaged(name);
    }
    // A result that names another test would be listed under a key by which it cannot be asked for.
    if (key != data.ResultID.View())
        return Damaged(Name(L"k"));
    return ReadMessages(data);
}

HRESULT CResultStreams::ReadMessages(CResultData& data)
{
    const std::wstring name = Name(L"tmc");
    std::wstring text;
    const Found found = ReadText(name, text);
    if (found == Found::Missing)
        return S_OK;
    ULONG count = 0;
    if (found != Found::Yes || !TakeNumber(text, count) || count > kMostMessages)
        return Damaged(name);
    for (ULONG i = 0; i < count; ++i)
    {
        const std::wstring index = std::to_wstring(i);
        ULONG id = 0;
        ULONG value = 0;
        if (!ReadNumber(Name(L"tidb") + index, id) || !ReadNumber(Name(L"tmb") + index, value))
            return Damaged(name);
        data.StringIDs.push_back(id);
        data.TestMessages.push_back(value);
    }
    data.MessageCount = count;
    return S_OK;
}

// A number whose stream is missing stays as it is.
bool CResultStreams::ReadNumber(const std::wstring& name, ULONG& number)
{
    std::wstring text;
    const Found found = ReadText(name, text);
    return found == Found::Missing || (found == Found::Yes && TakeNumber(text, number));
}

// A missing stream leaves `text` as it is.
CResultStreams::Found CResultStreams::ReadText(const std::wstring& name, std::wstring& text)
{
    ComPtr<IStream> stream;
    const HRESULT hr =
        m_storage.OpenStream(name.c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.Put());
    if (Failed(hr, "CResultsStore::Get Exception:OpenStream"))
        return hr == STG_E_FILENOTFOUND ? Found::Missing : Found::Refused;
    std::string bytes(kFirstRead, '\0');
    ULONG have = 0;
    if (!ReadUpTo(*stream.Get(), bytes.data(), kFirstRead, have))
        return Found::Refused;
    ULONG count = 0;
    if (have < sizeof(count))
        return Found::Damaged;
    std::memcpy(&count, bytes.data(), sizeof(count));
    if (count < sizeof(wchar_t) || count % sizeof(wchar_t) != 0 || count > kMost)
        return Found::Damaged;

    const ULONG size = sizeof(count) + count;
    if (size > have)
    {
        if (have < kFirstRead || !Holds(*stream.Get(), size))
            return Found::Damaged;
        bytes.resize(size);
        const ULONG rest = size - have;
        ULONG more = 0;
        if (!ReadUpTo(*stream.Get(), bytes.data() + have, rest, more))
            return Found::Refused;
        if (more != rest)
            return Found::Damaged;
    }
    text.resize(count / sizeof(wchar_t));
    std::memcpy(text.data(), bytes.data() + sizeof(count), count);
    // Exactly one NUL, at the end.
    if (text.find(L'\0') != text.size() - 1)
        return Found::Damaged;
    text.pop_back();
    return Found::Yes;
}

HRESULT CResultStreams::Damaged(const std::wstring& name) const
{
    ZebDebug().Write(L"CResultsStore::LoadResult: <%s> cannot be used", name.c_str());
    return wmi::Failed;
}
